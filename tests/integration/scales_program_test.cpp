// Weighing from the command line, as a person does it.

#include "sim/pty.h"
#include "sim/scales.h"
#include "support/text_printers.h"
#include "support/wait.h"

#include <QProcess>
#include <gtest/gtest.h>

namespace tnv5::integration {
namespace {

class TRun
{
public:
    explicit TRun(const QStringList& arguments)
    {
        FProgram.setProcessChannelMode(QProcess::MergedChannels);
        FProgram.start(QStringLiteral(TNV5_PROGRAM), arguments);
    }
    ~TRun()
    {
        FProgram.kill();
        FProgram.waitForFinished();
    }
    TRun(const TRun&) = delete;
    TRun& operator=(const TRun&) = delete;

    bool says(const QString& text)
    {
        return eventually([&] { return output().contains(text); });
    }

    bool ends()
    {
        return eventually([&] { return FProgram.state() == QProcess::NotRunning; });
    }

    int exitCode() { return ends() ? FProgram.exitCode() : -1; }

    QString output()
    {
        FOutput += QString::fromUtf8(FProgram.readAll());
        return FOutput;
    }

    void stop() { FProgram.terminate(); }

private:
    QProcess FProgram;
    QString FOutput;
};

QStringList weigh(const sim::TPty& pty, int family, const QStringList& more = {})
{
    return QStringList({QStringLiteral("weigh"), QStringLiteral("--port"), pty.path(),
                        QStringLiteral("--type"), QString::number(family)}) +
           more;
}

TEST(ScalesProgram, WeighsOnceOnAScaleOfEachFamily)
{
    for (int family = 1; sim::scaleWire(family) != nullptr; ++family) {
        sim::TPty pty(QStringLiteral("scale"));
        sim::TSimulatedScale scale(pty, family);
        scale.put(1'250);
        TRun run(weigh(pty, family));
        EXPECT_EQ(run.exitCode(), 0) << family;
        EXPECT_EQ(run.output(), QStringLiteral("1250\n")) << family;
    }
}

TEST(ScalesProgram, WaitsUntilTheWeightHasSettled)
{
    sim::TPty pty(QStringLiteral("scale"));
    sim::TSimulatedScale scale(pty, 1);
    scale.put(980, 1'000);
    TRun run(weigh(pty, 1, {QStringLiteral("--json")}));
    EXPECT_EQ(run.exitCode(), 0);
    EXPECT_EQ(run.output(), QStringLiteral("{\"weight\":980}\n"));
}

TEST(ScalesProgram, WaitsForRestOnAScaleThatTellsWhatMoves)
{
    sim::TPty pty(QStringLiteral("scale"));
    sim::TSimulatedScale scale(pty, 2);
    scale.put(980, 500); // says 490, not settled, until then
    TRun run(weigh(pty, 2));
    EXPECT_EQ(run.exitCode(), 0);
    EXPECT_EQ(run.output(), QStringLiteral("980\n"));
}

TEST(ScalesProgram, WatchesWhatComesAndGoes)
{
    sim::TPty pty(QStringLiteral("scale"));
    sim::TSimulatedScale scale(pty, 2);
    scale.put(500);
    TRun run(weigh(pty, 2, {QStringLiteral("--watch"), QStringLiteral("--json")}));
    EXPECT_TRUE(run.says(QStringLiteral("\"weight\":500}")));
    scale.put(750);
    EXPECT_TRUE(run.says(QStringLiteral("\"weight\":750}")));
    scale.put(0);
    EXPECT_TRUE(run.says(QStringLiteral("\"weight\":0}")));
    scale.put(200'000);
    EXPECT_TRUE(run.says(QStringLiteral("{\"error\":\"[2] Scales are overvalue!\"")));
    scale.put(-20);
    EXPECT_TRUE(run.says(QStringLiteral("{\"error\":\"[3] Weight <0!\"")));
    scale.put(330);
    EXPECT_TRUE(run.says(QStringLiteral("\"weight\":330}")));
    run.stop();
    EXPECT_EQ(run.exitCode(), 0);
}

TEST(ScalesProgram, TellsWhyThereIsNoWeight)
{
    sim::TPty pty(QStringLiteral("scale"));
    sim::TSimulatedScale scale(pty, 5);
    TRun empty(weigh(pty, 5));
    EXPECT_EQ(empty.exitCode(), 1);
    EXPECT_TRUE(empty.output().contains(QStringLiteral("the platform is empty")));

    scale.setAnswering(false);
    TRun silent(weigh(pty, 5));
    EXPECT_EQ(silent.exitCode(), 1);
    EXPECT_TRUE(silent.output().contains(QStringLiteral("does not answer")));
    EXPECT_FALSE(silent.output().contains(QStringLiteral("platform is empty")));

    TRun unplugged(weigh(pty, 5, {QStringLiteral("--watch")}));
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    pty.unplug();
    EXPECT_EQ(unplugged.exitCode(), 1);
    EXPECT_TRUE(unplugged.output().contains(QStringLiteral("went away")));

    TRun noPort(weigh(pty, 5));
    EXPECT_EQ(noPort.exitCode(), 1);
    int none = 1;
    while (sim::scaleWire(none) != nullptr) {
        ++none;
    }
    TRun noFamily(weigh(pty, none));
    EXPECT_NE(noFamily.exitCode(), 0);
}

TEST(ScalesProgram, TellsOneReasonWhyThereIsNoWeight)
{
    sim::TPty pty(QStringLiteral("scale"));
    sim::TSimulatedScale scale(pty, 2);
    scale.put(-20);
    TRun run(weigh(pty, 2));
    EXPECT_EQ(run.exitCode(), 1);
    EXPECT_EQ(run.output(), QStringLiteral("[3] Weight <0!\n"));
}

TEST(ScalesProgram, BytesOfTheLineDoNotCommandTheTerminal)
{
    sim::TPty pty(QStringLiteral("scale"));
    TRun run(weigh(pty, 3, {QStringLiteral("--watch")}));
    ASSERT_TRUE(eventually([&] { return pty.opened(); }));
    pty.write(QByteArray("\x1b[2J\x00\n", 6) + QByteArray(12, '0'));
    EXPECT_TRUE(run.says(QStringLiteral("'\\x0a\\x00J2[\\x1b' is not a valid integer value\n")));
}

TEST(ScalesProgram, WatchExplainsTheLine)
{
    sim::TPty pty(QStringLiteral("scale"));
    sim::TSimulatedScale scale(pty, 7);
    scale.put(1'250);
    TRun run({QStringLiteral("watch"), pty.path(), QStringLiteral("--as"), QStringLiteral("scales:7")});
    EXPECT_TRUE(run.says(QStringLiteral("\\x02ST  01250 g NET\\r\\n")));
    EXPECT_TRUE(run.says(QStringLiteral("weight 1250")));
    run.stop();
    EXPECT_EQ(run.exitCode(), 0);
}

TEST(ScalesProgram, ListsTheFamilies)
{
    TRun run({QStringLiteral("scales")});
    EXPECT_EQ(run.exitCode(), 0);
    const QStringList lines = run.output().split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 8);
    EXPECT_EQ(lines[0].simplified(), QStringLiteral("1 4800 8E1 asked with D «МАССА-К» МК_ТВ, МК_ТН"));
    EXPECT_EQ(
        lines[3].simplified(),
        QStringLiteral("4 your own asked with \\x00\\x00\\x03\\x00\\x00\\x00\\x00\\x00 ВР4149, BS-15D1.3T"));
    EXPECT_EQ(lines[6].simplified(), QStringLiteral("7 9600 8N1 talks by itself «Axis»"));
}

} // namespace
} // namespace tnv5::integration
