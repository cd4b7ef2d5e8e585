// The samples as they stand: what they say and the rows that come of it.
#include "Course.h"
#include "Scripts.h"
#include "cli/TypicalStart.h"

#include <gmock/gmock.h>

#include <future>
#include <memory>

namespace dax::test {

namespace {

class SampleTest : public OcxTest {};

enum class File { Course, Connector, Missing };

// One run of a sample on a file of its own; "FILE" stands for its path.
struct SampleRun {
    const wchar_t* host;
    const wchar_t* arguments; // ahead of the path: the sample, where the host runs scripts
    File file;
    const wchar_t* more; // behind the path
    DWORD code;
    const char* output;     // its beginning, when the sample is to fail
    TextView question = {}; // asked of the database afterwards
    TextView answer = {};
};

constexpr TextView Identifiers = u"SELECT group_concat(lessonIdentifier, ' ') FROM (SELECT lessonIdentifier FROM "
                                 u"velmoraLessons WHERE lessonType = 1 ORDER BY lessonID)";
constexpr TextView NewRows = u"SELECT lesson.lessonTitle || ' ' || lesson.indentLevel || ' ' || parent.sortPosition "
                             u"FROM velmoraLessons lesson JOIN velmoraLessons parent ON lesson.parentID = "
                             u"parent.lessonID WHERE lesson.lessonTitle IN ('The first one', 'Added in C++')";

const SampleRun Runs[] = {
    {L"daxscript.exe", L"catalogs.vbs", File::Connector, L"admin other", 0,
     "chosen: Ünother [other], the second\nadministrator: True, super user: True\ndone\n",
     u"SELECT lastCatalog FROM velmoraConnectionHistory", u"other"},
    {L"daxscript.exe", L"catalogs.vbs", File::Connector, L"stranger", 1, "chosen:  [], \nunknown user: stranger\n"},
    {L"daxscript.exe", L"validate.vbs", File::Course, L"", 0, "valid: FILE\n"},
    {L"daxscript.exe", L"validate.vbs", File::Missing, L"", 1, "refused (2): file not found.\n"},
    {L"daxscript.exe", L"hierarchy.vbs", File::Course, L"", 0,
     "the course: 7 entries\n  Title g: 2 lessons, 0 storyboards\n  Title h: 1 lessons, 0 storyboards\n"
     "added: What's new\\The first one\n3 changes\nread back: The first one [NEW-1], 9 entries\n",
     NewRows, u"The first one 2 1"},
    {L"daxscript.exe", L"locks.vbs", File::Course, L"ann", 0,
     "all: 6 locks, 1 invalid, 3 deletable\nann: 3 locks, 1 invalid, 3 deletable\n"
     "left over: 1 locks, 1 invalid, 1 deletable\nTitle g: 2 locks, 0 invalid, 2 deletable\n"
     "in the panel: 2\nwithout an editor: 0\n"},
    {L"daxscript.exe", L"identifiers.js", File::Missing, L"", 1, "LoadDatabase has failed\n"},
    {L"daxscript.exe", L"lesson-map.vbs", File::Missing, L"", 0,
     "selected: A tour\nthe maps have changed: 1\nselected: Where are we?\nthe maps have changed: 2\n"
     "selected: Welcome\nthe maps have changed: 2\n"
     "Main (2)\n  A tour\n    Where are we?\nExtras (2)\n  Welcome\n  What to remember\n"
     "the script's map: s1 s3\nchecked: s4\nlesson\t1\nstoryboard\ts4\tquestion\t\tWhere are we?\n"
     "map\tMain\tdefault\npage\t1\ts4\n\ndone\n"},
    {L"cscript.exe", L"identifiers.js", File::Course, L"", 0,
     "G1-02  Title b\nG2-01  Title c\n2 groups, 2 identifiers given\n", Identifiers, u"#a G1-02 G2-01 #d"},
    {L"automation.exe", L"", File::Course, L"", 0,
     "valid\n  Title g: 2 entries\n  Title h: 1 entries\nadded: Title g\\Added in C++\nsaved\n", NewRows,
     u"Added in C++ 2 1"},
    {L"automation.exe", L"", File::Missing, L"", 1, "refused: file not found.\n"},
    {L"container.exe", L"", File::Missing, L"", 1, "failed: "},
};

BOOL CALLBACK KeepTree(HWND child, LPARAM found) {
    wchar_t name[100] = {};
    GetClassNameW(child, name, 100);
    if (std::wstring_view(name) != L"SysTreeView32") return TRUE;
    *reinterpret_cast<HWND*>(found) = child;
    return FALSE;
}

} // namespace

TEST_F(SampleTest, SaysAndWritesWhatItShould) {
    for (const SampleRun& run : Runs) {
        SCOPED_TRACE(ToUtf8(FromWide(std::wstring(run.host) + L" " + run.arguments)));
        const TempFolder folder;
        std::unique_ptr<TestDatabase> database;
        if (run.file == File::Connector) database = std::make_unique<Connector>();
        if (run.file == File::Course) database = std::make_unique<Course>();
        std::wstring program = run.host, arguments;
        if (*run.arguments) arguments = L"\"" + DataFile(run.arguments).wstring() + L"\" ";
        if (program == L"cscript.exe") { // the system's
            wchar_t system[MAX_PATH] = {};
            GetSystemDirectoryW(system, MAX_PATH);
            program = std::wstring(system) + L"\\cscript.exe";
            arguments = L"//nologo " + arguments;
            database->Run({u"UPDATE velmoraLessons SET lessonIdentifier = '' WHERE lessonID IN ('b', 'c')"});
        }
        const Text file = database ? database->Name() : folder.File(u"none.db");
        const Outcome outcome = RunProgram(program.c_str(), arguments + Quoted(file) + run.more);
        std::string expected = run.output;
        if (const size_t place = expected.find("FILE"); place != std::string::npos)
            expected.replace(place, 4, ToUtf8(file));
        EXPECT_EQ(run.code ? outcome.output.substr(0, expected.size()) : outcome.output, expected) << outcome.errors;
        EXPECT_EQ(outcome.code, run.code);
        if (run.question.empty()) continue;
        EXPECT_EQ(database->Ask(Text(run.question)), run.answer);
    }
}

// Each line of these compares what was described with what is.
TEST_F(SampleTest, EverythingIsAsDescribed) {
    const Course course;
    const Connector connector;
    for (const auto& [script, more] : {std::pair{L"behaviour-hierarchy.vbs", std::wstring()},
                                       std::pair{L"behaviour-databases.vbs", Quoted(connector.Name()) + L"admin other"},
                                       std::pair{L"behaviour-locks.vbs", std::wstring(L"ann")}}) {
        const Outcome outcome = RunScript(DataFile(script), Quoted(course.Name()) + more);
        EXPECT_THAT(outcome.output, testing::EndsWith("\neverything is as described\n")) << outcome.errors;
        EXPECT_EQ(outcome.code, 0u);
    }
    EXPECT_EQ(RunScript(DataFile(L"behaviour-locks.vbs"), Quoted(course.Name()) + L"stranger").code, 1u);
}

TEST_F(SampleTest, TheTypicalStartGoesFromTheConnectorToTheRecord) {
    const TypicalStart start(Engine::SQLite); // the other engines: by the workbench
    const auto outcome = RunScript(DataFile(L"typical-start.vbs"),
                                   Quoted(start.Connector()) + L"anna " + Quoted(start.Catalog()) + L" L-1");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, "1. the connector is valid\n"
                              "2. picked: Kurs 語 [" +
                                  ToUtf8(start.Catalog()) +
                                  "], the start\n"
                                  "3. the catalog is valid\n"
                                  "4. loaded: 7 nodes\n"
                                  "5. selected: Grundlagen 語, locks: 1\n"
                                  "5. selected: O'Neil's \"first\", locks: 0\n"
                                  "6. page: Welcome\n"
                                  "7. the map has changed: 2\n"
                                  "8. saved\n"
                                  "9. the user wants to delete 2 locks\n"
                                  "9. left over: 0 locks\n"
                                  "10. recorded for anna\n");
    EXPECT_EQ(outcome.code, 0u);
    start.ExpectDone(u"workstation");
}

TEST_F(SampleTest, TheContainerProgramHearsTheUser) {
    const Course course;
    auto running = std::async(std::launch::async, [&course] {
        return RunProgram(L"container.exe", Quoted(course.Name())); //
    });
    HWND window = nullptr, tree = nullptr;
    ASSERT_TRUE(PumpUntil([&] {
        window = FindWindowW(L"DAXContainerSample", ToWide(course.Name()).c_str());
        if (window) EnumChildWindows(window, KeepTree, reinterpret_cast<LPARAM>(&tree));
        return tree && IsWindowVisible(window);
    }));
    for (const WPARAM key : {VK_DOWN, VK_DOWN, VK_DELETE}) PostMessageW(tree, WM_KEYDOWN, key, 1);
    PostMessageW(window, WM_CLOSE, 0, 0);
    const Outcome outcome = running.get();
    EXPECT_EQ(outcome.output, "selected: velmora database\n7 entries\nselected: Title g\nselected: Title h\n"
                              "to be deleted\nclosed\n");
    EXPECT_EQ(outcome.code, 0u);
}

} // namespace dax::test
