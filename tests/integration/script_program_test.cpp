// Clubs that are run by scripts, started as their first lines say, at simulated lines.

#include "integration/program_run.h"
#include "sim/board_bus.h"
#include "sim/classic_line.h"
#include "sim/pty.h"
#include "sim/scales.h"
#include "support/text_printers.h"
#include "tnv5/host/books/database.h"

#include <QFile>
#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

constexpr int kForever = 3'600'000; // a slow program is not a silent one

QString example(const QString& name)
{
    return QStringLiteral(TNV5_SCRIPTS "/") + name;
}

class TRun : public TProgramRun
{
public:
    explicit TRun(const QStringList& arguments)
        : TProgramRun(QStringLiteral(TNV5_PROGRAM), QStringList("run") + arguments)
    {
    }

    /// Ends it as Ctrl-C does.
    void endsWell()
    {
        stop();
        EXPECT_EQ(exitCode(), 0) << qPrintable(complaints());
        EXPECT_TRUE(output().endsWith("Stopped.\n")) << qPrintable(output());
        EXPECT_EQ(complaints(), QString());
    }
};

/// A script of a test's own.
struct TOwnScript
{
    explicit TOwnScript(const QByteArray& text)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }
    QTemporaryDir folder;
    QString path = folder.filePath("club.js");
};

TEST(ScriptProgram, ATurnstile)
{
    sim::TPty pty("gates");
    sim::TClassicLine gates(pty);
    gates.addController("01A");
    gates.Delays.AnswerLimitMs = kForever;
    TRun run({example("turnstile.js"), pty.path()});
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    gates.readCard("01A", "99999999");
    EXPECT_TRUE(run.says("01A: card 99999999 is refused")) << qPrintable(run.complaints());
    EXPECT_TRUE(eventually([&] {
        gates.readCard("01A", "12345678");
        return run.says("01A: card 12345678 is let in");
    }));
    EXPECT_TRUE(eventually([&] { return gates.counts("01A").Opened > 0; }));
    run.endsWell();
}

TEST(ScriptProgram, AConnector)
{
    sim::TPty pty("bus");
    sim::TBoardBus bus(pty);
    bus.addBoard("000A");
    bus.setPingInterval(200);
    TRun run({example("connector.js"), pty.path(), "000A"});
    EXPECT_TRUE(eventually([&] { return bus.relayOn("000A", 1); })) << qPrintable(run.complaints());
    EXPECT_TRUE(run.says("heard: ")) << qPrintable(run.complaints());
    run.endsWell();
}

TEST(ScriptProgram, ASwitch)
{
    sim::TPty pty("bus");
    sim::TBoardBus bus(pty);
    bus.addBoard("000A");
    bus.setPingInterval(200);
    TRun run({example("switch.js"), pty.path(), "000A"});
    EXPECT_TRUE(run.says("relay 1 of 000A: ON is wanted, it is ON")) << qPrintable(run.complaints());
    EXPECT_TRUE(bus.relayOn("000A", 1));
    run.endsWell();
}

TEST(ScriptProgram, ASwitchGoesOffWhenItsTimeIsOver)
{
    sim::TPty pty("bus");
    sim::TBoardBus bus(pty);
    bus.addBoard("000A");
    bus.setPingInterval(200);
    TRun run({example("switch.js"), pty.path(), "000A", "0.05"}); // three seconds
    EXPECT_TRUE(run.says("relay 1 of 000A: ON is wanted, it is ON")) << qPrintable(run.complaints());
    EXPECT_TRUE(run.says("relay 1 of 000A: OFF is wanted, it is OFF")) << qPrintable(run.complaints());
    EXPECT_TRUE(eventually([&] { return !bus.relayOn("000A", 1); }));
    run.endsWell();
}

TEST(ScriptProgram, AD24)
{
    sim::TPty pty("bus");
    sim::TBoardBus bus(pty);
    bus.addBoard("001T", 20);
    bus.setPingInterval(200);
    TRun run({example("d24.js"), pty.path()});
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    EXPECT_TRUE(eventually([&] { // a display is written to once its width is known
        bus.readCard("001T", "12345678");
        return bus.rows("001T").join(u'|').contains("Anna Berg") && bus.counts("001T").Opened > 0;
    })) << qPrintable(run.output() + run.complaints());
    EXPECT_TRUE(run.says("001T: Anna Berg"));
    run.endsWell();
}

TEST(ScriptProgram, AScale)
{
    sim::TPty pty("scale");
    sim::TSimulatedScale scale(pty, 2);
    scale.put(1'250);
    TRun run({example("scales.js"), pty.path(), "2"});
    ASSERT_TRUE(run.says("family 2: ")) << qPrintable(run.complaints());
    EXPECT_TRUE(run.says("weight 1250"));
    scale.put(980);
    EXPECT_TRUE(run.says("weight 980"));
    run.endsWell();
}

TEST(ScriptProgram, Coffee)
{
    TRun run({example("coffee.js"), "00112233445566778899AABBCCDDEEFF"});
    EXPECT_EQ(run.exitCode(), 0);
    const QStringList lines = run.output().split(u'\n');
    EXPECT_EQ(lines.value(0).size(), 34);
    EXPECT_TRUE(lines.value(0).startsWith(u'O') && lines.value(0).endsWith(u'S'))
        << qPrintable(lines.value(0));
    TRun wrong({example("coffee.js"), "xyz"});
    EXPECT_EQ(wrong.exitCode(), 0);
    EXPECT_TRUE(wrong.output().startsWith("trouble: ")) << qPrintable(wrong.output());
}

TEST(ScriptProgram, AWholeClub)
{
    const QTemporaryDir folder;
    const QString database = folder.filePath("club.sqlite");
    {
        host::TDatabase books(database);
        const qint64 anna = books.addMember("Anna Berg");
        books.addCard("12345678", anna);
        books.addCard("78", books.addMember("Boris Klein"));
        books.addMembership(anna, {QDate(2000, 1, 1), QDate(2999, 1, 1), {"hall", "sauna"}});
    }
    sim::TPty gateLine("gates");
    sim::TClassicLine gates(gateLine);
    gates.addController("01A");
    gates.Delays.AnswerLimitMs = kForever;
    sim::TPty busLine("bus");
    sim::TBoardBus bus(busLine);
    bus.addBoard("001T", 20);
    bus.setPingInterval(200);
    bus.addBoard("000A");
    sim::TPty scaleLine("scale");
    sim::TSimulatedScale scale(scaleLine, 2);

    QFile script(example("club.js"));
    ASSERT_TRUE(script.open(QIODevice::ReadOnly));
    EXPECT_LT(script.readAll().count('\n'), 60);

    TRun run({example("club.js"), "--db", database, gateLine.path(), busLine.path(), scaleLine.path()});
    ASSERT_TRUE(run.says("The club is open.")) << qPrintable(run.complaints());
    gates.readCard("01A", "12345678");
    EXPECT_TRUE(run.says("01A  Anna Berg (12345678)  opened")) << qPrintable(run.output() + run.complaints());
    EXPECT_TRUE(run.says("01A  Anna Berg (12345678)  passed")) << qPrintable(run.output() + run.complaints());
    EXPECT_TRUE(eventually([&] { // a display is written to once its width is known
        bus.readCard("001T", "99999999");
        return bus.rows("001T").join(u'|').contains("Please ask");
    })) << qPrintable(run.output());
    EXPECT_TRUE(run.says("001T  card (99999999)  refused: unknown card")) << qPrintable(run.output());
    scale.put(500);
    EXPECT_TRUE(run.says("nuts: 500 g, 6.25"));
    run.endsWell();

    host::TDatabase books(database);
    const auto passes = books.passesAfter(0, 10);
    ASSERT_GE(passes.size(), 2);
    EXPECT_EQ(passes[0].ending, host::TEnding::Passed);
    EXPECT_EQ(passes[1].refusal, host::TRefusal::UnknownCard);
}

TEST(ScriptProgram, AScriptThatFailsIsExplained)
{
    const TOwnScript script("function begin() {\n  gate.Open();\n}\nbegin();\n");
    TRun run({script.path});
    EXPECT_EQ(run.exitCode(), 1);
    EXPECT_EQ(run.complaints(), script.path + ":2: ReferenceError: gate is not defined\n    begin@" +
                                    script.path + ":2\n    script@" + script.path + ":4\n");
    TRun none({"/no/such/club.js"});
    EXPECT_EQ(none.exitCode(), 1);
    EXPECT_EQ(none.complaints(), QStringLiteral("/no/such/club.js: No such file or directory\n"));
}

TEST(ScriptProgram, QuitsWhileItWaits)
{
    const TOwnScript script("const scales = new TScalesDevice();\n"
                            "scales.ScalesType = 2;\n"
                            "scales.OnWeight = () => { Quit(); scales.OnWeight = null; };\n"
                            "scales.ComPort = OpenPort(Arguments[0], 4800);\n"
                            "scales.GetWeight(false);\n"
                            "print('waited for ' + scales.GetWeight(false));\n");
    sim::TPty pty("scale");
    sim::TSimulatedScale scale(pty, 2);
    scale.put(1'250);
    TRun run({script.path, pty.path()});
    EXPECT_EQ(run.exitCode(), 0) << qPrintable(run.complaints());
    EXPECT_TRUE(run.output().endsWith("waited for 1250\nStopped.\n")) << qPrintable(run.output());
}

TEST(ScriptProgram, EndsBySignalWhileItWaits)
{
    const TOwnScript script("const scales = new TScalesDevice();\n"
                            "scales.ScalesType = 2;\n"
                            "scales.ComPort = OpenPort(Arguments[0], 4800);\n"
                            "print('waits');\n"
                            "print('waited for ' + scales.GetWeight(false));\n");
    const sim::TPty silent("scale");
    TRun run({script.path, silent.path()});
    EXPECT_TRUE(run.says("waits\n")) << qPrintable(run.complaints());
    run.stop();
    EXPECT_EQ(run.exitCode(), 0) << qPrintable(run.complaints());
    EXPECT_TRUE(run.output().endsWith("waited for 0\nStopped.\n")) << qPrintable(run.output());
}

TEST(ScriptProgram, AHandlerThatFailsLeavesTheOthersAtWork)
{
    const TOwnScript script("const gate = new TTurnStylerDevice();\n"
                            "gate.OnCheckSQL = (s, device, card, st, i, mode, result) => {\n"
                            "  if (card === 'loop') while (true);\n"
                            "  print('asked ' + card); result.value = Decide(device, card, mode); };\n"
                            "gate.ComPort = OpenPort(Arguments[0], 9600);\n");
    sim::TPty pty("gates");
    sim::TClassicLine gates(pty);
    gates.addController("01A");
    gates.addController("02A");
    gates.Delays.AnswerLimitMs = 100;
    TRun run({script.path, pty.path()});
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    gates.readCard("01A", "loop");
    EXPECT_TRUE(run.says("club.js:2: interrupted after 2000 ms")) << qPrintable(run.complaints());
    gates.readCard("02A", "77");
    EXPECT_TRUE(run.says("asked 77"));
    EXPECT_TRUE(run.says("Error: There are no books: start with --db FILE"));
    run.stop();
    EXPECT_EQ(run.exitCode(), 0);
}

// The component asks again at every sweep; the person has come once.
TEST(ScriptProgram, AHandlerThatFailsBehindItsDecisionWritesOnePass)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath("club.sqlite");
    host::TDatabase books(file);
    books.setGate({"01A", "hall", host::TDirection::In});
    books.setGate({"02A", "hall", host::TDirection::In});
    const qint64 anna = books.addMember("Anna Berg");
    books.addCard("77", anna);
    books.addMembership(anna, {QDate::currentDate().addDays(-1), QDate::currentDate().addDays(1), {"hall"}});
    const TOwnScript script("const gate = new TTurnStylerDevice();\n"
                            "const asked = {77: 0, 78: 0};\n"
                            "gate.OnCheckSQL = (sender, device, card, status, img, mode, result) => {\n"
                            "    result.value = Decide(device, card, mode);\n"
                            "    throw `asked ${card} ${++asked[card]}`;\n"
                            "};\n"
                            "gate.ComPort = OpenPort(Arguments[0], 9600);\n");
    sim::TPty pty("gates");
    sim::TClassicLine gates(pty);
    gates.addController("01A");
    gates.addController("02A");
    gates.Delays.AnswerLimitMs = kForever;
    TRun run({script.path, "--db", file, pty.path()});
    ASSERT_TRUE(run.says(" is open.")) << qPrintable(run.complaints());
    gates.readCard("01A", "77");
    EXPECT_TRUE(run.says("asked 77 3"));
    gates.readCard("02A", "78"); // refused: there is no membership
    EXPECT_TRUE(run.says("asked 78 10"));
    run.stop();
    EXPECT_EQ(run.exitCode(), 0);
    const auto passes = books.passesAfter(0, 100);
    EXPECT_EQ(
        std::count_if(passes.begin(), passes.end(), [](const auto& pass) { return pass.card == u"77"; }), 1);
    EXPECT_LT(passes.size(), 10) << "one, unless the machine took a second for each sweep";
}

TEST(ScriptProgram, KeepsTheJournalAsAClubDoes)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath("club.sqlite");
    host::TDatabase books(file);
    const auto open = std::make_shared<host::TPass>();
    open->began = platform::Now();
    open->gate = "01A";
    host::TDatabase(file).writePasses({open}); // by a host that is gone
    const TOwnScript script("const gate = new TTurnStylerDevice();\n"
                            "gate.OnCheckSQL = (sender, device, card, status, img, mode, result) => {\n"
                            "    result.value = Decide(device, card, mode);\n"
                            "};\n"
                            "gate.ComPort = OpenPort(Arguments[0], 9600);\n");
    sim::TPty pty("gates");
    sim::TClassicLine gates(pty);
    gates.addController("01A");
    gates.Delays.AnswerLimitMs = kForever;
    TRun run({script.path, "--db", file, pty.path()});
    EXPECT_TRUE(run.says("1 passes were left open by a host that was killed"))
        << qPrintable(run.complaints());
    ASSERT_TRUE(run.says(" is open."));
    EXPECT_EQ(books.passesAfter(0, 10).at(0).ending, host::TEnding::Abandoned);
    pty.unplug();
    EXPECT_TRUE(eventually([&] { return books.outagesAfter(0, 10).size() == 1; }));
    pty.plug();
    EXPECT_TRUE(eventually([&] { return books.outagesAfter(0, 10).at(0).ended != 0; }));
    const host::TWriteTransaction lock(books.connection());
    gates.readCard("01A", "77");
    EXPECT_TRUE(run.says("01A  card (77)  refused: unknown gate"));
    run.stop();
    EXPECT_EQ(run.exitCode(), 6);
    EXPECT_TRUE(run.complaints().contains("NOT IN THE JOURNAL: ")) << qPrintable(run.complaints());
    EXPECT_TRUE(run.complaints().contains("1 entries are NOT in the journal"));
    EXPECT_FALSE(run.output().contains("Stopped."));
}

TEST(ScriptProgram, WithoutAScriptThePortAndTheBooksAreNeeded)
{
    TRun noPort({"--db", "x"});
    EXPECT_NE(noPort.exitCode(), 0);
    EXPECT_TRUE(noPort.complaints().contains("--port is required"));
    TRun noBooks({"--port", "x"});
    EXPECT_NE(noBooks.exitCode(), 0);
    EXPECT_TRUE(noBooks.complaints().contains("--db is required"));
    TRun both({"club.js", "--port", "x"});
    EXPECT_NE(both.exitCode(), 0);
    EXPECT_TRUE(both.complaints().contains("excludes")) << qPrintable(both.complaints());
}

} // namespace
} // namespace tnv5::integration
