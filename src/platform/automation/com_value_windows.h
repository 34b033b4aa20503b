#pragma once

#include "tnv5/platform/automation/value.h"

#include <ole2.h>
#include <string>
#include <utility>

/// Values as COM has them.
namespace tnv5::platform::automation {

/// A VARIANT that is cleared in time.
class TVariant
{
public:
    TVariant() { VariantInit(&FVariant); }
    ~TVariant() { VariantClear(&FVariant); }
    TVariant(const TVariant&) = delete;
    TVariant& operator=(const TVariant&) = delete;
    TVariant(TVariant&& other) noexcept : FVariant(other.FVariant) { VariantInit(&other.FVariant); }
    TVariant& operator=(TVariant&&) = delete;

    VARIANT* get() { return &FVariant; }
    const VARIANT& operator*() const { return FVariant; }

private:
    VARIANT FVariant;
};

/// A text as COM takes it.
std::wstring toWide(std::u16string_view text);
std::u16string fromWide(const wchar_t* text, std::size_t length);
std::u16string fromBstr(BSTR text);

/// @throws EOleError for an object of another system
TVariant toVariant(const TValue& value);
/// Booleans, numbers (money and dates as doubles), texts and objects.
/// @throws EOleError for anything else
TValue fromVariant(const VARIANT& value);

/// What the system says to an error code.
std::u16string textOfCode(HRESULT code);

/// The interface behind an object of this system; nullptr for others. Not referenced.
IDispatch* dispatchOf(const TObjectPtr& object);

} // namespace tnv5::platform::automation
