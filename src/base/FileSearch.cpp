#ifndef _WIN32

#include "base/FileSearch.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace dax {

namespace {

FoundEntry Describe(const std::filesystem::file_status& status) {
    using std::filesystem::perms;
    return {std::filesystem::is_directory(status),
            (status.permissions() & (perms::owner_write | perms::group_write | perms::others_write)) == perms::none};
}

bool Matches(TextView name, TextView pattern) {
    // The positions in the name that the pattern has come to so far.
    std::vector<bool> reached(name.size() + 1);
    reached[0] = true;
    for (const char16_t unit : pattern) {
        if (unit == u'*') { // every position from the first one on
            std::fill(std::find(reached.begin(), reached.end(), true), reached.end(), true);
            continue;
        }
        std::vector<bool> next(reached.size());
        for (size_t at = 0; at < reached.size(); ++at) {
            const bool isAtEnd = at == name.size();
            if (!reached[at]) continue;
            if (unit == u'?' && (isAtEnd || name[at] == u'.')) next[at] = true;
            if (!isAtEnd && (unit == u'?' || unit == name[at])) next[at + 1] = true;
        }
        reached.swap(next);
    }
    return reached.back();
}

bool IsListed(TextView name, TextView pattern) {
    if (Matches(name, pattern)) return true;
    return pattern.ends_with(u".*") && Matches(name, pattern.substr(0, pattern.size() - 2));
}

} // namespace

bool FindEntry(const Text& path, const std::function<bool(const FoundEntry&)>& accepts) {
    const size_t slash = path.rfind(u'/');
    const TextView pattern = TextView(path).substr(slash == Text::npos ? 0 : slash + 1);
    if (pattern.find_first_of(u"*?") == TextView::npos) {
        const auto status = std::filesystem::status(std::filesystem::path(path));
        return std::filesystem::exists(status) && accepts(Describe(status));
    }
    std::vector<std::filesystem::directory_entry> found;
    const Text folder = slash == Text::npos ? Text(u".") : path.substr(0, slash + 1);
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(folder)))
        if (IsListed(FromUtf8(entry.path().filename().string()), pattern)) found.push_back(entry);
    std::sort(found.begin(), found.end());
    return std::any_of(found.begin(), found.end(),
                       [&](const auto& entry) { return accepts(Describe(entry.status())); });
}

} // namespace dax

#endif
