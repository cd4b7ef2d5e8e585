// The lesson panel as it is drawn, pixel for pixel.
#include "hierarchy/EditorFixture.h"
#include "panels/win32/LessonInfoWindow.h"
#include "windows/HostWindow.h"

namespace dax::test {

namespace {

constexpr int PanelWidth = 260, Tall = 400; // at 96 dpi

// A panel at a height, as bands of text lines between blank rows.
struct Drawing {
    struct Band {
        int top = 0, bottom = 0;
        std::vector<uint32_t> pixels;
        int left = 0, right = 0; // of the ink
        bool operator==(const Band&) const = default;
    };
    Drawing(ControlWindow& panel, int width, int height) {
        const MemoryBitmap bitmap(width, height);
        panel.Draw(bitmap.Context(), {0, 0, width, height});
        const uint32_t* const pixels = bitmap.Pixels();
        bool isInside = false;
        for (int y = 0; y < height; ++y) {
            int left = width, right = 0;
            for (int x = 0; x < width; ++x)
                if ((pixels[y * width + x] & 0xFFFFFF) != 0xFFFFFF) {
                    left = std::min(left, x);
                    right = std::max(right, x + 1);
                }
            if (right == 0) {
                isInside = false;
                continue;
            }
            if (!std::exchange(isInside, true)) bands.push_back({y, y, {}, left, right});
            Band& band = bands.back();
            band.bottom = y + 1;
            band.left = std::min(band.left, left);
            band.right = std::max(band.right, right);
            band.pixels.insert(band.pixels.end(), pixels + y * width, pixels + (y + 1) * width);
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
            for (const auto& band : whole.bands)
                EXPECT_GE(band.right, width - MulDiv(2, dpi, 96)) << "flush right at " << band.top;
            EXPECT_GT(whole.bands.front().left, width / 4);
            const HDC dc = CreateCompatibleDC(nullptr);
            const HFONT font = CreateFontFor(u"Tahoma", 8, dpi, true, false);
            GdiSurface surface(dc, {width, 1000}, font, font, 0, 0xFFFFFF, dpi);
            const int least = MeasurePanel(surface, panel.Info()->Layout(3));
            const int most = MeasurePanel(surface, panel.Info()->Layout(1));
            size_t lines = whole.bands.size();
            for (int height = most + 2; height >= least; --height) {
                const Drawing drawing(panel, width, height);
                ASSERT_GE(drawing.bands.size(), 2u) << height;
                EXPECT_EQ(drawing.bands.front().pixels, whole.bands.front().pixels) << "title at height " << height;
                if (!entry.empty()) {
                    EXPECT_EQ(drawing.bands.back().pixels, whole.bands.back().pixels) << "last line at " << height;
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
