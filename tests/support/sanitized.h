#pragma once

namespace tnv5::tests {

/// Whether the program is built with the address sanitizer, under which everything takes several times as
/// long: the longest tests then do a part of what they do without it.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kSanitized = __has_feature(address_sanitizer);
#else
inline constexpr bool kSanitized = false;
#endif

} // namespace tnv5::tests
