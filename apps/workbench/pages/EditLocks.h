// The live locks of those who edit lessons, for questions before something is removed.
#pragma once

#include <string>
#include <vector>

namespace dax::workbench {

// Who edits one of these lessons at the moment, a line for each lock, ten at most; empty when nobody does. When the
// locks cannot be read, it says that instead. `connection` as the controls take it.
std::wstring DescribeEditLocks(const std::wstring& connection, const std::vector<std::wstring>& lessonIDs);

} // namespace dax::workbench
