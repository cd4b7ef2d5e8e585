// The real program under real input: its command line, its pages, and the whole start of an application.
#include "../../apps/workbench/ui/Ids.h"
#include "Driver.h"
#include "cli/TypicalStart.h"

#include <commctrl.h>
#include <gmock/gmock.h>

#include <cctype>
#include <set>

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
    ASSERT_EQ(program.ExitCode(), 0) << program.Output();
    // Each control's own picture is another one in another state.
    const std::pair<const char*, const char*> states[] = {
        {"validator-valid", "validator-missing"}, {"connector-loaded", "connector-nouser"},
        {"hierarchy-lesson", "hierarchy-group"},  {"lessonmap-opened", "lessonmap-checked"},
        {"locks-all", "locks-selected"},          {"hierarchy-lesson", "hierarchy-maximised"},
    };
    const auto read = [&](const std::string& name) {
        const std::string bytes = ReadFile(std::filesystem::path(Wide(shots)) / (name + ".png"));
        EXPECT_TRUE(bytes.starts_with("\x89PNG") && bytes.size() > 4000) << name;
        return bytes;
    };
    for (const auto& [one, other] : states) EXPECT_NE(read(one), read(other)) << one;
    EXPECT_EQ(read("hierarchy-restored"), read("hierarchy-lesson")) << "all is painted again";
    // Pictures change nothing.
    EXPECT_EQ(content.Query(u"SELECT Count(*) FROM velmoraLessons"), u"6");
    EXPECT_EQ(content.Query(u"SELECT Count(*) FROM velmoraUserLocks"), u"3");
}

TEST_F(WorkbenchTest, InvalidArgumentsGetAMessage) {
    const Text file = folder.Write(u"file.txt", "no folder");
    const struct {
        std::vector<std::wstring> arguments;
        int code;
        const char* words;
    } cases[] = {
        {{L"--nonsense"}, 2, "no option --nonsense"},
        {{L"--user"}, 2, "--user needs a value"},
        {{L"a.db", L"b.db"}, 2, "also b.db"},
        {{L"--help"}, 0, "--connector CONNECTION"},
        {{L"--shots", Wide(file)}, 1, "file.txt"},
        {{L"--start", Wide(folder.File(u"p"))}, 1, "connector: Refused: veNoCommonConnectionDetails"},
    };
    for (const auto& one : cases) {
        Workbench program(one.arguments);
        EXPECT_EQ(program.ExitCode(), one.code) << one.words;
        EXPECT_THAT(program.Output(), HasSubstr(one.words));
    }
}

TEST_F(WorkbenchTest, UsesTheRegisteredControlsAwayFromTheLibrary) {
    const std::filesystem::path alone = folder.Path() / "DAXWorkbench.exe";
    std::filesystem::copy_file(WorkbenchPath(), alone);
    Workbench program({L"--shots", Wide(folder.File(u"shots"))}, alone);
    EXPECT_EQ(program.ExitCode(), 0) << program.Output();
}

TEST_F(WorkbenchTest, EditsTheHierarchyByMouseAndKeys) {
    content.Run({u"UPDATE velmoraUserLocks SET lockType = 1, machineName = 'desk' WHERE lessonID = 'l2'"});
    Workbench program({Content()});
    ASSERT_TRUE(program.Show(hierarchyPage)) << program.Output();
    const auto shows = [&](int field, const wchar_t* text) { return program.Shows(hierarchyPage, field, text); };
    const auto title = [&](TextView id) {
        return content.Query(u"SELECT lessonTitle FROM velmoraLessons WHERE lessonID = '" + Text(id) + u"'");
    };
    ASSERT_TRUE(shows(idResult, L"6 entries loaded.")) << program.Output();
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

    // What is typed takes effect by Enter, and when the user continues with anything else.
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
    EXPECT_EQ(title(u"l1"), content.Query(u"SELECT lessonTitle FROM velmoraLessons WHERE parentID = 'g1' AND "
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
    // Another author has saved before.
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

    // A group is removed with its content only when that is chosen; Enter cancels.
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
    // The program does not end with changes unsaved unless that is chosen.
    program.Type({VK_MENU, VK_F4});
    EXPECT_TRUE(program.Answer(IDYES));
    EXPECT_EQ(program.ExitCode(), 0) << program.Output();
    EXPECT_EQ(content.Query(u"SELECT group_concat(lessonID) FROM (SELECT lessonID FROM velmoraLessons ORDER BY 1)"),
              u"g2,l1,l2,l3,x1");
}

// A repeated letter would alternate between two fields, and one of a menu would be hidden by a field's.
TEST_F(WorkbenchTest, EveryUnderlinedLetterIsUnique) {
    Workbench program({Content()});
    for (int page = 0; page < pageCount; ++page) {
        ASSERT_TRUE(program.Show(page));
        const std::string texts = Workbench::TextsIn(program.Frame());
        std::set<int> letters{'g', 'h'}; // the menus'
        for (size_t at = 0; (at = texts.find('&', at)) != std::string::npos;)
            EXPECT_TRUE(letters.insert(std::tolower(texts.at(++at))).second) << page << ": " << texts[at];
        EXPECT_GE(letters.size(), 3u);
    }
}

TEST_F(WorkbenchTest, AsksBeforeLocksAreDeletedAndWhenTheyCannotBeRead) {
    Workbench program({Content()});
    ASSERT_TRUE(program.Show(locksPage));
    const auto shows = [&](int field, const wchar_t* text) { return program.Shows(locksPage, field, text); };
    ASSERT_TRUE(shows(idResult, L"3 locks listed.")) << program.Output();
    const HWND list = program.Inside(program.Field(locksPage, idLocks), WC_LISTVIEWW);
    program.Click(list, 20, 40);
    ASSERT_TRUE(program.HasFocus(list));
    program.Type({VK_CONTROL, 'A'});
    program.Type({VK_DELETE});
    EXPECT_THAT(Workbench::TextsIn(program.Question()),
                AllOf(HasSubstr("1 of the 3 selected is valid"), HasSubstr("Delete 3 locks")));
    program.Type({VK_RETURN}); // which deletes nothing then
    EXPECT_TRUE(program.Until([&] { return IsWindowEnabled(program.Frame()); }));
    EXPECT_EQ(content.Query(u"SELECT Count(*) FROM velmoraUserLocks"), u"3");
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

// The whole start of an application, by keys alone.
class StartTest : public ::testing::TestWithParam<Engine> {};
INSTANTIATE_TEST_SUITE_P(Engines, StartTest, ::testing::ValuesIn(AllEngines()), EngineName);

TEST_P(StartTest, FromTheConnectorToTheRecord) {
    DAX_NEEDS_ENGINE(GetParam());
    const TypicalStart start(GetParam());
    Workbench program({L"--connector", Wide(start.Connector()), L"--user", L"anna"});
    const auto shows = [&](int page, int field, const wchar_t* text) { return program.Shows(page, field, text); };
    const auto push = [&](WORD letter) { program.Type({VK_MENU, letter}); }; // the underlined one
    ASSERT_TRUE(program.Show(connectorPage)) << program.Output();
    EXPECT_FALSE(IsWindowEnabled(program.Field(connectorPage, idOpen)));
    push('R');
    EXPECT_TRUE(shows(connectorPage, idResult, L"Nothing recorded"));
    push('L');
    EXPECT_TRUE(shows(connectorPage, idResult, L"Valid."));
    push('D');
    ASSERT_TRUE(shows(connectorPage, idResult, L"Catalogs loaded."));
    push('P');
    EXPECT_TRUE(program.HasFocus(program.Field(connectorPage, idPicker)));
    program.Type({VK_DOWN});
    program.Type({VK_UP});
    program.Type({VK_TAB}); // out of the control
    EXPECT_TRUE(program.HasFocus(program.Field(connectorPage, idEnabled)));
    push('O');
    ASSERT_TRUE(shows(validatorPage, idResult, L"Valid.")) << program.Output();
    EXPECT_EQ(program.FieldText(validatorPage, idConnection).find(L"p;w"), std::wstring::npos) << "the password";

    EXPECT_TRUE(program.Show(hierarchyPage));
    ASSERT_TRUE(shows(hierarchyPage, idResult, L"6 entries loaded."));
    if (GetParam() != Engine::SQLite) return; // from here on all engines are the same
    program.Type({VK_CONTROL, 'F'});
    EXPECT_TRUE(program.HasFocus(program.Field(hierarchyPage, idSearch)));
    program.Write("l-1");
    program.Type({VK_RETURN});
    EXPECT_TRUE(shows(hierarchyPage, idResult, L"Found."));
    program.Type({VK_TAB});
    program.Type({VK_TAB});
    EXPECT_TRUE(program.HasFocus(program.Field(hierarchyPage, idTree)));
    program.Type({VK_LEFT});
    ASSERT_TRUE(shows(hierarchyPage, idTitle, L"Grundlagen"));
    program.Type({VK_DOWN});
    ASSERT_TRUE(shows(hierarchyPage, idTitle, L"O'Neil's"));
    program.Type({VK_RETURN});
    ASSERT_TRUE(shows(mapPage, idCounts, L"3 pages in 1 map")) << program.Output();
    program.Type({VK_CONTROL, 'F'});
    program.Write("intro");
    program.Type({VK_RETURN});
    ASSERT_TRUE(shows(mapPage, idTitle, L"Welcome"));
    program.Type({VK_MENU, VK_DOWN});
    program.Type({VK_CONTROL, 'S'});
    EXPECT_TRUE(shows(mapPage, idResult, L"Saved."));

    EXPECT_TRUE(program.Show(locksPage));
    ASSERT_TRUE(shows(locksPage, idResult, L"3 locks listed."));
    push('S');
    EXPECT_TRUE(program.HasFocus(program.Field(locksPage, idDisplay)));
    program.Type({VK_END}); // those that are not valid
    ASSERT_TRUE(shows(locksPage, idResult, L"2 locks listed."));
    for (int i = 0; i < 4; ++i) program.Type({VK_TAB});
    ASSERT_TRUE(program.HasFocus(program.Field(locksPage, idLocks)));
    program.Type({VK_CONTROL, 'A'});
    program.Type({VK_DELETE});
    ASSERT_TRUE(program.Question());
    program.Type({VK_RETURN});
    EXPECT_TRUE(shows(locksPage, idCounts, L"0 locks:"));

    EXPECT_TRUE(program.Show(connectorPage));
    push('R');
    EXPECT_TRUE(shows(connectorPage, idResult, L"Connection recorded for anna"));
    program.Type({VK_MENU, VK_F4});
    EXPECT_EQ(program.ExitCode(), 0) << program.Output();
    start.ExpectDone({});
}

} // namespace dax::test
