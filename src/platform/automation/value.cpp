#include "tnv5/platform/automation/value.h"

#include <charconv>
#include <cmath>
#include <concepts>
#include <limits>
#include <optional>
#include <type_traits>

namespace tnv5::platform::automation {

namespace {

EOleError refusal(const std::u16string& value, const char16_t* wanted)
{
    return EOleError(u"The value " + value + u" is no " + wanted);
}

/// A number as a text has it, blanks around it; nothing else may stand there.
std::optional<double> numberIn(std::u16string_view text)
{
    while (!text.empty() && text.front() <= u' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() <= u' ') {
        text.remove_suffix(1);
    }
    if (text.size() > 1 && text[0] == u'+' && text[1] != u'-') {
        text.remove_prefix(1);
    }
    const std::string digits = toUtf8(text);
    double number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stopped, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || stopped != end || !std::isfinite(number)) {
        return {};
    }
    return number;
}

std::int32_t rounded(double number)
{
    const double whole = std::nearbyint(number); // halves to the even number
    if (!(whole >= std::numeric_limits<std::int32_t>::min() &&
          whole <= std::numeric_limits<std::int32_t>::max())) {
        throw refusal(TValue(number).toText(), u"32-bit number");
    }
    return static_cast<std::int32_t>(whole);
}

bool sameLetters(const std::u16string& text, std::u16string_view lower)
{
    if (text.size() != lower.size()) {
        return false;
    }
    for (std::size_t i = 0; i < lower.size(); ++i) {
        const char16_t letter = text[i];
        if ((letter >= u'A' && letter <= u'Z' ? char16_t(letter + 32) : letter) != lower[i]) {
            return false;
        }
    }
    return true;
}

std::u16string digitsOf(std::integral auto number)
{
    char buffer[24]{};
    const auto [end, error] = std::to_chars(std::begin(buffer), std::end(buffer), number);
    return std::u16string(std::begin(buffer), end);
}

/// Never with an exponent: sums of money are told so.
std::u16string digitsOf(double number)
{
    char buffer[400]{}; // the longest are those near 0, with more than 320 places
    const auto [end, error] =
        std::to_chars(std::begin(buffer), std::end(buffer), number, std::chars_format::fixed);
    return std::u16string(std::begin(buffer), end);
}

std::u16string quoted(const std::u16string& text)
{
    return u'"' + text + u'"';
}

} // namespace

TValue::TValue(const TValue&) = default;
TValue::TValue(TValue&&) noexcept = default;
TValue& TValue::operator=(const TValue&) = default;
TValue& TValue::operator=(TValue&&) noexcept = default;
TValue::~TValue() = default;

bool TValue::toBool() const
{
    return visit([](const auto& value) -> bool {
        using Type = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Type, std::monostate>) {
            return false;
        } else if constexpr (std::is_same_v<Type, std::u16string>) {
            if (sameLetters(value, u"true")) {
                return true;
            }
            if (sameLetters(value, u"false")) {
                return false;
            }
            const std::optional<double> number = numberIn(value);
            if (!number) {
                throw refusal(quoted(value), u"boolean");
            }
            return *number != 0;
        } else if constexpr (std::is_same_v<Type, TObjectPtr>) {
            throw refusal(u"of an object", u"boolean");
        } else {
            return value != 0;
        }
    });
}

std::int32_t TValue::toInt() const
{
    return visit([](const auto& value) -> std::int32_t {
        using Type = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Type, std::monostate>) {
            return 0;
        } else if constexpr (std::is_same_v<Type, bool>) {
            return value ? -1 : 0;
        } else if constexpr (std::is_same_v<Type, std::u16string>) {
            const std::optional<double> number = numberIn(value);
            if (!number) {
                throw refusal(quoted(value), u"number");
            }
            return rounded(*number);
        } else if constexpr (std::is_same_v<Type, TObjectPtr>) {
            throw refusal(u"of an object", u"number");
        } else {
            return rounded(static_cast<double>(value));
        }
    });
}

std::u16string TValue::toText() const
{
    return visit([](const auto& value) -> std::u16string {
        using Type = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Type, std::monostate>) {
            return {};
        } else if constexpr (std::is_same_v<Type, bool>) {
            return value ? u"True" : u"False";
        } else if constexpr (std::is_same_v<Type, std::u16string>) {
            return value;
        } else if constexpr (std::is_same_v<Type, TObjectPtr>) {
            throw refusal(u"of an object", u"text");
        } else {
            return digitsOf(value);
        }
    });
}

TObjectPtr TValue::toObject() const
{
    if (const auto* const object = as<TObjectPtr>()) {
        return *object;
    }
    if (!isEmpty()) {
        throw refusal(quoted(toText()), u"object");
    }
    return nullptr;
}

} // namespace tnv5::platform::automation
