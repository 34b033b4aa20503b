// A whole club by its file, as a person runs it.

#include "integration/club_site.h"
#include "sim/bank_terminal.h"
#include "support/text_printers.h"

#include <QJsonDocument>
#include <QTcpServer>
#include <QTcpSocket>

namespace tnv5::integration {
namespace {

using host::TEnding;

using TClubProgram = TClubSite;

const QString kAnna = QStringLiteral("M1");

QJsonObject named(const QJsonArray& list, const char* key, const QString& value)
{
    for (const QJsonValue& each : list) {
        if (each.toObject().value(QLatin1String(key)).toString() == value) {
            return each.toObject();
        }
    }
    return {};
}

TEST_F(TClubProgram, CardsOnALineAndABus)
{
    const auto run = start();
    EXPECT_TRUE(getsThrough(QStringLiteral("01A"), QStringLiteral("M1")));
    EXPECT_TRUE(bus.readCard(QStringLiteral("101T"), QStringLiteral("M2")));
    EXPECT_TRUE(eventually([&] { return bus.counts(QStringLiteral("101T")).Passed == 1; }));
    line.readCard(QStringLiteral("02A"), QStringLiteral("M1"));
    EXPECT_TRUE(eventually([&] { return line.counts(QStringLiteral("02A")).Refused == 1; }));
    const auto passes = journal(3);
    ASSERT_EQ(passes.size(), 3);
    EXPECT_EQ(passes[0].ending, TEnding::Passed);
    EXPECT_EQ(passes[2].refusal, host::TRefusal::AlreadyInside);
    EXPECT_TRUE(run->says(QStringLiteral("info 01A: Member 1 (M1)  passed")));
    run->stop();
    EXPECT_EQ(run->exitCode(), 0);
    EXPECT_FALSE(QFile::exists(socket));
}

TEST_F(TClubProgram, ItsState)
{
    const auto run = start();
    EXPECT_TRUE(getsThrough(QStringLiteral("01A"), QStringLiteral("M1")));
    journal(1);
    scale.put(450);
    QJsonObject object;
    EXPECT_TRUE(eventually([&] {
        object = state();
        return named(object.value(u"gates").toArray(), "address", QStringLiteral("101T"))
                   .value(u"answering")
                   .toBool() &&
               named(object.value(u"boards").toArray(), "address", QStringLiteral("201A"))
                   .value(u"answering")
                   .toBool() &&
               object.value(u"scales").toArray().at(0).toObject().value(u"steady").toBool();
    }));
    EXPECT_EQ(object.value(u"club").toString(), "riverside");
    EXPECT_EQ(object.value(u"pid").toInteger(), run->pid());
    EXPECT_EQ(object.value(u"inside").toInteger(), 1);
    EXPECT_EQ(object.value(u"journalWaiting").toInteger(), 0);
    EXPECT_EQ(object.value(u"troubles").toArray(), QJsonArray());
    EXPECT_EQ(object.value(u"lines").toArray().size(), 3);
    EXPECT_TRUE(
        named(object.value(u"lines").toArray(), "name", QStringLiteral("fruit")).value(u"open").toBool());
    const QJsonObject gate = named(object.value(u"gates").toArray(), "address", QStringLiteral("03A"));
    EXPECT_EQ(gate.value(u"zone").toString(), "hall");
    EXPECT_EQ(gate.value(u"direction").toString(), "out");
    EXPECT_EQ(gate.value(u"line").toString(), "entrance");
    EXPECT_TRUE(gate.value(u"answering").isNull());
    EXPECT_EQ(object.value(u"scales").toArray().at(0).toObject().value(u"grams").toInt(), 450);
    const QJsonObject lamp = named(object.value(u"lamps").toArray(), "name", QStringLiteral("Sun"));
    EXPECT_EQ(lamp.value(u"board").toString(), "201A");

    EXPECT_EQ(command({QStringLiteral("status"), QStringLiteral("--club"), socket}), 0);
    EXPECT_TRUE(said.contains(QStringLiteral("riverside, version "))) << qUtf8Printable(said);
    EXPECT_TRUE(said.contains(QStringLiteral("1 inside, 0 entries wait for the journal")));
    EXPECT_EQ(command({QStringLiteral("status"), QStringLiteral("--json"), QStringLiteral("--club"), socket}),
              0);
    EXPECT_EQ(QJsonDocument::fromJson(said.toUtf8()).object().value(u"club").toString(), "riverside");
}

TEST_F(TClubProgram, OpenedByHand)
{
    const auto run = start();
    EXPECT_TRUE(eventually([&] { return bus.counts(QStringLiteral("101T")).Pings > 0; }));
    const auto open = [this](const QString& gate) {
        return command({QStringLiteral("open"), gate, QStringLiteral("--reason"), QStringLiteral("a pram"),
                        QStringLiteral("--who"), QStringLiteral("Olga"), QStringLiteral("--club"), socket});
    };
    line.Guest = sim::TBehaviour::PassesThrough;
    bus.Guest = sim::TBehaviour::PassesThrough;
    EXPECT_EQ(open(QStringLiteral("01A")), 0) << qUtf8Printable(said);
    EXPECT_TRUE(eventually([&] { return line.counts(QStringLiteral("01A")).Passed == 1; }));
    EXPECT_EQ(open(QStringLiteral("101T")), 0) << qUtf8Printable(said);
    EXPECT_TRUE(eventually([&] { return bus.counts(QStringLiteral("101T")).Passed == 1; }));
    EXPECT_NE(open(QStringLiteral("09A")), 0);
    EXPECT_TRUE(said.contains(QStringLiteral("there is no gate \"09A\""))) << qUtf8Printable(said);
    const auto passes = journal(2);
    ASSERT_EQ(passes.size(), 2);
    for (const host::TPass& pass : passes) {
        EXPECT_EQ(pass.card, "-1-1-1-1-1");
        EXPECT_TRUE(pass.who.contains(QStringLiteral("Olga"))) << qUtf8Printable(pass.who);
        EXPECT_EQ(pass.note, "a pram");
        EXPECT_EQ(pass.ending, TEnding::Passed);
    }
    linePty.unplug();
    EXPECT_TRUE(run->says(QStringLiteral("error entrance: ")));
    EXPECT_NE(open(QStringLiteral("01A")), 0);
    EXPECT_TRUE(said.contains(QStringLiteral("entrance is not open: "))) << qUtf8Printable(said);
}

TEST_F(TClubProgram, SellsByWeightAndByTheMinute)
{
    const auto run = start();
    const auto sell = [this](const QStringList& words) {
        return command(QStringList(QStringLiteral("sell")) + words +
                       QStringList({QStringLiteral("--club"), socket}));
    };
    EXPECT_EQ(sell({QStringLiteral("goods"), QStringLiteral("fruit"), kAnna, QStringLiteral("apples")}), 0)
        << qUtf8Printable(said);
    scale.put(450);
    host::TDatabase books(database);
    EXPECT_TRUE(eventually([&] { return books.lastSale() == 1; }));
    const host::TSale sale = books.salesAfter(0, 1).value(0);
    EXPECT_EQ(sale.grams, 450);
    EXPECT_EQ(sale.cents, 144);
    EXPECT_EQ(sale.card, kAnna);
    EXPECT_TRUE(run->says(QStringLiteral("450 g apples at 3.20/kg: 1.44")));
    EXPECT_EQ(sell({QStringLiteral("goods"), QStringLiteral("fruit"), kAnna, QStringLiteral("pears")}), 1);
    EXPECT_TRUE(said.contains(QStringLiteral("nothing is sold as \"pears\""))) << qUtf8Printable(said);
    EXPECT_EQ(sell({QStringLiteral("goods"), QStringLiteral("meat"), kAnna, QStringLiteral("apples")}), 1);
    EXPECT_TRUE(said.contains(QStringLiteral("there is no scale \"meat\"")));

    EXPECT_TRUE(eventually([&] { return bus.counts(QStringLiteral("201A")).Pings > 0; }));
    EXPECT_EQ(sell({QStringLiteral("time"), QStringLiteral("Sun"), kAnna, QStringLiteral("5")}), 0)
        << qUtf8Printable(said);
    EXPECT_TRUE(eventually([&] { return bus.relayOn(QStringLiteral("201A"), 1); }));
    EXPECT_EQ(books.holderOf(kAnna)->member.balance, -144 - 250);
    EXPECT_EQ(sell({QStringLiteral("time"), QStringLiteral("Moon"), kAnna, QStringLiteral("5")}), 1);
    EXPECT_EQ(sell({QStringLiteral("amount"), QStringLiteral("bar"), QStringLiteral("12.50")}), 1);
    EXPECT_TRUE(said.contains(QStringLiteral("there is no terminal \"bar\""))) << qUtf8Printable(said);
}

TEST_F(TClubProgram, TakesACardPayment)
{
    sim::TPty barPty(QStringLiteral("bar"));
    sim::TSimulatedBankTerminal terminal(barPty, 2);
    terminal.CardMs = 0;
    terminal.BankMs = 0;
    writeFile({}, "[[terminal]]\nname = \"bar\"\nport = \"" + barPty.path().toUtf8() + "\"\nversion = 2\n");
    const auto run = start();
    EXPECT_TRUE(eventually([&] { return barPty.opened(); }));
    const auto sell = [this](const QString& what, const QStringList& more) {
        return command(QStringList({QStringLiteral("sell"), what, QStringLiteral("bar")}) + more +
                       QStringList({QStringLiteral("--club"), socket}));
    };
    const auto amount = [&](const QString& text) { return sell(QStringLiteral("amount"), {text}); };
    EXPECT_EQ(amount(QStringLiteral("12.505")), 1);
    EXPECT_EQ(amount(QStringLiteral("9.00")), 0) << qUtf8Printable(said);
    EXPECT_EQ(amount(QStringLiteral("1.00")), 1) << "another one waits";
    EXPECT_EQ(sell(QStringLiteral("nothing"), {}), 0) << qUtf8Printable(said);
    EXPECT_EQ(amount(QStringLiteral("12.50")), 0) << qUtf8Printable(said);
    EXPECT_EQ(state().value(u"terminals").toArray().at(0).toObject().value(u"cents").toInt(), 1'250);
    EXPECT_TRUE(eventually([&] { return terminal.idle() && terminal.begin({}); }));
    host::TDatabase books(database);
    EXPECT_TRUE(eventually([&] {
        const auto payments = books.paymentsAfter(0, 10);
        return payments.size() == 1 && payments[0].outcome == host::TOutcome::Approved &&
               payments[0].cents == 1'250;
    }));
    EXPECT_EQ(state().value(u"terminals").toArray().at(0).toObject().value(u"cents").toInt(), 0);
}

TEST_F(TClubProgram, OthersMayWatchAsTheFileSays)
{
    QTcpServer any;
    ASSERT_TRUE(any.listen(QHostAddress::LocalHost)); // a port that is free
    const QByteArray port = QByteArray::number(any.serverPort());
    any.close();
    writeFile("[[line]]\nname = \"back\"\nport = \"/dev/no-such-port\"\nmonitor = { port = " + port + " }\n");
    const auto run = start();
    QTcpSocket watcher;
    watcher.connectToHost(QHostAddress::LocalHost, port.toUShort());
    EXPECT_TRUE(eventually([&] { return watcher.state() == QAbstractSocket::ConnectedState; }))
        << "also while its port is not there";
    EXPECT_TRUE(run->says(QStringLiteral("error back: ")));
}

TEST_F(TClubProgram, WhatTheFileNeedsIsLookedFor)
{
    writeFile("log = \"no/such/folder/club.log\"\n",
              "[[line]]\nname = \"back\"\nport = \"/dev/no-such-port\"\n[line.monitor]\nport = 4001\n"
              "certificate = \"a.pem\"\nkey = \"b.pem\"\nauthority = \"c.pem\"\n");
    EXPECT_EQ(command({QStringLiteral("check"), file}), 1);
    EXPECT_TRUE(
        said.contains(QStringLiteral("club.toml:4: [club] log: there is no folder \"%1/no/such/folder\"\n")
                          .arg(folder.path())))
        << qUtf8Printable(said);
    EXPECT_TRUE(said.contains(QStringLiteral(" monitor of \"back\": ")));
    EXPECT_TRUE(said.endsWith(QStringLiteral("club.toml: 2 mistakes\n")));
}

TEST_F(TClubProgram, ALogThatWouldSpoilSomething)
{
    for (const auto& [log, why] : {std::pair("club.sqlite", "is the database"),
                                   {"club.toml", "is this file"},
                                   {"../", "is a folder"},
                                   {"./club.sqlite", "is the database"}}) {
        writeFile("log = \"" + QByteArray(log) + "\"\n");
        EXPECT_EQ(command({QStringLiteral("check"), file}), 1) << log;
        EXPECT_TRUE(said.contains(QStringLiteral("club.toml:4: [club] log: \""))) << qUtf8Printable(said);
        EXPECT_TRUE(said.contains(QLatin1String(why))) << qUtf8Printable(said);
    }
}

TEST_F(TClubProgram, OptionsThatDoNotFitAFile)
{
    for (const QStringList& more : {QStringList({QStringLiteral("--db"), database}),
                                    QStringList({QStringLiteral("--baud"), QStringLiteral("9600")}),
                                    QStringList(QStringLiteral("word"))}) {
        EXPECT_EQ(command(QStringList({QStringLiteral("run"), file}) + more), 2) << qUtf8Printable(said);
    }
    EXPECT_EQ(command({QStringLiteral("status"), QStringLiteral("--json"), QStringLiteral("--club"), socket}),
              1);
    EXPECT_TRUE(said.startsWith(QStringLiteral("{\"error\":")))
        << "nobody is there: " << qUtf8Printable(said);
}

TEST_F(TClubProgram, AFileWithMistakesStartsNothing)
{
    writeFile({}, gateText("entrance", "04A", "hal", "inn"));
    EXPECT_EQ(command({QStringLiteral("check"), file}), 1);
    EXPECT_TRUE(
        said.contains(QStringLiteral("[[gate]] zone: \"hal\" is no zone of the books; is hall meant?\n")))
        << qUtf8Printable(said);
    EXPECT_TRUE(said.contains(QStringLiteral("[[gate]] direction: \"inn\" is none of in, out, inner\n")));
    EXPECT_EQ(command(arguments()), 1);
    EXPECT_FALSE(linePty.opened());
    host::TDatabase books(database);
    EXPECT_FALSE(books.gateAt(QStringLiteral("04A"))) << "and enters nothing";

    writeFile();
    EXPECT_EQ(command({QStringLiteral("check"), file}), 0);
    EXPECT_TRUE(said.endsWith(
        QStringLiteral("is good: 1 lines, 1 buses, 4 gates, 1 lamps, 1 scales, 0 terminals\n")));
    EXPECT_FALSE(books.gateAt(QStringLiteral("01A"))) << "a check changes nothing";
}

TEST_F(TClubProgram, ADatabaseIsNeverMadeByAccident)
{
    ASSERT_TRUE(QFile::rename(database, database + QStringLiteral(".away")));
    for (const char* const what : {"check", "run"}) {
        EXPECT_EQ(command({QLatin1String(what), file}), 1);
        EXPECT_TRUE(said.contains(QStringLiteral("is not there; \"tnv5 init\" makes it")))
            << qUtf8Printable(said);
        EXPECT_FALSE(QFile::exists(database));
    }
}

TEST_F(TClubProgram, APortThatIsMissingIsWaitedForAndAllOthersWork)
{
    busPty.unplug();
    TProgramRun run(QStringLiteral(TNV5_PROGRAM), arguments());
    EXPECT_TRUE(eventually([&] { return linePty.opened() && scalePty.opened(); }));
    EXPECT_TRUE(getsThrough(QStringLiteral("01A"), QStringLiteral("M1")));
    EXPECT_TRUE(run.says(QStringLiteral("error hall: ")));
    const QJsonObject hall = named(state().value(u"lines").toArray(), "name", QStringLiteral("hall"));
    EXPECT_FALSE(hall.value(u"open").toBool());
    EXPECT_FALSE(hall.value(u"why").toString().isEmpty());
    EXPECT_EQ(state().value(u"troubles").toArray().size(), 1);
    busPty.plug();
    EXPECT_TRUE(works());
    bus.readCard(QStringLiteral("101T"), QStringLiteral("M2"));
    EXPECT_TRUE(eventually([&] { return bus.counts(QStringLiteral("101T")).Passed == 1; }));
    run.stop();
    EXPECT_EQ(run.exitCode(), 0);
    host::TDatabase books(database);
    const auto outages = books.outagesAfter(0, 10);
    ASSERT_EQ(outages.size(), 1) << "outages are in the journal";
    EXPECT_EQ(outages[0].line, "hall");
    EXPECT_GT(outages[0].ended, outages[0].began);
}

TEST_F(TClubProgram, AFileThatIsReadAgainTouchesOnlyWhatHasChanged)
{
    const auto run = start();
    int lineClosed = 0;
    linePty.OnOpened = [&](bool opened) { lineClosed += opened ? 0 : 1; };
    line.Delays.ProgressMs = 60'000; // somebody is in the gate all the time
    line.readCard(QStringLiteral("02A"), QStringLiteral("M2"));
    EXPECT_TRUE(eventually([&] { return line.gateOpen(QStringLiteral("02A")); }));
    line.readCard(QStringLiteral("01A"), QStringLiteral("M1"));
    EXPECT_TRUE(eventually([&] { return line.counts(QStringLiteral("01A")).Opened == 1; }));

    sim::TPty secondPty(QStringLiteral("second"));
    sim::TClassicLine second(secondPty);
    second.addController(QStringLiteral("11A"));
    second.Delays.ProgressMs = 0;
    second.Delays.PassageMs = 0;
    writeFile({}, "[[line]]\nname = \"back\"\nport = \"" + secondPty.path().toUtf8() + "\"\n" +
                      gateText("back", "11A", "hall", "in"));
    EXPECT_EQ(command({QStringLiteral("reload"), QStringLiteral("--club"), socket}), 0)
        << qUtf8Printable(said);
    EXPECT_TRUE(eventually([&] { return secondPty.opened(); }));
    second.readCard(QStringLiteral("11A"), QStringLiteral("M3"));
    EXPECT_TRUE(eventually([&] { return second.counts(QStringLiteral("11A")).Passed == 1; }));
    EXPECT_EQ(lineClosed, 0);
    EXPECT_EQ(line.counts(QStringLiteral("02A")).Refused, 0);

    writeFile({}, "[[line]]\nname = \"back\"\n");
    EXPECT_NE(command({QStringLiteral("reload"), QStringLiteral("--club"), socket}), 0);
    EXPECT_TRUE(said.contains(QStringLiteral("[[line]] port: is missing"))) << qUtf8Printable(said);
    EXPECT_TRUE(secondPty.opened()) << "a wrong file changes nothing";

    writeFile();
    run->hangUp(); // the other way to say it
    EXPECT_TRUE(eventually([&] { return !secondPty.opened(); }));
    EXPECT_EQ(lineClosed, 0);
    EXPECT_EQ(state().value(u"lines").toArray().size(), 3);

    // another rate is another line: whoever is passing there will not be heard of again
    const QByteArray before = text();
    line.Delays.ProgressMs = 0;
    line.Delays.PassageMs = 60'000;
    line.readCard(QStringLiteral("03A"), QStringLiteral("M4"));
    EXPECT_TRUE(eventually([&] { return line.counts(QStringLiteral("03A")).Opened == 1; }));
    writeText(QByteArray(before).replace("[[bus]]", "baud = 19200\n[[bus]]"));
    EXPECT_EQ(command({QStringLiteral("reload"), QStringLiteral("--club"), socket}), 0)
        << qUtf8Printable(said);
    EXPECT_TRUE(eventually([&] { // on a busy machine nobody may notice that the line was closed for a moment
        const auto passes = journal(4);
        return std::any_of(passes.begin(), passes.end(), [](const host::TPass& pass) {
            return pass.card == u"M4" && pass.ending == TEnding::Interrupted;
        });
    }));
    EXPECT_TRUE(eventually([&] { return linePty.opened(); }));
    writeText(QByteArray(before).replace("\"riverside\"", "\"lakeside\""));
    EXPECT_EQ(command({QStringLiteral("reload"), QStringLiteral("--club"), socket}), 1);
    EXPECT_TRUE(said.contains(QStringLiteral("needs a new start"))) << qUtf8Printable(said);
    run->stop();
    EXPECT_EQ(run->exitCode(), 0);
}

TEST_F(TClubProgram, ASecondHostIsTurnedAway)
{
    const auto run = start();
    TProgramRun second(QStringLiteral(TNV5_PROGRAM), arguments());
    EXPECT_EQ(second.exitCode(), 1);
    EXPECT_TRUE(second.complaints().contains(QStringLiteral("another host")))
        << qUtf8Printable(second.complaints());
    EXPECT_TRUE(getsThrough(QStringLiteral("01A"), QStringLiteral("M1")));
}

} // namespace
} // namespace tnv5::integration
