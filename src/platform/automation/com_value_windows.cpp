#include "tnv5/platform/automation/com_value_windows.h"

#include "tnv5/platform/automation/com_provider_windows.h"

#include <cstdio>
#include <limits>
#include <type_traits>

namespace tnv5::platform::automation {

namespace {

TValue wholeNumber(std::int64_t number)
{
    if (number >= std::numeric_limits<std::int32_t>::min() &&
        number <= std::numeric_limits<std::int32_t>::max()) {
        return static_cast<std::int32_t>(number);
    }
    return number;
}

/// Kinds that the system turns into a double.
TValue asDouble(const VARIANT& value)
{
    TVariant changed;
    const HRESULT result = VariantChangeType(changed.get(), const_cast<VARIANT*>(&value), 0, VT_R8);
    if (FAILED(result)) {
        throw EOleError(textOfCode(result));
    }
    return (*changed).dblVal;
}

} // namespace

std::wstring toWide(std::u16string_view text)
{
    return {text.begin(), text.end()};
}

std::u16string fromWide(const wchar_t* text, std::size_t length)
{
    return {text, text + length};
}

std::u16string fromBstr(BSTR text)
{
    return text == nullptr ? std::u16string() : fromWide(text, SysStringLen(text));
}

TVariant toVariant(const TValue& value)
{
    TVariant result;
    VARIANT& variant = *result.get();
    value.visit([&](const auto& held) {
        using Type = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Type, bool>) {
            variant.vt = VT_BOOL;
            variant.boolVal = held ? VARIANT_TRUE : VARIANT_FALSE;
        } else if constexpr (std::is_same_v<Type, std::int32_t>) {
            variant.vt = VT_I4;
            variant.lVal = held;
        } else if constexpr (std::is_same_v<Type, std::int64_t>) {
            variant.vt = VT_I8;
            variant.llVal = held;
        } else if constexpr (std::is_same_v<Type, double>) {
            variant.vt = VT_R8;
            variant.dblVal = held;
        } else if constexpr (std::is_same_v<Type, std::u16string>) {
            variant.vt = VT_BSTR;
            variant.bstrVal = SysAllocStringLen(toWide(held).data(), static_cast<UINT>(held.size()));
        } else if constexpr (std::is_same_v<Type, TObjectPtr>) {
            IDispatch* const dispatch = dispatchOf(held);
            if (dispatch == nullptr && held) {
                throw EOleError(u"an object of another system cannot be handed over");
            }
            variant.vt = VT_DISPATCH;
            variant.pdispVal = dispatch;
            if (dispatch != nullptr) {
                dispatch->AddRef();
            }
        }
    });
    return result;
}

TValue fromVariant(const VARIANT& value)
{
    if ((value.vt & VT_BYREF) != 0) {
        TVariant copy;
        const HRESULT result = VariantCopyInd(copy.get(), const_cast<VARIANT*>(&value));
        if (FAILED(result)) {
            throw EOleError(textOfCode(result));
        }
        return fromVariant(*copy);
    }
    switch (value.vt) {
    case VT_EMPTY:
    case VT_NULL:
    case VT_ERROR: // an argument that is left out
        return {};
    case VT_BOOL:
        return value.boolVal != VARIANT_FALSE;
    case VT_I1:
        return std::int32_t{static_cast<signed char>(value.cVal)};
    case VT_UI1:
        return std::int32_t{value.bVal};
    case VT_I2:
        return std::int32_t{value.iVal};
    case VT_UI2:
        return std::int32_t{value.uiVal};
    case VT_I4:
    case VT_INT:
        return static_cast<std::int32_t>(value.lVal);
    case VT_UI4:
    case VT_UINT:
        return wholeNumber(value.ulVal);
    case VT_I8:
        return std::int64_t{value.llVal};
    case VT_UI8:
    case VT_R4:
    case VT_CY:
    case VT_DATE:
    case VT_DECIMAL:
        return asDouble(value);
    case VT_R8:
        return value.dblVal;
    case VT_BSTR:
        return fromBstr(value.bstrVal);
    case VT_DISPATCH:
        return value.pdispVal == nullptr ? TValue() : TValue(fromDispatch(value.pdispVal));
    case VT_UNKNOWN: {
        IDispatch* dispatch = nullptr;
        if (value.punkVal == nullptr) {
            return {};
        }
        if (SUCCEEDED(value.punkVal->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)))) {
            TValue object = fromDispatch(dispatch);
            dispatch->Release();
            return object;
        }
        break;
    }
    default:
        break;
    }
    throw EOleError(u"a value of the type " + TValue(std::int32_t{value.vt}).toText() +
                    u" is not understood");
}

std::u16string textOfCode(HRESULT code)
{
    wchar_t buffer[512]{};
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                  static_cast<DWORD>(code), 0, buffer, 512, nullptr);
    while (length > 0 && buffer[length - 1] <= L' ') {
        --length;
    }
    if (length > 0) {
        return fromWide(buffer, length);
    }
    char number[32]{};
    std::snprintf(number, sizeof number, "OLE error %08X", static_cast<unsigned>(code));
    return fromUtf8(number);
}

} // namespace tnv5::platform::automation
