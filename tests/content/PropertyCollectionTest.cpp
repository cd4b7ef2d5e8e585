#include "base/Error.h"
#include "content/LessonPropertyStore.h"

#include <gtest/gtest.h>

#include <limits>

namespace dax {
namespace {

TEST(PropertyCollection, NamesMatchWithoutCase) {
    DefaultPropertyCollection properties;
    properties.SetValue(u"Title", Text(u"a"));
    properties.SetValue(u"TITLE", Text(u"b"));
    EXPECT_EQ(GetText(properties, u"title", {}), u"b");
    EXPECT_EQ(properties.ValueNames(), std::vector<Text>{u"Title"});
    properties.SetValue(u"n", Text(u"12"));
    for (const auto& [name, number] : {std::pair(u"n", 12), {u"Title", -1}, {u"Tit", -1}})
        EXPECT_EQ(GetNumber(properties, name, -1), number);
}

TEST(PropertyCollection, ReadsTextsOfOtherPrograms) {
    DefaultPropertyCollection properties;
    properties.SetName(u"kept");
    const std::pair<Text, Value> values[] = {{u"Author=Ann Miller\r", Text(u"Ann Miller")},
                                             {u"Author=Bo", Text(u"Bo")},
                                             {u"A=\"x\" y", Text(u"\"x\" y")},
                                             {u"A=\"open\\", Text(u"\"open\\")},
                                             {u"A=\"\\\"\\n\\r\\x\"", Text(u"\"\n\rx")},
                                             {u"N=99999999999999999999999", 1e23},
                                             {u"N=0.5", 0.5},
                                             {u"N=-9.0", -9.0},
                                             {u"N=-12", int64_t{-12}},
                                             {u"Inf=-inf", Text(u"-inf")},
                                             {u"M=-", Text(u"-")},
                                             {u"E=", Text()},
                                             {u"B=true", true},
                                             {u"B=false", false},
                                             {u"Null=null", {}},
                                             {u"D=#2024-02-29 23:59:58#", DateTime{2024, 2, 29, 23, 59, 58}},
                                             {u"D=#2024-13-01 00:00:00#", Text(u"#2024-13-01 00:00:00#")},
                                             {u"D=#2024-5-1#", Text(u"#2024-5-1#")},
                                             {u"D=#", Text(u"#")}};
    for (const auto& [line, value] : values) {
        properties.Load(u"gone=1\n" + line + u"\nno property\n[open\n[closed] twice\nLast=");
        const Text name = line.substr(0, line.find(u'='));
        EXPECT_TRUE(properties.GetValue(name, Text(u"none")) == value) << ToUtf8(line);
        EXPECT_EQ(properties.ValueNames(), (std::vector<Text>{u"gone", name, u"Last"}));
        EXPECT_EQ(properties.Name(), u"kept");
    }
    // The forms in which values are written, and that a name is found again.
    const Text written = u"[a \\] b]\nE\\=\\\\=\"say \\\"no\\\"\\n\"\nN=3.0\nB=true\nNull=null\n"
                         u"D=#2024-05-01 09:30:00.000000010#\n\\[h]=-1\n";
    properties.Load(written + u"n=4.0\n");
    EXPECT_EQ(properties.Name(), u"a ] b");
    EXPECT_EQ(properties.GetValue(u"n", {}), Value(4.0)) << "the last of a name counts";
    properties.SetValue(u"n", 3.0);
    EXPECT_EQ(properties.Save(), written);
    properties.SetValue(u"n", std::numeric_limits<double>::infinity());
    EXPECT_NE(properties.Save().find(u"\nN=null\n"), Text::npos);
}

TEST(LessonPropertyStore, MakesCollectionsOnDemand) {
    int made = 0;
    LessonPropertyStore store([&made] {
        ++made;
        return NewPropertyCollection();
    });
    for (int i = 0; i < 1000; ++i) store.Add(ToText(i), u"StoryboardCount=" + ToText(i) + u"\nTitle=no", u"t", u"i", 1);
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
    for (const Text& odd : {Text(), Text(u"\u00FF\u0080"), Text(u"\u0100"), Text(20'000, u'\u4E2D')}) {
        for (const int place : {1, 2, 3, 4}) { // which of the texts is the odd one
            const auto text = [&](int at) { return at == place ? odd : Text(u"y"); };
            const Text id = ToText(place) + text(1) + ToText(static_cast<int>(odd.size())) + odd.substr(0, 1);
            store.Add(id, u"Note=" + text(2), text(3), text(4), 0);
            EXPECT_EQ(GetText(*store.Peek(id, scratch), u"Note", {}), text(2));
            const auto found = store.Get(id);
            ASSERT_TRUE(found);
            EXPECT_EQ(GetText(*found, u"Note", {}), text(2));
            EXPECT_EQ(GetText(*found, u"Title", {}) + u"|" + GetText(*found, u"Identifier", {}),
                      text(3) + u"|" + text(4));
        }
    }
    EXPECT_TRUE(store.Get(u"0"));
    EXPECT_FALSE(store.Peek(u"", scratch));
}

} // namespace
} // namespace dax
