// The lesson panel as it is drawn, pixel for pixel.
#include "hierarchy/EditorFixture.h"
#include "panels/win32/LessonInfoWindow.h"
#include "windows/HostWindow.h"

namespace dax::test {

namespace {

constexpr int PanelWidth = 260, Tall = 400; // at 96 dpi

// A panel at a height, as bands of text lines between blank rows.
struct Drawing {
    using Band = std::vector<uint32_t>; // its pixels
    Drawing(ControlWindow& panel, int width, int height) {
        const MemoryBitmap bitmap(width, height);
        panel.Draw(bitmap.Context(), {0, 0, width, height});
        const uint32_t* const pixels = bitmap.Pixels();
        bool isInside = false;
        for (int y = 0; y < height; ++y) {
            const uint32_t* const row = pixels + y * width;
            const bool isBlank = std::all_of(row, row + width, [](uint32_t p) { return (p & 0xFFFFFF) == 0xFFFFFF; });
            const bool isFirst = !std::exchange(isInside, !isBlank);
            if (isBlank) continue;
            if (isFirst) bands.emplace_back();
            bands.back().insert(bands.back().end(), row, row + width);
        }
    }
    std::vector<Band> bands;
};

class PanelWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        DAX_NEEDS_ENGINE(Engine::SQLite);
        database = std::make_unique<TestDatabase>(Engine::SQLite);
        CreateTables(*database);
        database->Run(SampleRows());
        editor.editor->SetConnectionString(database->ConnectionString());
        ASSERT_TRUE(editor.editor->LoadDatabase());
    }
    std::unique_ptr<TestDatabase> database;
    HeardEditor editor;
};

} // namespace

// The first and the last line are whole at every height, and a lower panel has fewer lines.
TEST_F(PanelWindowTest, TitleAndClassificationAreNeverCut) {
    editor.editor->UpdateLesson(u"a", u"MMHHEEMMHH", u"HH", ltLesson);
    for (const int dpi : {96, 144, 192})
        for (const Text entry : {u"a", u"g", u""}) {
            SCOPED_TRACE(testing::Message() << dpi << " dpi, " << ToUtf8(entry));
            editor.editor->SetCurrentLessonID(entry);
            LessonInfoWindow panel;
            panel.SetAmbient(At(dpi));
            panel.InitProperties();
            const int width = MulDiv(PanelWidth, dpi, 96);
            EXPECT_TRUE(Drawing(panel, width, 300).bands.empty()) << "before the first update";
            panel.Info()->UpdateFrom(editor.editor.get());
            const Drawing whole(panel, width, MulDiv(Tall, dpi, 96));
            ASSERT_GE(whole.bands.size(), 5u);
            const HDC dc = CreateCompatibleDC(nullptr);
            const HFONT font = CreateFontFor(u"Tahoma", 8, dpi, true, false);
            GdiSurface surface(dc, {width, 1000}, font, font, 0, 0xFFFFFF, dpi);
            const int least = MeasurePanel(surface, panel.Info()->Layout(3));
            const int most = MeasurePanel(surface, panel.Info()->Layout(1));
            size_t lines = whole.bands.size();
            for (int height = most + 2; height >= least; --height) {
                const Drawing drawing(panel, width, height);
                ASSERT_GE(drawing.bands.size(), 2u) << height;
                EXPECT_EQ(drawing.bands.front(), whole.bands.front()) << "title at height " << height;
                if (!entry.empty()) {
                    EXPECT_EQ(drawing.bands.back(), whole.bands.back()) << "last line at " << height;
                }
                EXPECT_LE(drawing.bands.size(), lines);
                lines = drawing.bands.size();
            }
            EXPECT_LT(lines, whole.bands.size());
            DeleteDC(dc);
            DeleteObject(font);
        }
}

} // namespace dax::test
