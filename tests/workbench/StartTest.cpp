// The whole start of an application through the real program, by keys alone.
#include "../../apps/workbench/ui/Ids.h"
#include "Driver.h"
#include "cli/TypicalStart.h"

#include <commctrl.h>

namespace dax::test {

using namespace workbench;

class StartTest : public ::testing::TestWithParam<Engine> {};
INSTANTIATE_TEST_SUITE_P(Engines, StartTest, ::testing::ValuesIn(AllEngines()), EngineName);

TEST_P(StartTest, FromTheConnectorToTheRecord) {
    DAX_NEEDS_ENGINE(GetParam());
    const TypicalStart start(GetParam());
    Workbench program({L"--connector", Wide(start.Connector()), L"--user", L"anna"});
    const auto shows = [&](int page, int field, const wchar_t* text) { return program.Shows(page, field, text); };
    const auto push = [&](WORD letter) { program.Type({VK_MENU, letter}); }; // the underlined one
    ASSERT_TRUE(program.Show(connectorPage)) << program.Said();
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
    ASSERT_TRUE(shows(validatorPage, idResult, L"Valid.")) << program.Said();
    EXPECT_EQ(program.FieldText(validatorPage, idConnection).find(L"p;w"), std::wstring::npos) << "the password";

    EXPECT_TRUE(program.Show(hierarchyPage));
    ASSERT_TRUE(shows(hierarchyPage, idResult, L"6 entries loaded."));
    if (GetParam() != Engine::SQLite) return; // from here on all engines are alike
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
    ASSERT_TRUE(shows(mapPage, idCounts, L"3 pages in 1 map")) << program.Said();
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
    EXPECT_EQ(program.ExitCode(), 0) << program.Said();
    start.ExpectDone({});
}

} // namespace dax::test
