// The JScript and C++ samples as they stand, against a course: what they say and the rows that come of it.
#include "Course.h"
#include "Scripts.h"

#include <algorithm>
#include <future>

namespace dax::test {

namespace {

class SampleTest : public OcxTest {
protected:
    const Course course;
};

std::wstring SystemProgram(const wchar_t* name) {
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    return std::wstring(folder) + L"\\" + name;
}

BOOL CALLBACK KeepTree(HWND child, LPARAM found) {
    wchar_t name[100] = {};
    GetClassNameW(child, name, 100);
    if (std::wstring_view(name) != L"SysTreeView32") return TRUE;
    *reinterpret_cast<HWND*>(found) = child;
    return FALSE;
}

HWND TreeIn(HWND window) {
    HWND tree = nullptr;
    EnumChildWindows(window, KeepTree, reinterpret_cast<LPARAM>(&tree));
    return tree;
}

} // namespace

// By our host and by the system's.
TEST_F(SampleTest, TheIdentifierScriptNumbersLessonsInBothHosts) {
    for (const std::wstring& host : {std::wstring(L"daxscript.exe"), SystemProgram(L"cscript.exe")}) {
        SCOPED_TRACE(ToUtf8(FromWide(host)));
        course.Run({u"UPDATE velmoraLessons SET lessonIdentifier = '' WHERE lessonID IN ('b', 'c')"});
        const std::wstring options = host == L"daxscript.exe" ? L"" : L"//nologo ";
        const std::wstring script = L"\"" + Sample(L"identifiers.js") + L"\" ";
        Outcome outcome = RunProgram(host.c_str(), options + script + Quoted(course.Name()));
        std::erase(outcome.output, '\r');
        EXPECT_EQ(outcome.output, "G1-02  Title b\nG2-01  Title c\n2 groups, 2 identifiers given\n") << outcome.errors;
        EXPECT_EQ(outcome.code, 0u);
        EXPECT_EQ(course.Ask(u"SELECT group_concat(lessonIdentifier, ' ') FROM (SELECT lessonIdentifier FROM "
                             u"velmoraLessons WHERE lessonType = 1 ORDER BY lessonID)"),
                  u"#a G1-02 G2-01 #d");
        const auto missing = RunProgram(host.c_str(), options + script + Quoted(course.Name() + u".none"));
        EXPECT_EQ(missing.code, 1u) << missing.output;
    }
}

TEST_F(SampleTest, TheAutomationProgramAddsALesson) {
    const auto outcome = RunProgram(L"automation.exe", Quoted(course.Name()));
    EXPECT_EQ(outcome.output,
              "valid\n  Title g: 2 entries\n  Title h: 1 entries\nadded: Title g\\Added in C++\nsaved\n");
    EXPECT_EQ(outcome.code, 0u);
    EXPECT_EQ(course.Ask(u"SELECT parentID || ' ' || sortPosition || ' ' || indentLevel || ' ' || lessonIdentifier "
                         u"FROM velmoraLessons WHERE lessonTitle = 'Added in C++'"),
              u"g 3 2 CPP");
    const auto missing = RunProgram(L"automation.exe", Quoted(course.Name() + u".none"));
    EXPECT_EQ(missing.output, "refused: file not found.\n");
    EXPECT_EQ(missing.code, 1u);
}

TEST_F(SampleTest, TheContainerProgramHearsTheUser) {
    auto running = std::async(std::launch::async, [this] {
        return RunProgram(L"container.exe", Quoted(course.Name())); //
    });
    HWND window = nullptr;
    ASSERT_TRUE(PumpUntil([&] {
        window = FindWindowW(L"DAXContainerSample", ToWide(course.Name()).c_str());
        return window && IsWindowVisible(window) && TreeIn(window);
    }));
    for (const WPARAM key : {VK_DOWN, VK_DOWN, VK_DELETE}) PostMessageW(TreeIn(window), WM_KEYDOWN, key, 1);
    PostMessageW(window, WM_CLOSE, 0, 0);
    const Outcome outcome = running.get();
    EXPECT_EQ(outcome.output, "selected: velmora database\n7 entries\nselected: Title g\nselected: Title h\n"
                              "to be deleted\nclosed\n");
    EXPECT_EQ(outcome.code, 0u);
    const auto missing = RunProgram(L"container.exe", Quoted(course.Name() + u".none"));
    EXPECT_TRUE(missing.output.starts_with("failed: ")) << missing.output;
    EXPECT_EQ(missing.code, 1u);
}

} // namespace dax::test
