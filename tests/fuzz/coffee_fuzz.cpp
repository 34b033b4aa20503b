// Any key and any text for the coffee machine: a key is taken or refused, what is made says what was put in,
// and what is checked is shown or refused. The first twenty bytes are the numbers, the rest is both the key
// and the text.

#include "fuzz_host.h"
#include "tnv5/coffee/qr_text.h"
#include "tnv5/tools/coffee_check.h"

#include <array>
#include <cstring>

using namespace tnv5;

namespace {

using fuzz::require;

void makeAndCheck(const std::array<int, 5>& numbers, const QString& key)
{
    const QByteArray text =
        coffee::_qrcodestr(numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], key);
    const tools::TCoffeeFields fields = tools::checkCoffeeText(QString::fromLatin1(text), key);
    require(fields.good());
    require(fields.Part1 == (numbers[0] & 0x3FF) && fields.Part2 == (numbers[1] & 0x3F) &&
            fields.Part3 == (numbers[2] & 0xFF));
    require(fields.Value1 == (numbers[3] & 0xFFFF) && fields.Value2 == (numbers[4] & 0xFFFF));
}

template <class Error, class Body>
void allowing(Body&& body)
{
    try {
        body();
    } catch (const Error&) {
        // refused, as it should be
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::array<int, 5> numbers{};
    if (size < sizeof numbers) {
        return 0;
    }
    std::memcpy(numbers.data(), data, sizeof numbers);
    const QString rest = QString::fromUtf8(reinterpret_cast<const char*>(data) + sizeof numbers,
                                           static_cast<qsizetype>(size - sizeof numbers));
    testkit::TManualClock clock;
    clock.jumpTo(qint64{numbers[0]} * numbers[4]);
    allowing<platform::EConvertError>([&] { makeAndCheck(numbers, rest); });
    allowing<tools::ECoffeeText>(
        [&] { tools::checkCoffeeText(rest, QStringLiteral("2b7e151628aed2a6abf7158809cf4f3c")); });
    return 0;
}
