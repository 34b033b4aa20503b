#include "support/text_printers.h"
#include "tnv5/testing/manual_clock.h"
#include "tnv5/tools/player.h"

#include <gtest/gtest.h>

namespace tnv5::tools {

namespace {

const QList<TEntry> kEntries = {{0, TDirection::FromEquipment, "a"},
                                {1'500'000, TDirection::ToEquipment, "b"},
                                {500'000, TDirection::FromEquipment, "c"},
                                {0, TDirection::Unknown, "d"}};

struct TPlayed
{
    explicit TPlayed(double speed) : player(kEntries, speed)
    {
        player.OnBytes = [this](const QByteArray& bytes) { said += bytes; };
        player.OnEnd = [this] { ended = true; };
        player.start();
    }

    testkit::TManualClock clock;
    TPlayer player;
    QByteArray said;
    bool ended = false;
};

} // namespace

TEST(Player, PlaysWhatTheEquipmentSaidInItsTime)
{
    TPlayed played(1);
    played.clock.advance(5);
    EXPECT_EQ(played.said, "a");
    played.clock.advance(1'990);
    EXPECT_EQ(played.said, "a");
    played.clock.advance(10);
    EXPECT_EQ(played.said, "acd");
    EXPECT_TRUE(played.ended);
}

TEST(Player, SpeedShortensTheWaits)
{
    TPlayed played(10);
    played.clock.advance(210);
    EXPECT_EQ(played.said, "acd");
    EXPECT_TRUE(played.ended);
}

TEST(Player, WithoutWaiting)
{
    TPlayed played(0);
    played.clock.advance(5);
    EXPECT_EQ(played.said, "acd");
    EXPECT_TRUE(played.ended);
}

TEST(Player, HandlerMayDestroyThePlayer)
{
    testkit::TManualClock clock;
    auto player = std::make_unique<TPlayer>(kEntries, 1);
    player->OnBytes = [&](const QByteArray&) { player.reset(); };
    player->start();
    clock.advance(5'000);
    EXPECT_EQ(player, nullptr);
}

TEST(Player, AtOnceWithTheTimeThatWasRecorded)
{
    testkit::TManualClock clock;
    const qint64 start = clock.nowMs();
    QList<qint64> times;
    playAtOnce(
        entriesOf(kEntries), [&](qint64 ms) { clock.advance(ms); },
        [&](const QByteArray&) { times << clock.nowMs() - start; });
    EXPECT_EQ(times, QList<qint64>({0, 2'000, 2'000}));
}

TEST(Player, ARecordingThatBreaksOffIsToldAndEnds)
{
    testkit::TManualClock clock;
    int left = 2;
    TPlayer player(
        [&left]() -> std::optional<TEntry> {
            if (left-- == 0) {
                throw ERecording(QStringLiteral("line 4: broken"));
            }
            return TEntry{1'000, TDirection::FromEquipment, "x"};
        },
        1);
    QByteArray said;
    QStringList troubles;
    int ends = 0;
    player.OnBytes = [&](const QByteArray& bytes) { said += bytes; };
    player.OnTrouble = [&](const QString& why) { troubles << why; };
    player.OnEnd = [&] { ++ends; };
    player.start();
    clock.advance(1'000);
    EXPECT_EQ(said, "xx");
    EXPECT_EQ(troubles, QStringList({QStringLiteral("line 4: broken")}));
    EXPECT_EQ(ends, 1);
}

} // namespace tnv5::tools
