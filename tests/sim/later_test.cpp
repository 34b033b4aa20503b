#include "sim/later.h"
#include "tnv5/testing/manual_clock.h"

#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace {

using tnv5::sim::TLater;
using tnv5::testkit::TManualClock;

struct Later : ::testing::Test
{
    std::function<void()> note(int number)
    {
        return [this, number] { done.push_back(number); };
    }

    TManualClock clock;
    TLater later;
    std::vector<int> done;
};

TEST_F(Later, RunsEachActionOnceInOrderOfTime)
{
    later.after(20, note(2));
    later.after(10, note(1));
    later.after(20, note(3));
    EXPECT_EQ(later.pending(), 3U);
    clock.advance(9);
    EXPECT_TRUE(done.empty());
    clock.advance(1);
    EXPECT_EQ(done, (std::vector{1}));
    clock.advance(1'000);
    EXPECT_EQ(done, (std::vector{1, 2, 3}));
    EXPECT_EQ(later.pending(), 0U);
}

TEST_F(Later, WithoutDelayRunsAtOnce)
{
    EXPECT_EQ(later.after(0, note(1)), 0U);
    EXPECT_EQ(later.after(-5, note(2)), 0U);
    EXPECT_EQ(done, (std::vector{1, 2}));
}

TEST_F(Later, ForgetsWhatIsCancelledOrCleared)
{
    const quint64 first = later.after(10, note(1));
    later.after(10, note(2));
    later.cancel(first);
    later.cancel(first);
    later.cancel(0);
    clock.advance(10);
    EXPECT_EQ(done, (std::vector{2}));
    later.after(10, note(3));
    later.clear();
    clock.advance(100);
    EXPECT_EQ(done, (std::vector{2}));
}

TEST_F(Later, AnActionMayAddClearAndDestroy)
{
    auto own = std::make_unique<TLater>();
    own->after(1, [&] {
        own->after(1, [&] {
            own->clear();
            own.reset();
            done.push_back(1);
        });
        own->after(1, note(2));
    });
    clock.advance(100);
    EXPECT_EQ(done, (std::vector{1}));
}

TEST_F(Later, KeepsABoundedNumber)
{
    for (std::size_t i = 0; i < TLater::kMaxPending + 10; ++i) {
        later.after(1, note(0));
    }
    EXPECT_EQ(later.pending(), TLater::kMaxPending);
}

} // namespace
