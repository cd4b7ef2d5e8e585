#include "OcxHost.h"

namespace dax::test {

std::wstring BinFolder() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L"\\/") + 1);
}

HRESULT CallLibrary(const wchar_t* file, const char* entryPoint) {
    const HMODULE library = LoadLibraryW((BinFolder() + file).c_str());
    if (!library) return HRESULT_FROM_WIN32(GetLastError());
    using EntryPoint = HRESULT(STDAPICALLTYPE*)();
    const auto function = reinterpret_cast<EntryPoint>(reinterpret_cast<void*>(GetProcAddress(library, entryPoint)));
    const HRESULT result = function ? function() : E_NOTIMPL;
    FreeLibrary(library);
    return result;
}

namespace {

constexpr const wchar_t* Libraries[] = {L"daxControls33.ocx", L"contentObjects.dll"};

} // namespace

void Register(bool isRegistered) {
    const char* const entryPoint = isRegistered ? "DllRegisterServer" : "DllUnregisterServer";
    for (const wchar_t* library : Libraries) EXPECT_HRESULT_SUCCEEDED(CallLibrary(library, entryPoint));
}

void OcxTest::SetUpTestSuite() {
    ASSERT_HRESULT_SUCCEEDED(OleInitialize(nullptr));
    Register(true);
    // Loading and unloading them makes and frees objects of the system: they stay loaded from now on.
    for (const wchar_t* library : Libraries) ASSERT_TRUE(LoadLibraryW((BinFolder() + library).c_str()));
}

void OcxTest::TearDownTestSuite() { OleUninitialize(); }

void OcxTest::TearDown() {
    for (const wchar_t* library : Libraries)
        EXPECT_TRUE(PumpUntil([library] { return CallLibrary(library, "DllCanUnloadNow") == S_OK; })) << "is in use";
}

ComPtr<IDispatch> Create(const wchar_t* progID) {
    CLSID clsid{};
    ComPtr<IDispatch> object;
    if (SUCCEEDED(CLSIDFromProgID(progID, &clsid)))
        CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.OutVoid());
    return object;
}

Variant Call(IDispatch* object, const wchar_t* member, std::initializer_list<Variant> arguments, WORD kind) {
    std::wstring name = member;
    LPOLESTR names[] = {name.data()};
    DISPID dispid = 0;
    const HRESULT known = object ? object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &dispid) : E_POINTER;
    if (FAILED(known)) throw CallFailure{known, u"", u""};
    std::vector<Variant> reversed(std::make_reverse_iterator(arguments.end()),
                                  std::make_reverse_iterator(arguments.begin()));
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    if (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) {
        parameters.rgdispidNamedArgs = &put;
        parameters.cNamedArgs = 1;
    }
    Variant result;
    EXCEPINFO info{};
    const HRESULT code =
        object->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, &result, &info, nullptr);
    if (SUCCEEDED(code)) return result;
    const CallFailure failure{code == DISP_E_EXCEPTION ? info.scode : code, FromBstr(info.bstrDescription),
                              FromBstr(info.bstrSource)};
    SysFreeString(info.bstrDescription);
    SysFreeString(info.bstrSource);
    SysFreeString(info.bstrHelpFile);
    throw failure;
}

Text TextOf(const Variant& value) { return value.vt == VT_BSTR ? FromBstr(value.bstrVal) : u"(no text)"; }
ComPtr<IDispatch> ObjectOf(const Variant& value) { return value.vt == VT_DISPATCH ? value.pdispVal : nullptr; }
void Put(IDispatch* object, const wchar_t* property, const Variant& value, WORD kind) {
    Call(object, property, {value}, kind);
}
HRESULT CodeOf(const std::function<void()>& call) {
    try {
        call();
        return S_OK;
    } catch (const CallFailure& failure) {
        return failure.code;
    }
}
bool IsTrue(const Variant& value) { return value.vt == VT_BOOL && value.boolVal == VARIANT_TRUE; }
int32_t NumberOf(const Variant& value) { return value.vt == VT_I4 ? value.lVal : INT32_MIN; }

void PumpPending() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

bool PumpUntil(const std::function<bool()>& condition) {
    const ULONGLONG end = GetTickCount64() + 30000;
    for (;;) {
        PumpPending();
        if (condition()) return true;
        const ULONGLONG now = GetTickCount64();
        if (now >= end) return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now < 50 ? end - now : 50), QS_ALLINPUT);
    }
}

void Sink::Connect(IUnknown* object) {
    GUID events{};
    const auto info = Query<IProvideClassInfo2>(object, IID_IProvideClassInfo2);
    const auto container = Query<IConnectionPointContainer>(object, IID_IConnectionPointContainer);
    ASSERT_TRUE(info && container);
    ASSERT_HRESULT_SUCCEEDED(info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events));
    ASSERT_HRESULT_SUCCEEDED(container->FindConnectionPoint(events, point.Out()));
    ASSERT_HRESULT_SUCCEEDED(point->Advise(this, &cookie));
}

void Sink::Disconnect() {
    const ComPtr<IConnectionPoint> former = std::move(point);
    if (former) former->Unadvise(cookie);
}

HRESULT Sink::Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*, UINT*) {
    std::vector<Text> arguments;
    for (UINT i = parameters->cArgs; i-- > 0;) {
        VARIANT& argument = parameters->rgvarg[i];
        Variant text;
        EXPECT_HRESULT_SUCCEEDED(VariantCopyInd(&text, &argument));
        if (text.vt == VT_DISPATCH)
            text = text.pdispVal ? Call(text.pdispVal, L"SBID") : Variant(u"");
        else
            EXPECT_HRESULT_SUCCEEDED(VariantChangeType(&text, &text, 0, VT_BSTR));
        arguments.push_back(TextOf(text));
    }
    const Listener called = listener;
    called(dispid, arguments);
    for (UINT i = 0; i < parameters->cArgs; ++i)
        if (parameters->rgvarg[i].vt == (VT_I4 | VT_BYREF)) *parameters->rgvarg[i].plVal = answer;
    return S_OK;
}

} // namespace dax::test
