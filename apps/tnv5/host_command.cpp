#include "apps/tnv5/book_options.h"
#include "apps/tnv5/commands.h"
#include "apps/tnv5/console.h"
#include "tnv5/host/card_payment.h"
#include "tnv5/host/club.h"
#include "tnv5/host/club/club_file.h"
#include "tnv5/host/local/local_client.h"
#include "tnv5/host/local/local_path.h"
#include "tnv5/platform/errors.h"

#include <CLI/CLI.hpp>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <memory>

namespace tnv5::cli {

namespace {

constexpr int kAnswerMs = 10'000;

struct THostOptions
{
    std::string club; // socket, file or name
    std::string gate;
    std::string reason;
    std::string who;
    std::string device; // scale, lamp or terminal
    std::string card;
    std::string product;
    std::string amount;
    int minutes = 0;
    bool json = false;
};

/// Where a club listens: as a service, or as somebody's program.
QString socketNamed(const QString& name)
{
    for (const QString& socket : host::usualSockets()) {
        if (QFileInfo(socket).completeBaseName() == name) {
            return socket;
        }
    }
    return host::usualSocket(name);
}

/// Where a club listens by its file.
QString socketOfFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw platform::Exception(QStringLiteral("%1: %2").arg(path, file.errorString()));
    }
    const host::TClubPlan plan = host::readClub(file.readAll(), QFileInfo(path).absolutePath()).plan;
    if (plan.name.isEmpty()) {
        throw platform::Exception(QStringLiteral("%1 names no club; see \"tnv5 check %1\"").arg(path));
    }
    return plan.socket.isEmpty() ? socketNamed(plan.name) : plan.socket;
}

/// The socket that is meant: a path, a club's file, a club's name, or the only one that there is.
QString socketOf(const QString& club)
{
    if (club.endsWith(QStringLiteral(".toml"))) {
        return socketOfFile(club);
    }
    if (club.contains(u'/') || club.endsWith(QStringLiteral(".socket"))) {
        return club;
    }
    if (!club.isEmpty()) {
        return socketNamed(club);
    }
    const QStringList sockets = host::usualSockets();
    if (sockets.size() != 1) {
        throw platform::Exception(
            sockets.isEmpty()
                ? QStringLiteral("No club runs here; say which with --club (its file, name or socket)")
                : QStringLiteral("Several clubs run here, say which with --club: %1")
                      .arg(sockets.join(QStringLiteral(", "))));
    }
    return sockets.first();
}

/// What the host answers; a refusal is an exception.
QJsonObject ask(const THostOptions& options, const QJsonObject& request)
{
    const QString socket = socketOf(QString::fromStdString(options.club));
    const QJsonObject answer = host::askHost(socket, request, kAnswerMs);
    if (!answer.value(u"ok").toBool()) {
        throw platform::Exception(answer.value(u"error").toString());
    }
    return answer;
}

QString answeringText(const QJsonValue& value)
{
    return value.isNull()   ? QString()
           : value.toBool() ? QStringLiteral("answers")
                            : QStringLiteral("DOES NOT ANSWER");
}

void printLines(const QJsonObject& state)
{
    for (const auto& value : state.value(u"lines").toArray()) {
        const QJsonObject line = value.toObject();
        const bool open = line.value(u"open").toBool();
        print(QStringLiteral("  %1  %2  %3")
                  .arg(line.value(u"name").toString(), -12)
                  .arg(line.value(u"port").toString(),
                       open ? QStringLiteral("open since ") + line.value(u"since").toString()
                            : QStringLiteral("NOT OPEN: ") + line.value(u"why").toString()));
    }
}

void printGates(const QJsonObject& state)
{
    for (const auto& value : state.value(u"gates").toArray()) {
        const QJsonObject gate = value.toObject();
        const QString holder = gate.value(u"holder").toString();
        print(QStringLiteral("  %1  %2  %3  %4  %5  %6")
                  .arg(gate.value(u"address").toString(), -5)
                  .arg(gate.value(u"direction").toString(), -5)
                  .arg(gate.value(u"zone").toString(), -10)
                  .arg(gate.value(u"line").toString(), -12)
                  .arg(answeringText(gate.value(u"answering")),
                       holder.isEmpty() ? QString() : holder + QStringLiteral(" is passing"))
                  .trimmed()
                  .prepend(u"  "));
    }
}

/// A scale, a terminal or a lamp, and how it is.
void printUnit(const char* kind, const QJsonObject& unit, QStringList how)
{
    how.removeAll(QString());
    print(QStringLiteral("  %1  %2  %3")
              .arg(QLatin1String(kind), -8)
              .arg(unit.value(u"name").toString(), -12)
              .arg(how.join(QStringLiteral(", "))));
}

void printScale(const QJsonObject& scale)
{
    const QJsonValue grams = scale.value(u"grams");
    printUnit("scale", scale,
              {grams.isNull() ? QStringLiteral("no weight") : QStringLiteral("%1 g").arg(grams.toInteger()),
               scale.value(u"waiting").toBool() ? QStringLiteral("an order waits") : QString()});
}

void printTerminal(const QJsonObject& terminal)
{
    const qint64 cents = terminal.value(u"cents").toInteger();
    const QString stage = terminal.value(u"stage").toString();
    printUnit("terminal", terminal,
              {cents == 0 ? QString() : host::amountText(cents),
               stage.isEmpty() ? QStringLiteral("nothing ordered") : stage});
}

void printLamp(const QJsonObject& lamp)
{
    const qint64 seconds = lamp.value(u"secondsLeft").toInteger();
    const QString left = QStringLiteral("%1:%2 left").arg(seconds / 60).arg(seconds % 60, 2, 10, QChar(u'0'));
    printUnit("lamp", lamp,
              {lamp.value(u"on").toBool() ? QStringLiteral("on") : QStringLiteral("off"),
               lamp.value(u"holder").toString(), seconds == 0 ? QString() : left});
}

void printUnits(const QJsonObject& state)
{
    for (const auto& scale : state.value(u"scales").toArray()) {
        printScale(scale.toObject());
    }
    for (const auto& terminal : state.value(u"terminals").toArray()) {
        printTerminal(terminal.toObject());
    }
    for (const auto& lamp : state.value(u"lamps").toArray()) {
        printLamp(lamp.toObject());
    }
}

int status(const THostOptions& options)
{
    const QJsonObject state = ask(options, {{"do", "status"}}).value(u"state").toObject();
    if (options.json) {
        print(QString::fromUtf8(QJsonDocument(state).toJson(QJsonDocument::Compact)));
        return kDone;
    }
    print(QStringLiteral("%1, version %2, process %3, since %4")
              .arg(state.value(u"club").toString(), state.value(u"version").toString())
              .arg(state.value(u"pid").toInteger())
              .arg(state.value(u"started").toString()));
    const QJsonValue inside = state.value(u"inside");
    print(QStringLiteral("%1 inside, %2 entries wait for the journal")
              .arg(inside.isNull() ? QStringLiteral("?") : QString::number(inside.toInteger()))
              .arg(state.value(u"journalWaiting").toInteger()));
    printLines(state);
    printGates(state);
    printUnits(state);
    for (const auto& trouble : state.value(u"troubles").toArray()) {
        print(QStringLiteral("! ") + trouble.toString(), TColour::Red);
    }
    return kDone;
}

int open(const THostOptions& options)
{
    ask(options, {{"do", "open"},
                  {"gate", QString::fromStdString(options.gate)},
                  {"reason", QString::fromStdString(options.reason)},
                  {"who", QString::fromStdString(options.who)}});
    print(QStringLiteral("%1 has been told to open").arg(QString::fromStdString(options.gate)));
    return kDone;
}

int reload(const THostOptions& options)
{
    ask(options, {{"do", "reload"}});
    print(QStringLiteral("The club's file has been read again."));
    return kDone;
}

int sell(const THostOptions& options, const QJsonObject& request)
{
    QJsonObject whole = request;
    whole.insert(u"do", QStringLiteral("sell"));
    whole.insert(u"card", QString::fromStdString(options.card));
    ask(options, whole);
    print(QStringLiteral("Ordered at %1; the log tells what becomes of it.")
              .arg(QString::fromStdString(options.device)));
    return kDone;
}

int sellGoods(const THostOptions& options)
{
    return sell(options, {{"scale", QString::fromStdString(options.device)},
                          {"product", QString::fromStdString(options.product)}});
}

int sellTime(const THostOptions& options)
{
    return sell(options, {{"lamp", QString::fromStdString(options.device)}, {"minutes", options.minutes}});
}

int sellAmount(const THostOptions& options)
{
    const QString text = QString::fromStdString(options.amount);
    const std::optional<qint64> cents = host::toCents(text);
    if (!cents) {
        throw platform::Exception(QStringLiteral("\"%1\" is no amount; write it like 12.50").arg(text));
    }
    return sell(options, {{"terminal", QString::fromStdString(options.device)}, {"cents", *cents}});
}

int cancelSale(const THostOptions& options)
{
    ask(options, {{"do", "cancel"}, {"device", QString::fromStdString(options.device)}});
    print(QStringLiteral("Withdrawn at %1.").arg(QString::fromStdString(options.device)));
    return kDone;
}

CLI::App* addCommand(CLI::App& app, const char* name, const char* text, THostOptions& options)
{
    CLI::App* command = app.add_subcommand(name, text);
    command
        ->add_option("--club", options.club,
                     "Which club, when several run here: its file, its name or its socket")
        ->type_name("CLUB");
    return command;
}

void addSellCommands(CLI::App& app, TCommand& chosen, const std::shared_ptr<THostOptions>& options)
{
    CLI::App* const sale = app.add_subcommand("sell", "Sell by weight, time or amount at a running club");
    sale->require_subcommand(1);
    const auto add = [&](const char* name, const char* text, const char* device,
                         int (*run)(const THostOptions&)) {
        CLI::App* const command = addCommand(*sale, name, text, *options);
        command->add_option("device", options->device, "Its name in the club's file")
            ->required()
            ->type_name(device);
        command->callback([&chosen, options, run] { chosen = [options, run] { return run(*options); }; });
        return command;
    };
    CLI::App* command =
        add("goods", "What is on a scale, as soon as it has come to rest", "SCALE", sellGoods);
    command->add_option("card", options->card, "Whose account is charged")->required()->type_name("CARD");
    command->add_option("product", options->product, "What it is")->required()->type_name("PRODUCT");
    command = add("time", "Minutes on a lamp", "LAMP", sellTime);
    command->add_option("card", options->card, "Whose account is charged")->required()->type_name("CARD");
    command->add_option("minutes", options->minutes, "How many")->required()->type_name("MINUTES");
    command = add("amount", "An amount at a bank terminal", "TERMINAL", sellAmount);
    command->add_option("amount", options->amount, "Such as 12.50")->required()->type_name("AMOUNT");
    add("nothing", "Withdraw what a scale or terminal still waits for", "DEVICE", cancelSale);
}

} // namespace

void addHostCommands(CLI::App& app, TCommand& chosen)
{
    const auto options = std::make_shared<THostOptions>();
    CLI::App* command = addCommand(app, "status", "Show how a running club is", *options);
    command->add_flag("--json", options->json,
                      "Print the object of docs/local-socket.md, or {\"error\":\"...\"}");
    command->callback([&chosen, options] {
        chosen = [options] { return runJson(options->json, [&options] { return status(*options); }); };
    });

    command = addCommand(app, "open", "Open a gate of a running club by hand", *options);
    command->add_option("gate", options->gate, "Address of the gate")->required()->type_name("GATE");
    command->add_option("--reason", options->reason, "Why; it stands in the journal beside who did it")
        ->required();
    command->add_option("--who", options->who, "Who, beside the name of the user");
    command->callback([&chosen, options] { chosen = [options] { return open(*options); }; });

    addSellCommands(app, chosen, options);

    command = addCommand(app, "reload", "Let a running club read its file again", *options);
    command->footer("\nWhat has not changed goes on: no gate closes. A file with a mistake changes nothing.");
    command->callback([&chosen, options] { chosen = [options] { return reload(*options); }; });
}

} // namespace tnv5::cli
