#include "apps/tnv5/book_verbs.h"

namespace tnv5::cli {

namespace {

struct TMemberOptions
{
    std::string who;
    std::optional<std::string> name;
    std::optional<std::string> balance;
    std::optional<std::string> credit;
    std::optional<std::string> inside;
    std::optional<std::string> suspended;
    std::vector<std::string> cards;
    std::optional<std::string> from;
    std::optional<std::string> to;
    std::vector<std::string> zones;
    bool force = false;
};

template <class Read>
auto readGiven(const std::optional<std::string>& text, const Read& read)
{
    return text ? std::optional(read(QString::fromStdString(*text))) : std::nullopt;
}

void add(host::TBooks& books, const TMemberOptions& options)
{
    host::TNewMember member;
    member.name = QString::fromStdString(options.who);
    member.balance = readGiven(options.balance, host::readAmount).value_or(0);
    member.cards = texts(options.cards);
    if (options.from || options.to || !options.zones.empty()) {
        if (!options.from || !options.to) {
            throw platform::Exception(QStringLiteral("A membership needs --from and --to"));
        }
        member.membership =
            host::TMembership{host::readDay(QString::fromStdString(*options.from)),
                              host::readDay(QString::fromStdString(*options.to)), texts(options.zones)};
    }
    print(QString::number(books.addMember(member)));
}

void change(host::TBooks& books, const TMemberOptions& options)
{
    host::TMemberChange change;
    change.name = given(options.name);
    change.balance = readGiven(options.balance, host::readAmount);
    change.credit = readGiven(options.credit, host::readAmount);
    change.inside = readGiven(options.inside, host::readFlag);
    change.suspended = readGiven(options.suspended, host::readFlag);
    if (!change.name && !change.balance && !change.credit && !change.inside && !change.suspended) {
        throw platform::Exception(
            QStringLiteral("Nothing to change was given: see tnv5 member change --help"));
    }
    books.changeMember(books.memberOf(QString::fromStdString(options.who)), change);
}

void remove(host::TBooks& books, const TMemberOptions& options)
{
    books.removeMember(books.memberOf(QString::fromStdString(options.who)), options.force);
}

} // namespace

void addMemberCommand(CLI::App& app, TCommand& chosen)
{
    TBookVerbs member(app, chosen, "member", "Members of the club: add, change, remove, list, import");
    const auto options = std::make_shared<TMemberOptions>();
    CLI::App& adding = member.verb("add", "Add a member; its number is printed", options, add);
    adding.add_option("name", options->who, "Such as \"Anna Berg\"")->required()->type_name("NAME");
    adding.add_option("--card", options->cards, "A card; may be given again")
        ->allow_extra_args(false)
        ->type_name("NUMBER");
    adding.add_option("--balance", options->balance, "Of the account, such as 12.50")->type_name("AMOUNT");
    adding.add_option("--from", options->from, "First day of a membership, such as 2026-01-31")
        ->type_name("DAY");
    adding.add_option("--to", options->to, "Its last day")->type_name("DAY");
    adding.add_option("--zone", options->zones, "A zone that it opens; may be given again")
        ->allow_extra_args(false)
        ->type_name("ZONE");

    CLI::App& changing = member.verb("change", "Change a member; what is not given stays", options, change);
    changing.add_option("member", options->who, "Number, or name if there is one of it")
        ->required()
        ->type_name("MEMBER");
    changing.add_option("--name", options->name, "The new name")->type_name("NAME");
    changing.add_option("--suspended", options->suspended, "Whether the member is kept out")
        ->type_name("yes|no");
    changing.add_option("--inside", options->inside, "Put right whether the member is inside")
        ->type_name("yes|no");
    CLI::Option* const balance =
        changing.add_option("--balance", options->balance, "What the account holds from now on")
            ->type_name("AMOUNT");
    changing.add_option("--credit", options->credit, "Add to the account; with \"-\" take from it")
        ->type_name("AMOUNT")
        ->excludes(balance);

    CLI::App& removing = member.verb("remove", "Remove a member with cards and memberships", options, remove);
    removing.add_option("member", options->who, "Number, or name if there is one of it")
        ->required()
        ->type_name("MEMBER");
    removing.add_flag("--force", options->force, "Also one who is inside or whose balance is not 0");

    member.tables(host::TBookKind::Members, [](host::TBooks& books) { return books.members(); });
}

} // namespace tnv5::cli
