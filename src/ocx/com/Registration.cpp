#include "ocx/com/Registration.h"

#include "ocx/com/Fault.h"
#include "ocx/com/Library.h"

namespace dax {

namespace {

constexpr wchar_t ControlCategory[] = L"{40FC6ED4-2438-11CF-A3DB-080036F12502}";
constexpr wchar_t ProgrammableCategory[] = L"{40FC6ED5-2438-11CF-A3DB-080036F12502}";
constexpr SYSKIND System = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;

// The part of the registry that holds the classes of a scope.
HKEY Root(Scope scope) { return scope == Scope::User ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE; }

std::wstring Place(const std::wstring& key) { return L"Software\\Classes\\" + key; }

std::wstring GuidText(const GUID& guid) {
    wchar_t text[40];
    return std::wstring(text, static_cast<size_t>(StringFromGUID2(guid, text, 40) - 1));
}

void Write(Scope scope, const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    HKEY opened = nullptr;
    LSTATUS status =
        RegCreateKeyExW(Root(scope), Place(key).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &opened, nullptr);
    if (status == ERROR_SUCCESS) {
        status = RegSetValueExW(opened, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                                static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
        RegCloseKey(opened);
    }
    if (status != ERROR_SUCCESS) throw ComError(HRESULT_FROM_WIN32(static_cast<DWORD>(status)));
}

void Remove(Scope scope, const std::wstring& key) {
    HKEY opened = nullptr;
    const std::wstring place = Place(key);
    if (RegOpenKeyExW(Root(scope), place.c_str(), 0, KEY_ALL_ACCESS, &opened) != ERROR_SUCCESS) return;
    RegDeleteTreeW(opened, nullptr);
    RegCloseKey(opened);
    RegDeleteKeyW(Root(scope), place.c_str());
}

// The type-library functions for one user, which not every system header declares.
template <typename Function>
Function OfAutomation(const char* name) {
    const auto function =
        reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"oleaut32"), name)));
    if (!function) throw ComError(E_NOTIMPL);
    return function;
}
using RegisterForUser = HRESULT(WINAPI*)(ITypeLib*, OLECHAR*, OLECHAR*);
using UnregisterForUser = HRESULT(WINAPI*)(REFGUID, WORD, WORD, LCID, SYSKIND);

void RegisterClass(Scope scope, const ClassEntry& entry, const std::wstring& path) {
    const Library& library = ThisLibrary();
    const std::wstring guid = GuidText(*entry.clsid), key = L"CLSID\\" + guid, progID = library.ProgID(entry);
    const std::wstring version = std::to_wstring(library.major) + L"." + std::to_wstring(library.minor);
    Write(scope, key, nullptr, entry.description);
    Write(scope, key + L"\\InprocServer32", nullptr, path);
    Write(scope, key + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
    Write(scope, key + L"\\ProgID", nullptr, progID);
    Write(scope, key + L"\\VersionIndependentProgID", nullptr, progID);
    Write(scope, key + L"\\TypeLib", nullptr, GuidText(*library.id));
    Write(scope, key + L"\\Version", nullptr, version);
    Write(scope, key + L"\\Programmable", nullptr, L"");
    Write(scope, key + L"\\Implemented Categories\\" + ProgrammableCategory, nullptr, L"");
    if (entry.toolboxBitmap != 0) {
        Write(scope, key + L"\\Control", nullptr, L"");
        Write(scope, key + L"\\MiscStatus", nullptr, L"0");
        Write(scope, key + L"\\MiscStatus\\1", nullptr, std::to_wstring(ControlStatus));
        Write(scope, key + L"\\AuxUserType\\2", nullptr, entry.name); // as IOleObject::GetUserType says them
        Write(scope, key + L"\\AuxUserType\\3", nullptr, library.name);
        for (const ControlVerb& verb : ControlVerbs)
            Write(scope, key + L"\\Verb\\" + std::to_wstring(verb.number), nullptr,
                  verb.name + (L"," + std::to_wstring(verb.menuFlags)) + L"," + std::to_wstring(verb.attributes));
        Write(scope, key + L"\\ToolboxBitmap32", nullptr, path + L", " + std::to_wstring(entry.toolboxBitmap));
        Write(scope, key + L"\\Implemented Categories\\" + ControlCategory, nullptr, L"");
    }
    Write(scope, progID, nullptr, entry.description);
    Write(scope, progID + L"\\CLSID", nullptr, guid);
}

} // namespace

void RegisterLibrary(Scope scope) {
    try {
        std::wstring path = Module::Path();
        for (const ClassEntry& entry : ThisLibrary().classes) RegisterClass(scope, entry, path);
        ComPtr<ITypeLib> types;
        Check(LoadTypeLibEx(path.c_str(), REGKIND_NONE, types.Out()));
        std::wstring folder = path.substr(0, path.find_last_of(L"\\/"));
        Check(scope == Scope::User
                  ? OfAutomation<RegisterForUser>("RegisterTypeLibForUser")(types.Get(), path.data(), folder.data())
                  : RegisterTypeLib(types.Get(), path.data(), folder.data()));
    } catch (...) {
        UnregisterLibrary(scope);
        throw;
    }
}

void UnregisterLibrary(Scope scope) {
    const Library& library = ThisLibrary();
    if (scope == Scope::User)
        OfAutomation<UnregisterForUser>("UnRegisterTypeLibForUser")(*library.id, library.major, library.minor,
                                                                    LOCALE_NEUTRAL, System);
    else
        UnRegisterTypeLib(*library.id, library.major, library.minor, LOCALE_NEUTRAL, System);
    for (const ClassEntry& entry : library.classes) {
        Remove(scope, L"CLSID\\" + GuidText(*entry.clsid));
        Remove(scope, library.ProgID(entry));
    }
}

} // namespace dax
