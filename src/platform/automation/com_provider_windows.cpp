#include "tnv5/platform/automation/com_provider_windows.h"

#include "tnv5/platform/automation/com_events_windows.h"
#include "tnv5/platform/automation/com_value_windows.h"

namespace tnv5::platform::automation {

namespace {

std::u16string takeBstr(BSTR& text)
{
    std::u16string result = fromBstr(text);
    SysFreeString(text);
    text = nullptr;
    return result;
}

/// The library's own text of a failure, else the system's.
std::u16string textOf(HRESULT result, EXCEPINFO& exception)
{
    if (result != DISP_E_EXCEPTION) {
        return textOfCode(result);
    }
    if (exception.pfnDeferredFillIn != nullptr) {
        exception.pfnDeferredFillIn(&exception);
    }
    const std::u16string description = takeBstr(exception.bstrDescription);
    const std::u16string source = takeBstr(exception.bstrSource);
    takeBstr(exception.bstrHelpFile);
    if (!description.empty()) {
        return description;
    }
    const HRESULT code = exception.scode != 0 ? exception.scode : result;
    return source.empty() ? textOfCode(code) : source + u": " + textOfCode(code);
}

class TComObject final : public TAutomationObject
{
public:
    explicit TComObject(IDispatch* dispatch) : FDispatch(dispatch) { FDispatch->AddRef(); }
    ~TComObject() override
    {
        FEvents.reset();
        FDispatch->Release();
    }
    TComObject(const TComObject&) = delete;
    TComObject& operator=(const TComObject&) = delete;

    IDispatch* dispatch() const { return FDispatch; }

    TValue call(std::u16string_view name, TArguments& arguments, std::chrono::milliseconds) override
    {
        return invoke(name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
    }

    TValue get(std::u16string_view name) override
    {
        TArguments none;
        return invoke(name, DISPATCH_PROPERTYGET, none);
    }

    void put(std::u16string_view name, const TValue& value) override
    {
        TArguments arguments{value};
        invoke(name, value.as<TObjectPtr>() != nullptr ? DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT,
               arguments);
    }

    void setEventHandler(TEventHandler handler) override
    {
        FEvents.reset();
        if (handler) {
            FEvents = std::make_unique<TComEvents>(FDispatch, std::move(handler));
        }
    }

private:
    DISPID idOf(std::u16string_view name) const
    {
        std::wstring wide = toWide(name);
        wchar_t* text = wide.data();
        DISPID id = 0;
        if (FAILED(FDispatch->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id))) {
            throw EOleError(u"Unknown name: " + std::u16string(name));
        }
        return id;
    }

    /// A reference to a value, which the library may change.
    static VARIANT referenceTo(VARIANT& value)
    {
        VARIANT reference;
        VariantInit(&reference);
        if (value.vt == VT_EMPTY) {
            reference.vt = VT_VARIANT | VT_BYREF;
            reference.pvarVal = &value;
        } else {
            reference.vt = static_cast<VARTYPE>(value.vt | VT_BYREF);
            reference.byref = &value.lVal; // all kinds stand at the same place
        }
        return reference;
    }

    TValue invoke(std::u16string_view name, WORD kind, TArguments& arguments)
    {
        const DISPID id = idOf(name);
        std::vector<TVariant> values;
        values.reserve(arguments.size());
        for (const TArgument& argument : arguments) {
            values.push_back(toVariant(argument.value));
        }
        std::vector<VARIANT> given(arguments.size()); // the last one stands first
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            VARIANT& value = *values[i].get();
            given[arguments.size() - 1 - i] = arguments[i].byReference ? referenceTo(value) : value;
        }
        DISPID putId = DISPID_PROPERTYPUT;
        const bool puts = (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
        DISPPARAMS parameters{given.data(), puts ? &putId : nullptr, static_cast<UINT>(given.size()),
                              puts ? 1u : 0u};
        TVariant result;
        EXCEPINFO exception{};
        UINT wrong = 0;
        FDispatch->AddRef(); // the object may be let go of during the call
        const HRESULT code = FDispatch->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters,
                                               puts ? nullptr : result.get(), &exception, &wrong);
        FDispatch->Release();
        if (FAILED(code)) {
            throw EOleError(textOf(code, exception));
        }
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (arguments[i].byReference) {
                arguments[i].value = fromVariant(*values[i]);
            }
        }
        return fromVariant(*result);
    }

    IDispatch* FDispatch;
    std::unique_ptr<TComEvents> FEvents;
};

class TComProvider final : public TAutomationProvider
{
public:
    TObjectPtr create(std::u16string_view progId, std::u16string& why) override
    {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); // once for the thread; the host may have done it
        CLSID id{};
        const HRESULT found = CLSIDFromProgID(toWide(progId).c_str(), &id);
        if (FAILED(found)) {
            why = u"no class of this process, and " + textOfCode(found);
            return nullptr;
        }
        IDispatch* dispatch = nullptr;
        const HRESULT created =
            CoCreateInstance(id, nullptr, CLSCTX_SERVER, IID_IDispatch, reinterpret_cast<void**>(&dispatch));
        if (FAILED(created) || dispatch == nullptr) {
            throw EOleError(u'"' + std::u16string(progId) + u"\": " + textOfCode(created));
        }
        TObjectPtr object = fromDispatch(dispatch);
        dispatch->Release();
        return object;
    }
};

} // namespace

TAutomationProvider& systemProvider()
{
    static TComProvider provider;
    return provider;
}

TObjectPtr fromDispatch(IDispatch* dispatch)
{
    return std::make_shared<TComObject>(dispatch);
}

IDispatch* dispatchOf(const TObjectPtr& object)
{
    const auto* const own = dynamic_cast<const TComObject*>(object.get());
    return own != nullptr ? own->dispatch() : nullptr;
}

} // namespace tnv5::platform::automation
