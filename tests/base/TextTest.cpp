#include "base/Text.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

struct Pair {
    std::string utf8;
    Text text;
};

TEST(TextTest, ConvertsBothWays) {
    const Pair pairs[] = {
        {"", u""},
        {"plain", u"plain"},
        {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF", u"\x7F\x80\u07FF\u0800\uFFFF"},
        {"\xED\x9F\xBF\xEE\x80\x80", u"\uD7FF\uE000"},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
        {std::string("a\0b", 3), Text(u"a\0b", 3)},
    };
    for (const Pair& pair : pairs) {
        EXPECT_EQ(FromUtf8(pair.utf8), pair.text) << pair.utf8;
        EXPECT_EQ(ToUtf8(pair.text), pair.utf8);
    }
}

TEST(TextTest, ReplacesWhatIsNoUtf8) {
    const Pair broken[] = {
        {"\x80", u"\uFFFD"},                               // a following byte alone
        {"a\xC3", u"a\uFFFD"},                             // cut off
        {"\xE2\x82z", u"\uFFFDz"},                         // cut off, then a good letter
        {"\xC0\xAF", u"\uFFFD\uFFFD"},                     // longer than needed
        {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},           // longer than needed
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},           // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}, // beyond the last character
        {"\xFF\xFE", u"\uFFFD\uFFFD"},
    };
    for (const Pair& pair : broken) EXPECT_EQ(FromUtf8(pair.utf8), pair.text) << testing::PrintToString(pair.utf8);
    EXPECT_EQ(ToUtf8(Text{0xD83D, 0xD83D, 0xDE00, 0xDC00, u'b'}), "\xEF\xBF\xBD\xF0\x9F\x98\x80\xEF\xBF\xBD"
                                                                  "b");
}

TEST(TextTest, ShortensWithoutCuttingAPair) {
    const Text text = u"ab\U0001F600c";
    const std::pair<size_t, Text> cases[] = {{0, u""},  {2, u"ab"}, {3, u"ab"}, {4, u"ab\U0001F600"},
                                             {5, text}, {99, text}};
    for (const auto& [length, expected] : cases) EXPECT_EQ(Shorten(text, length), expected) << length;
    EXPECT_EQ(Shorten(u"\U0001F600", 1), u"");
}

TEST(TextTest, FoldsTrimsAndWritesNumbers) {
    EXPECT_TRUE(EqualNoCase(u"LessonID", u"lessonid"));
    for (const auto& [a, b] : {std::pair{u"Ä", u"ä"}, {u"a", u"ab"}, {u"@", u"`"}}) EXPECT_FALSE(EqualNoCase(a, b));
    EXPECT_EQ(LowerAscii(u"AZ[É"), u"az[É");
    EXPECT_EQ(TrimBlanks(u"  a b "), u"a b");
    EXPECT_EQ(TrimBlanks(u"   "), u"");
    EXPECT_EQ(TrimBlanks(u"\ta"), u"\ta");
    EXPECT_EQ(ToText(std::numeric_limits<long long>::min()), u"-9223372036854775808");
}

} // namespace
} // namespace dax
