#include "../../apps/workbench/ui/Ids.h"
#include "Driver.h"
#include "cli/TypicalStart.h"

#include <commctrl.h>
#include <gmock/gmock.h>
#include <objbase.h>

#include <algorithm>
#include <cctype>

namespace dax::test {

using namespace workbench;
using ::testing::AllOf;
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
    const Text shots = folder.File(u"shots");
    Workbench program(
        {Content(), L"--connector", Wide(start.Connector()), L"--user", L"anna", L"--shots", Wide(shots)});
    ASSERT_EQ(program.ExitCode(), 0) << program.Said();
    // Each control's own picture is another one in another state.
    const std::pair<const char*, const char*> states[] = {
        {"validator-valid", "validator-missing"}, {"connector-loaded", "connector-nouser"},
        {"hierarchy-lesson", "hierarchy-group"},  {"lessonmap-opened", "lessonmap-checked"},
        {"locks-all", "locks-selected"},          {"hierarchy-lesson", "hierarchy-maximised"},
    };
    const auto read = [&](const std::string& name) {
        const std::string bytes = ReadBytes(std::filesystem::path(Wide(shots)) / (name + ".png"));
        EXPECT_TRUE(bytes.starts_with("\x89PNG") && bytes.size() > 4000) << name;
        return bytes;
    };
    for (const auto& [one, other] : states) EXPECT_NE(read(one), read(other)) << one;
    EXPECT_EQ(read("hierarchy-restored"), read("hierarchy-lesson")) << "all is painted again";
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
    const std::filesystem::path alone = folder.Path() / "DAXWorkbench.exe";
    std::filesystem::copy_file(WorkbenchPath(), alone);
    CLSID id;
    const bool registered = SUCCEEDED(CLSIDFromProgID(L"DAXControls.DatabaseValidator", &id));
    Workbench program({L"--shots", Wide(folder.File(u"shots"))}, alone);
    ASSERT_EQ(program.ExitCode(), registered ? 0 : 1) << program.Said();
    EXPECT_THAT(program.Said(), HasSubstr(registered ? "" : "regsvr32 daxControls33.ocx"));
}

TEST_F(WorkbenchTest, EditsTheHierarchyByMouseAndKeys) {
    content.Run({u"UPDATE velmoraUserLocks SET lockType = 1, machineName = 'desk' WHERE lessonID = 'l2'"});
    Workbench program({Content()});
    ASSERT_TRUE(program.Show(hierarchyPage)) << program.Said();
    const auto shows = [&](int field, const wchar_t* text) { return program.Shows(hierarchyPage, field, text); };
    const auto title = [&](TextView id) {
        return content.Ask(u"SELECT lessonTitle FROM velmoraLessons WHERE lessonID = '" + Text(id) + u"'");
    };
    ASSERT_TRUE(shows(idResult, L"6 entries loaded.")) << program.Said();
    const HWND tree = program.Inside(program.Field(hierarchyPage, idTree), WC_TREEVIEWW);
    const int height = static_cast<int>(SendMessageW(tree, TVM_GETITEMHEIGHT, 0, 0));
    const auto click = [&](int row, bool isRight = false) {
        program.Click(tree, row == 3 ? 90 : 60, row * height + height / 2, 1, isRight);
    };
    const auto clickGroup = [&] {
        click(1); // the one below the database
        return shows(idIdentifier, L"G-1");
    };
    ASSERT_TRUE(clickGroup());
    EXPECT_TRUE(program.HasFocus(tree));
    program.Type({VK_RIGHT});
    program.Type({VK_DOWN});
    ASSERT_TRUE(shows(idTitle, L"O'Neil's \"first\""));
    EXPECT_EQ(program.FieldText(hierarchyPage, idIdentifier), L"L-1");
    program.Type({VK_MENU, VK_DOWN}); // one entry down

    // What is typed takes effect by Enter, and by whatever the user goes on to.
    const struct {
        const wchar_t* typed;
        std::function<void()> goOn;
    } ways[] = {
        {L"Enter", [&] { program.Type({VK_RETURN}); }},
        {L"another entry", [&] { clickGroup(); }},
        {L"another page", [&] { program.Show(mapPage); }},
        {L"saving", [] {}},
        {L"loading",
         [&] {
             program.Type({VK_F5});
             EXPECT_TRUE(program.Answer(IDYES));
             EXPECT_TRUE(shows(idResult, L"6 entries loaded."));
             clickGroup();
             program.Type({VK_RIGHT});
         }},
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(::testing::PrintToString(way.typed));
        program.Show(hierarchyPage);
        click(3);
        ASSERT_TRUE(shows(idIdentifier, L"L-1"));
        ASSERT_TRUE(program.Fill(hierarchyPage, idTitle, way.typed));
        way.goOn();
        program.Show(hierarchyPage);
        program.Type({VK_CONTROL, 'S'});
        EXPECT_TRUE(program.Until([&] { return Wide(title(u"l1")) == way.typed; }));
    }
    EXPECT_EQ(title(u"l1"), content.Ask(u"SELECT lessonTitle FROM velmoraLessons WHERE parentID = 'g1' AND "
                                        u"sortPosition = 2"))
        << "the movement was saved as well";

    click(3);
    ASSERT_TRUE(shows(idIdentifier, L"L-1"));
    ASSERT_TRUE(program.Fill(hierarchyPage, idTitle, L"mine"));
    program.Type({VK_RETURN});
    EXPECT_TRUE(shows(idResult, L"Updated; not yet saved."));
    EXPECT_TRUE(program.HasFocus(tree)) << "though the other page has a button like it";
    program.Type({VK_CONTROL, 'Z'});
    EXPECT_TRUE(shows(idTitle, L"loading") && shows(idResult, L"Undone"));
    program.Type({VK_CONTROL, 'Y'});
    EXPECT_TRUE(shows(idTitle, L"mine") && shows(idResult, L"Done"));
    // Another author was faster.
    content.Run({u"UPDATE velmoraLessons SET lessonTitle = 'theirs' WHERE lessonID = 'l3'"});
    for (const int answer : {IDCANCEL, IDYES}) {
        program.ClickTool(hierarchyPage, idSave);
        EXPECT_THAT(Workbench::TextsIn(program.Question()), HasSubstr("theirs"));
        EXPECT_TRUE(program.Answer(answer));
        EXPECT_TRUE(shows(idResult, answer == IDYES ? L"6 entries loaded." : L"Nothing was saved"));
        EXPECT_EQ(program.FieldText(hierarchyPage, idTitle) == L"mine", answer == IDCANCEL)
            << "the edits stay till then";
    }
    EXPECT_EQ(title(u"l1") + title(u"l3"), u"loadingtheirs");

    // A group goes with what is in it only when that is said; Enter is the way out.
    ASSERT_TRUE(clickGroup());
    program.Type({VK_DELETE});
    EXPECT_THAT(Workbench::TextsIn(program.Question()),
                AllOf(HasSubstr("Remove all 3"), HasSubstr("Keep the 3, one level up"), HasSubstr("boris on desk")));
    program.Type({VK_RETURN});
    EXPECT_TRUE(program.Until([&] { return IsWindowEnabled(program.Frame()); }));
    // The menu of the Menu key, and the right button's, which selects what it is pressed on.
    EXPECT_TRUE(program.HasFocus(tree));
    program.Type({VK_APPS});
    EXPECT_TRUE(program.HasMenu(true));
    program.Type({VK_ESCAPE});
    EXPECT_TRUE(program.HasMenu(false));
    click(5, true);
    EXPECT_TRUE(program.HasMenu(true));
    EXPECT_TRUE(shows(idIdentifier, L"DUP"));
    program.Type({'N'});
    EXPECT_TRUE(program.HasFocus(program.Field(hierarchyPage, idTitle))) << "to be renamed";

    ASSERT_TRUE(clickGroup());
    program.Type({VK_DELETE});
    EXPECT_TRUE(program.Answer(IDNO));
    EXPECT_TRUE(shows(idResult, L"Removed; not yet saved."));
    // The program does not end with changes unsaved unless it is told to.
    program.Type({VK_MENU, VK_F4});
    EXPECT_TRUE(program.Answer(IDYES));
    EXPECT_EQ(program.ExitCode(), 0) << program.Said();
    EXPECT_EQ(content.Ask(u"SELECT group_concat(lessonID) FROM (SELECT lessonID FROM velmoraLessons ORDER BY 1)"),
              u"g2,l1,l2,l3,x1");
}

// A letter twice would lead to either field by turns, and one of a menu would hide behind a field's.
TEST_F(WorkbenchTest, EveryUnderlinedLetterStandsForOneThing) {
    Workbench program({Content()});
    for (int page = 0; page < pageCount; ++page) {
        ASSERT_TRUE(program.Show(page));
        const std::string texts = Workbench::TextsIn(program.Frame());
        std::string letters = "gh"; // the menus'
        for (size_t at = 0; (at = texts.find('&', at)) != std::string::npos;)
            letters += static_cast<char>(std::tolower(texts.at(++at)));
        std::sort(letters.begin(), letters.end());
        EXPECT_EQ(std::adjacent_find(letters.begin(), letters.end()), letters.end()) << page << ": " << letters;
        EXPECT_GE(letters.size(), 3u);
    }
}

TEST_F(WorkbenchTest, AsksBeforeLocksAreDeletedAndWhenTheyCannotBeRead) {
    Workbench program({Content()});
    ASSERT_TRUE(program.Show(locksPage));
    const auto shows = [&](int field, const wchar_t* text) { return program.Shows(locksPage, field, text); };
    ASSERT_TRUE(shows(idResult, L"3 locks listed.")) << program.Said();
    const HWND list = program.Inside(program.Field(locksPage, idLocks), WC_LISTVIEWW);
    program.Click(list, 20, 40);
    ASSERT_TRUE(program.HasFocus(list));
    program.Type({VK_CONTROL, 'A'});
    program.Type({VK_DELETE});
    EXPECT_THAT(Workbench::TextsIn(program.Question()),
                AllOf(HasSubstr("1 of the 3 selected is valid"), HasSubstr("Delete 3 locks")));
    program.Type({VK_RETURN}); // which deletes nothing then
    EXPECT_TRUE(program.Until([&] { return IsWindowEnabled(program.Frame()); }));
    EXPECT_EQ(content.Ask(u"SELECT Count(*) FROM velmoraUserLocks"), u"3");
    content.Run({u"ALTER TABLE velmoraUserLocks RENAME TO elsewhere"});
    program.Type({VK_F5});
    EXPECT_TRUE(program.Answer(IDABORT));
    EXPECT_TRUE(shows(idResult, L"Refresh: "));
    program.Type({VK_F5});
    ASSERT_TRUE(program.Question());
    content.Run({u"ALTER TABLE elsewhere RENAME TO velmoraUserLocks"});
    EXPECT_TRUE(program.Answer(IDRETRY));
    EXPECT_TRUE(shows(idCounts, L"3 locks:"));
}

} // namespace

} // namespace dax::test
