#include "OcxHost.h"

#include "support/TestDatabases.h"

namespace dax::test {

std::wstring BinFolder() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L"\\/") + 1);
}

// They stay loaded: loading and unloading them makes and frees objects of the system.
HRESULT CallLibrary(const wchar_t* file, const char* entryPoint) {
    const auto found = reinterpret_cast<void*>(GetProcAddress(LoadLibraryW((BinFolder() + file).c_str()), entryPoint));
    return found ? reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(found)() : E_NOTIMPL;
}

constexpr const wchar_t* Libraries[] = {L"daxControls33.ocx", L"contentObjects.dll"};

void Register(bool isRegistered) {
    const char* const entryPoint = isRegistered ? "DllRegisterServer" : "DllUnregisterServer";
    for (const wchar_t* library : Libraries) EXPECT_HRESULT_SUCCEEDED(CallLibrary(library, entryPoint));
}

void OcxTest::SetUpTestSuite() {
    ASSERT_HRESULT_SUCCEEDED(OleInitialize(nullptr));
    Register(true);
}

void OcxTest::TearDownTestSuite() { OleUninitialize(); }

OcxTest::~OcxTest() {
    for (const wchar_t* library : Libraries)
        EXPECT_TRUE(PumpUntil([library] { return CallLibrary(library, "DllCanUnloadNow") == S_OK; })) << "is in use";
}

ComPtr<IDispatch> Create(const std::wstring& progID) {
    CLSID clsid{};
    ComPtr<IDispatch> object;
    if (SUCCEEDED(CLSIDFromProgID(progID.c_str(), &clsid)))
        CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.OutVoid());
    return object;
}

Variant Call(ObjectRef object, const wchar_t* member, std::span<const Variant> arguments, WORD kind) {
    DISPID dispid = 0;
    const HRESULT known = FindMember(object.Get(), member, dispid);
    if (FAILED(known)) throw CallFailure{known, u"", u""};
    DispatchResult result = InvokeMember(object.Get(), dispid, kind, arguments);
    if (FAILED(result.code)) throw CallFailure{result.code, result.description, result.source};
    return std::move(result.value);
}

Variant Call(ObjectRef object, const wchar_t* member, std::initializer_list<Variant> arguments) {
    return Call(object, member, {arguments.begin(), arguments.size()}, DISPATCH_METHOD | DISPATCH_PROPERTYGET);
}

ComPtr<IDispatch> Get(ObjectRef object, const wchar_t* member, std::initializer_list<Variant> arguments) {
    const Variant value = Call(object, member, arguments);
    return value.vt == VT_DISPATCH ? value.pdispVal : nullptr;
}

Text GetText(ObjectRef object, const wchar_t* member) { return FromWide(Call(object, member).Text()); }

void Put(ObjectRef object, const wchar_t* property, const Variant& value, WORD kind) {
    Call(object, property, {&value, 1}, kind);
}

HRESULT CodeOf(const std::function<void()>& call) {
    try {
        call();
        return S_OK;
    } catch (const CallFailure& failure) {
        return failure.code;
    }
}

std::vector<Variant> Enumerated(ObjectRef collection) {
    const Variant returned = Call(collection, L"_NewEnum");
    std::vector<Variant> elements;
    const auto enumerator = Query<IEnumVARIANT>(returned.punkVal, IID_IEnumVARIANT);
    for (Variant element; enumerator && enumerator->Next(1, &element, nullptr) == S_OK; element = Variant())
        elements.push_back(element);
    return elements;
}

void PumpPending() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

bool PumpUntil(const std::function<bool()>& condition) {
    for (const ULONGLONG end = GetTickCount64() + 30000; GetTickCount64() < end; Sleep(5)) {
        PumpPending();
        if (condition()) return true;
    }
    return false;
}

void Sink::Connect(ObjectRef object) {
    connection = EventConnection(object.Get(), [this](const ReceivedEvent& event) {
        std::string text = ToUtf8(FromWide(event.name)) + "(";
        const char* separator = "";
        std::vector<VARIANT*> references;
        for (VARIANT* argument : ReceivedArguments(event.call)) {
            Variant value = Dereferenced(*argument);
            if (value.vt == VT_DISPATCH) value = value.pdispVal ? Call(value.pdispVal, L"SBID") : Variant();
            text += std::exchange(separator, ", ") + ToUtf8(FromWide(value.Text()));
            if (argument->vt == (VT_I4 | VT_BYREF)) references.push_back(argument);
        }
        listener({event.dispid, text + ")"});
        for (VARIANT* const reference : references) *reference->plVal = answer;
    });
    EXPECT_TRUE(connection);
}

Outcome RunProgram(const wchar_t* program, const std::wstring& arguments) {
    const TempFolder folder;
    const std::wstring output = (folder.Path() / "output").wstring(), errors = (folder.Path() / "errors").wstring();
    const std::wstring file = (std::filesystem::path(BinFolder()) / program).wstring();
    const std::wstring line = L"\"" + file + L"\" " + arguments + L" >\"" + output + L"\" 2>\"" + errors + L"\"";
    Outcome outcome;
    outcome.code = _wsystem((L"\"" + line + L"\"").c_str());
    outcome.output = ReadFile(output);
    outcome.errors = ReadFile(errors);
    std::erase(outcome.output, '\r');
    return outcome;
}

Outcome RunScript(const std::filesystem::path& script, const std::wstring& arguments) {
    return RunProgram(L"daxscript.exe", L"\"" + script.wstring() + L"\" " + arguments);
}

std::filesystem::path DataFile(const std::wstring& name) { return BinFolder() + L"ocx_data\\" + name; }

std::wstring Quoted(const Text& text) { return L"\"" + ToWide(text) + L"\" "; }

} // namespace dax::test
