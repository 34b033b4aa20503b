// Weighing from the command line, as a person does it.

#include "integration/program_run.h"
#include "sim/pty.h"
#include "sim/scales.h"
#include "support/text_printers.h"

#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace tnv5::integration {
namespace {

class TRun : public TProgramRun
{
public:
    explicit TRun(const QStringList& arguments) : TProgramRun(QStringLiteral(TNV5_PROGRAM), arguments) {}
};

const QString kPatience = QStringLiteral("--patience");
const QStringList kAWhile = {kPatience, QStringLiteral("2")}; // for scales that have no weight

/// Weighs, and gives up only when told to: a slow program is not a scale without a weight.
QStringList weigh(const sim::TPty& pty, int family, const QStringList& more = {})
{
    return QStringList({QStringLiteral("weigh"), QStringLiteral("--port"), pty.path(),
                        QStringLiteral("--type"), QString::number(family)}) +
           (more.contains(kPatience) ? more : more + QStringList({kPatience, QStringLiteral("3600")}));
}

TEST(ScalesProgram, WeighsOnceOnAScaleOfEachFamily)
{
    struct TCounter
    {
        explicit TCounter(int family) : scale(pty, family) { scale.put(1'250); }
        sim::TPty pty{QStringLiteral("scale")};
        sim::TSimulatedScale scale;
        TRun run{weigh(pty, scale.family())};
    };
    std::vector<std::unique_ptr<TCounter>> counters; // all at once, as each takes its time
    for (int family = 1; sim::scaleWire(family) != nullptr; ++family) {
        counters.push_back(std::make_unique<TCounter>(family));
    }
    for (const auto& counter : counters) {
        EXPECT_EQ(counter->run.exitCode(), 0) << counter->scale.family();
        EXPECT_EQ(counter->run.output(), QStringLiteral("1250\n")) << counter->scale.family();
        EXPECT_EQ(counter->run.complaints(), QString()) << counter->scale.family();
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
    TRun empty(weigh(pty, 5, kAWhile));
    EXPECT_EQ(empty.exitCode(), 1);
    EXPECT_TRUE(empty.complaints().contains(QStringLiteral("the platform is empty")));

    scale.setAnswering(false);
    TRun silent(weigh(pty, 5, kAWhile));
    EXPECT_EQ(silent.exitCode(), 1);
    EXPECT_TRUE(silent.complaints().contains(QStringLiteral("does not answer")));
    EXPECT_FALSE(silent.complaints().contains(QStringLiteral("platform is empty")));

    scale.setAnswering(true);
    scale.put(250);
    TRun unplugged(weigh(pty, 5, {QStringLiteral("--watch")}));
    ASSERT_TRUE(unplugged.says(QStringLiteral(" 250\n"))); // the device is open for good
    pty.unplug();
    EXPECT_EQ(unplugged.exitCode(), 1);
    EXPECT_TRUE(unplugged.complaints().contains(QStringLiteral("went away")));

    TRun noPort(weigh(pty, 5));
    EXPECT_EQ(noPort.exitCode(), 1);
    int none = 1;
    while (sim::scaleWire(none) != nullptr) {
        ++none;
    }
    TRun noFamily(weigh(pty, none));
    EXPECT_NE(noFamily.exitCode(), 0);
}

TEST(ScalesProgram, WaitsForAPort)
{
    sim::TPty pty(QStringLiteral("scale"));
    sim::TSimulatedScale scale(pty, 5);
    scale.put(250);
    pty.unplug();
    TRun failed(weigh(pty, 5, {QStringLiteral("--json")}));
    EXPECT_EQ(failed.exitCode(), 1);
    EXPECT_TRUE(failed.output().startsWith(QStringLiteral("{\"error\":\"Cannot open port ")))
        << qPrintable(failed.output());
    TRun run(weigh(pty, 5, {QStringLiteral("--wait")}));
    ASSERT_TRUE(run.says(QStringLiteral("There is no device")));
    pty.plug();
    EXPECT_EQ(run.exitCode(), 0);
    EXPECT_EQ(run.output(), QStringLiteral("250\n"));
}

TEST(ScalesProgram, TellsOneReasonWhyThereIsNoWeight)
{
    sim::TPty pty(QStringLiteral("scale"));
    sim::TSimulatedScale scale(pty, 2);
    scale.put(-20);
    TRun run(weigh(pty, 2, kAWhile));
    EXPECT_EQ(run.exitCode(), 1);
    EXPECT_EQ(run.complaints(), QStringLiteral("[3] Weight <0!\n"));
    EXPECT_EQ(run.output(), QString());
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
