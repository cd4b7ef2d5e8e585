// The whole start of an application through the real program, by mouse and keys.
#include "../../apps/workbench/ui/Ids.h"
#include "Driver.h"
#include "cli/TypicalStart.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <optional>
#include <tuple>

namespace dax::test {

using namespace workbench;

namespace {

enum Pages { validatorPage, connectorPage, hierarchyPage, mapPage, locksPage };

enum class By { Keys, Mouse };

class StartTest : public ::testing::TestWithParam<std::tuple<Engine, By>> {
protected:
    bool Shows(int page, int field, const std::wstring& text) { return running->Shows(page, field, text); }
    bool Logs(const std::wstring& control, const std::wstring& line) {
        return running->Until([&] { return running->LastLogged(control).starts_with(control + L" " + line); });
    }
    // By keys that are down together, or by the mouse.
    void Either(std::initializer_list<WORD> keys, const std::function<void()>& click) {
        if (by == By::Keys)
            running->Type(keys);
        else
            click();
    }
    void Go(Pages page) {
        const HWND list = GetDlgItem(running->Frame(), idPages);
        const int height = static_cast<int>(SendMessageW(list, LB_GETITEMHEIGHT, 0, 0));
        Either({VK_CONTROL, static_cast<WORD>(L'1' + page)},
               [&] { running->Click(list, 10, height * page + height / 2); });
        EXPECT_TRUE(running->Until([&] { return IsWindowVisible(running->Field(page, idHeading)); }));
    }
    // By the underlined letter, or by a click.
    void Push(Pages page, int button, WORD letter) {
        Either({VK_MENU, letter}, [&] { running->Click(running->Field(page, button), 5, 5); });
    }
    // In a drop-down list.
    void Choose(HWND combo, int row) {
        RECT area;
        GetClientRect(combo, &area);
        running->Click(combo, area.right - 6, area.bottom / 2);
        const HWND list = running->Popup(L"ComboLBox");
        const int height = static_cast<int>(SendMessageW(list, LB_GETITEMHEIGHT, 0, 0));
        running->Click(list, 10, height * row + height / 2);
    }
    bool Focused(HWND around) {
        return running->Until([&] { return running->Focus() == around || IsChild(around, running->Focus()); });
    }

    void SetUp() override {
        DAX_NEEDS_ENGINE(std::get<0>(GetParam()));
        begun.emplace(std::get<0>(GetParam()));
        running.emplace(std::vector<std::wstring>{L"--connector", Wide(begun->Connector()), L"--user", L"anna"});
    }

    const By by = std::get<1>(GetParam());
    std::optional<TypicalStart> begun;
    std::optional<Workbench> running;
};

TEST_P(StartTest, FromTheConnectorToTheRecord) {
    const TypicalStart& start = *begun;
    Workbench& program = *running;
    const bool isByKeys = by == By::Keys;
    ASSERT_TRUE(program.Frame()) << program.Said();
    Go(connectorPage);
    EXPECT_FALSE(IsWindowEnabled(program.Field(connectorPage, idOpen)));
    Push(connectorPage, idRecord, 'R');
    EXPECT_TRUE(Shows(connectorPage, idResult, L"Nothing recorded"));
    Push(connectorPage, idValidate, 'L');
    EXPECT_TRUE(Shows(connectorPage, idResult, L"Valid."));
    Push(connectorPage, idLoad, 'D');
    ASSERT_TRUE(Shows(connectorPage, idResult, L"Catalogs loaded."));
    const HWND picker = program.Field(connectorPage, idPicker), combo = program.Inside(picker, WC_COMBOBOXW);
    if (isByKeys) program.Type({VK_MENU, 'P'});
    EXPECT_TRUE(!isByKeys || Focused(picker));
    for (const int row : {1, 0}) {
        Either({static_cast<WORD>(row ? VK_DOWN : VK_UP)}, [&] { Choose(combo, row); });
        ASSERT_TRUE(Logs(L"SQLDBPicker", L"CatalogChanged DBCatalog = \"" + (row ? L"second" : Wide(start.Catalog()))));
    }
    if (isByKeys) program.Type({VK_TAB}); // out of the control
    EXPECT_TRUE(!isByKeys || Focused(program.Field(connectorPage, idEnabled)));
    Push(connectorPage, idOpen, 'O');
    ASSERT_TRUE(Shows(validatorPage, idResult, L"Valid.")) << program.Said();
    EXPECT_TRUE(program.Until([&] { return IsWindowVisible(program.Field(validatorPage, idResult)); }));
    EXPECT_EQ(program.FieldText(validatorPage, idConnection).find(L"p;w"), std::wstring::npos) << "the password";

    Go(hierarchyPage);
    ASSERT_TRUE(Shows(hierarchyPage, idResult, L"6 entries loaded."));
    if (std::get<0>(GetParam()) == Engine::MariaDB) return; // from here on all engines are alike
    const HWND tree = program.Inside(program.Field(hierarchyPage, idTree), WC_TREEVIEWW);
    const int row = static_cast<int>(SendMessageW(tree, TVM_GETITEMHEIGHT, 0, 0));
    if (isByKeys) {
        program.Type({VK_CONTROL, 'F'});
        EXPECT_TRUE(Focused(program.Field(hierarchyPage, idSearch)));
        program.Write(L"L-1");
        program.Type({VK_RETURN});
        EXPECT_TRUE(Shows(hierarchyPage, idResult, L"Found."));
        program.Type({VK_TAB});
        program.Type({VK_TAB});
        EXPECT_TRUE(Focused(tree));
        program.Type({VK_LEFT});
    } else {
        program.Click(tree, 60, row + row / 2);
    }
    ASSERT_TRUE(Shows(hierarchyPage, idTitle, L"Grundlagen"));
    EXPECT_TRUE(Logs(L"LockInfo", L"UpdateFrom done, LockCount 1"));
    if (isByKeys) {
        program.Type({VK_DOWN});
    } else {
        program.ClickTool(hierarchyPage, idExpandAll);
        program.Click(tree, 90, 2 * row + row / 2);
    }
    ASSERT_TRUE(Shows(hierarchyPage, idTitle, L"O'Neil's"));
    EXPECT_TRUE(Logs(L"LockInfo", L"UpdateFrom done, LockCount 0")) << "a connection test is no lock";
    EXPECT_TRUE(Logs(L"LessonInfo", L"UpdateFrom done"));

    Either({VK_RETURN}, [&] { program.Click(tree, 90, 2 * row + row / 2, 2); });
    ASSERT_TRUE(Shows(mapPage, idCounts, L"3 pages in 1 map")) << program.Said();
    EXPECT_TRUE(Shows(mapPage, idResult, L"Opened."));
    const HWND map = program.Inside(program.Field(mapPage, idMap), WC_TREEVIEWW);
    if (isByKeys) {
        program.Type({VK_CONTROL, 'F'});
        program.Write(L"INTRO");
        program.Type({VK_RETURN});
    } else {
        program.Click(map, 90, row + row / 2);
    }
    ASSERT_TRUE(Shows(mapPage, idTitle, L"Welcome"));
    EXPECT_NE(program.FieldText(mapPage, idResult), L"Opened.") << "that was before";
    Either({VK_MENU, VK_DOWN}, [&] { program.ClickTool(mapPage, idDown); });
    ASSERT_TRUE(Logs(L"LessonMapEditor", L"MoveCurrent"));
    Either({VK_CONTROL, 'S'}, [&] { program.ClickTool(mapPage, idSave); });
    EXPECT_TRUE(Shows(mapPage, idResult, L"Saved."));

    Go(locksPage);
    ASSERT_TRUE(Shows(locksPage, idResult, L"3 locks listed."));
    const HWND list = program.Inside(program.Field(locksPage, idLocks), WC_LISTVIEWW);
    if (isByKeys) {
        program.Type({VK_MENU, 'S'});
        EXPECT_TRUE(Focused(program.Field(locksPage, idDisplay)));
        program.Type({VK_END});
    } else {
        Choose(program.Field(locksPage, idDisplay), 4);
    }
    ASSERT_TRUE(Shows(locksPage, idResult, L"2 locks listed."));
    RECT header;
    GetClientRect(program.Inside(list, WC_HEADERW), &header);
    if (isByKeys) {
        for (int i = 0; i < 4; ++i) program.Type({VK_TAB});
        ASSERT_TRUE(Focused(list));
        program.Type({VK_CONTROL, 'A'});
        program.Type({VK_DELETE});
        ASSERT_TRUE(program.Question());
        program.Type({VK_RETURN});
    }
    for (const wchar_t* left : {L"1 lock: 0 valid", L"0 locks:"}) {
        if (isByKeys) continue;
        program.Click(list, 20, header.bottom + 8);
        ASSERT_TRUE(program.Until(
            [&] { return program.FieldText(locksPage, idCounts).find(L"Selected: 1 (") != std::wstring::npos; }));
        Push(locksPage, idDelete, 0);
        program.Click(GetDlgItem(program.Question(), IDYES), 5, 5);
        EXPECT_TRUE(Shows(locksPage, idCounts, left));
    }
    EXPECT_TRUE(Shows(locksPage, idCounts, L"0 locks:"));

    Go(connectorPage);
    Push(connectorPage, idRecord, 'R');
    EXPECT_TRUE(Shows(connectorPage, idResult, L"Connection recorded for anna"));
    // As the title's button does.
    Either({VK_MENU, VK_F4}, [&] { PostMessageW(program.Frame(), WM_SYSCOMMAND, SC_CLOSE, 0); });
    EXPECT_EQ(program.ExitCode(), 0) << program.Said();
    start.ExpectDone({});
}

// Each way on files; a server each for the way in.
INSTANTIATE_TEST_SUITE_P(Engines, StartTest,
                         ::testing::Values(std::tuple(Engine::SQLite, By::Keys), std::tuple(Engine::SQLite, By::Mouse),
                                           std::tuple(Engine::PostgreSQL, By::Keys),
                                           std::tuple(Engine::MariaDB, By::Mouse)),
                         [](const auto& one) {
                             return EngineName({std::get<0>(one.param), one.index}) +
                                    (std::get<1>(one.param) == By::Keys ? "ByKeys" : "ByMouse");
                         });

} // namespace

} // namespace dax::test
