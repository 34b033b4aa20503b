// Random lines, answers and times: the component keeps its promises whatever comes.

#include "d24_fixture.h"

#include <QRandomGenerator>
#include <QSet>

namespace {

using namespace tnv5;
using namespace tnv5::tests;

class RandomDay : public TD24Fixture
{
public:
    explicit RandomDay(quint32 seed) : FRandom(seed)
    {
        gate->SetCheckCross(FRandom.bounded(2) == 1);
        gate->SetCheckET(FRandom.bounded(2) == 1);
        if (FRandom.bounded(2) == 1) {
            serve();
        }
        clock.jumpTo(TManualClock::at(23, 59, 30));
    }

    void step()
    {
        for (const int mode : {0, 1, 2, 3, 5}) {
            Answers[mode] = FRandom.bounded(4) - 1;
        }
        link->Up = FRandom.bounded(8) != 0;
        link->Failures.clear();
        link->Checks.clear();
        if (FRandom.bounded(8) == 0) {
            link->Failures = {{"GO", "cut"}, {"PH", "torn"}};
        }
        if (FRandom.bounded(2) == 0) {
            link->Checks = {{"GO", "7A"}};
        }
        Message = FRandom.bounded(2) == 0 ? QVariant() : QVariant("|Hello|");
        platform::guarded([this] { say(randomLine()); });
        clock.advance(FRandom.bounded(4) == 0 ? FRandom.bounded(4'000) : FRandom.bounded(40));
        verify();
    }

    /// The host agrees to everything and no line comes any more.
    void evening()
    {
        Answers = {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {5, 1}};
        link->Failures.clear();
        inject("odd");
        clock.advance(30'000);
        EXPECT_EQ(gate->StackItemsCount(), 0);
        trace.take();
        clock.advance(10'000); // and nothing ticks but the look for silent controllers
        for (const QString& line : trace.take()) {
            EXPECT_TRUE(line.contains("NOPING")) << line.toStdString();
        }
    }

private:
    QString pick(const QStringList& texts) { return texts[FRandom.bounded(int(texts.size()))]; }

    QString randomLine()
    {
        const QString line = pick({"$", "$", "#", "#", "", "!"}) + pick({"1", "2", "10.0.0.5", ""}) +
                             pick({":", ":", ":", ""}) + pick({"001T", "002G", "003I", "004D", "1"}) +
                             pick({"RQ", "RQ", "RQ", "PR", "GR", "FK", "ET", "PING", "CROSS", "BTPH", "btph",
                                   "DC", "CC", ""}) +
                             pick({"77", "", "-1-1-1-1-1", "-2-2-2-2-2", "!&:"}) +
                             pick({"00", "AB", "0", ""});
        return FRandom.bounded(10) == 0 ? line.left(FRandom.bounded(int(line.size()) + 1)) : line;
    }

    void say(const QString& line)
    {
        const qsizetype before = trace.countOf(read(line));
        inject(line);
        EXPECT_GE(trace.countOf(read(line)), before + 1) << line.toStdString();
    }

    void verify()
    {
        QSet<QString> devices;
        for (int i = 0; i < gate->StackItemsCount(); ++i) {
            const d24::PRFidInfo pass = gate->StackItem(i);
            EXPECT_FALSE(devices.contains(pass->Device)) << "two passes of " << pass->Device.toStdString();
            devices << pass->Device;
            EXPECT_TRUE(QStringList({"NEW", "OPEN", "CLOSE", "NOANSWER", "FINISH", "PROGRESSSTART",
                                     "PROGRESS", "TIMEOUT"})
                            .contains(pass->Status))
                << pass->Status.toStdString();
            EXPECT_TRUE(QStringList({"T", "G", "I"}).contains(pass->DeviceType));
            EXPECT_TRUE(pass->Starttime >= 0 && pass->Starttime < 1);
        }
        QStringList lines = trace.take();
        EXPECT_TRUE(lines.filter("raised").isEmpty() || !link->Failures.empty());
        // a report is repeated to the monitor, right behind it, whenever the link is open
        const bool monitored = gate->RemoutDevice() == d24::podServer && link->Up;
        for (qsizetype i = 0; monitored && i < lines.size(); ++i) {
            if (lines[i].startsWith("status")) {
                EXPECT_EQ(lines.value(i + 1), echoOf(lines[i]));
            }
        }
    }

    QRandomGenerator FRandom;
};

TEST(RandomLines, KeepTheTableInOrderAndComeToAnEnd)
{
    for (quint32 seed = 1; seed <= 24; ++seed) {
        SCOPED_TRACE(seed);
        RandomDay day(seed);
        for (int i = 0; i < 250 && !::testing::Test::HasFailure(); ++i) {
            day.step();
        }
        day.evening();
    }
}

TEST(RandomLines, RandomCharactersDoNoHarm)
{
    QRandomGenerator random(7);
    TD24Fixture fixture;
    const QString letters = QStringLiteral("$#:0TGIRQPFKETBHCSDAX\u0416 ");
    for (int i = 0; i < 3'000; ++i) {
        QString line = random.bounded(2) == 0 ? QStringLiteral("$") : QStringLiteral("#");
        for (quint32 left = random.bounded(16U); left > 0; --left) {
            line += letters[random.bounded(int(letters.size()))];
        }
        fixture.inject(line);
        const QString seen = fixture.trace.take().value(0);
        ASSERT_EQ(seen, read(line));
    }
    fixture.Answers = {{3, 1}};
    fixture.clock.advance(60'000);
    EXPECT_EQ(fixture.gate->StackItemsCount(), 0);
}

} // namespace
