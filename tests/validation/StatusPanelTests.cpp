// The layout of the status panel.
#include "support/FakeSurface.h"
#include "validation/StatusPanel.h"

#include <gmock/gmock.h>

namespace dax {

namespace {

using testing::ElementsAre;

std::vector<int> TopsOf(const test::FakeSurface& surface) {
    std::vector<int> tops;
    for (const auto& line : surface.drawn) {
        EXPECT_EQ(line.place.left, 42) << "beside the picture";
        EXPECT_EQ(line.place.right, std::max(42, surface.Width()));
        EXPECT_GE(line.place.bottom, line.place.top);
        EXPECT_EQ((line.flags & DrawTextFlags::WordBreak) != 0, !line.isBold);
        tops.push_back(line.place.top);
    }
    return tops;
}

} // namespace

TEST(StatusPanel, ParagraphsStandBelowEachOther) {
    const StatusDisplay display{u"title", Text(50, u'm'), u"detail", u"text", StatusPicture::Critical};
    test::FakeSurface surface(200, 342), narrow(20, 30);
    PaintStatusPanel(surface, display, {});
    EXPECT_THAT(surface.Lines(), ElementsAre("*title", std::string(50, 'm'), "*detail", "text"));
    // A line of 16 and 4 below it; two lines for 50 letters on 300 pixels, and twice the height of a line less 4.
    EXPECT_THAT(TopsOf(surface), ElementsAre(2, 22, 82, 102));
    EXPECT_FALSE(surface.isBold);
    PaintStatusPanel(narrow, display, {});
    EXPECT_EQ(TopsOf(narrow).size(), 4u) << "also where there is no room";
}

TEST(StatusPanel, ALoneMessageIsCentredOnThePicture) {
    test::FakeSurface surface(200);
    surface.isBold = true; // as the one who painted before has left it
    PaintStatusPanel(surface, {u"", u"validating", u"", u"", StatusPicture::Busy}, {});
    EXPECT_THAT(surface.Lines(), ElementsAre("validating"));
    EXPECT_THAT(TopsOf(surface), ElementsAre(10)); // 2 + (32 - 16) / 2
    const StatusPanelMetrics usual, large = StatusPanelMetrics::ForDpi(144);
    EXPECT_EQ(StatusPanelMetrics::ForDpi(96).columnGap, usual.columnGap);
    EXPECT_THAT((std::vector{large.pictureWidth, large.pictureHeight, large.margin, large.columnGap, large.titleGap}),
                ElementsAre(48, 48, 3, 12, 6));
}

} // namespace dax
