#pragma once

#include <exception>
#include <string>
#include <utility>

namespace tnv5::platform::automation {

/// UTF-16 as UTF-8 and back; what is not well-formed becomes U+FFFD.
std::string toUtf8(std::u16string_view text);
std::u16string fromUtf8(std::string_view text);

/// An automation object that cannot be created or whose call failed; the text is the library's.
class EOleError : public std::exception
{
public:
    explicit EOleError(std::u16string message) : FMessage(std::move(message)), FUtf8(toUtf8(FMessage)) {}
    const std::u16string& message() const { return FMessage; }
    /// The message in UTF-8.
    const char* what() const noexcept override { return FUtf8.c_str(); }

private:
    std::u16string FMessage;
    std::string FUtf8;
};

} // namespace tnv5::platform::automation
