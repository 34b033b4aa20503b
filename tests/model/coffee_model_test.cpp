// Random calls, answered by the module and by a model of it.
//
// TNV5_SCENARIOS: number of calls in hundreds; TNV5_SEED: seed.

#include "model/coffee_model.h"
#include "tnv5/coffee/qr_text.h"
#include "tnv5/platform/errors.h"
#include "tnv5/testing/manual_clock.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

using namespace tnv5;
using coffee::model::TCall;

constexpr int kScenarios = 100;
constexpr int kCalls = 100; // in a scenario
constexpr qint64 kUnixStartMs = 25'569LL * 86'400'000;

class TCaller
{
public:
    explicit TCaller(unsigned seed) : FRandom(seed) {}

    TCall call()
    {
        TCall call;
        for (std::int32_t& number : call.numbers) {
            number = anyNumber();
        }
        call.keyHex = anyKey();
        call.clockMs = anyClock();
        return call;
    }

private:
    int below(int limit) { return static_cast<int>(FRandom() % static_cast<unsigned>(limit)); }

    std::int32_t anyNumber()
    {
        const int edge = 1 << below(31);
        switch (below(5)) {
        case 0:
            return below(1024);
        case 1:
            return edge - below(3);
        case 2:
            return -edge + below(3);
        case 3:
            return below(2) == 0 ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
        default:
            return static_cast<std::int32_t>(FRandom());
        }
    }

    std::u16string anyKey()
    {
        const std::u16string digits = u"0123456789abcdefABCDEF";
        const std::u16string others = u" gGxX+-$#.\n\t/:@`\x00e9\x0430\xff11\xd800";
        std::u16string key;
        for (int left = below(3) == 0 ? below(70) : 32; left > 0; --left) {
            key += digits[static_cast<std::size_t>(below(22))];
        }
        if (below(8) == 0) {
            key.insert(static_cast<std::size_t>(below(int(key.size()) + 1)), 1,
                       others[static_cast<std::size_t>(below(int(others.size())))]);
        }
        return key;
    }

    qint64 anyClock()
    {
        constexpr qint64 kStampsMs = (qint64{1} << 32) * 1000;
        const qint64 inSecond = below(2) == 0 ? below(1000) : 495 + below(11); // around the half too
        switch (below(4)) {
        case 0:
            return kUnixStartMs + (qint64{below(7)} - 3) * kStampsMs / 2 + (qint64{below(5)} - 2) * 1000 +
                   inSecond;
        case 1:
            return (qint64{below(200'000)} - 50'000) * 86'400'000 + below(86'400'000);
        default:
            return kUnixStartMs + static_cast<qint64>(FRandom()) * 1000 + inSecond;
        }
    }

    std::mt19937 FRandom;
};

std::optional<std::string> component(testkit::TManualClock& clock, const TCall& call)
{
    clock.jumpTo(call.clockMs);
    const auto& [part1, part2, part3, value1, value2] = call.numbers;
    try {
        return coffee::_qrcodestr(part1, part2, part3, value1, value2, QString::fromStdU16String(call.keyHex))
            .toStdString();
    } catch (const platform::EConvertError&) {
        return std::nullopt;
    }
}

std::string shown(const TCall& call)
{
    std::string text;
    for (const std::int32_t number : call.numbers) {
        text += std::to_string(number) + ' ';
    }
    return text + std::to_string(call.clockMs) + " \"" +
           QString::fromStdU16String(call.keyHex).toStdString() + '"';
}

int fromEnvironment(const char* name, int fallback)
{
    bool number = false;
    const int value = qEnvironmentVariableIntValue(name, &number);
    return number ? value : fallback;
}

TEST(CoffeeModel, EnciphersAsTheStandardsExample)
{
    const std::array<std::uint8_t, 16> key = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                                              0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
    const std::array<std::uint8_t, 16> plain = {0x32, 0x43, 0xf6, 0xa8, 0x88, 0x5a, 0x30, 0x8d,
                                                0x31, 0x31, 0x98, 0xa2, 0xe0, 0x37, 0x07, 0x34};
    const std::array<std::uint8_t, 16> cipher = {0x39, 0x25, 0x84, 0x1d, 0x02, 0xdc, 0x09, 0xfb,
                                                 0xdc, 0x11, 0x85, 0x97, 0x19, 0x6a, 0x0b, 0x32};
    EXPECT_EQ(coffee::model::aes(plain, key), cipher);
}

TEST(CoffeeModel, AnswersTheSameAsTheComponent)
{
    testkit::TManualClock clock;
    TCaller caller(static_cast<unsigned>(fromEnvironment("TNV5_SEED", 1)));
    int raised = 0;
    const int calls = kCalls * fromEnvironment("TNV5_SCENARIOS", kScenarios);
    for (int i = 0; i < calls; ++i) {
        const TCall call = caller.call();
        const std::optional<std::string> expected = coffee::model::answer(call);
        ASSERT_EQ(component(clock, call), expected) << "call " << i << ": " << shown(call);
        raised += expected ? 0 : 1;
    }
    if (calls >= kCalls) {
        EXPECT_GT(raised, 0);
        EXPECT_LT(raised, calls / 2);
    }
}

} // namespace
