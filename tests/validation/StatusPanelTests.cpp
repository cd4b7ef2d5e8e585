// The layout of the status panel.
#include "support/FakeSurface.h"
#include "validation/StatusPanel.h"

#include <gmock/gmock.h>

namespace dax {

using testing::ElementsAre;

TEST(StatusPanel, ParagraphsAreStackedAndASingleOneIsBesideThePicture) {
    const StatusDisplay display{u"title", Text(50, u'm'), u"detail", u"text", StatusPicture::Critical};
    const auto paint = [](const StatusDisplay& shown, int height, int width) {
        test::FakeSurface surface(height, width);
        surface.isBold = true; // left over from earlier painting
        PaintStatusPanel(surface, shown, {});
        EXPECT_FALSE(surface.isBold);
        std::vector<std::string> lines;
        for (const auto& line : surface.drawn) {
            EXPECT_EQ(line.place.left, 42) << "beside the picture";
            EXPECT_EQ(line.place.right, std::max(42, width));
            EXPECT_GE(line.place.bottom, line.place.top);
            EXPECT_EQ((line.flags & DrawTextFlags::WordBreak) != 0, !line.isBold);
            lines.push_back((line.isBold ? "*" : "") + line.text + " " + std::to_string(line.place.top));
        }
        return lines;
    };
    // A line of 16 and 4 below it; two lines for 50 letters on 300 pixels, and twice the height of a line less 4.
    EXPECT_THAT(paint(display, 200, 342),
                ElementsAre("*title 2", std::string(50, 'm') + " 22", "*detail 82", "text 102"));
    EXPECT_EQ(paint(display, 20, 30).size(), 4u) << "also where there is no room";
    EXPECT_THAT(paint({u"", u"validating", u"", u"", StatusPicture::Busy}, 200, 400),
                ElementsAre("validating 10")); // 2 + (32 - 16) / 2
    const StatusPanelMetrics large = StatusPanelMetrics::ForDpi(144);
    EXPECT_EQ(StatusPanelMetrics::ForDpi(96).columnGap, StatusPanelMetrics().columnGap);
    EXPECT_THAT((std::vector{large.pictureWidth, large.pictureHeight, large.margin, large.columnGap, large.titleGap}),
                ElementsAre(48, 48, 3, 12, 6));
}

} // namespace dax
