#include "apps/tnv5/book_verbs.h"

namespace tnv5::cli {

namespace {

struct TCardOptions
{
    std::string card;
    std::string member;
    std::optional<std::string> newNumber;
    bool force = false;
};

struct TMembershipOptions
{
    std::string member;
    qint64 number = 0;
    std::optional<std::string> from;
    std::optional<std::string> to;
    std::optional<std::vector<std::string>> zones;
};

std::optional<QDate> day(const std::optional<std::string>& text)
{
    return text ? std::optional(host::readDay(QString::fromStdString(*text))) : std::nullopt;
}

void addCard(host::TBooks& books, const TCardOptions& options)
{
    books.addCard(QString::fromStdString(options.card),
                  books.memberOf(QString::fromStdString(options.member)));
}

void changeCard(host::TBooks& books, const TCardOptions& options)
{
    const QString card = QString::fromStdString(options.card);
    if (options.member.empty() && !options.newNumber) {
        throw platform::Exception(QStringLiteral("Nothing to change was given: --member or --number"));
    }
    books.together([&] {
        if (!options.member.empty()) {
            books.giveCard(card, books.memberOf(QString::fromStdString(options.member)), options.force);
        }
        if (options.newNumber) {
            books.renumberCard(card, QString::fromStdString(*options.newNumber));
        }
    });
}

void removeCard(host::TBooks& books, const TCardOptions& options)
{
    books.removeCard(QString::fromStdString(options.card), options.force);
}

void addMembership(host::TBooks& books, const TMembershipOptions& options)
{
    const qint64 member = books.memberOf(QString::fromStdString(options.member));
    const host::TMembership membership = {*day(options.from), *day(options.to),
                                          options.zones ? texts(*options.zones) : QStringList()};
    print(QString::number(books.addMembership(member, membership)));
}

void changeMembership(host::TBooks& books, const TMembershipOptions& options)
{
    if (!options.from && !options.to && !options.zones) {
        throw platform::Exception(QStringLiteral("Nothing to change was given: --from, --to or --zone"));
    }
    books.changeMembership(options.number, day(options.from), day(options.to),
                           options.zones ? std::optional(texts(*options.zones)) : std::nullopt);
}

void removeMembership(host::TBooks& books, const TMembershipOptions& options)
{
    books.removeMembership(options.number);
}

} // namespace

void addCardCommand(CLI::App& app, TCommand& chosen)
{
    TBookVerbs card(app, chosen, "card", "Cards of the members: add, change, remove, list, import");
    const auto options = std::make_shared<TCardOptions>();
    CLI::App& adding = card.verb("add", "Give a member a card", options, addCard);
    adding.add_option("card", options->card, "Its number as the readers send it")
        ->required()
        ->type_name("CARD");
    adding.add_option("member", options->member, "Number, or name if there is one of it")
        ->required()
        ->type_name("MEMBER");

    CLI::App& changing =
        card.verb("change", "Give a card to another member, or another number", options, changeCard);
    changing.add_option("card", options->card, "Its number")->required()->type_name("CARD");
    changing.add_option("--member", options->member, "The member who gets it")->type_name("MEMBER");
    changing.add_option("--number", options->newNumber, "The new number")->type_name("CARD");
    changing.add_flag("--force", options->force, "Also the only card of somebody who is inside");

    CLI::App& removing =
        card.verb("remove", "Remove a card: no gate opens to it any more", options, removeCard);
    removing.add_option("card", options->card, "Its number")->required()->type_name("CARD");
    removing.add_flag("--force", options->force, "Also the only card of somebody who is inside");

    card.tables(host::TBookKind::Cards, [](host::TBooks& books) { return books.cards(); });
}

void addMembershipCommand(CLI::App& app, TCommand& chosen)
{
    TBookVerbs membership(app, chosen, "membership", "Memberships: add, change, remove, list, import");
    const auto options = std::make_shared<TMembershipOptions>();
    CLI::App& adding =
        membership.verb("add", "Add a membership; its number is printed", options, addMembership);
    adding.add_option("member", options->member, "Number, or name if there is one of it")
        ->required()
        ->type_name("MEMBER");
    adding.add_option("--from", options->from, "First day, such as 2026-01-31")->required()->type_name("DAY");
    adding.add_option("--to", options->to, "Last day")->required()->type_name("DAY");
    adding.add_option("--zone", options->zones, "A zone that it opens; may be given again")
        ->allow_extra_args(false)
        ->type_name("ZONE");

    CLI::App& changing =
        membership.verb("change", "Change a membership; what is not given stays", options, changeMembership);
    changing.add_option("number", options->number, "Number of the membership")
        ->required()
        ->type_name("NUMBER");
    changing.add_option("--from", options->from, "First day")->type_name("DAY");
    changing.add_option("--to", options->to, "Last day")->type_name("DAY");
    changing.add_option("--zone", options->zones, "The zones that it opens from now on")
        ->allow_extra_args(false)
        ->type_name("ZONE");

    CLI::App& removing = membership.verb("remove", "Remove a membership", options, removeMembership);
    removing.add_option("number", options->number, "Number of the membership")
        ->required()
        ->type_name("NUMBER");

    membership.tables(host::TBookKind::Memberships, [](host::TBooks& books) { return books.memberships(); });
}

} // namespace tnv5::cli
