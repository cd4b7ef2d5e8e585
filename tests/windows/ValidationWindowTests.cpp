// The real windows of the validator and the picker.
#include "controls/win32/MessagePump.h"
#include "validation/win32/DatabaseValidatorWindow.h"
#include "validation/win32/SQLDBPickerWindow.h"

#include "data/Schema.h"
#include "support/TestDatabases.h"
#include "windows/HostWindow.h"
#include "windows/WindowCounts.h"

#include <gmock/gmock.h>

namespace dax::test {

namespace {

Text WindowText(HWND window) {
    std::vector<wchar_t> buffer(static_cast<size_t>(GetWindowTextLengthW(window)) + 1);
    GetWindowTextW(window, buffer.data(), static_cast<int>(buffer.size()));
    return FromWide(buffer.data());
}

// A connector that lists these titles for the super user "super".
void FillConnector(const TestDatabase& connector, std::initializer_list<const char16_t*> titles) {
    std::vector<Text> statements = Schema::CreateStatements(Schema::Database::Connector, Engine::SQLite);
    statements.push_back(u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (1, 'super', 1)");
    int id = 0;
    for (const Text title : titles) {
        ++id;
        statements.push_back(u"INSERT INTO velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, "
                             u"dbDescription) VALUES (" +
                             ToText(id) + u", 'catalog" + ToText(id) + u"', 'u', 'p', '" + title + u"', '')");
    }
    connector.Run(statements);
}

void SendKey(ControlWindow& control, HWND window, WPARAM key) {
    MSG down{window, WM_KEYDOWN, key, 1, 0, {}}, up{window, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001), 0, {}};
    EXPECT_TRUE(control.TranslateKey(down)) << key;
    control.TranslateKey(up);
    ProcessPendingMessages();
}

} // namespace

TEST(DatabaseValidatorWindow, ATooLongTitleStaysOnOneLineAndAPathWithoutRoomIsHarmless) {
    const HFONT font = CreateFontFor(u"Tahoma", 8.25, 96, false, false);
    int height = 0;
    const auto picture = [&](int width, const Text& title, uint32_t flags) {
        const MemoryBitmap bitmap(width, 40);
        GdiSurface surface(bitmap.Context(), {width, 40}, font, font, 0, 0xFFFFFF, 96);
        surface.Clear();
        Rect rect{0, 0, width, 40};
        height = surface.DrawText(title, rect, flags);
        return std::vector<uint32_t>(bitmap.Pixels(), bitmap.Pixels() + width * 40);
    };
    picture(200, u"()", 0x44800);
    const int oneLine = height;
    const Text path = u"The file 'C:\\a_folder\\with_a_rather_long_name_without_blanks/and_more.db' is missing";
    for (const int width : {1, 60, 200}) {
        picture(width, path, 0x44800);
        EXPECT_EQ(height, oneLine) << width;
        picture(width, path, 0x44810);
        EXPECT_GE(height, oneLine) << width;
    }
    // The end of a title that has no room is three dots: the letters there no longer matter.
    const Text start = u"a title that is much too long for its panel ";
    EXPECT_EQ(picture(150, start + u"abc", 0x44800), picture(150, start + u"xyz", 0x44800));
    EXPECT_NE(picture(150, start, 0x44800), picture(150, u"another " + start, 0x44800));
    DeleteObject(font);
}

TEST(DatabaseValidatorWindow, TheWindowMayGoWhileItValidates) {
    const HostWindow host;
    const int before = WindowCount();
    auto window = std::make_unique<DatabaseValidatorWindow>();
    window->InitProperties();
    window->Create(host.handle, {0, 0, 400, 200});
    const auto validator = window->Validator();
    validator->ProcessMessages = [&window] { window.reset(); };
    EXPECT_FALSE(validator->ValidateDataConnection(u"", u"", true));
    EXPECT_EQ(validator->ErrorType(), veMDBNotSelected);
    EXPECT_EQ(WindowCount(), before);
}

TEST(SQLDBPickerWindow, KeysChooseTheCatalogAndTheListFillsTheWidth) {
    const HostWindow host;
    const TestDatabase connector(Engine::SQLite);
    FillConnector(connector, {u"Alpha", u"Beta", u"Gamma"});
    SQLDBPickerWindow window;
    window.InitProperties();
    window.Create(host.handle, {10, 10, 210, 40});
    std::vector<std::string> chosen;
    window.Picker()->CatalogChanged.Add([&](const Text&, const Text&, const Text&, const Text& title, const Text&) {
        chosen.push_back(ToUtf8(title));
    });
    EXPECT_TRUE(window.Picker()->LoadPicker(connector.ConnectionString(), u"super", u"catalog2"));
    const HWND list = GetWindow(window.Handle(), GW_CHILD);
    EXPECT_EQ(WindowText(list), u"Beta");
    std::vector<bool> focus;
    window.FocusChanged = [&focus](bool isIn) { focus.push_back(isIn); };
    SetFocus(window.Handle());
    EXPECT_EQ(GetFocus(), list);
    SendKey(window, list, VK_DOWN);
    SendKey(window, list, VK_HOME);
    EXPECT_THAT(chosen, testing::ElementsAre("Beta", "Gamma", "Alpha"));
    EXPECT_EQ(window.Picker()->DBCatalog(), u"catalog1");
    const MSG tab{list, WM_KEYDOWN, VK_TAB, 1, 0, {}}, escape{list, WM_KEYDOWN, VK_ESCAPE, 1, 0, {}};
    EXPECT_FALSE(window.TranslateKey(tab));
    EXPECT_FALSE(window.TranslateKey(escape)) << "a closed list leaves Escape to the host";

    // Opened, moved in, and left by Escape: whatever the list shows is what the picker tells.
    SendKey(window, list, VK_F4);
    EXPECT_TRUE(SendMessageW(list, CB_GETDROPPEDSTATE, 0, 0));
    SendKey(window, list, VK_DOWN);
    SendKey(window, list, VK_ESCAPE);
    EXPECT_FALSE(SendMessageW(list, CB_GETDROPPEDSTATE, 0, 0));
    EXPECT_EQ(window.Picker()->Title(), WindowText(list));

    SetFocus(host.handle);
    EXPECT_EQ(focus, (std::vector<bool>{true, false}));
    window.Picker()->SetEnabled(false);
    EXPECT_FALSE(IsWindowEnabled(list));
    MoveWindow(window.Handle(), 10, 10, 333, 30, TRUE);
    RECT place;
    GetWindowRect(list, &place);
    EXPECT_EQ(place.right - place.left, 333);
}

TEST(SQLDBPickerWindow, WorksBeforeAndAfterItsWindowAndShowsItsNameInDesignMode) {
    const TestDatabase connector(Engine::SQLite);
    FillConnector(connector, {u"Alpha", u"Beta"});
    SQLDBPickerWindow window;
    window.InitProperties();
    EXPECT_TRUE(window.Picker()->LoadPicker(connector.ConnectionString(), u"super", u"catalog2"));
    {
        const HostWindow host;
        window.Create(host.handle, {0, 0, 200, 30});
        const HWND list = GetWindow(window.Handle(), GW_CHILD);
        EXPECT_EQ(SendMessageW(list, CB_GETCOUNT, 0, 0), 2);
        EXPECT_EQ(WindowText(list), u"Beta");
    }
    EXPECT_EQ(window.Handle(), nullptr);
    EXPECT_EQ(window.Picker()->Title(), u"Beta");
    SQLDBPickerWindow designed;
    designed.SetAmbient(At(96, false));
    designed.InitProperties();
    designed.Create(nullptr, {0, 0, 200, 30});
    EXPECT_EQ(WindowText(GetWindow(designed.Handle(), GW_CHILD)), u"Control1");
    EXPECT_FALSE(designed.Picker()->LoadPicker(connector.ConnectionString(), u"super", u""));
}

} // namespace dax::test
