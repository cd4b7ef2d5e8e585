// The whole start of an application through the real program, by mouse and keys.
#include "../../apps/workbench/Ids.h"
#include "Driver.h"
#include "cli/TypicalStart.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <sstream>

namespace dax::test {

using namespace workbench;

namespace {

enum Pages { validatorPage, connectorPage, hierarchyPage, mapPage, locksPage };

class StartTest : public ::testing::TestWithParam<Engine> {};

TEST_P(StartTest, FromTheConnectorToTheRecord) {
    DAX_NEEDS_ENGINE(GetParam());
    const TypicalStart start(GetParam());
    Workbench program({L"--connector", Wide(start.Connector()), L"--user", L"anna"});
    const auto shows = [&](int page, int field, const std::wstring& text) {
        return program.Until([&] { return program.FieldText(page, field).starts_with(text); });
    };
    const auto click = [&](int page, int button) { program.Click(program.Field(page, button), 5, 5); };
    ASSERT_TRUE(program.Show(connectorPage)) << program.Said();
    EXPECT_FALSE(IsWindowEnabled(program.Field(connectorPage, idOpen)));
    click(connectorPage, idRecord);
    EXPECT_TRUE(shows(connectorPage, idResult, L"Nothing recorded"));
    click(connectorPage, idValidate);
    EXPECT_TRUE(shows(connectorPage, idResult, L"Valid."));
    click(connectorPage, idLoad);
    EXPECT_TRUE(shows(connectorPage, idResult, L"Catalogs loaded."));
    // Tab leads from the button into the control, whose list then takes the arrow keys; the events come from there.
    const auto picks = [&](WPARAM key, const std::wstring& catalog) {
        program.Press(program.Focus(), key);
        return program.Until([&] {
            return program.LastLogged(L"SQLDBPicker")
                .starts_with(L"SQLDBPicker CatalogChanged DBCatalog = \"" + catalog);
        });
    };
    program.Press(program.Field(connectorPage, idLoad), VK_TAB);
    ASSERT_TRUE(program.Until([&] { return IsChild(program.Field(connectorPage, idPicker), program.Focus()); }));
    EXPECT_TRUE(picks(VK_DOWN, L"second"));
    EXPECT_TRUE(picks(VK_UP, Wide(start.Catalog())));
    program.Press(program.Focus(), VK_TAB); // and out of it
    EXPECT_TRUE(program.Until([&] { return program.Focus() == program.Field(connectorPage, idEnabled); }));
    click(connectorPage, idOpen);
    ASSERT_TRUE(shows(validatorPage, idResult, L"Valid.")) << program.Said();
    EXPECT_TRUE(program.Until([&] { return IsWindowVisible(program.Field(validatorPage, idResult)); }));
    EXPECT_EQ(program.FieldText(validatorPage, idConnection).find(L"p;w"), std::wstring::npos) << "the password";

    ASSERT_TRUE(program.Show(hierarchyPage));
    ASSERT_TRUE(shows(hierarchyPage, idResult, L"6 entries loaded."));
    if (GetParam() == Engine::MariaDB) return; // from here on all engines are alike
    const HWND tree = program.Inside(program.Field(hierarchyPage, idTree), WC_TREEVIEWW);
    const int row = static_cast<int>(SendMessageW(tree, TVM_GETITEMHEIGHT, 0, 0));
    const auto panels = [&](const std::wstring& locks) {
        return program.Until([&] { return program.LastLogged(L"LockInfo") == L"LockInfo UpdateFrom " + locks; }) &&
               program.LastLogged(L"LessonInfo") == L"LessonInfo UpdateFrom done";
    };
    program.Click(tree, 60, row + row / 2);
    ASSERT_TRUE(shows(hierarchyPage, idTitle, L"Grundlagen"));
    EXPECT_TRUE(panels(L"done, LockCount 1"));
    program.Press(tree, VK_RIGHT);
    program.Press(tree, VK_DOWN);
    ASSERT_TRUE(shows(hierarchyPage, idTitle, L"O'Neil's"));
    EXPECT_TRUE(panels(L"done, LockCount 0")) << "a connection test is no lock";

    program.Click(tree, 90, 2 * row + row / 2, 2);
    ASSERT_TRUE(shows(mapPage, idCounts, L"3 pages in 1 map")) << program.Said();
    ASSERT_TRUE(program.Fill(mapPage, idSearch, L"INTRO"));
    program.Press(program.Field(mapPage, idSearch), VK_RETURN);
    ASSERT_TRUE(shows(mapPage, idTitle, L"Welcome"));
    program.Press(program.Inside(program.Field(mapPage, idMap), WC_TREEVIEWW), VK_DOWN, true);
    program.Command(mapPage, idSave);
    EXPECT_TRUE(shows(mapPage, idResult, L"Saved."));

    ASSERT_TRUE(program.Show(locksPage));
    ASSERT_TRUE(shows(locksPage, idResult, L"3 locks listed."));

    program.Press(program.Field(locksPage, idDisplay), VK_END);
    ASSERT_TRUE(shows(locksPage, idResult, L"2 locks listed."));
    const HWND list = program.Inside(program.Field(locksPage, idLocks), WC_LISTVIEWW);
    RECT header;
    GetClientRect(program.Inside(list, WC_HEADERW), &header);
    for (const wchar_t* left : {L"1 lock: 0 valid", L"0 locks:"}) {
        program.Click(list, 20, header.bottom + 8);
        ASSERT_TRUE(program.Until(
            [&] { return program.FieldText(locksPage, idCounts).find(L"Selected: 1 (") != std::wstring::npos; }));
        program.Press(list, VK_DELETE);
        EXPECT_TRUE(program.Answer(IDYES));
        EXPECT_TRUE(shows(locksPage, idCounts, left));
    }

    ASSERT_TRUE(program.Show(connectorPage));
    click(connectorPage, idRecord);
    EXPECT_TRUE(shows(connectorPage, idResult, L"Connection recorded for anna"));
    PostMessageW(program.Frame(), WM_CLOSE, 0, 0);
    EXPECT_EQ(program.ExitCode(), 0) << program.Said();
    start.ExpectDone({});
}

TEST(StartPicturesTest, ShowEachStepOfAStartThatReallyHappens) {
    const TypicalStart start(Engine::SQLite);
    start.Content().Run(
        {u"UPDATE velmoraLessons SET lessonData = (SELECT lessonData FROM velmoraLessons WHERE lessonID "
         u"= 'l1') WHERE lessonID = 'l2'"});
    const TempFolder folder;
    Workbench program(
        {L"--connector", Wide(start.Connector()), L"--user", L"anna", L"--start", Wide(folder.File(u"p"))});
    ASSERT_EQ(program.ExitCode(), 0) << program.Said();
    std::istringstream lines(program.Said());
    std::vector<unsigned char> former;
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const Image image = ReadImage(Wide(folder.File(u"p\\" + FromUtf8(line.substr(0, line.find(' '))))));
        EXPECT_GE(image.Colours(8), 8u) << line;
        EXPECT_NE(image.pixels, former) << line;
        former = image.pixels;
    }
    EXPECT_EQ(count, 11);
    EXPECT_EQ(
        start.Content().Ask(u"SELECT lessonData LIKE '%A page of today%page%s3%page%s2%' FROM velmoraLessons WHERE "
                            u"lessonID = 'l2'"),
        u"1");
    EXPECT_EQ(start.Content().Ask(u"SELECT Count(*) FROM velmoraUserLocks"), u"1");
}

INSTANTIATE_TEST_SUITE_P(Engines, StartTest, ::testing::ValuesIn(AllEngines()), EngineName);

} // namespace

} // namespace dax::test
