#include "base/Error.h"
#include "content/LessonPropertyStore.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

TEST(PropertyCollection, NamesMatchWithoutCase) {
    DefaultPropertyCollection properties;
    properties.SetValue(u"Title", Text(u"a"));
    properties.SetValue(u"TITLE", Text(u"b"));
    EXPECT_EQ(GetText(properties, u"title", {}), u"b");
    EXPECT_EQ(properties.ValueNames(), std::vector<Text>{u"Title"});
    EXPECT_EQ(properties.GetValue(u"Tit", int64_t(7)), Value(int64_t(7)));
    properties.SetValue(u"n", Text(u"12"));
    EXPECT_EQ(GetNumber(properties, u"n", -1), 12);
    EXPECT_EQ(GetNumber(properties, u"Title", -1), -1);
}

TEST(PropertyCollection, TakesTextsOfOthers) {
    DefaultPropertyCollection properties;
    properties.SetName(u"kept");
    properties.Load(u"Author=Ann Miller\r\nno property\n[open\nDate=#2024-13-01 00:00:00#\nA=\"x\" y\nA2=\"open\n"
                    u"N=99999999999999999999999\nInf=inf\nM=-\nE=\nAuthor=Bo");
    EXPECT_EQ(properties.Name(), u"kept");
    const std::pair<TextView, Value> values[] = {{u"Author", Text(u"Bo")},
                                                 {u"Date", Text(u"#2024-13-01 00:00:00#")},
                                                 {u"A", Text(u"\"x\" y")},
                                                 {u"A2", Text(u"\"open")},
                                                 {u"N", 1e23},
                                                 {u"Inf", Text(u"inf")},
                                                 {u"M", Text(u"-")},
                                                 {u"E", Text()}};
    for (const auto& [name, value] : values) EXPECT_EQ(properties.GetValue(name, {}), value) << ToUtf8(name);
    EXPECT_EQ(properties.ValueNames().size(), 8u);
}

TEST(LessonPropertyStore, MakesCollectionsOnDemand) {
    int made = 0;
    LessonPropertyStore store([&made] {
        ++made;
        return NewPropertyCollection();
    });
    for (int i = 0; i < 1000; ++i) store.Add(ToText(i), u"StoryboardCount=" + ToText(i) + u"\nTitle=no", u"t", u"i", 1);
    EXPECT_THROW(store.Add(u"7", {}, {}, {}, 0), Error);
    EXPECT_EQ(made, 0);
    const auto scratch = NewPropertyCollection();
    EXPECT_EQ(GetNumber(*store.Peek(u"999", scratch), u"StoryboardCount", 0), 999);
    const auto properties = store.Get(u"7");
    EXPECT_EQ(GetText(*properties, u"LessonID", {}) + GetText(*properties, u"Title", {}) +
                  GetText(*properties, u"Identifier", {}),
              u"7ti");
    EXPECT_EQ(GetNumber(*properties, u"LessonType", 0), 1);
    EXPECT_EQ(store.Get(u"7"), properties);
    EXPECT_EQ(store.Peek(u"7", scratch), properties);
    EXPECT_FALSE(store.Get(u"1000"));
    // Kept in one byte a unit or in two, in a common block or a long one.
    const Text titles[] = {{},  u"\u00FF\u0080", u"\u0100", u"\U0001D11E", Text(9000, u'x'), Text(9000, u'\u4E2D'),
                           u"z"};
    for (const Text& title : titles) store.Add(u"\u00E9" + title, u"Note=" + title, title, u"\u00E8", 0);
    for (const Text& title : titles) {
        EXPECT_EQ(GetText(*store.Peek(u"\u00E9" + title, scratch), u"Note", {}), title);
        const auto found = store.Get(u"\u00E9" + title);
        ASSERT_TRUE(found) << ToUtf8(title);
        EXPECT_EQ(GetText(*found, u"Title", {}) + GetText(*found, u"Identifier", {}) + GetText(*found, u"Note", {}),
                  title + u"\u00E8" + title);
    }
    EXPECT_FALSE(store.Peek(u"", scratch));
}

} // namespace
} // namespace dax
