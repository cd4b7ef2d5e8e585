#include "Driver.h"

#include "../../apps/workbench/Ids.h"
#include "cli/TypicalStart.h"

#include <commctrl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <objbase.h>

#include <map>

namespace dax::test {

using namespace workbench;
using ::testing::HasSubstr;

namespace {

class WorkbenchTest : public ::testing::Test {
protected:
    std::wstring Content() const { return Wide(start.Catalog()); }

    const TypicalStart start{Engine::SQLite};
    const TestDatabase& content = start.Content();
    const TempFolder folder;
};

TEST_F(WorkbenchTest, TakesAPictureOfEveryPageInItsStates) {
    const std::wstring shots = Wide(folder.File(u"shots"));
    Workbench program({Content(), L"--connector", Wide(start.Connector()), L"--user", L"anna", L"--shots", shots});
    ASSERT_EQ(program.ExitCode(), 0) << program.Said();
    std::map<std::wstring, Image> images;
    for (const wchar_t* name :
         {L"validator-start",   L"validator-nofile", L"validator-valid",    L"validator-talk",   L"validator-missing",
          L"connector-start",   L"connector-loaded", L"connector-recorded", L"connector-nouser", L"hierarchy-empty",
          L"hierarchy-lesson",  L"hierarchy-group",  L"hierarchy-database", L"hierarchy-error",  L"lessonmap-opened",
          L"lessonmap-checked", L"locks-all",        L"locks-selected",     L"locks-error",      L"design-mode"}) {
        const ::testing::ScopedTrace trace(__FILE__, __LINE__, ::testing::PrintToString(std::wstring(name)));
        const Image image = images[name] = ReadImage(shots + L"\\" + name + L".png");
        EXPECT_GE(image.width, 700);
        EXPECT_GE(image.height, 500);
        EXPECT_GE(image.Colours(8), 8u) << "hardly anything is drawn";
    }
    // The controls are in the pictures: where they are, each state looks different.
    const auto differ = [&](const wchar_t* one, const wchar_t* other, int left, int top, int right, int bottom) {
        const auto part = images[one].Part(left, top, right, bottom);
        return !part.empty() && part != images[other].Part(left, top, right, bottom);
    };
    EXPECT_TRUE(differ(L"validator-valid", L"validator-missing", 16, 27, 97, 60));
    EXPECT_TRUE(differ(L"validator-nofile", L"validator-missing", 16, 27, 97, 60));
    EXPECT_TRUE(differ(L"connector-loaded", L"connector-nouser", 16, 27, 97, 50)) << "DatabaseValidator";
    EXPECT_TRUE(differ(L"hierarchy-lesson", L"hierarchy-group", 16, 17, 64, 60)) << "GroupEditor";
    EXPECT_TRUE(differ(L"hierarchy-lesson", L"hierarchy-group", 68, 28, 97, 54)) << "LessonInfo";
    EXPECT_TRUE(differ(L"hierarchy-lesson", L"hierarchy-group", 68, 57, 97, 65)) << "LockInfo";
    EXPECT_TRUE(differ(L"lessonmap-opened", L"lessonmap-checked", 16, 17, 64, 60)) << "LessonMapEditor";
    EXPECT_TRUE(differ(L"locks-all", L"locks-selected", 16, 21, 97, 60)) << "LockManager";
    // Pictures change nothing.
    EXPECT_EQ(content.Ask(u"SELECT Count(*) FROM velmoraLessons"), u"6");
    EXPECT_EQ(content.Ask(u"SELECT Count(*) FROM velmoraUserLocks"), u"3");
}

TEST_F(WorkbenchTest, RefusesArgumentsInWords) {
    const Text file = folder.Write(u"file.txt", "no folder");
    const struct {
        std::vector<std::wstring> arguments;
        int code;
        const char* words;
    } cases[] = {
        {{L"--nonsense"}, 2, "no option --nonsense"},
        {{L"--user"}, 2, "--user lacks its value"},
        {{L"a.db", L"b.db"}, 2, "also b.db"},
        {{L"--help"}, 0, "--connector CONNECTION"},
        {{L"--shots", Wide(file)}, 1, "file.txt"},
        {{L"--start", Wide(folder.File(u"p"))}, 1, "connector: Refused: veNoCommonConnectionDetails"},
    };
    for (const auto& one : cases) {
        Workbench program(one.arguments);
        EXPECT_EQ(program.ExitCode(), one.code) << one.words;
        EXPECT_THAT(program.Said(), HasSubstr(one.words));
    }
}

// Away from the control library it depends on the machine: the registered controls, or advice.
TEST_F(WorkbenchTest, AwayFromTheLibraryItUsesTheRegisteredControlsOrSaysHow) {
    const std::wstring alone = Wide(folder.File(u"DAXWorkbench.exe"));
    ASSERT_TRUE(CopyFileW(WorkbenchPath().c_str(), alone.c_str(), TRUE));
    CLSID id;
    const bool registered = SUCCEEDED(CLSIDFromProgID(L"DAXControls.DatabaseValidator", &id));
    Workbench program({L"--shots", Wide(folder.File(u"shots"))}, alone);
    ASSERT_EQ(program.ExitCode(), registered ? 0 : 1) << program.Said();
    EXPECT_THAT(program.Said(), HasSubstr(registered ? "" : "regsvr32 daxControls33.ocx"));
}

TEST_F(WorkbenchTest, IsDrivenByTheKeyboard) {
    Workbench program({Content()});
    ASSERT_TRUE(program.Frame());
    const auto result = [&] { return program.FieldText(0, idResult); };
    ASSERT_TRUE(program.Until([&] { return result() == L"Valid."; })) << program.Said();

    const HWND field = program.Field(0, idConnection);
    ASSERT_TRUE(program.Until([&] { return program.Focus() == field; }));
    const std::wstring missing = Content() + L".missing";
    SendMessageW(field, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(missing.c_str()));
    program.Press(field, VK_F5);
    EXPECT_TRUE(program.Until([&] { return result().find(L"veMDBNotFound (2)") != std::wstring::npos; }));

    SendMessageW(field, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(Content().c_str()));
    program.Press(field, VK_RETURN);
    EXPECT_TRUE(program.Until([&] { return result() == L"Valid."; }));

    program.Press(field, VK_ESCAPE);
    const HWND list = GetDlgItem(program.Frame(), idPages);
    EXPECT_TRUE(program.Until([&] { return program.Focus() == list; }));
    program.Press(list, VK_DOWN);
    EXPECT_TRUE(program.Until([&] { return IsWindowVisible(program.Field(1, idConnection)); }));
    EXPECT_FALSE(IsWindowVisible(field));

    PostMessageW(program.Frame(), WM_CLOSE, 0, 0);
    EXPECT_EQ(program.ExitCode(), 0) << program.Said();
}

TEST_F(WorkbenchTest, EditsTheHierarchyByMouseAndKeys) {
    constexpr int page = 2;
    Workbench program({Content()});
    ASSERT_TRUE(program.Show(page));
    const auto shows = [&](int field, const wchar_t* text) {
        return program.Until([&] { return program.FieldText(page, field) == text; });
    };
    ASSERT_TRUE(shows(idResult, L"6 entries loaded.")) << program.Said();
    const HWND tree = program.Inside(program.Field(page, idTree), WC_TREEVIEWW);
    const int row = static_cast<int>(SendMessageW(tree, TVM_GETITEMHEIGHT, 0, 0));
    program.Click(tree, 60, row + row / 2); // the one below the database
    ASSERT_TRUE(shows(idIdentifier, L"G-1"));
    EXPECT_TRUE(program.Until([&] { return program.Focus() == tree; }));
    program.Press(tree, VK_RIGHT);
    program.Press(tree, VK_DOWN);
    ASSERT_TRUE(shows(idTitle, L"O'Neil's \"first\""));
    EXPECT_EQ(program.FieldText(page, idIdentifier), L"L-1");

    program.Press(tree, VK_DOWN, true);
    ASSERT_TRUE(program.Fill(page, idTitle, L"Alpha of today"));
    program.Press(program.Field(page, idTitle), VK_RETURN);
    EXPECT_TRUE(shows(idResult, L"Updated; not yet saved."));
    program.Command(page, idSave);
    EXPECT_TRUE(shows(idResult, L"Saved."));
    EXPECT_EQ(content.Ask(u"SELECT lessonTitle FROM velmoraLessons WHERE parentID = 'g1' AND sortPosition = 2"),
              u"Alpha of today");

    program.Press(tree, VK_DELETE);
    EXPECT_TRUE(program.Answer(IDNO));
    program.Press(tree, VK_UP);
    ASSERT_TRUE(shows(idIdentifier, L"L-2"));
    program.Press(tree, VK_DELETE);
    EXPECT_TRUE(program.Answer(IDYES));
    EXPECT_TRUE(shows(idResult, L"Removed; not yet saved."));
    // The program does not end with changes unsaved unless it is told to.
    PostMessageW(program.Frame(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(program.Answer(IDYES));
    EXPECT_EQ(program.ExitCode(), 0) << program.Said();
    EXPECT_EQ(content.Ask(u"SELECT group_concat(lessonID) FROM (SELECT lessonID FROM velmoraLessons ORDER BY 1)"),
              u"g1,g2,l1,l3,x1");
}

// In a locked tree Enter opens the map, too; otherwise the key would be the dialog's.
TEST_F(WorkbenchTest, OpensALessonsMapByKey) {
    constexpr int hierarchy = 2, map = 3;
    Workbench program({Content()});
    ASSERT_TRUE(program.Show(hierarchy));
    const HWND tree = program.Inside(program.Field(hierarchy, idTree), WC_TREEVIEWW);
    const int row = static_cast<int>(SendMessageW(tree, TVM_GETITEMHEIGHT, 0, 0));
    const auto shows = [&](int page, int field, const wchar_t* text) {
        return program.Until([&] { return program.FieldText(page, field) == text; });
    };
    program.Click(tree, 60, row + row / 2);
    ASSERT_TRUE(shows(hierarchy, idIdentifier, L"G-1"));
    program.Press(tree, VK_RIGHT);
    program.Press(tree, VK_DOWN);
    ASSERT_TRUE(shows(hierarchy, idIdentifier, L"L-1"));
    PostMessageW(program.Field(hierarchy, idLocked), BM_CLICK, 0, 0);
    program.Click(tree, 90, 2 * row + row / 2);
    ASSERT_TRUE(program.Until([&] { return program.Focus() == tree; }));
    program.Press(tree, VK_RETURN);
    ASSERT_TRUE(shows(map, idCounts, L"3 pages in 1 map, 0 checked")) << program.Said();

    ASSERT_TRUE(program.Fill(map, idSearch, L"q-1"));
    program.Press(program.Field(map, idSearch), VK_RETURN);
    ASSERT_TRUE(shows(map, idIdentifier, L"Q-1"));
    ASSERT_TRUE(program.Fill(map, idTitle, L"Page of today"));
    program.Press(program.Field(map, idTitle), VK_RETURN);
    EXPECT_TRUE(shows(map, idResult, L"Updated; not yet saved."));
    program.Command(map, idSave);
    EXPECT_TRUE(shows(map, idResult, L"Saved."));
    EXPECT_EQ(content.Ask(u"SELECT lessonData LIKE '%s2%Page of today%' FROM velmoraLessons WHERE lessonID = 'l1'"),
              u"1");
}

TEST_F(WorkbenchTest, AsksWhenTheLocksCannotBeRead) {
    constexpr int page = 4;
    Workbench program({Content()});
    ASSERT_TRUE(program.Show(page));
    const auto shows = [&](int field, const wchar_t* text) {
        return program.Until([&] { return program.FieldText(page, field).starts_with(text); });
    };
    ASSERT_TRUE(shows(idResult, L"3 locks listed.")) << program.Said();
    content.Run({u"ALTER TABLE velmoraUserLocks RENAME TO elsewhere"});
    PostMessageW(program.Field(page, idLoad), BM_CLICK, 0, 0);
    EXPECT_TRUE(program.Answer(IDABORT));
    EXPECT_TRUE(shows(idResult, L"Refresh: "));
    PostMessageW(program.Field(page, idLoad), BM_CLICK, 0, 0);
    ASSERT_TRUE(program.Question());
    content.Run({u"ALTER TABLE elsewhere RENAME TO velmoraUserLocks"});
    EXPECT_TRUE(program.Answer(IDRETRY));
    EXPECT_TRUE(shows(idCounts, L"3 locks:"));
}

} // namespace

} // namespace dax::test
