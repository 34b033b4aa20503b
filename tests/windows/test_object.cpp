#include "test_object.h"

#include <cwchar>
#include <iterator>
#include <string>

namespace tnv5::tests {

// {6E3B0C5A-51D2-4C56-9A57-0B6F0B1C7A01} and the next two
const IID kEvents = {0x6E3B0C5A, 0x51D2, 0x4C56, {0x9A, 0x57, 0x0B, 0x6F, 0x0B, 0x1C, 0x7A, 0x01}};

namespace {

const IID kOwn = {0x6E3B0C5A, 0x51D2, 0x4C56, {0x9A, 0x57, 0x0B, 0x6F, 0x0B, 0x1C, 0x7A, 0x02}};
const CLSID kClass = {0x6E3B0C5A, 0x51D2, 0x4C56, {0x9A, 0x57, 0x0B, 0x6F, 0x0B, 0x1C, 0x7A, 0x03}};
const wchar_t* const kClassText = L"{6E3B0C5A-51D2-4C56-9A57-0B6F0B1C7A03}";

enum TId {
    idVersion = 1,
    idSpeed,
    idChild,
    idSwap,
    idFill,
    idEcho,
    idFail,
    idFailLater,
    idFailBare,
    idFailSource,
    idTell,
    idTellByName
};
const wchar_t* const kNames[] = {L"Version",  L"Speed",      L"Child", L"Swap",
                                 L"Fill",     L"Echo",       L"Fail",  L"FailLater",
                                 L"FailBare", L"FailSource", L"Tell",  L"TellByName"};

int alive = 0;

HRESULT __stdcall fillLater(EXCEPINFO* exception)
{
    exception->bstrDescription = SysAllocString(L"told later");
    return S_OK;
}

void setText(VARIANT* result, const wchar_t* text)
{
    if (result != nullptr) {
        result->vt = VT_BSTR;
        result->bstrVal = SysAllocString(text);
    }
}

/// A type library that knows the source interface's events by their numbers.
ITypeInfo* makeTypeInfo()
{
    wchar_t folder[MAX_PATH]{};
    GetTempPathW(MAX_PATH, folder);
    ICreateTypeLib2* making = nullptr;
    if (FAILED(CreateTypeLib2(SYS_WIN64, (std::wstring(folder) + L"tnv5.tlb").c_str(), &making))) {
        return nullptr;
    }
    ICreateTypeInfo* events = nullptr;
    making->CreateTypeInfo(const_cast<wchar_t*>(L"_Events"), TKIND_DISPATCH, &events);
    events->SetGuid(kEvents);
    wchar_t* const names[] = {const_cast<wchar_t*>(L"OnMsgReceived"), const_cast<wchar_t*>(L"OnTrxComplete")};
    for (int i = 0; i < 2; ++i) {
        FUNCDESC function{};
        function.memid = 10 + i;
        function.funckind = FUNC_DISPATCH;
        function.invkind = INVOKE_FUNC;
        function.callconv = CC_STDCALL;
        function.elemdescFunc.tdesc.vt = VT_VOID;
        events->AddFuncDesc(static_cast<UINT>(i), &function);
        wchar_t* name[] = {names[i]};
        events->SetFuncAndParamNames(static_cast<UINT>(i), name, 1);
    }
    events->LayOut();
    ICreateTypeInfo* own = nullptr;
    making->CreateTypeInfo(const_cast<wchar_t*>(L"_Own"), TKIND_DISPATCH, &own);
    own->SetGuid(kOwn);
    own->LayOut();
    ITypeInfo* info = nullptr;
    own->QueryInterface(IID_ITypeInfo, reinterpret_cast<void**>(&info));
    own->Release();
    events->Release();
    making->Release();
    return info;
}

class TTestObject;

class TPoint final : public IConnectionPoint
{
public:
    explicit TPoint(TTestObject& owner) : FOwner(owner) {}
    ~TPoint()
    {
        if (FListener != nullptr) {
            FListener->Release();
        }
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        *object = iid == IID_IUnknown || iid == IID_IConnectionPoint ? this : nullptr;
        if (*object == nullptr) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) override
    {
        *iid = kEvents;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override
    {
        if (FListener != nullptr) {
            return CONNECT_E_ADVISELIMIT;
        }
        *cookie = 7;
        return sink->QueryInterface(kEvents, reinterpret_cast<void**>(&FListener));
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override
    {
        if (cookie != 7 || FListener == nullptr) {
            return CONNECT_E_NOCONNECTION;
        }
        FListener->Release();
        FListener = nullptr;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections**) override { return E_NOTIMPL; }

    void tell(DISPID id, const VARIANT& first)
    {
        if (FListener == nullptr) {
            return;
        }
        VARIANT arguments[2] = {first, first};
        arguments[0].vt = VT_I4; // the last one stands first
        arguments[0].lVal = 99;
        DISPPARAMS parameters{arguments, nullptr, 2, 0};
        FListener->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr);
    }

    DISPID ask(const wchar_t* name)
    {
        wchar_t* text = const_cast<wchar_t*>(name);
        DISPID id = 0;
        if (FListener != nullptr) {
            FListener->GetIDsOfNames(IID_NULL, &text, 1, 0, &id);
        }
        return id;
    }

private:
    TTestObject& FOwner;
    IDispatch* FListener = nullptr;
};

class TTestObject final : public IDispatch, public IConnectionPointContainer, public IProvideClassInfo2
{
public:
    TTestObject() : FPoint(*this), FTypeInfo(makeTypeInfo()) { ++alive; }
    ~TTestObject()
    {
        --alive;
        if (FTypeInfo != nullptr) {
            FTypeInfo->Release();
        }
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (iid == IID_IUnknown || iid == IID_IDispatch) {
            *object = static_cast<IDispatch*>(this);
        } else if (iid == IID_IConnectionPointContainer) {
            *object = static_cast<IConnectionPointContainer*>(this);
        } else if (iid == IID_IProvideClassInfo2 || iid == IID_IProvideClassInfo) {
            *object = static_cast<IProvideClassInfo2*>(this);
        } else {
            *object = nullptr;
            return E_NOINTERFACE;
        }
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
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) override
    {
        *info = FTypeInfo;
        if (FTypeInfo == nullptr) {
            return E_FAIL;
        }
        FTypeInfo->AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override
    {
        for (std::size_t i = 0; i < std::size(kNames); ++i) {
            if (std::wcscmp(names[0], kNames[i]) == 0) {
                ids[0] = static_cast<DISPID>(i + 1);
                return S_OK;
            }
        }
        ids[0] = DISPID_UNKNOWN;
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* given, VARIANT* result,
                                     EXCEPINFO* exception, UINT*) override;

    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** point) override
    {
        if (iid != kEvents) {
            return CONNECT_E_NOCONNECTION;
        }
        *point = &FPoint;
        FPoint.AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetGUID(DWORD kind, GUID* guid) override
    {
        *guid = kEvents;
        return kind == GUIDKIND_DEFAULT_SOURCE_DISP_IID ? S_OK : E_INVALIDARG;
    }

private:
    static HRESULT fail(DISPID id, EXCEPINFO* exception)
    {
        if (id == idFail) {
            exception->bstrDescription = SysAllocString(L"немає паперу");
        } else if (id == idFailLater) {
            exception->pfnDeferredFillIn = fillLater;
        } else if (id == idFailBare) {
            exception->scode = E_ACCESSDENIED;
        } else {
            exception->bstrSource = SysAllocString(L"printer");
            exception->scode = E_ACCESSDENIED;
        }
        return DISP_E_EXCEPTION;
    }

    ULONG FReferences = 1;
    LONG FSpeed = 9600;
    TPoint FPoint;
    ITypeInfo* FTypeInfo;
};

ULONG STDMETHODCALLTYPE TPoint::AddRef()
{
    return FOwner.AddRef();
}

ULONG STDMETHODCALLTYPE TPoint::Release()
{
    return FOwner.Release();
}

HRESULT STDMETHODCALLTYPE TTestObject::Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* given,
                                              VARIANT* result, EXCEPINFO* exception, UINT*)
{
    VARIANT* const arguments = given->rgvarg;
    switch (id) {
    case idVersion:
        if ((kind & DISPATCH_PROPERTYGET) == 0) {
            return DISP_E_MEMBERNOTFOUND;
        }
        setText(result, L"1.0");
        return S_OK;
    case idSpeed:
        if ((kind & DISPATCH_PROPERTYPUT) != 0) {
            if (given->cNamedArgs != 1 || given->rgdispidNamedArgs[0] != DISPID_PROPERTYPUT) {
                return DISP_E_BADPARAMCOUNT;
            }
            FSpeed = arguments[0].lVal;
        } else {
            result->vt = VT_I4;
            result->lVal = FSpeed;
        }
        return S_OK;
    case idChild:
        result->vt = VT_DISPATCH;
        result->pdispVal = makeTestObject();
        return S_OK;
    case idSwap:
        if (given->cArgs != 2 || arguments[0].vt != (VT_I4 | VT_BYREF) ||
            arguments[1].vt != (VT_I4 | VT_BYREF)) {
            return DISP_E_TYPEMISMATCH;
        }
        std::swap(*arguments[0].plVal, *arguments[1].plVal);
        setText(result, L"swapped");
        return S_OK;
    case idFill:
        if (given->cArgs != 2 || arguments[1].vt != (VT_BSTR | VT_BYREF) ||
            arguments[0].vt != (VT_VARIANT | VT_BYREF)) {
            return DISP_E_TYPEMISMATCH;
        }
        SysReAllocString(arguments[1].pbstrVal, L"new");
        arguments[0].pvarVal->vt = VT_I4;
        arguments[0].pvarVal->lVal = 7;
        return S_OK;
    case idEcho:
        return VariantCopyInd(result, &arguments[0]);
    case idTell: {
        FPoint.tell(10, arguments[0]);
        VARIANT code;
        code.vt = VT_I4;
        code.lVal = 51;
        FPoint.tell(11, code);
        return S_OK;
    }
    case idTellByName:
        FPoint.tell(FPoint.ask(L"OnElse"), arguments[0]);
        return S_OK;
    default:
        return fail(id, exception);
    }
}

class TFactory final : public IClassFactory
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        *object = iid == IID_IUnknown || iid == IID_IClassFactory ? this : nullptr;
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID iid, void** object) override
    {
        IDispatch* const made = makeTestObject();
        const HRESULT result = made->QueryInterface(iid, object);
        made->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

} // namespace

IDispatch* makeTestObject()
{
    return new TTestObject;
}

int testObjects()
{
    return alive;
}

DWORD registerTestClass()
{
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    RegSetValueW(HKEY_CLASSES_ROOT, L"Tnv5.TestObject\\CLSID", REG_SZ, kClassText,
                 static_cast<DWORD>(std::wcslen(kClassText) * sizeof(wchar_t)));
    static TFactory factory;
    DWORD registration = 0;
    CoRegisterClassObject(kClass, &factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration);
    return registration;
}

void unregisterTestClass(DWORD registration)
{
    CoRevokeClassObject(registration);
}

} // namespace tnv5::tests
