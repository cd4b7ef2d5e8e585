// The real windows of the panels, the validator and the picker.
#include "hierarchy/EditorFixture.h"
#include "panels/win32/LessonInfoWindow.h"
#include "validation/win32/DatabaseValidatorWindow.h"
#include "validation/win32/SQLDBPickerWindow.h"
#include "windows/HostWindow.h"

namespace dax::test {

namespace {

// The lines of text that a control draws, each as its pixels, between blank rows.
std::vector<std::vector<uint32_t>> DrawnLines(WindowBase& panel, int width, int height) {
    const MemoryBitmap bitmap(width, height);
    panel.Draw(bitmap.Context(), {0, 0, width, height});
    std::vector<std::vector<uint32_t>> lines;
    bool isInside = false;
    for (int y = 0; y < height; ++y) {
        const uint32_t* const row = bitmap.Pixels() + y * width;
        const bool isBlank = std::all_of(row, row + width, [](uint32_t p) { return (p & 0xFFFFFF) == 0xFFFFFF; });
        if (!std::exchange(isInside, !isBlank) && !isBlank) lines.emplace_back();
        if (!isBlank) lines.back().insert(lines.back().end(), row, row + width);
    }
    return lines;
}

} // namespace

// The first and the last line are whole at every height, and a lower panel has fewer lines.
TEST(LessonInfoWindow, TitleAndClassificationAreNeverCut) {
    const TestDatabase database(Engine::SQLite);
    CreateTables(database);
    database.Run(SampleRows());
    RecordingEditor editor;
    editor.editor->SetConnectionString(database.ConnectionString());
    ASSERT_TRUE(editor.editor->LoadDatabase());
    editor.editor->SetCurrentLessonID(u"a");
    for (const int dpi : {96, 192}) {
        LessonInfoWindow panel;
        Ambient ambient;
        ambient.dpi = dpi;
        panel.SetAmbient(ambient);
        panel.InitProperties();
        const int width = MulDiv(260, dpi, 96);
        panel.Info()->UpdateFrom(editor.editor.get());
        const auto whole = DrawnLines(panel, width, MulDiv(400, dpi, 96));
        EXPECT_EQ(whole.size(), 9u);
        const MemoryBitmap bitmap(width, 1);
        const HFONT font = CreateFontFor(u"Tahoma", 8, dpi, true, false);
        GdiSurface surface(bitmap.Context(), {width, 1000}, font, font, 0, 0xFFFFFF, dpi);
        const int least = MeasurePanel(surface, panel.Info()->Layout(3));
        size_t lines = whole.size();
        for (int height = MeasurePanel(surface, panel.Info()->Layout(1)); height >= least; --height) {
            const auto drawn = DrawnLines(panel, width, height);
            ASSERT_TRUE(drawn.size() >= 2 && drawn.size() <= lines) << height << " of " << dpi << " dpi";
            ASSERT_EQ(drawn.front(), whole.front()) << height << " of " << dpi << " dpi";
            ASSERT_EQ(drawn.back(), whole.back()) << height << " of " << dpi << " dpi";
            lines = drawn.size();
        }
        EXPECT_LT(lines, whole.size());
        DeleteObject(font);
    }
}

TEST(DatabaseValidatorWindow, ATooLongTitleStaysOnOneLineAndAPathWithoutRoomIsHarmless) {
    constexpr uint32_t title = 0x44800, wrapped = 0x44810;
    const HFONT font = CreateFontFor(u"Tahoma", 8.25, 96, false, false);
    int height = 0;
    const auto picture = [&](int width, const Text& text, uint32_t flags) {
        const MemoryBitmap bitmap(width, 40);
        GdiSurface surface(bitmap.Context(), {width, 40}, font, font, 0, 0xFFFFFF, 96);
        surface.Clear();
        Rect rect{0, 0, width, 40};
        height = surface.DrawText(text, rect, flags);
        return std::vector<uint32_t>(bitmap.Pixels(), bitmap.Pixels() + width * 40);
    };
    picture(200, u"()", title);
    const int oneLine = height;
    const Text path = u"The file 'C:\\a_folder\\with_a_rather_long_name_without_blanks/and_more.db' is missing";
    for (const int width : {1, 60, 200})
        for (const uint32_t flags : {title, wrapped}) {
            picture(width, path, flags);
            EXPECT_TRUE(height == oneLine || (height > oneLine && flags == wrapped)) << width;
        }
    // The end of a title that has no room is three dots: the letters there no longer matter.
    const Text start = u"a title that is much too long for its panel ";
    EXPECT_EQ(picture(150, start + u"abc", title), picture(150, start + u"xyz", title));
    DeleteObject(font);
}

TEST(DatabaseValidatorWindow, MayBeReleasedWhileItValidates) {
    const HostWindow host;
    auto window = std::make_unique<DatabaseValidatorWindow>();
    window->InitProperties();
    const HWND handle = window->Create(host.handle, {0, 0, 400, 200});
    const auto validator = window->Validator();
    validator->ProcessMessages = [&window] { window.reset(); };
    EXPECT_FALSE(validator->ValidateDataConnection(u"", u"", true));
    EXPECT_EQ(validator->ErrorType(), veMDBNotSelected);
    EXPECT_FALSE(IsWindow(handle));
}

// The list shows what the picker reports.
TEST(SQLDBPickerWindow, KeysChooseTheCatalogAlsoInTheOpenList) {
    const TestDatabase connector(Engine::SQLite);
    test::CreateTables(connector, Schema::Database::Connector);
    connector.Run(
        {u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (1, 'super', 1)",
         u"INSERT INTO velmoraDBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) VALUES "
         u"(1, 'a', 'u', 'p', 'Alpha', ''), (2, 'b', 'u', 'p', 'Beta', ''), (3, 'c', 'u', 'p', 'Gamma', '')"});
    const HostWindow host;
    SQLDBPickerWindow window;
    window.InitProperties();
    EXPECT_TRUE(window.Picker()->LoadPicker(connector.ConnectionString(), u"super", u"b")) << "without a window yet";
    window.Create(host.handle, {10, 10, 210, 40});
    const HWND list = GetWindow(window.Handle(), GW_CHILD);
    const std::tuple<WPARAM, bool, bool, const char16_t*> keys[] = {
        // whether it is used, and the list is open then
        {VK_TAB, false, false, u"Beta"},  {VK_ESCAPE, false, false, u"Beta"}, {VK_DOWN, true, false, u"Gamma"},
        {VK_HOME, true, false, u"Alpha"}, {VK_F4, true, true, u"Alpha"},      {VK_DOWN, true, true, nullptr},
        {VK_ESCAPE, true, false, nullptr}};
    for (const auto& [key, isUsed, isOpen, title] : keys) {
        EXPECT_EQ(window.TranslateKey({list, WM_KEYDOWN, key, 1, 0, {}}), isUsed) << key;
        ProcessPendingMessages();
        EXPECT_EQ(SendMessageW(list, CB_GETDROPPEDSTATE, 0, 0) != 0, isOpen) << key;
        wchar_t shown[64] = L"";
        GetWindowTextW(list, shown, 64);
        EXPECT_TRUE(isOpen || window.Picker()->Title() == FromWide(shown)) << key;
        EXPECT_TRUE(!title || window.Picker()->Title() == title) << key;
    }
}

} // namespace dax::test
