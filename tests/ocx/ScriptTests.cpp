// The samples as they stand, and faulty scripts, run by the real script host.
#include "Connector.h"
#include "Course.h"
#include "Scripts.h"
#include "cli/TypicalStart.h"

namespace dax::test {

namespace {

class ScriptTest : public OcxTest {};

} // namespace

TEST_F(ScriptTest, TheCatalogSampleHearsItsEvent) {
    const Connector connector;
    const auto admin = RunScript(Sample(L"catalogs.vbs"), Quoted(connector.ConnectionString()) + L"admin other");
    EXPECT_EQ(admin.errors, "");
    EXPECT_EQ(admin.output, "chosen: Ünother [other], the second\nadministrator: True, super user: True\ndone\n");
    EXPECT_EQ(admin.code, 0u);
    EXPECT_EQ(connector.Ask(u"SELECT lastCatalog FROM velmoraConnectionHistory"), u"other");
    const auto stranger = RunScript(Sample(L"catalogs.vbs"), Quoted(connector.ConnectionString()) + L"stranger");
    EXPECT_EQ(stranger.output, "chosen:  [], \nunknown user: stranger\n");
    EXPECT_EQ(stranger.code, 1u);
}

TEST_F(ScriptTest, TheValidationSampleTellsGoodFromBad) {
    const TestDatabase content(Engine::SQLite);
    content.Run(Schema::CreateStatements(Schema::Database::Content, Engine::SQLite));
    const auto good = RunScript(Sample(L"validate.vbs"), Quoted(content.Name()));
    EXPECT_EQ(good.output, "valid: " + ToUtf8(content.Name()) + "\n") << good.errors;
    EXPECT_EQ(good.code, 0u);
    const auto missing = RunScript(Sample(L"validate.vbs"), Quoted(content.Name() + u".none"));
    EXPECT_EQ(missing.output, "refused (2): file not found.\n") << missing.errors;
    EXPECT_EQ(missing.code, 1u);
}

TEST_F(ScriptTest, TheHierarchySampleAddsToACourse) {
    const Course course;
    const auto outcome = RunScript(Sample(L"hierarchy.vbs"), Quoted(course.Name()));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, "the course: 7 entries\n"
                              "  Title g: 2 lessons, 0 storyboards\n"
                              "  Title h: 1 lessons, 0 storyboards\n"
                              "added: What's new\\The first one\n"
                              "3 changes\n"
                              "read back: The first one [NEW-1], 9 entries\n");
    EXPECT_EQ(outcome.code, 0u);
    EXPECT_EQ(course.Ask(u"SELECT lesson.lessonTitle || ' ' || lesson.indentLevel || ' ' || parent.sortPosition FROM "
                         u"velmoraLessons lesson JOIN velmoraLessons parent ON lesson.parentID = parent.lessonID "
                         u"WHERE parent.lessonTitle = 'What''s new'"),
              u"The first one 2 1");
    const auto missing = RunScript(Sample(L"hierarchy.vbs"), Quoted(course.Name() + u".none"));
    EXPECT_TRUE(missing.output.starts_with("LoadDatabase has failed: ")) << missing.output;
    EXPECT_EQ(missing.code, 1u);
}

TEST_F(ScriptTest, TheLockSampleCountsThoseOfACourse) {
    const Course course;
    const auto outcome = RunScript(Sample(L"locks.vbs"), Quoted(course.Name()) + L"ann");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, "all: 6 locks, 1 invalid, 3 deletable\n"
                              "ann: 3 locks, 1 invalid, 3 deletable\n"
                              "left over: 1 locks, 1 invalid, 1 deletable\n"
                              "Title g: 2 locks, 0 invalid, 2 deletable\n"
                              "in the panel: 2\n"
                              "without an editor: 0\n");
    EXPECT_EQ(outcome.code, 0u);
    const auto missing = RunScript(Sample(L"locks.vbs"), Quoted(course.Name() + u".none") + L"ann");
    EXPECT_TRUE(missing.output.starts_with("error when updating the lock display: ")) << missing.output;
    EXPECT_EQ(missing.code, 1u);
}

// The course that the command line makes.
TEST_F(ScriptTest, TheSamplesWorkOnASampleCourse) {
    const TempFolder folder;
    const Text file = folder.File(u"course.mdb");
    const auto made = RunProgram(L"dax.exe", L"sample " + Quoted(file) + L"--lessons 30");
    ASSERT_EQ(made.code, 0u) << made.errors;
    for (const auto& [script, last] : {std::pair{L"hierarchy.vbs", "read back: The first one [NEW-1], "},
                                       std::pair{L"locks.vbs", "without an editor: 0\n"}}) {
        const auto outcome = RunScript(Sample(script), Quoted(file) + L"anna");
        EXPECT_EQ(outcome.code, 0u) << outcome.errors;
        EXPECT_NE(outcome.output.find(last), std::string::npos) << outcome.output;
    }
}

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
    const struct {
        const char16_t* name;
        const char* text;
        DWORD code;
        const char* place;
        const char* output;
    } cases[] = {
        {u"runtime.vbs", "WScript.Echo \"ä\"\nx = CLng(\"abc\")\n", 1, "runtime.vbs(2, ", "ä\n"},
        {u"syntax.vbs", "x = 1\nIf x = \n", 1, "syntax.vbs(2, ", ""},
        {u"call.vbs", "Set c = CreateObject(\"DAXControls.Constants\")\n\nc.OCXPath = \"x\"\n", 1, "call.vbs(3, ", ""},
        {u"none.vbs", "WScript.CreateObject \"No.Such.Class\"\n", 1, "none.vbs(1, ", ""},
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
