#include "tnv5/platform/automation/com_events_windows.h"

#include "tnv5/platform/automation/com_value_windows.h"

#include <algorithm>
#include <map>

namespace tnv5::platform::automation {

namespace {

/// The default source interface: what the object says it is, else the first that it has.
IConnectionPoint* defaultPoint(IDispatch* source, IConnectionPointContainer* container)
{
    IConnectionPoint* point = nullptr;
    IProvideClassInfo2* info = nullptr;
    GUID iid{};
    if (SUCCEEDED(source->QueryInterface(IID_IProvideClassInfo2, reinterpret_cast<void**>(&info)))) {
        if (SUCCEEDED(info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &iid))) {
            container->FindConnectionPoint(iid, &point);
        }
        info->Release();
    }
    IEnumConnectionPoints* points = nullptr;
    if (point == nullptr && SUCCEEDED(container->EnumConnectionPoints(&points)) && points != nullptr) {
        ULONG fetched = 0;
        points->Next(1, &point, &fetched);
        points->Release();
    }
    return point;
}

/// What the type library of the object tells about its source interface; nullptr when there is none.
ITypeInfo* descriptionOf(IDispatch* source, const IID& iid)
{
    ITypeInfo* own = nullptr;
    if (FAILED(source->GetTypeInfo(0, 0, &own)) || own == nullptr) {
        return nullptr;
    }
    ITypeLib* library = nullptr;
    UINT index = 0;
    ITypeInfo* events = nullptr;
    if (SUCCEEDED(own->GetContainingTypeLib(&library, &index)) && library != nullptr) {
        library->GetTypeInfoOfGuid(iid, &events);
        library->Release();
    }
    own->Release();
    return events;
}

} // namespace

/// What the object calls. It outlives its owner while the object still holds it, and is deaf then.
class TComEvents::TSink final : public IDispatch
{
public:
    TSink(const IID& iid, ITypeInfo* description, TEventHandler handler)
        : FIid(iid), FDescription(description), FHandler(std::move(handler))
    {
    }
    TSink(const TSink&) = delete;
    TSink& operator=(const TSink&) = delete;

    void deafen() { FHandler = nullptr; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (iid != IID_IUnknown && iid != IID_IDispatch && iid != FIid) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++FReferences; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --FReferences;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override
    {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

    /// For objects that ask their listener what it calls an event: any name is taken.
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override
    {
        for (UINT i = 0; i < count; ++i) {
            const std::u16string name = fromWide(names[i], std::wcslen(names[i]));
            const auto known = std::find_if(FNames.begin(), FNames.end(),
                                            [&](const auto& entry) { return entry.second == name; });
            const auto id =
                known != FNames.end() ? known->first : kFirstOwnId + static_cast<DISPID>(FNames.size());
            FNames[id] = name;
            ids[i] = id;
        }
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT*, EXCEPINFO*,
                                     UINT*) override
    {
        const TEventHandler handler = FHandler; // it may end itself
        const std::u16string name = nameOf(id);
        if (!handler || name.empty()) {
            return S_OK;
        }
        try {
            TArguments arguments;
            for (UINT i = given->cArgs; i > 0; --i) { // the last one stands first
                arguments.emplace_back(fromVariant(given->rgvarg[i - 1]));
            }
            handler(name, arguments);
        } catch (...) {
            return E_FAIL; // nothing may unwind through the library
        }
        return S_OK;
    }

private:
    ~TSink()
    {
        if (FDescription != nullptr) {
            FDescription->Release();
        }
    }

    std::u16string nameOf(DISPID id)
    {
        const auto known = FNames.find(id);
        if (known != FNames.end()) {
            return known->second;
        }
        BSTR text = nullptr;
        UINT count = 0;
        std::u16string name;
        if (FDescription != nullptr && SUCCEEDED(FDescription->GetNames(id, &text, 1, &count)) && count > 0) {
            name = fromBstr(text);
            SysFreeString(text);
            FNames[id] = name;
        }
        return name;
    }

    static constexpr DISPID kFirstOwnId = 0x40000000;

    ULONG FReferences = 1;
    IID FIid;
    ITypeInfo* FDescription;
    TEventHandler FHandler;
    std::map<DISPID, std::u16string> FNames;
};

TComEvents::TComEvents(IDispatch* source, TEventHandler handler)
{
    IConnectionPointContainer* container = nullptr;
    if (SUCCEEDED(
            source->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&container)))) {
        FPoint = defaultPoint(source, container);
        container->Release();
    }
    if (FPoint == nullptr) {
        throw EOleError(u"the object has no events");
    }
    IID iid{};
    FPoint->GetConnectionInterface(&iid);
    FSink = new TSink(iid, descriptionOf(source, iid), std::move(handler));
    const HRESULT result = FPoint->Advise(FSink, &FCookie);
    if (FAILED(result)) {
        FSink->Release();
        FPoint->Release();
        throw EOleError(textOfCode(result));
    }
}

TComEvents::~TComEvents()
{
    FSink->deafen();
    FPoint->Unadvise(FCookie);
    FPoint->Release();
    FSink->Release();
}

} // namespace tnv5::platform::automation
