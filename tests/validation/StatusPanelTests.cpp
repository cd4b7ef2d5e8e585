// The layout of the status panel on a surface whose letters are all alike: 5 pixels wide (6 bold), lines of 10 (12).
#include "validation/StatusPanel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

namespace dax {

namespace {

class PlainSurface : public Surface {
public:
    int Width() const override { return 240; }
    int Height() const override { return 200; }
    void Clear() override { drawn += "clear;"; }
    void SetBold(bool bold) override { isBold = bold; }
    void SetFontSize(double) override {}
    int TextWidth(const Text& text) override { return static_cast<int>(text.size()) * (isBold ? 6 : 5); }
    int DrawText(const Text& text, Rect& rect, uint32_t flags) override {
        const int perLine = std::max(rect.Width() / (isBold ? 6 : 5), 1);
        const int length = static_cast<int>(text.size());
        const int lines = flags & DrawTextFlags::WordBreak ? (length + perLine - 1) / perLine : 1;
        if (!(flags & DrawTextFlags::CalcRect)) {
            char line[200];
            std::snprintf(line, sizeof line, "%s%.5s@%d,%d-%d,%d:%x;", isBold ? "*" : "", ToUtf8(text).c_str(),
                          rect.left, rect.top, rect.right, rect.bottom, flags);
            drawn += line;
        } else {
            measuredFlags = flags;
        }
        return lines * (isBold ? 12 : 10);
    }
    std::string drawn;
    uint32_t measuredFlags = 0;

private:
    bool isBold = true; // as the one who painted before has left it
};

} // namespace

TEST(StatusPanel, ParagraphsStandBelowEachOther) {
    PlainSurface surface;
    const Text long50(50, u'm'); // 50 * 5 = 250 pixels on a column of 240 - 42 = 198: two lines
    PaintStatusPanel(surface, {u"title", long50, u"detail", u"text", StatusPicture::Critical}, {});
    // 2 + 12 + 4 = 18; 18 + 20 + 2 * 10 - 4 = 54; 54 + 12 + 4 = 70
    EXPECT_EQ(surface.drawn, "clear;*title@42,2-240,200:44800;mmmmm@42,18-240,200:44810;"
                             "*detai@42,54-240,200:44800;text@42,70-240,200:44810;");
    EXPECT_EQ(surface.measuredFlags, 0x44C10u);
}

TEST(StatusPanel, ALoneMessageIsCentredOnThePicture) {
    PlainSurface surface;
    PaintStatusPanel(surface, {u"", u"validating", u"", u"", StatusPicture::Busy}, {});
    EXPECT_EQ(surface.drawn, "clear;valid@42,13-240,200:44810;"); // 2 + (32 - 10) / 2
}

} // namespace dax
