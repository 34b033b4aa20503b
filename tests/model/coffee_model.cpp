#include "model/coffee_model.h"

#include "model/kit/branches.h"

#include <cmath>
#include <vector>

namespace tnv5::coffee::model {

namespace {

using namespace modelkit;
using TBytes = std::array<std::uint8_t, 16>;

const std::string kDigits = "0123456789ABCDEF";

/// The last `width` binary digits of a number.
std::string bitText(std::int32_t value, int width)
{
    std::string text;
    for (int bit = width - 1; bit >= 0; --bit) {
        text += (static_cast<std::int64_t>(value) >> bit) % 2 == 0 ? '0' : '1';
    }
    return text;
}

std::string hexFromBits(std::string text)
{
    while (text.size() % 4 != 0) {
        text.insert(text.begin(), '0');
    }
    std::string hex;
    for (std::size_t i = 0; i < text.size(); i += 4) {
        hex += kDigits[std::stoul(text.substr(i, 4), nullptr, 2)];
    }
    return hex;
}

std::string hexOf(std::uint64_t value, int digits)
{
    std::string text;
    while (digits-- > 0) {
        text = kDigits[value % 16] + text;
        value /= 16;
    }
    return text;
}

std::string stampHex(std::int64_t clockMs)
{
    const double days = static_cast<double>(clockMs) / 86400000.0;
    const double seconds = (days - 25569.0) * 86400.0;
    const double below = std::floor(seconds);
    const double rest = seconds - below;
    auto whole = static_cast<std::int64_t>(below);
    if (rest == 0.5) {
        whole += either<"half, up to even", "half, down to even">(whole % 2 != 0) ? 1 : 0;
    } else if (either<"up", "down">(rest > 0.5)) {
        ++whole;
    }
    const std::int64_t stamps = 0x100000000;
    way<"before 1970", "stamp", "stamp begins anew">(whole < 0 ? 0 : whole < stamps ? 1 : 2);
    return hexOf(static_cast<std::uint64_t>((whole % stamps + stamps) % stamps), 8);
}

std::vector<std::uint8_t> bytesOf(const std::string& hex)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

std::string crcHex(const std::vector<std::uint8_t>& bytes)
{
    unsigned crc = 0;
    for (const std::uint8_t byte : bytes) {
        crc ^= byte;
        for (int i = 0; i < 8; ++i) {
            crc = crc % 2 == 1 ? crc / 2 ^ 0xA001 : crc / 2;
        }
    }
    return hexOf(crc, 4);
}

std::optional<TBytes> keyOf(const std::u16string& text)
{
    const std::u16string digits = u"0123456789abcdefABCDEF";
    if (!either<"key", "no key">(text.find_first_not_of(digits) == std::u16string::npos)) {
        return std::nullopt;
    }
    way<"short key", "whole key", "long key">(text.size() < 32 ? 0 : text.size() == 32 ? 1 : 2);
    const std::vector<std::uint8_t> bytes = bytesOf(std::string(text.begin(), text.end()));
    TBytes key{};
    for (std::size_t i = 0; i < key.size() && i < bytes.size(); ++i) {
        key[i] = bytes[i];
    }
    return key;
}

// AES over the field of 256 elements, by its definition

std::uint8_t times(std::uint8_t left, std::uint8_t right)
{
    unsigned product = 0;
    unsigned shifted = left;
    for (; right != 0; right /= 2) {
        product ^= right % 2 == 1 ? shifted : 0;
        shifted = shifted < 128 ? shifted * 2 : (shifted * 2) ^ 0x11B;
    }
    return static_cast<std::uint8_t>(product);
}

std::uint8_t substitute(std::uint8_t value)
{
    std::uint8_t inverse = 0;
    for (int candidate = 1; candidate < 256 && value != 0; ++candidate) {
        if (times(value, static_cast<std::uint8_t>(candidate)) == 1) {
            inverse = static_cast<std::uint8_t>(candidate);
        }
    }
    unsigned result = 0x63;
    for (int turn = 0; turn < 5; ++turn) {
        result ^= (inverse << turn | inverse >> (8 - turn)) & 0xFF;
    }
    return static_cast<std::uint8_t>(result);
}

const std::array<std::uint8_t, 256>& box()
{
    static const auto table = [] {
        std::array<std::uint8_t, 256> values{};
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = substitute(static_cast<std::uint8_t>(i));
        }
        return values;
    }();
    return table;
}

TBytes nextRoundKey(const TBytes& key, std::uint8_t constant)
{
    TBytes next{};
    for (std::size_t i = 0; i < 16; ++i) {
        if (i < 4) {
            next[i] =
                static_cast<std::uint8_t>(key[i] ^ box()[key[12 + (i + 1) % 4]] ^ (i == 0 ? constant : 0));
        } else {
            next[i] = key[i] ^ next[i - 4];
        }
    }
    return next;
}

void add(TBytes& state, const TBytes& roundKey)
{
    for (std::size_t i = 0; i < 16; ++i) {
        state[i] ^= roundKey[i];
    }
}

TBytes substitutedAndShifted(const TBytes& state)
{
    TBytes result{};
    for (std::size_t column = 0; column < 4; ++column) {
        for (std::size_t row = 0; row < 4; ++row) {
            result[4 * column + row] = box()[state[4 * ((column + row) % 4) + row]];
        }
    }
    return result;
}

TBytes mixed(const TBytes& state)
{
    TBytes result{};
    for (std::size_t i = 0; i < 16; ++i) {
        const std::size_t column = i - i % 4;
        const auto in = [&](std::size_t offset) { return state[column + (i + offset) % 4]; };
        result[i] = static_cast<std::uint8_t>(times(in(0), 2) ^ times(in(1), 3) ^ in(2) ^ in(3));
    }
    return result;
}

} // namespace

TBytes aes(const TBytes& block, const TBytes& key)
{
    TBytes state = block;
    TBytes roundKey = key;
    std::uint8_t constant = 1;
    add(state, roundKey);
    for (int round = 1; round <= 10; ++round) {
        state = substitutedAndShifted(state);
        if (round < 10) {
            state = mixed(state);
        }
        roundKey = nextRoundKey(roundKey, constant);
        constant = times(constant, 2);
        add(state, roundKey);
    }
    return state;
}

std::optional<std::string> answer(const std::array<std::int32_t, 5>& numbers, const std::u16string& keyHex,
                                  std::int64_t clockMs)
{
    const auto& [part1, part2, part3, value1, value2] = numbers;
    std::string t = "83";
    t += hexFromBits(bitText(part1, 10) + bitText(part2, 6) + bitText(part3, 8));
    t += stampHex(clockMs);
    t += "01";
    t += hexFromBits(bitText(value1, 16));
    t += hexFromBits(bitText(value2, 16)) + "00";
    t += crcHex(bytesOf(t));
    TBytes block{};
    const std::vector<std::uint8_t> plain = bytesOf(t);
    std::copy(plain.begin(), plain.end(), block.begin());
    const std::optional<TBytes> key = keyOf(keyHex);
    if (!key) {
        return std::nullopt;
    }
    std::string text = "O";
    for (const std::uint8_t byte : aes(block, *key)) {
        text += hexOf(byte, 2);
    }
    return text + "S";
}

} // namespace tnv5::coffee::model
