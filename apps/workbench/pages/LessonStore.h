// The stored text of a lesson. Controls read and write what is theirs in a content database; the rest is the host's.
#pragma once

#include <string>

namespace dax::workbench {

// `connection` as the controls take it. Both throw HostError.
std::wstring ReadLessonData(const std::wstring& connection, const std::wstring& lessonID);
void WriteLessonData(const std::wstring& connection, const std::wstring& lessonID, const std::wstring& text);

} // namespace dax::workbench
