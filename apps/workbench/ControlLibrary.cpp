#include "ControlLibrary.h"

#include "Automation.h"

namespace dax::workbench {

namespace {

constexpr wchar_t libraryFile[] = L"daxControls33.ocx";

std::wstring BesideProgram(const wchar_t* file) {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L"\\/") + 1) + file;
}

} // namespace

ControlLibrary::ControlLibrary(bool registeredOnly) {
    const std::wstring path = BesideProgram(libraryFile);
    if (!registeredOnly && GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
        try {
            TakeLibrary(path);
        } catch (const HostError& error) {
            problem = error.Text();
        }
    }
    if (origin.empty()) origin = L"registered controls";
}

ControlLibrary::~ControlLibrary() {
    for (const Class& one : classes) CoRevokeClassObject(one.cookie);
    // The library itself stays loaded to the end: a window of it may still be on its way out.
}

// Offers the library's class objects to this process, so that every way to create one of them finds it.
void ControlLibrary::TakeLibrary(const std::wstring& path) {
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!module) throw HostError(E_FAIL, path + L": " + DescribeResult(HRESULT_FROM_WIN32(GetLastError())));
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    const auto getClassObject =
        reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
    if (!getClassObject) throw HostError(E_FAIL, path + L" offers no classes.");

    Com<ITypeLib> types;
    const HRESULT result = LoadTypeLibEx(path.c_str(), REGKIND_NONE, types.Out());
    if (FAILED(result)) throw HostError(result, path + L": " + DescribeResult(result));
    for (UINT i = 0; i < types->GetTypeInfoCount(); ++i) {
        TYPEKIND kind = TKIND_MAX;
        Com<ITypeInfo> info;
        TYPEATTR* attributes = nullptr;
        if (FAILED(types->GetTypeInfoType(i, &kind)) || kind != TKIND_COCLASS ||
            FAILED(types->GetTypeInfo(i, info.Out())) || FAILED(info->GetTypeAttr(&attributes)))
            continue;
        Class one{{}, attributes->guid, 0};
        info->ReleaseTypeAttr(attributes);
        BSTR name = nullptr;
        if (FAILED(info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr))) continue;
        one.name = name;
        SysFreeString(name);
        Com<IUnknown> factory;
        if (SUCCEEDED(getClassObject(one.id, IID_IClassFactory, factory.OutAny())) &&
            SUCCEEDED(
                CoRegisterClassObject(one.id, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &one.cookie)))
            classes.push_back(std::move(one));
    }
    if (classes.empty()) throw HostError(E_FAIL, path + L" offers none of the classes that it declares.");
    origin = path;
}

std::wstring ControlLibrary::ClassText(const std::wstring& control) const {
    for (const Class& one : classes) {
        wchar_t text[40];
        if (one.name == control && StringFromGUID2(one.id, text, static_cast<int>(std::size(text)))) return text;
    }
    return L"DAXControls." + control;
}

std::wstring ControlLibrary::Advice(const std::wstring& control, HRESULT result) const {
    std::wstring text =
        L"The control DAXControls." + control + L" cannot be created: " +
        (result == REGDB_E_CLASSNOTREG || result == CO_E_CLASSSTRING ? L"it is not registered on this machine."
                                                                     : DescribeResult(result));
    if (!problem.empty()) text += L"\n\nThe library beside this program could not be used: " + problem;
    if (classes.empty())
        text += std::wstring(L"\n\nEither put ") + libraryFile + L" beside this program, or register it from an " +
                L"administrator's command line: regsvr32 " + libraryFile + (sizeof(void*) == 8 ? L" (64" : L" (32") +
                L"-bit, as this program is).";
    return text;
}

} // namespace dax::workbench
