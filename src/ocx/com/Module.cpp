#include "ocx/com/Fault.h"
#include "ocx/com/Library.h"

#include <atomic>
#include <mutex>

namespace dax::Module {

namespace {

std::atomic<long> users;
std::mutex guard;
ComPtr<ITypeLib> typeLibrary; // held only while there are users
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
    ComPtr<ITypeLib> last;
    const std::lock_guard lock(guard);
    if (users == 0) last = std::move(typeLibrary);
}

bool IsUsed() {
    const auto liveWindows = ThisLibrary().liveWindows;
    return users > 0 || (liveWindows && liveWindows() > 0);
}

ComPtr<ITypeInfo> TypeInfo(const GUID& guid) {
    const std::lock_guard lock(guard);
    if (!typeLibrary) Check(LoadTypeLibEx(Path().c_str(), REGKIND_NONE, typeLibrary.Out()));
    ComPtr<ITypeInfo> result;
    Check(typeLibrary->GetTypeInfoOfGuid(guid, result.Out()));
    return result;
}

} // namespace dax::Module
