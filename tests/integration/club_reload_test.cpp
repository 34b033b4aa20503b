// What a file that is read again may not change, on the real program.

#include "integration/club_site.h"
#include "sim/bank_terminal.h"
#include "support/text_printers.h"
#include "tnv5/host/books/lamp_books.h"

#include <QRegularExpression>

namespace tnv5::integration {
namespace {

class TClubReload : public TClubSite
{
protected:
    int reload() { return command({QStringLiteral("reload"), QStringLiteral("--club"), socket}); }

    /// Somebody pays for a minute of the lamp, and it is on.
    void lightUp()
    {
        EXPECT_TRUE(eventually([&] {
            return command({QStringLiteral("sell"), QStringLiteral("time"), QStringLiteral("--club"), socket,
                            QStringLiteral("Sun"), QStringLiteral("M1"), QStringLiteral("5")}) == 0;
        })) << qUtf8Printable(said);
        EXPECT_TRUE(eventually([&] { return bus.relayOn(QStringLiteral("201A"), 1); }));
    }

    QStringList lampsOfBooks()
    {
        host::TDatabase books(database);
        QStringList lamps;
        for (const host::TLamp& lamp : host::TLampBooks(books).lamps()) {
            lamps << lamp.name + u' ' + lamp.board + lamp.relay;
        }
        return lamps;
    }
};

const QByteArray kMoon =
    "[[lamp]]\nname = \"Moon\"\nbus = \"hall\"\nboard = \"201A\"\nrelay = 2\ncents_per_minute = 50\n";

TEST_F(TClubReload, RefusedItLeavesTheBooksAsTheyAre)
{
    const auto run = start();
    host::TDatabase books(database);
    const QString gate = QStringLiteral("01A");
    const QByteArray before = text();
    {
        writeText(QByteArray(before).replace("direction = \"in\"", "direction = \"out\"") + kMoon);
        host::TStatement block(books.connection(),
                               QStringLiteral("CREATE TRIGGER fail BEFORE INSERT ON lamp BEGIN"
                                              " SELECT raise(ABORT, 'no lamps today'); END"));
        block.run();
        EXPECT_EQ(reload(), 1);
        EXPECT_TRUE(said.contains(QStringLiteral("no lamps today"))) << qUtf8Printable(said);
        EXPECT_EQ(books.gateAt(gate)->direction, host::TDirection::In);
        host::execute(books.connection(), QStringLiteral("DROP TRIGGER fail"));
    }
    {
        host::TWriteTransaction lock(books.connection());
        EXPECT_EQ(reload(), 1);
        EXPECT_TRUE(said.contains(QStringLiteral("locked"))) << qUtf8Printable(said);
        writeText(before + "\n");
        EXPECT_EQ(reload(), 0) << "nothing is to be written: " << qUtf8Printable(said);
    }
    EXPECT_EQ(books.gateAt(gate)->direction, host::TDirection::In);
    EXPECT_EQ(lampsOfBooks(), QStringList(QStringLiteral("Sun 201A1")));
}

TEST_F(TClubReload, LampsAreRenamedAndExchanged)
{
    writeFile({}, kMoon);
    const QByteArray before = text();
    const auto run = start();
    writeText(QByteArray(before).replace("\"Sun\"", "\"Mars\""));
    EXPECT_EQ(reload(), 0) << qUtf8Printable(said);
    EXPECT_EQ(lampsOfBooks(), QStringList({QStringLiteral("Mars 201A1"), QStringLiteral("Moon 201A2")}));
    run->stop();
    EXPECT_EQ(run->exitCode(), 0);
    EXPECT_TRUE(eventually([&] { return !linePty.opened() && !busPty.opened() && !scalePty.opened(); }));

    writeText(QByteArray(before)
                  .replace("\"Sun\"", "\"x\"")
                  .replace("\"Moon\"", "\"Mars\"")
                  .replace("\"x\"", "\"Moon\""));
    const auto next = start();
    EXPECT_EQ(lampsOfBooks(), QStringList({QStringLiteral("Mars 201A2"), QStringLiteral("Moon 201A1")}));
    next->stop();
    EXPECT_EQ(next->exitCode(), 0);
}

TEST_F(TClubReload, ALampThatIsPaidForStays)
{
    const auto run = start();
    lightUp();
    EXPECT_EQ(command({QStringLiteral("status"), QStringLiteral("--club"), socket}), 0);
    EXPECT_TRUE(said.contains(
        QRegularExpression(QStringLiteral("  lamp      Sun           on, Member 1, (5:00|4:5\\d) left\n"))))
        << qUtf8Printable(said);
    const QByteArray before = text();
    const QByteArray other = "201A\"\nrelay = 2";
    for (const QByteArray& wrong :
         {before.left(before.indexOf("[[lamp]]")), // gone
          QByteArray(before).replace("\"Sun\"", "\"Mars\""),
          QByteArray(before).replace("201A\"\nrelay = 1", other),
          QByteArray(before).replace("name = \"hall\"", "name = \"hall\"\nbaud = 19200")}) {
        ASSERT_NE(wrong, before);
        writeText(QByteArray(wrong).replace("direction = \"out\"", "direction = \"inner\""));
        EXPECT_EQ(reload(), 1);
        EXPECT_TRUE(said.contains(QStringLiteral("Sun is paid for until "))) << qUtf8Printable(said);
        EXPECT_TRUE(said.contains(QStringLiteral("; take it out later\n"))) << qUtf8Printable(said);
    }
    host::TDatabase books(database);
    EXPECT_EQ(books.gateAt(QStringLiteral("03A"))->direction, host::TDirection::Out) << "nothing changes";
    EXPECT_TRUE(busPty.opened());
    EXPECT_TRUE(bus.relayOn(QStringLiteral("201A"), 1));

    writeText(QByteArray(before).replace("cents_per_minute = 50", "cents_per_minute = 60"));
    EXPECT_EQ(reload(), 0) << "another price is another matter: " << qUtf8Printable(said);
    EXPECT_TRUE(bus.relayOn(QStringLiteral("201A"), 1));

    host::TStatement over(books.connection(), QStringLiteral("UPDATE lamp_time SET until = began"));
    over.run();
    writeText(before.left(before.indexOf("[[lamp]]")));
    EXPECT_TRUE(eventually([&] { return reload() == 0; })) << qUtf8Printable(said);
    EXPECT_FALSE(bus.relayOn(QStringLiteral("201A"), 1)) << "it was off before it went";
    EXPECT_TRUE(host::TLampBooks(books).open().isEmpty());
}

TEST_F(TClubReload, LampsOfAnotherHostOnTheSameBooksAreNotLost)
{
    const auto run = start();
    lightUp();
    sim::TPty backPty(QStringLiteral("back"));
    const QStringList words = {QStringLiteral("run"),
                               QStringLiteral("--port"),
                               backPty.path(),
                               QStringLiteral("--db"),
                               database,
                               QStringLiteral("--gates"),
                               QStringLiteral("11A:hall:in")};
    {
        TProgramRun second(QStringLiteral(TNV5_PROGRAM), words);
        EXPECT_TRUE(eventually([&] { return backPty.opened(); })) << qUtf8Printable(second.complaints());
        second.stop();
        EXPECT_EQ(second.exitCode(), 0);
        EXPECT_FALSE(second.output().contains(QStringLiteral("Sun, which is not in the file")))
            << qUtf8Printable(second.output());
    }
    ASSERT_EQ(kill(pid_t(run->pid()), SIGKILL), 0);
    EXPECT_EQ(run->exitCode(), -1);
    EXPECT_TRUE(eventually([&] { return !backPty.opened(); }));
    TProgramRun third(QStringLiteral(TNV5_PROGRAM), words);
    EXPECT_TRUE(third.says(QStringLiteral("Sun, which is not in the file"))) << "nobody has it now";
}

TEST_F(TClubReload, AScaleThatWaitsForGoodsStays)
{
    const auto run = start();
    const QByteArray before = text();
    const auto sell = [this](const QStringList& words) {
        return command(QStringList(QStringLiteral("sell")) + words +
                       QStringList({QStringLiteral("--club"), socket}));
    };
    EXPECT_EQ(sell({QStringLiteral("goods"), QStringLiteral("fruit"), QStringLiteral("M1"),
                    QStringLiteral("apples")}),
              0)
        << qUtf8Printable(said);
    for (const QByteArray& wrong : {QByteArray(before).replace("\"fruit\"", "\"meat\""),
                                    QByteArray(before).replace("type = 2", "type = 3")}) {
        ASSERT_NE(wrong, before);
        writeText(wrong);
        EXPECT_EQ(reload(), 1);
        EXPECT_TRUE(
            said.contains(QStringLiteral("fruit waits for goods that are ordered; change it later\n")))
            << qUtf8Printable(said);
    }
    EXPECT_EQ(command({QStringLiteral("status"), QStringLiteral("--club"), socket}), 0);
    EXPECT_TRUE(said.contains(QStringLiteral("  scale     fruit         "))) << qUtf8Printable(said);
    EXPECT_TRUE(said.contains(QStringLiteral(", an order waits\n"))) << qUtf8Printable(said);
    writeText(before + "\n");
    EXPECT_EQ(reload(), 0) << "it has not changed: " << qUtf8Printable(said);

    scalePty.unplug();
    EXPECT_TRUE(
        run->says(QStringLiteral("warning fruit: nothing is weighed any more: the order of Member 1 for "
                                 "apples is withdrawn")));
    scalePty.plug();
    EXPECT_TRUE(works());
    writeText(QByteArray(before).replace("\"fruit\"", "\"meat\""));
    EXPECT_EQ(reload(), 0) << qUtf8Printable(said);
}

TEST_F(TClubReload, ATerminalThatTakesAPaymentStays)
{
    sim::TPty barPty(QStringLiteral("bar"));
    sim::TSimulatedBankTerminal terminal(barPty, 2);
    writeFile({}, "[[terminal]]\nname = \"bar\"\nport = \"" + barPty.path().toUtf8() + "\"\nversion = 2\n");
    const QByteArray before = text();
    const auto run = start();
    EXPECT_TRUE(eventually([&] { return barPty.opened(); }));
    const auto sell = [this](const QStringList& words) {
        return command(QStringList(QStringLiteral("sell")) + words +
                       QStringList({QStringLiteral("--club"), socket}));
    };
    const auto isKept = [&] {
        for (const QByteArray& wrong : {before.left(before.indexOf("[[terminal]]")),
                                        QByteArray(before).replace("version = 2", "version = 3")}) {
            writeText(wrong);
            EXPECT_EQ(reload(), 1);
            EXPECT_TRUE(said.contains(QStringLiteral("bar takes a payment; change it later\n")))
                << qUtf8Printable(said);
        }
    };
    const QStringList amount = {QStringLiteral("amount"), QStringLiteral("bar"), QStringLiteral("12.50")};
    EXPECT_EQ(sell(amount), 0) << qUtf8Printable(said);
    isKept();
    sim::TBankScenario silent;
    silent.SilentAfterAmount = true;
    EXPECT_TRUE(eventually([&] { return terminal.begin(silent); }));
    host::TDatabase books(database);
    EXPECT_TRUE(eventually([&] { return books.paymentsUnderWay().size() == 1; }));
    isKept();
    EXPECT_EQ(sell({QStringLiteral("nothing"), QStringLiteral("bar")}), 1);
    EXPECT_TRUE(said.contains(QStringLiteral("the payment at bar is under way: "))) << qUtf8Printable(said);
    EXPECT_EQ(sell(amount), 1) << "until the terminal says something";
    EXPECT_EQ(command({QStringLiteral("status"), QStringLiteral("--club"), socket}), 0);
    EXPECT_TRUE(said.contains(QStringLiteral("  terminal  bar           12.50, the amount 12.50 goes")))
        << qUtf8Printable(said);

    run->stop();
    EXPECT_EQ(run->exitCode(), 0) << qUtf8Printable(run->complaints());
    EXPECT_TRUE(run->output().contains(QStringLiteral("warning bar: "))) << qUtf8Printable(run->output());
    const auto payments = books.paymentsAfter(0, 10);
    ASSERT_EQ(payments.size(), 1);
    EXPECT_EQ(payments[0].outcome, host::TOutcome::Unknown);
    EXPECT_EQ(payments[0].reason, "the program ended meanwhile");
}

} // namespace
} // namespace tnv5::integration
