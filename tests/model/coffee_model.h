#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

/// The coffee machine's text as a chain of texts: binary digits, hexadecimal digits, and only then bytes.
/// With an AES of its own, straight from the standard's definition. Shares no code with the module.
namespace tnv5::coffee::model {

/// The text, nothing when the call raises a conversion error.
/// @param keyHex in UTF-16, one unit a character
/// @param clockMs since 1899-12-30, local time
std::optional<std::string> answer(const std::array<std::int32_t, 5>& numbers, const std::u16string& keyHex,
                                  std::int64_t clockMs);

/// One block under AES-128, for a test with the standard's example.
std::array<std::uint8_t, 16> aes(const std::array<std::uint8_t, 16>& block,
                                 const std::array<std::uint8_t, 16>& key);

} // namespace tnv5::coffee::model
