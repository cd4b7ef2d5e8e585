#include "base/FileSearch.h"

#include <cstdint>
#include <io.h>

namespace dax {

bool FindEntry(const Text& path, const std::function<bool(const FoundEntry&)>& takes) {
    if (path.find(u'\0') != Text::npos) return false;
    struct Search {
        intptr_t handle;
        ~Search() {
            if (handle != -1) _findclose(handle);
        }
    };
    _wfinddata64_t entry;
    const Search search{_wfindfirst64(std::wstring(path.begin(), path.end()).c_str(), &entry)};
    if (search.handle == -1) return false;
    do {
        if (takes({(entry.attrib & _A_SUBDIR) != 0, (entry.attrib & _A_RDONLY) != 0})) return true;
    } while (_wfindnext64(search.handle, &entry) == 0);
    return false;
}

} // namespace dax
