#include "Driver.h"

#include "../../apps/workbench/Ids.h"
#include "data/Schema.h"
#include "support/TestDatabases.h"

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
    void SetUp() override {
        content.Run(Schema::CreateStatements(Schema::Database::Content, Engine::SQLite));
        connector.Run(Schema::CreateStatements(Schema::Database::Connector, Engine::SQLite));
        connector.Run({u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (1, 'Ann', 0)",
                       u"INSERT INTO velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) "
                       u"VALUES (1, 'alpha', 'writer', 'secret', 'First course', 'Where to begin')",
                       u"INSERT INTO velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) "
                       u"VALUES (2, 'beta', 'reader', '', 'Second course', '')",
                       u"INSERT INTO velmoraDBUserRights (userID, dbID, rights) VALUES (1, 1, 2)",
                       u"INSERT INTO velmoraDBUserRights (userID, dbID, rights) VALUES (1, 2, 0)"});
    }

    std::wstring Content() const { return Wide(content.Name()); }
    std::wstring Connector() const { return Wide(connector.Name()); }

    TestDatabase content{Engine::SQLite};
    TestDatabase connector{Engine::SQLite};
    TempFolder folder;
};

TEST_F(WorkbenchTest, TakesAPictureOfEveryPageInItsStates) {
    const std::wstring shots = Wide(folder.File(u"shots"));
    Workbench program({Content(), L"--connector", Connector(), L"--user", L"Ann", L"--shots", shots});
    ASSERT_EQ(program.ExitCode(), 0) << program.Said();
    std::map<std::wstring, Image> images;
    for (const wchar_t* name :
         {L"validator-start", L"validator-nofile", L"validator-valid", L"validator-talk", L"validator-missing",
          L"connector-start", L"connector-loaded", L"connector-recorded", L"connector-nouser"}) {
        const ::testing::ScopedTrace trace(__FILE__, __LINE__, ::testing::PrintToString(std::wstring(name)));
        const Image image = images[name] = ReadImage(shots + L"\\" + name + L".png");
        EXPECT_GE(image.width, 700);
        EXPECT_GE(image.height, 500);
        EXPECT_GE(image.Colours(8), 8u) << "hardly anything is drawn";
    }
    // The control's panel is in the picture: each outcome looks different.
    EXPECT_NE(images[L"validator-valid"].pixels, images[L"validator-missing"].pixels);
    EXPECT_NE(images[L"validator-nofile"].pixels, images[L"validator-missing"].pixels);
    EXPECT_NE(images[L"connector-loaded"].pixels, images[L"connector-nouser"].pixels);
    EXPECT_EQ(connector.Ask(u"SELECT username || '/' || lastCatalog FROM velmoraConnectionHistory"), u"Ann/alpha");
    EXPECT_EQ(content.Ask(u"SELECT Count(*) FROM velmoraLessons"), u"0");
}

TEST_F(WorkbenchTest, RefusesArgumentsInWords) {
    const Text file = folder.Write(u"file.txt", "no folder");
    const struct {
        std::vector<std::wstring> arguments;
        int code;
        const char* words;
    } cases[] = {
        {{L"--nonsense"}, 2, "no option --nonsense"}, {{L"--user"}, 2, "--user lacks its value"},
        {{L"a.db", L"b.db"}, 2, "also b.db"},         {{L"--help"}, 0, "--connector CONNECTION"},
        {{L"--shots", Wide(file)}, 1, "file.txt"},
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

TEST_F(WorkbenchTest, PicksACatalogAndRecordsTheConnection) {
    Workbench program({L"--connector", Connector(), L"--user", L"Ann"});
    const HWND list = GetDlgItem(program.Frame(), idPages);
    ASSERT_TRUE(program.Until([&] { return program.Focus() != nullptr; }));
    program.Press(list, VK_DOWN);
    ASSERT_TRUE(program.Until([&] { return IsWindowVisible(program.Field(1, idRecord)); }));
    const auto pressAndExpect = [&](int button, const wchar_t* expected) {
        PostMessageW(program.Field(1, button), BM_CLICK, 0, 0);
        return program.Until([&] { return program.FieldText(1, idResult).starts_with(expected); });
    };
    EXPECT_TRUE(pressAndExpect(idRecord, L"Nothing recorded"));
    EXPECT_TRUE(pressAndExpect(idValidate, L"Valid."));
    const HWND log = GetDlgItem(program.Frame(), idEvents);
    const LRESULT before = SendMessageW(log, LVM_GETITEMCOUNT, 0, 0);
    EXPECT_TRUE(pressAndExpect(idLoad, L"Catalogs loaded."));
    // The event that the control raised, and the call that made it do so.
    EXPECT_EQ(SendMessageW(log, LVM_GETITEMCOUNT, 0, 0), before + 2);
    // Tab leads from the button into the control, whose list then takes the arrow key; the event comes from there.
    program.Press(program.Field(1, idLoad), VK_TAB);
    ASSERT_TRUE(program.Until([&] { return IsChild(program.Field(1, idPicker), program.Focus()); }));
    program.Press(program.Focus(), VK_DOWN);
    EXPECT_TRUE(program.Until([&] { return SendMessageW(log, LVM_GETITEMCOUNT, 0, 0) == before + 3; }));
    // And out of it again.
    program.Press(program.Focus(), VK_TAB);
    EXPECT_TRUE(program.Until([&] { return program.Focus() == program.Field(1, idEnabled); }));
    EXPECT_TRUE(pressAndExpect(idRecord, L"Connection recorded for Ann"));
    EXPECT_EQ(connector.Ask(u"SELECT username || '/' || lastCatalog FROM velmoraConnectionHistory"), u"Ann/beta");
}

} // namespace

} // namespace dax::test
