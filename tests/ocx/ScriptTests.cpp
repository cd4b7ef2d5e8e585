// Scripts and samples as users run them, by the real hosts: their output.
#include "Course.h"
#include "OcxHost.h"
#include "cli/TypicalStart.h"

#include <gmock/gmock.h>

#include <future>
#include <memory>

namespace dax::test {

namespace {

using testing::EndsWith;
using testing::HasSubstr;

class SampleTest : public OcxTest {};
class ScriptTest : public OcxTest {};

// One run of a sample, on a file of its own.
struct SampleRun {
    const wchar_t* script;
    const wchar_t* more; // after the path of the file
    int code;
    const char* output;
};

const SampleRun Runs[] = {
    {L"catalogs.vbs", L"admin other", 0,
     "chosen: Ünother [other], the second\nadministrator: True, super user: True\ndone\n"},
    {L"catalogs.vbs", L"stranger", 1, "chosen:  [], \nunknown user: stranger\n"},
    {L"hierarchy.vbs", L"", 0,
     "the course: 7 entries\n  Title g: 2 lessons, 0 storyboards\n  Title h: 1 lessons, 0 storyboards\n"
     "added: What's new\\The first one\n3 changes\nread back: The first one [NEW-1], 9 entries\n"},
    {L"locks.vbs", L"ann", 0,
     "all: 6 locks, 1 invalid, 3 deletable\nann: 3 locks, 1 invalid, 3 deletable\n"
     "left over: 1 locks, 1 invalid, 1 deletable\nTitle g: 2 locks, 0 invalid, 2 deletable\n"
     "in the panel: 2\nwithout an editor: 0\n"},
    {L"identifiers.js", L"", 0, "G1-02  Title b\nG2-01  Title c\n2 groups, 2 identifiers given\n"},
    {L"lesson-map.vbs", L"", 0,
     "selected: A tour\nthe maps have changed: 1\nselected: Where are we?\nthe maps have changed: 2\n"
     "selected: Welcome\nthe maps have changed: 2\n"
     "Main (2)\n  A tour\n    Where are we?\nExtras (2)\n  Welcome\n  What to remember\n"
     "the script's map: s1 s3\nchecked: s4\nlesson\t1\nstoryboard\ts4\tquestion\t\tWhere are we?\n"
     "map\tMain\tdefault\npage\t1\ts4\n\ndone\n"},
};

} // namespace

TEST_F(SampleTest, ScriptsPrintTheExpectedOutput) {
    for (const SampleRun& run : Runs) {
        SCOPED_TRACE(ToUtf8(FromWide(run.script)));
        const std::wstring script = L"\"" + DataFile(run.script).wstring() + L"\" ";
        std::unique_ptr<TestDatabase> file = std::make_unique<Course>();
        if (script.find(L"catalogs") != std::wstring::npos) file = std::make_unique<Connector>();
        const std::wstring arguments = script + Quoted(file->Name()) + run.more;
        const Outcome outcome = script.find(L".js") == std::wstring::npos
                                    ? RunProgram(L"daxscript.exe", arguments)
                                    : RunProgram(L"C:\\windows\\system32\\cscript.exe", L"//nologo " + arguments);
        EXPECT_EQ(outcome.output, run.output) << outcome.errors;
        EXPECT_EQ(outcome.code, run.code);
    }
}

// Each line of these compares what was described with what is.
TEST_F(SampleTest, BehaviourScriptsPass) {
    const Course course;
    const Connector connector;
    for (const auto& [script, more] : {std::pair{L"behaviour-hierarchy.vbs", std::wstring()},
                                       std::pair{L"behaviour-databases.vbs", Quoted(connector.Name()) + L"admin other"},
                                       std::pair{L"behaviour-locks.vbs", std::wstring(L"ann")}}) {
        const Outcome outcome = RunScript(DataFile(script), Quoted(course.Name()) + more);
        EXPECT_THAT(outcome.output, EndsWith("\neverything is as described\n")) << outcome.errors;
        EXPECT_EQ(outcome.code, 0);
    }
    EXPECT_EQ(RunScript(DataFile(L"behaviour-locks.vbs"), Quoted(course.Name()) + L"stranger").code, 1);
}

TEST_F(SampleTest, TheTypicalStartGoesFromTheConnectorToTheRecord) {
    const TypicalStart start(Engine::SQLite); // the other engines: by the workbench
    const auto outcome = RunScript(DataFile(L"typical-start.vbs"),
                                   Quoted(start.Connector()) + L"anna " + Quoted(start.Catalog()) + L" L-1");
    EXPECT_EQ(outcome.output,
              "1. the connector is valid\n2. picked: Kurs 語 [" + ToUtf8(start.Catalog()) +
                  "], the start\n3. the catalog is valid\n4. loaded: 7 nodes\n"
                  "5. selected: Grundlagen 語, locks: 1\n5. selected: O'Neil's \"first\", locks: 0\n6. page: Welcome\n"
                  "7. the map has changed: 2\n8. saved\n9. the user wants to delete 2 locks\n9. left over: 0 locks\n"
                  "10. recorded for anna\n")
        << outcome.errors;
    EXPECT_EQ(outcome.code, 0);
    start.ExpectDone(u"workstation");
}

TEST_F(SampleTest, TheContainerProgramReceivesTheEvents) {
    const Course course;
    auto running = std::async(std::launch::async, [&] { return RunProgram(L"container.exe", Quoted(course.Name())); });
    HWND window = nullptr, tree = nullptr;
    ASSERT_TRUE(PumpUntil([&] {
        window = FindWindowW(L"DAXContainerSample", ToWide(course.Name()).c_str());
        const HWND control = GetWindow(GetWindow(window, GW_CHILD), GW_CHILD);
        if (control) tree = FindWindowExW(control, nullptr, L"SysTreeView32", nullptr);
        return tree && IsWindowVisible(window);
    }));
    for (const WPARAM key : {VK_DOWN, VK_DOWN, VK_DELETE}) PostMessageW(tree, WM_KEYDOWN, key, 1);
    PostMessageW(window, WM_CLOSE, 0, 0);
    const Outcome outcome = running.get();
    EXPECT_EQ(outcome.output, "selected: velmora database\n7 entries\nselected: Title g\nselected: Title h\n"
                              "to be deleted\nclosed\n");
    EXPECT_EQ(outcome.code, 0);
}

TEST_F(ScriptTest, FaultsNameTheirPlace) {
    const TempFolder folder;
    const std::string badMap = "Class BadMap\nPublic Name\nSub FillTree(nodes, root)\n"
                               "Err.Raise 1234, \"x\", \"cannot\"\nEnd Sub\nEnd Class\n"
                               "Set map = New BadMap\nmap.Name = \"Bad\"\n"
                               "Set lesson = CreateObject(\"ContentObjects.Lesson\")\nlesson.Maps.Add map\n"
                               "Set editor = CreateObject(\"DAXControls.LessonMapEditor\")\n";
    const struct {
        const char16_t* name;
        std::string text;
        int code;
        const char* errors; // a part of them
        const char* output = "";
    } cases[] = {
        {u"runtime.vbs", "WScript.Echo \"ä\"\nx = CLng(\"abc\")\n", 1, "runtime.vbs(2, ", "ä\n"},
        {u"syntax.vbs", "x = 1\nIf x = \n", 1, "syntax.vbs(2, "},
        {u"call.vbs", "Set c = CreateObject(\"DAXControls.Constants\")\n\nc.OCXPath = \"x\"\n", 1, "call.vbs(3, "},
        {u"uncaught.vbs", badMap + "Set editor.Lesson = lesson\n", 1, "uncaught.vbs(4, "}, // and its caller's
        {u"caught.vbs",
         badMap + "On Error Resume Next\nSet editor.Lesson = lesson\nWScript.Echo Err.Number & Err.Description\n", 0,
         "", "1234cannot\n"},
        {u"caught.js",
         "var map = {Name: 'Bad', FillTree: function() { throw new Error('cannot'); }};\n"
         "var lesson = new ActiveXObject('ContentObjects.Lesson');\nlesson.Maps.Add(map);\n"
         "try { new ActiveXObject('DAXControls.LessonMapEditor').Lesson = lesson; }\n"
         "catch (error) { WScript.Echo(error.description); }\n",
         0, "", "cannot\n"},
        {u"none.vbs", "WScript.CreateObject \"No.Such.Class\"\n", 1,
         "none.vbs(1, 1): WScript: There is no class 'No.Such.Class'."},
        {u"own.vbs", "On Error Goto 0\nSet c = CreateObject(\"No.Such.Class\")\n", 1,
         "There is no class 'No.Such.Class'. Check the name, or register its library (register.cmd registers the "
         "controls). (800A01AD)\n    Set c = CreateObject(\"No.Such.Class\")\n"},
        {u"silent.vbs", "WScript.CreateObject \"DAXControls.Constants\", \"c_\"", 1, "raises no events"},
        {u"place.vbs", "x = WScript.Arguments(2)", 1, "There is no argument 2; the script was given 0."},
        {u"count.vbs", "WScript.Sleep 1, 2", 1, "Sleep takes 1 argument, not 2."},
        {u"handler.vbs",
         "Set e = WScript.CreateObject(\"DAXControls.GroupEditor\", \"e_\")\ne.ConnectionString = \"none.db\"\n"
         "e.LoadDatabase\nWScript.Echo \"on\"\nSub E_error ( number )\nEnd Sub",
         1,
         "handler.vbs(5, 1): e_Error takes 1 argument, but the event has 3 arguments (Number, Description, Module). "
         "(8002000E)\n    Sub E_error ( number )\n",
         "on\n"},
        {u"within.vbs",
         "Set e = WScript.CreateObject(\"DAXControls.GroupEditor\", \"e_\")\ne.ConnectionString = \"none.db\"\n"
         "e.LoadDatabase\nSub e_Error(number, description, routine)\n  x = CLng(\"abc\")\nEnd Sub",
         1, "within.vbs(5, "},
        {u"quit.js", "WScript.Echo(1 + 1);\nWScript.Quit(7);\nWScript.Echo('never');\n", 7, "", "2\n"},
        {u"other.txt", "", 2, "other.txt: only"},
    };
    for (const auto& row : cases) {
        const auto outcome = RunScript(ToWide(folder.Write(row.name, row.text)));
        EXPECT_EQ(outcome.code, row.code) << ToUtf8(row.name);
        EXPECT_EQ(outcome.output, row.output) << ToUtf8(row.name);
        EXPECT_THAT(outcome.errors, HasSubstr(row.errors));
    }
    EXPECT_THAT(RunProgram(L"daxscript.exe", L"--help").output, HasSubstr("WScript.ConnectObject OBJECT, PREFIX"));
}

} // namespace dax::test
