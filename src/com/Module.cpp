#include "com/ComError.h"
#include "com/Library.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace dax::Module {

namespace {

std::atomic<long> users;
std::mutex guard;
// Loaded only while there are users: the DLL's own, and that of the objects of another library which it returns.
ComPtr<ITypeLib> typeLibraries[2];
const char here = 0;

} // namespace

HINSTANCE Instance() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&here), &module);
    return module;
}

std::wstring Path() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(Instance(), path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

void Lock() { ++users; }

void Unlock() {
    if (--users > 0) return;
    ComPtr<ITypeLib> last[2];
    const std::lock_guard lock(guard);
    if (users == 0) std::swap(last, typeLibraries);
}

bool IsUsed() {
    const auto liveWindows = ThisLibrary().liveWindows;
    return users > 0 || (liveWindows && liveWindows() > 0);
}

ComPtr<ITypeInfo> TypeInfo(const GUID& guid) {
    const std::lock_guard lock(guard);
    ComPtr<ITypeInfo> result;
    HRESULT found = TYPE_E_ELEMENTNOTFOUND;
    for (int number : {1, 2}) {
        ComPtr<ITypeLib>& library = typeLibraries[number - 1];
        const std::wstring place = number == 1 ? Path() : Path() + L"\\" + std::to_wstring(number); // the resource
        if (!library) Check(LoadTypeLibEx(place.c_str(), REGKIND_NONE, library.Out()));
        found = library->GetTypeInfoOfGuid(guid, result.Out());
        if (found != TYPE_E_ELEMENTNOTFOUND) break;
    }
    Check(found);
    return result;
}

} // namespace dax::Module
