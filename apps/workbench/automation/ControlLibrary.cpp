#include "automation/ControlLibrary.h"

namespace dax::workbench {

namespace {

constexpr wchar_t controlFile[] = L"daxControls33.ocx";
constexpr wchar_t contentFile[] = L"contentObjects.dll";
constexpr wchar_t controlPrefix[] = L"DAXControls.";

std::wstring BesideProgram(const wchar_t* file) {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L"\\/") + 1) + file;
}

} // namespace

ControlLibrary::ControlLibrary(bool registeredOnly) {
    origin = L"registered controls";
    if (registeredOnly) return;
    for (const wchar_t* file : {controlFile, contentFile}) {
        const std::wstring path = BesideProgram(file);
        if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) continue;
        try {
            TakeLibrary(path);
            if (file == controlFile) origin = path;
        } catch (const HostError& error) {
            problem = error.Text();
        }
    }
}

ControlLibrary::~ControlLibrary() {
    for (const Class& one : classes) CoRevokeClassObject(one.cookie);
    // The library itself stays loaded to the end: one of its windows may still be being destroyed.
}

// Offers the library's class objects to this process, so that every way to create one of them finds it.
void ControlLibrary::TakeLibrary(const std::wstring& path) {
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!module) throw HostError(E_FAIL, path + L": " + DescribeResult(HRESULT_FROM_WIN32(GetLastError())));
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    const auto getClassObject =
        reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
    if (!getClassObject) throw HostError(E_FAIL, path + L" does not export DllGetClassObject.");

    ComPtr<ITypeLib> types;
    const HRESULT result = LoadTypeLibEx(path.c_str(), REGKIND_NONE, types.Out());
    if (FAILED(result)) throw HostError(result, path + L": " + DescribeResult(result));
    Bstr prefix;
    if (FAILED(types->GetDocumentation(-1, prefix.Out(), nullptr, nullptr, nullptr))) return;
    const std::wstring library(prefix.Wide());
    const size_t before = classes.size();
    for (UINT i = 0; i < types->GetTypeInfoCount(); ++i) {
        TYPEKIND kind = TKIND_MAX;
        ComPtr<ITypeInfo> info;
        TYPEATTR* attributes = nullptr;
        if (FAILED(types->GetTypeInfoType(i, &kind)) || kind != TKIND_COCLASS ||
            FAILED(types->GetTypeInfo(i, info.Out())) || FAILED(info->GetTypeAttr(&attributes)))
            continue;
        Class one{{}, attributes->guid, 0};
        info->ReleaseTypeAttr(attributes);
        Bstr name;
        if (FAILED(info->GetDocumentation(MEMBERID_NIL, name.Out(), nullptr, nullptr, nullptr))) continue;
        one.name = library + L"." + std::wstring(name.Wide());
        ComPtr<IUnknown> factory;
        if (SUCCEEDED(getClassObject(one.id, IID_IClassFactory, factory.OutVoid())) &&
            SUCCEEDED(
                CoRegisterClassObject(one.id, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &one.cookie)))
            classes.push_back(std::move(one));
    }
    if (classes.size() == before) throw HostError(E_FAIL, path + L" offers none of the classes that it declares.");
}

const ControlLibrary::Class* ControlLibrary::Find(const std::wstring& name) const {
    for (const Class& one : classes)
        if (one.name == name) return &one;
    return nullptr;
}

std::wstring ControlLibrary::ClassText(const std::wstring& control) const {
    const Class* one = Find(controlPrefix + control);
    wchar_t text[40];
    return one && StringFromGUID2(one->id, text, static_cast<int>(std::size(text))) ? text : controlPrefix + control;
}

Automation ControlLibrary::CreateObject(const std::wstring& name) const {
    CLSID id{};
    HRESULT result = S_OK;
    if (const Class* one = Find(name))
        id = one->id;
    else
        result = CLSIDFromProgID(name.c_str(), &id);
    ComPtr<IDispatch> object;
    if (SUCCEEDED(result))
        result = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.OutVoid());
    if (FAILED(result)) throw HostError(result, Advice(name, result));
    return Automation(object);
}

std::wstring ControlLibrary::Advice(const std::wstring& name, HRESULT result) const {
    const bool isControl = name.starts_with(controlPrefix);
    const wchar_t* libraryFile = isControl ? controlFile : contentFile;
    std::wstring text =
        (isControl ? L"The control " : L"The object ") + name + L" cannot be created: " +
        (result == REGDB_E_CLASSNOTREG || result == CO_E_CLASSSTRING ? L"it is not registered on this machine."
                                                                     : DescribeResult(result));
    if (!problem.empty()) text += L"\n\nThe library beside this program could not be used: " + problem;
    if (!Find(name))
        text += std::wstring(L"\n\nEither put ") + libraryFile + L" beside this program, or register it from an " +
                L"administrator's command line: regsvr32 " + libraryFile + (sizeof(void*) == 8 ? L" (64" : L" (32") +
                L"-bit, as this program is).";
    return text;
}

} // namespace dax::workbench
