#include "tnv5/platform/automation/ole_error.h"

#include <cstdint>

namespace tnv5::platform::automation {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isHigh(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLow(char16_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void append(std::string& text, char32_t code)
{
    const auto put = [&](char32_t bits) { text += static_cast<char>(bits); };
    if (code < 0x80) {
        put(code);
        return;
    }
    if (code < 0x800) {
        put(0xC0 | (code >> 6));
    } else {
        if (code < 0x10000) {
            put(0xE0 | (code >> 12));
        } else {
            put(0xF0 | (code >> 18));
            put(0x80 | ((code >> 12) & 0x3F));
        }
        put(0x80 | ((code >> 6) & 0x3F));
    }
    put(0x80 | (code & 0x3F));
}

void append(std::u16string& text, char32_t code)
{
    if (code < 0x10000) {
        text += static_cast<char16_t>(code);
        return;
    }
    text += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
    text += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
}

struct TDecoded
{
    char32_t code = kReplacement;
    std::size_t length = 1;
};

/// The character that a text begins with; one byte is passed when it begins with none.
TDecoded firstOf(std::string_view text)
{
    const auto byteAt = [&](std::size_t at) { return static_cast<std::uint8_t>(text[at]); };
    const std::uint8_t lead = byteAt(0);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
        return {};
    }
    char32_t code = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xC0) != 0x80) {
            return {};
        }
        code = (code << 6) | (byteAt(i) & 0x3F);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool wrong = code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF);
    return wrong ? TDecoded{} : TDecoded{code, length};
}

} // namespace

std::string toUtf8(std::u16string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (isHigh(unit) && i + 1 < text.size() && isLow(text[i + 1])) {
            append(result, 0x10000 + ((char32_t{unit} - 0xD800) << 10) + (char32_t{text[i + 1]} - 0xDC00));
            ++i;
        } else {
            append(result, isHigh(unit) || isLow(unit) ? kReplacement : char32_t{unit});
        }
    }
    return result;
}

std::u16string fromUtf8(std::string_view text)
{
    std::u16string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const TDecoded first = firstOf(text);
        append(result, first.code);
        text.remove_prefix(first.length);
    }
    return result;
}

} // namespace tnv5::platform::automation
