// The longest sample, and faulty scripts, run by the real script host.
#include "Scripts.h"
#include "cli/TypicalStart.h"

namespace dax::test {

namespace {

class ScriptTest : public OcxTest {};

} // namespace

TEST_F(ScriptTest, TheTypicalStartGoesFromTheConnectorToTheRecord) {
    for (const Engine engine : AllEngines()) {
        if (!WhyNot(engine).empty()) continue; // a file needs no server
        const TypicalStart start(engine);
        const auto outcome = RunScript(Sample(L"typical-start.vbs"),
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
        const auto guest = RunScript(Sample(L"typical-start.vbs"),
                                     Quoted(start.Connector()) + L"guest " + Quoted(start.Catalog()) + L" L-1");
        EXPECT_EQ(guest.output, "refused: the connector, 8 \n");
        EXPECT_EQ(guest.code, 1u);
    }
}

TEST_F(ScriptTest, FaultsNameTheirPlace) {
    const TempFolder folder;
    const std::string badMap = "Class BadMap\nPublic Name\nPublic Fails\nSub FillTree(nodes, root)\n"
                               "If Fails Then Err.Raise 1234, \"x\", \"cannot\"\nEnd Sub\n"
                               "Sub ReadLayout(root)\nFillTree Nothing, root\nEnd Sub\nEnd Class\n"
                               "Set map = New BadMap\nmap.Name = \"Bad\"\nmap.Fails = True\n"
                               "Set lesson = CreateObject(\"ContentObjects.Lesson\")\nlesson.Maps.Add map\n"
                               "Set editor = CreateObject(\"DAXControls.LessonMapEditor\")\n";
    const struct {
        const char16_t* name;
        std::string text;
        DWORD code;
        const char* place;
        const char* output;
    } cases[] = {
        {u"runtime.vbs", "WScript.Echo \"ä\"\nx = CLng(\"abc\")\n", 1, "runtime.vbs(2, ", "ä\n"},
        {u"syntax.vbs", "x = 1\nIf x = \n", 1, "syntax.vbs(2, ", ""},
        {u"call.vbs", "Set c = CreateObject(\"DAXControls.Constants\")\n\nc.OCXPath = \"x\"\n", 1, "call.vbs(3, ", ""},
        {u"none.vbs", "WScript.CreateObject \"No.Such.Class\"\n", 1, "none.vbs(1, ", ""},
        {u"uncaught.vbs", badMap + "Set editor.Lesson = lesson\n", 1, "uncaught.vbs(5, ", ""}, // and its caller's
        {u"caught.vbs",
         badMap + "On Error Resume Next\nSet editor.Lesson = lesson\nWScript.Echo Err.Number & Err.Description\n"
                  "map.Fails = False\nSet editor.Lesson = lesson\nmap.Fails = True\n"
                  "Set page = CreateObject(\"ContentObjects.Storyboard\")\neditor.AddStoryboard page\n"
                  "WScript.Echo Err.Number & Err.Description\n",
         0, "", "1234cannot\n1234cannot\n"},
        {u"caught.js",
         "var map = {Name: 'Bad', FillTree: function() { throw new Error('cannot'); }};\n"
         "var lesson = new ActiveXObject('ContentObjects.Lesson');\nlesson.Maps.Add(map);\n"
         "try { new ActiveXObject('DAXControls.LessonMapEditor').Lesson = lesson; }\n"
         "catch (error) { WScript.Echo(error.description); }\n",
         0, "", "cannot\n"},
        {u"quit.js", "WScript.Echo(1 + 1);\nWScript.Quit(7);\nWScript.Echo('never');\n", 7, "", "2\n"},
        {u"other.txt", "", 2, "other.txt: only", ""},
    };
    for (const auto& row : cases) {
        const auto outcome = RunScript(ToWide(folder.Write(row.name, row.text)));
        EXPECT_EQ(outcome.code, row.code) << ToUtf8(row.name);
        EXPECT_EQ(outcome.output, row.output) << ToUtf8(row.name);
        EXPECT_NE(outcome.errors.find(row.place), std::string::npos) << outcome.errors;
    }
}

} // namespace dax::test
