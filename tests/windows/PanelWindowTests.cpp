// The real windows of the panels, the validator and the picker.
#include "hierarchy/EditorFixture.h"
#include "panels/win32/LessonInfoWindow.h"
#include "validation/win32/DatabaseValidatorWindow.h"
#include "validation/win32/SQLDBPickerWindow.h"
#include "windows/HostWindow.h"

#include <gmock/gmock.h>

namespace dax::test {

namespace {

// The lines of text that a control draws, each as its pixels, between blank rows.
std::vector<std::vector<uint32_t>> DrawnLines(ControlWindow& panel, int width, int height) {
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

Text WindowText(HWND window) {
    std::vector<wchar_t> buffer(static_cast<size_t>(GetWindowTextLengthW(window)) + 1);
    GetWindowTextW(window, buffer.data(), static_cast<int>(buffer.size()));
    return FromWide(buffer.data());
}

} // namespace

// The first and the last line are whole at every height, and a lower panel has fewer lines.
TEST(LessonInfoWindow, TitleAndClassificationAreNeverCut) {
    const TestDatabase database(Engine::SQLite);
    CreateTables(database);
    database.Run(SampleRows());
    HeardEditor editor;
    editor.editor->SetConnectionString(database.ConnectionString());
    ASSERT_TRUE(editor.editor->LoadDatabase());
    editor.editor->SetCurrentLessonID(u"a");
    for (const int dpi : {96, 192}) {
        LessonInfoWindow panel;
        panel.SetAmbient(At(dpi));
        panel.InitProperties();
        const int width = MulDiv(260, dpi, 96);
        EXPECT_TRUE(DrawnLines(panel, width, 300).empty()) << "before the first update";
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
    for (const int width : {1, 60, 200}) {
        picture(width, path, title);
        EXPECT_EQ(height, oneLine) << width;
        picture(width, path, wrapped);
        EXPECT_GE(height, oneLine) << width;
    }
    // The end of a title that has no room is three dots: the letters there no longer matter.
    const Text start = u"a title that is much too long for its panel ";
    EXPECT_EQ(picture(150, start + u"abc", title), picture(150, start + u"xyz", title));
    EXPECT_NE(picture(150, start, title), picture(150, u"another " + start, title));
    DeleteObject(font);
}

TEST(DatabaseValidatorWindow, MayGoWhileItValidates) {
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

TEST(SQLDBPickerWindow, KeysChooseTheCatalog) {
    const TestDatabase connector(Engine::SQLite);
    connector.Run(Schema::CreateStatements(Schema::Database::Connector, Engine::SQLite));
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
    EXPECT_EQ(SendMessageW(list, CB_GETCOUNT, 0, 0), 3);
    EXPECT_EQ(WindowText(list), u"Beta");
    std::string heard;
    window.Picker()->CatalogChanged.Add(
        [&](const Text&, const Text&, const Text&, const Text& title, const Text&) { heard += ToUtf8(title) + " "; });
    window.FocusChanged = [&](bool isIn) { heard += isIn ? "in " : "out "; };
    SetFocus(window.Handle());
    EXPECT_EQ(GetFocus(), list);
    // As a host's loop hands them on. A closed list leaves Escape to the host, and a list Tab.
    const auto press = [&](WPARAM key) {
        const bool isUsed = window.TranslateKey({list, WM_KEYDOWN, key, 1, 0, {}});
        ProcessPendingMessages();
        return isUsed;
    };
    EXPECT_TRUE(press(VK_DOWN) && press(VK_HOME) && !press(VK_TAB) && !press(VK_ESCAPE));
    EXPECT_EQ(window.Picker()->DBCatalog(), u"a");
    // Opened, moved in, and left by Escape: whatever the list shows is what the picker tells.
    EXPECT_TRUE(press(VK_F4) && SendMessageW(list, CB_GETDROPPEDSTATE, 0, 0));
    EXPECT_TRUE(press(VK_DOWN) && press(VK_ESCAPE) && !SendMessageW(list, CB_GETDROPPEDSTATE, 0, 0));
    EXPECT_EQ(window.Picker()->Title(), WindowText(list));
    SetFocus(host.handle);
    EXPECT_THAT(heard, testing::AllOf(testing::StartsWith("in Gamma Alpha "), testing::EndsWith("out ")));
    window.Picker()->SetEnabled(false);
    EXPECT_FALSE(IsWindowEnabled(list));
}

} // namespace dax::test
