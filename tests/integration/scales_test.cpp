// Scales, one of each family, on real serial ports at once: no weight may be wrong.
// In lock-step time but for one test.
//
// TNV5_LONG=1 makes it ten thousand weighings.

#include "sim/line_faults.h"
#include "sim/pty.h"
#include "sim/scales.h"
#include "support/lock_step.h"
#include "support/text_printers.h"
#include "support/wait.h"
#include "tnv5/platform/serial_port.h"
#include "tnv5/scales/families.h"
#include "tnv5/scales/scales_device.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

namespace tnv5::integration {
namespace {

using scales::TScalesDevice;

const int kFamilies = static_cast<int>(scales::families().size()) - 1;
const std::vector<int> kTellRange = {2}; // that a weight is out of range, which the others do not tell
constexpr int kPeriodMs = 5;             // of the scales that talk by themselves
constexpr int kLightest = 10;
constexpr int kHeaviest = 30'000;

/// One scale, its cable and the component that reads it.
class TCounter
{
public:
    explicit TCounter(int family)
        : FPty(QStringLiteral("scale%1").arg(family)),
          FCable(FPty, static_cast<unsigned>(family)),
          scale(FCable, family)
    {
        scale.setPeriodMs(kPeriodMs);
        FCable.NoiseAvoids = scale.marks();
        FPort.SetPort(FPty.path());
        device.SetIDLang(2);
        device.SetComport(&FPort);
        device.SetScalesType(family);
        device.SetUpComport();
        device.SetOnError([this](platform::TComponent*, const QString& message) { errors.append(message); });
        device.SetOnLog([this](platform::TComponent*, const QString& line) {
            packets += line.startsWith(QStringLiteral("[03]")) ? 1 : 0;
        });
    }

    bool open() { return device.SetConnection(true); }
    bool opened() const { return FPty.opened(); }

    void addTo(sim::TLines& lines) const
    {
        lines.add(FPty);
        lines.add(FPort);
    }

    /// Packets in pieces and, where it can be told from packets, noise between them. The answers of family 1
    /// are told apart by silence: they must come in one piece.
    void spoilCable()
    {
        FCable.CutPercent = scale.family() == 1 ? 0 : 30;
        FCable.PieceGapMs = 1;
        FCable.NoisePercent = scale.marks().isEmpty() ? 0 : 30;
    }

    /// Puts another weight on and asks for it.
    void put(int weight)
    {
        FBefore = FNow;
        FNow = weight;
        scale.put(weight);
        device.GetWeight(true);
    }

    /// Whether the weight is known; a wrong one is counted. A scale that talks by itself may still have the
    /// weight before on its way.
    bool weighed()
    {
        const int weight = device.LastWeight();
        if (weight != 0 && weight != FNow && !(scale.talksByItself() && weight == FBefore)) {
            ADD_FAILURE() << "family " << scale.family() << ": " << weight << " instead of " << FNow;
            return true;
        }
        return weight == FNow;
    }

    void vanishes() { FPty.unplug(); }
    void returns() { FPty.plug(); }

private:
    sim::TPty FPty;
    sim::TLineFaults FCable;
    platform::TSerialPort FPort;
    int FBefore = 0;
    int FNow = 0;

public:
    sim::TSimulatedScale scale;
    TScalesDevice device;
    QStringList errors;
    int packets = 0;
};

class ScalesOnPorts : public ::testing::Test
{
protected:
    ScalesOnPorts()
    {
        for (int family = 1; family <= kFamilies; ++family) {
            counters.push_back(std::make_unique<TCounter>(family));
            counters.back()->addTo(time.lines);
            EXPECT_TRUE(counters.back()->open());
        }
    }

    int anyWeight() { return kLightest + static_cast<int>(random() % (kHeaviest - kLightest)); }

    /// Every scale is weighed at once, so many times.
    void weighAll(int rounds)
    {
        for (int round = 0; round < rounds; ++round) {
            for (const auto& counter : counters) {
                counter->put(anyWeight());
            }
            for (const auto& counter : counters) {
                ASSERT_TRUE(time.until([&] { return counter->weighed(); }))
                    << "family " << counter->scale.family() << ", round " << round;
            }
        }
        for (const auto& counter : counters) {
            EXPECT_EQ(counter->errors.join(u'\n'), QString()) << "family " << counter->scale.family();
        }
    }

    testkit::TManualClock clock;
    TLockStep time{clock};
    std::vector<std::unique_ptr<TCounter>> counters;
    std::mt19937 random{20};
};

TEST_F(ScalesOnPorts, NoWeighingIsWrong)
{
    weighAll(qEnvironmentVariableIntValue("TNV5_LONG") == 1 ? 10'000 / kFamilies : 200);
}

TEST_F(ScalesOnPorts, NoWeighingIsWrongOverBadCables)
{
    for (const auto& counter : counters) {
        counter->spoilCable();
    }
    weighAll(20);
}

TEST_F(ScalesOnPorts, ABlockingWeighingWaitsForItsScaleWhileOthersArePolled)
{
    for (const auto& counter : counters) {
        const int weight = anyWeight();
        counter->scale.put(weight);
        const bool byItself = counter->scale.talksByItself();
        EXPECT_TRUE(time.until([&] { return !byItself || counter->device.LastWeight() == weight; }));
        EXPECT_EQ(counter->device.GetWeight(false), weight) << "family " << counter->scale.family();
        counter->device.SetSendInterval(60);
    }
}

TEST_F(ScalesOnPorts, ALateAnswerIsWaitedFor)
{
    for (const auto& counter : counters) {
        counter->scale.put(777);
        counter->scale.DelayMs = 150;
        EXPECT_EQ(counter->device.GetWeight(false), 777) << "family " << counter->scale.family();
    }
}

TEST_F(ScalesOnPorts, OutOfRangeIsNeverAWeight)
{
    constexpr int kOld = 20; // so many packets later nothing of before is on its way
    for (const bool over : {true, false}) {
        for (const auto& counter : counters) {
            const int family = counter->scale.family();
            counter->scale.put(over ? counter->scale.capacity() + 1 : -75);
            if (counter->scale.talksByItself()) {
                EXPECT_TRUE(
                    time.until([&, until = counter->packets + kOld] { return counter->packets >= until; }));
            }
            counter->packets = 0;
            counter->device.GetWeight(true);
            const int awaited = family == 2 ? 2 : 1; // a handshake comes first
            EXPECT_TRUE(time.until([&] { return counter->packets >= awaited; })) << family;
            EXPECT_LE(counter->device.LastWeight(), 0) << family;
            if (std::find(kTellRange.begin(), kTellRange.end(), family) == kTellRange.end()) {
                EXPECT_EQ(counter->errors.join(u'\n'), QString()) << family;
                continue;
            }
            EXPECT_TRUE(time.until([&] { return !counter->errors.isEmpty(); }));
            EXPECT_EQ(counter->errors.takeFirst(),
                      over ? QStringLiteral("[2] Scales are overvalue!") : QStringLiteral("[3] Weight <0!"));
        }
    }
}

TEST_F(ScalesOnPorts, AfterTheAdaptersComeBackEveryScaleWeighsAgain)
{
    weighAll(1);
    for (const auto& counter : counters) {
        counter->vanishes();
        time.lines.settle();
        EXPECT_FALSE(counter->device.IsConnected());
        EXPECT_EQ(counter->device.GetWeight(false), -1);
        EXPECT_FALSE(counter->open());
        EXPECT_EQ(counter->errors.size(), 1);
        counter->errors.clear();
        counter->returns();
        EXPECT_TRUE(counter->open());
    }
    weighAll(2);
}

TEST(ScalesInRealTime, AScaleOfEachFamilyIsWeighed)
{
    for (int family = 1; family <= kFamilies; ++family) {
        TCounter counter(family);
        ASSERT_TRUE(counter.open());
        ASSERT_TRUE(eventually([&] { return counter.opened(); }));
        counter.put(kHeaviest - family);
        EXPECT_TRUE(eventually([&] { return counter.weighed(); })) << "family " << family;
        EXPECT_EQ(counter.errors.join(u'\n'), QString()) << "family " << family;
    }
}

} // namespace
} // namespace tnv5::integration
