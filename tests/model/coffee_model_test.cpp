// Random calls, answered by the module and by a model of it.

#include "model/coffee_model.h"
#include "model/kit/play.h"
#include "model/kit/real_world.h"
#include "tnv5/coffee/qr_text.h"

#include <gtest/gtest.h>
#include <limits>

namespace tnv5::coffee::model {

namespace {

using namespace modelkit;

TNV5_STEPS(Ask)

constexpr qint64 kUnixStartMs = 25'569 * kMsPerDay;

int anyNumber(TDice& d)
{
    const int edge = 1 << d.below(31);
    switch (d.below(5)) {
    case 0:
        return d.below(1024);
    case 1:
        return edge - d.below(3);
    case 2:
        return -edge + d.below(3);
    case 3:
        return d.pick({std::numeric_limits<int>::min(), std::numeric_limits<int>::max()});
    default:
        return int(d.next());
    }
}

QString anyKey(TDice& d)
{
    const QString digits = QStringLiteral("0123456789abcdefABCDEF");
    const QString others = QString::fromUtf16(u" gGxX+-$#.\n\t/:@`\x00e9\x0430\xff11\xd800");
    QString key;
    for (int left = d.chance(33) ? d.below(70) : 32; left > 0; --left) {
        key += digits[d.below(22)];
    }
    if (d.chance(12)) {
        key.insert(d.below(int(key.size()) + 1), others[d.below(int(others.size()))]);
    }
    return key;
}

qint64 anyClock(TDice& d)
{
    constexpr qint64 kStampsMs = (qint64{1} << 32) * 1000;
    const qint64 inSecond = d.chance(50) ? d.below(1000) : d.between(495, 505); // around the half too
    switch (d.below(4)) {
    case 0:
        return kUnixStartMs + d.between(-3, 3) * kStampsMs / 2 + d.between(-2, 2) * 1000 + inSecond;
    case 1:
        return d.between(-50'000, 149'999) * kMsPerDay + d.below(int(kMsPerDay));
    default:
        return kUnixStartMs + qint64(quint32(d.next())) * 1000 + inSecond;
    }
}

template <class World>
class TCoffeeStage final : public TStage
{
public:
    explicit TCoffeeStage(quint64 seed) : TStage(seed, kStepNames), ground(*this, startMs(30, 30'000)) {}

    std::vector<TStep> more(TDice& d) override { return {{Jump, {}, anyClock(d)}, any(d, false)}; }

    TStep any(TDice& d, bool) override
    {
        const QStringList texts{anyKey(d), QString::number(anyNumber(d)), QString::number(anyNumber(d))};
        return {Ask, texts, anyNumber(d), anyNumber(d), anyNumber(d)};
    }

protected:
    void perform(const TStep& step) override
    {
        const std::array<std::int32_t, 5> numbers{int(step.a), int(step.b), int(step.c), step.text[1].toInt(),
                                                  step.text[2].toInt()};
        const std::optional<std::string> text = ask(numbers, step.text[0]);
        note(text ? QString::fromStdString(*text) : QStringLiteral("no key"));
    }
    void look() override {}

private:
    std::optional<std::string> ask(const std::array<std::int32_t, 5>& numbers, const QString& key) const
    {
        if constexpr (World::isModel) {
            return answer(numbers, key.toStdU16String(), ground.now());
        } else {
            try {
                return _qrcodestr(numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], key)
                    .toStdString();
            } catch (const platform::EConvertError&) {
                return std::nullopt;
            }
        }
    }

    TGround<World> ground;
};

TEST(CoffeeModel, EnciphersAsTheStandardsExample)
{
    const std::array<std::uint8_t, 16> key = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                                              0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
    const std::array<std::uint8_t, 16> plain = {0x32, 0x43, 0xf6, 0xa8, 0x88, 0x5a, 0x30, 0x8d,
                                                0x31, 0x31, 0x98, 0xa2, 0xe0, 0x37, 0x07, 0x34};
    const std::array<std::uint8_t, 16> cipher = {0x39, 0x25, 0x84, 0x1d, 0x02, 0xdc, 0x09, 0xfb,
                                                 0xdc, 0x11, 0x85, 0x97, 0x19, 0x6a, 0x0b, 0x32};
    EXPECT_EQ(aes(plain, key), cipher);
}

TEST(CoffeeModel, AnswersTheSameAsTheComponent)
{
    // it has neither a port nor a handler
    compare<TCoffeeStage>(200,
                          {"remote: *", "splitter: *", "port: *", "destroyed *", "an operation ends quietly",
                           "an abort is silent", "an exception reaches the event loop", "code page *"});
}

} // namespace

} // namespace tnv5::coffee::model
