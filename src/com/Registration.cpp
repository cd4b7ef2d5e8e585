#include "com/Registration.h"

#include "com/ComError.h"
#include "com/Library.h"
#include "com/RegistryEntries.h"

namespace dax {

namespace {

constexpr SYSKIND System = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;

// The part of the registry that holds the classes of a scope.
HKEY Root(Scope scope) { return scope == Scope::User ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE; }

std::wstring Place(const std::wstring& key) { return L"Software\\Classes\\" + key; }

void Write(Scope scope, const RegistryEntry& entry) {
    HKEY opened = nullptr;
    LSTATUS status =
        RegCreateKeyExW(Root(scope), Place(entry.key).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &opened, nullptr);
    if (status == ERROR_SUCCESS) {
        status =
            RegSetValueExW(opened, entry.name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(entry.value.c_str()),
                           static_cast<DWORD>((entry.value.size() + 1) * sizeof(wchar_t)));
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

// A file of UTF-8 text, one line per entry.
class List {
public:
    explicit List(const std::wstring& path)
        : file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {
        if (file == INVALID_HANDLE_VALUE) throw ComError(HRESULT_FROM_WIN32(GetLastError()));
    }
    List(const List&) = delete;
    List& operator=(const List&) = delete;
    ~List() { CloseHandle(file); }

    void Add(const RegistryEntry& entry) {
        const std::wstring line = entry.key + L"\t" + entry.name + L"\t" + entry.value + L"\n";
        const int length = static_cast<int>(line.size());
        std::string bytes(line.size() * 3, '\0');
        const int used = WideCharToMultiByte(CP_UTF8, 0, line.c_str(), length, bytes.data(),
                                             static_cast<int>(bytes.size()), nullptr, nullptr);
        DWORD written = 0;
        if (!WriteFile(file, bytes.data(), static_cast<DWORD>(used), &written, nullptr))
            throw ComError(HRESULT_FROM_WIN32(GetLastError()));
    }

private:
    HANDLE file;
};

} // namespace

void RegisterLibrary(Scope scope) {
    try {
        std::wstring path = Module::Path();
        for (const RegistryEntry& entry : ClassEntries(path)) Write(scope, entry);
        ComPtr<ITypeLib> types;
        Check(LoadTypeLibEx(path.c_str(), REGKIND_NONE, types.Out()));
        std::wstring folder = path.substr(0, path.find_last_of(L"\\/") + 1); // as installers use it
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

void ListRegistration(const std::wstring& file, const std::wstring& path) {
    List list(file);
    for (const RegistryEntry& entry : ClassEntries(path)) list.Add(entry);
    for (const RegistryEntry& entry : TypeEntries(path)) list.Add(entry);
}

} // namespace dax
