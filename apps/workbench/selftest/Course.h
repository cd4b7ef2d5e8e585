// The course that the self-test works on: few entries, with titles in several scripts, and locks of every kind.
#pragma once

#include "data/Connection.h"

#include <string>
#include <vector>

namespace dax::workbench::selftest {

inline constexpr wchar_t courseUser[] = L"anna"; // administers the one catalog of the connector

struct Entry {
    const char16_t* id;
    const char16_t* title;
    const char16_t* identifier;
    const char16_t* parent; // empty: the top level
    int level, position;
    bool isLesson;
};
// In the order of the tree.
const std::vector<Entry>& Entries();
inline constexpr int lockCount = 4, staleLockCount = 2;
inline constexpr wchar_t guestLock[] = L"boris"; // whose locks they are, besides the user's own

// Make the tables, with rows, in one transaction. Throw Error.
void MakeContent(Connection& database);
void MakeConnector(Connection& database, const Text& catalog);
// The tables that both make.
std::vector<Text> TableNames();
bool HasTable(Connection& database, const Text& table);

// A connector and a course in files of their own; the path of the course, whose connector is beside it.
struct CourseFiles {
    std::wstring connector, content;
};
CourseFiles MakeCourseFiles(const std::wstring& folder, const std::wstring& name);

// The first value that the query gives, as text. Throws Error.
std::wstring AskDatabase(const std::wstring& connection, const std::wstring& query);
void RunStatement(const std::wstring& connection, const std::wstring& statement);

} // namespace dax::workbench::selftest
