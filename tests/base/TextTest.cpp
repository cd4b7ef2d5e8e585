#include "base/PackedText.h"
#include "base/TextComparison.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

TEST(TextTest, ConvertsToUtf8AndBack) {
    const struct {
        std::string utf8;
        Text text;
    } rows[] = {
        {"", u""},
        {"plain", u"plain"},
        {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF", u"\x7F\x80\u07FF\u0800\uFFFF"},
        {"\xED\x9F\xBF\xEE\x80\x80", u"\uD7FF\uE000"},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
        {std::string("a\0b", 3), Text(u"a\0b", 3)},
        // What is no UTF-8 is replaced.
        {"\x80", u"\uFFFD"},                               // a following byte alone
        {"a\xC3", u"a\uFFFD"},                             // cut off
        {"\xE2\x82z", u"\uFFFDz"},                         // cut off, then a good letter
        {"\xC0\xAF", u"\uFFFD\uFFFD"},                     // longer than needed
        {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},           // longer than needed
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},           // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}, // beyond the last character
        {"\xFF\xFE", u"\uFFFD\uFFFD"},
        {"\xC3\xA9\xA9", u"\u00E9\uFFFD"}, // one byte more than the first one announces
        {"\xF0\x9F\x98\x80\x80", u"\U0001F600\uFFFD"},
    };
    for (const auto& [utf8, text] : rows) {
        EXPECT_EQ(FromUtf8(utf8), text) << testing::PrintToString(utf8);
        EXPECT_TRUE(text.find(u'\uFFFD') != Text::npos || ToUtf8(text) == utf8);
    }
    const Text halves{0xD83D, 0xD83D, 0xDE00, 0xDC00, u'b', 0xE000, 0xD800};
    const Text whole = u"\uFFFD\U0001F600\uFFFDb\uE000\uFFFD";
    EXPECT_EQ(ReplaceLoneSurrogates(halves), whole);
    EXPECT_EQ(ToUtf8(halves), ToUtf8(whole));
}

TEST(TextTest, ShortensFoldsTrimsAndWritesNumbers) {
    const Text text = u"ab\U0001F600c"; // the pair is never cut
    for (const size_t length : {0, 2, 3, 4, 5, 99})
        EXPECT_EQ(Shorten(text, length), text.substr(0, length == 3 ? 2 : length)) << length;
    EXPECT_EQ(Shorten(u"\U0001F600", 1), u"");
    EXPECT_TRUE(EqualNoCase(u"LessonID", u"lessonid"));
    for (const auto& [a, b] : {std::pair{u"Ä", u"ä"}, {u"a", u"ab"}, {u"@", u"`"}}) EXPECT_FALSE(EqualNoCase(a, b));
    EXPECT_EQ(LowerAscii(u"AZ[É"), u"az[É");
    for (const auto& [blank, trimmed] : {std::pair{u"  a b ", u"a b"}, {u"   ", u""}, {u"\ta", u"\ta"}})
        EXPECT_EQ(TrimBlanks(blank), trimmed);
    EXPECT_EQ(ToText(std::numeric_limits<long long>::min()), u"-9223372036854775808");
}

TEST(TextTest, ComparesWithoutCaseInEveryScript) {
    const struct {
        TextView one, other;
        bool isSameLower, isSame; // in lower case; in a text comparison
    } rows[] = {
        {u"ÀŸŻĀΆΩЁЯՖỸÖ×_1", u"àÿżāάωёяֆỹö×_1", true, true},
        {u"ƯU TIÊN ĐẶNG ẰẲ", u"ưu tiên đặng ằẳ", true, true},
        {u"ƏLİFBA ŞĞ", u"əlİfba şğ", true, true},
        {u"ƁƊƘƳ ƓƝƖƱƔƐƆ", u"ɓɗƙƴ ɠɲɩʊɣɛɔ", true, true},
        {u"ἈΡΧῊ ὨΔΉ ᾨ", u"ἀρχὴ ὠδή ᾠ", true, true},
        {u"ԱႠ Ⰰ Ⲁ Ꙁ", u"աⴀ ⰰ ⲁ ꙁ", true, true},
        {u"ᏣᎳᎩ", u"ꮳꮃꭹ", true, true},
        {u"\U00010400\U0001E900", u"\U00010428\U0001E922", true, true}, // Deseret, Adlam
        {u"Straße", u"STRASSE", false, true},
        {u"ẞ", u"ss", false, true},
        {u"ÆON ŒUVRE ÞÓR Ǆ", u"aeon oeuvre thór dž", false, true},
        {u"ﬃ", u"FFI", false, true},
        {u"ΟΔΟΣ", u"οδος", false, true},
        {u"Cafe\u0301 u\u031B\u0300", u"CAFÉ Ừ", false, true},
        {u"\u0958 豈", u"\u0915\u093C 豈", false, true},
        {u"\u1112\u1161\u11AB", u"한", false, true},
        {u"\u212A\u2126\u212B \u1F71", u"kΩå ά", false, true},
        {u"ＡＢＣ\u3000ｶﾀ カヲ", u"abc かた かを", false, true},
        {u"I", u"ı", false, false},
        {u"İ", u"i", false, false},
        {u"é", u"e", false, false},
        {u"ø", u"o", false, false},
        {u"\U0001F600", u"", false, false},
        {u"Ä\xD83D", u"ä\xD83D", true, true},       // half a pair
        {u"\xD801\xE000", u"\xD801", false, false}, // and another character after it
        {u"ァヶ！～ｦﾝ", u"ぁゖ!~をん", false, true},
        // Syllables of the first and the last letters, and what is beyond them.
        {u"\u1100\u1161\u11A8 \u1112\u1175\u11C2", u"\uAC01 \uD7A3", false, true},
        {u"\u1113\u1161", u"\uD7A4", false, false},
        {u"\u1100\u1176", u"\uAE4C", false, false},
        {u"\uAC00\u11A7", u"\uAC00", false, false},
        {u"\uAC00\u11C3", u"\uAC1C", false, false},
        {u"\uAC01\u11A8", u"\uAC02", false, false},
        {u"\uD7A4\u11A8", u"\uD7A5", false, false},
    };
    for (const auto& [one, other, isSameLower, isSame] : rows) {
        EXPECT_EQ(LowerCase(one) == LowerCase(other), isSameLower) << ToUtf8(one) << ' ' << ToUtf8(other);
        EXPECT_EQ(FoldCase(one) == FoldCase(other), isSame) << ToUtf8(FoldCase(one)) << ' ' << ToUtf8(FoldCase(other));
        EXPECT_EQ(LowerCase(one).size(), one.size()) << ToUtf8(one);
    }
    EXPECT_NE(FoldCase(u"In der STRASSE").find(FoldCase(u"straße")), Text::npos);
}

TEST(TextTest, PacksWhatNeedsOneByte) {
    for (size_t size = 0; size < 40; ++size) {
        const Text narrow(size, u'\u00FF');
        const auto with = [&narrow](size_t at, char16_t unit) { return Text(narrow).replace(at, 1, 1, unit); };
        EXPECT_FALSE(PackedText::NeedsTwoBytes(narrow)) << size;
        for (size_t at = 0; at < size; ++at) EXPECT_TRUE(PackedText::NeedsTwoBytes(with(at, u'\u0100'))) << at;
        for (const bool isWide : {false, true}) {
            std::string bytes(PackedText::BytesOf(size, isWide), '\0');
            const char* from = bytes.data();
            EXPECT_EQ(PackedText::Pack(narrow, isWide, bytes.data()), from + bytes.size());
            EXPECT_TRUE(PackedText::EqualsPacked(narrow, from, isWide));
            for (size_t at = 0; at < size; ++at)
                EXPECT_FALSE(PackedText::EqualsPacked(with(at, u'a'), from, isWide)) << at;
            EXPECT_EQ(PackedText::Unpack(from, size, isWide), narrow);
            EXPECT_EQ(from, bytes.data() + bytes.size());
        }
    }
}

} // namespace
} // namespace dax
