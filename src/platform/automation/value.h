#pragma once

#include "tnv5/platform/automation/ole_error.h"

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tnv5::platform::automation {

class TAutomationObject;
using TObjectPtr = std::shared_ptr<TAutomationObject>;

/// What goes into an automation call and comes out of it. Libraries are free in the types that they use, so
/// a value is asked for as what the caller needs:
///
///     TValue(u" 12 ").toInt()    12
///     TValue(2.5).toInt()        2: halves go to the even number
///     TValue(true).toInt()       -1, as automation has it
///     TValue().toText()          empty
class TValue
{
public:
    TValue() = default;
    TValue(bool value) : FValue(value) {}                                // NOLINT: values are implicit
    TValue(std::int32_t value) : FValue(value) {}                        // NOLINT
    TValue(std::int64_t value) : FValue(value) {}                        // NOLINT
    TValue(double value) : FValue(value) {}                              // NOLINT
    TValue(std::u16string value) : FValue(std::move(value)) {}           // NOLINT
    TValue(std::u16string_view value) : FValue(std::u16string(value)) {} // NOLINT
    TValue(const char16_t* value) : FValue(std::u16string(value)) {}     // NOLINT
    TValue(TObjectPtr value) : FValue(std::move(value)) {}               // NOLINT
    TValue(const void*) = delete;                                        // a pointer is no boolean

    bool isEmpty() const { return std::holds_alternative<std::monostate>(FValue); }
    /// The value when it is exactly of this type, else nullptr.
    template <class Type>
    const Type* as() const
    {
        return std::get_if<Type>(&FValue);
    }
    /// Calls `visitor` with the value as it is, `std::monostate` for none.
    template <class Visitor>
    decltype(auto) visit(Visitor&& visitor) const
    {
        return std::visit(std::forward<Visitor>(visitor), FValue);
    }

    // @throws EOleError when the value is nothing of the kind

    /// 0, empty and "False" are false, other numbers and "True" are true; the case of letters does not count.
    bool toBool() const;
    /// Rounded; "True" and "False" are no numbers.
    std::int32_t toInt() const;
    /// Numbers with a point and as many digits as it takes; a boolean is "True" or "False".
    std::u16string toText() const;
    /// The object; none for an empty value.
    TObjectPtr toObject() const;

    friend bool operator==(const TValue&, const TValue&) = default;

private:
    std::variant<std::monostate, bool, std::int32_t, std::int64_t, double, std::u16string, TObjectPtr> FValue;
};

/// An argument of a call. The library may change one by reference.
struct TArgument
{
    /// Implicit from anything that a value is made of, so that a list of arguments reads as one.
    template <class Value>
    // NOLINTNEXTLINE(bugprone-forwarding-reference-overload)
    requires std::convertible_to<Value, TValue> TArgument(Value&& AValue)
        : value(std::forward<Value>(AValue)) // NOLINT
    {
    }
    TArgument(TValue AValue, bool AByReference) : value(std::move(AValue)), byReference(AByReference) {}

    TValue value;
    bool byReference = false;
};

/// Example: `TArguments{byRef(1250), byRef(0), u"1"}`.
using TArguments = std::vector<TArgument>;

inline TArgument byRef(TValue value)
{
    return {std::move(value), true};
}

} // namespace tnv5::platform::automation
