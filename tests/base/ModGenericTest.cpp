#include "base/modGeneric.h"

#include "support/TestDatabases.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

using namespace modGeneric;

constexpr int32_t Default = -77;

TEST(ModGenericTest, ConvertsToLong) {
    const std::pair<Value, int32_t> cases[] = {
        {std::monostate(), Default},
        {true, -1},
        {false, 0},
        {int64_t(2147483647), 2147483647},
        {int64_t(2147483648), Default},
        {int64_t(-2147483648), std::numeric_limits<int32_t>::min()},
        {0.5, 0}, // halves go to the even number
        {1.5, 2},
        {-2.5, -2},
        {-3.5, -4},
        {2147483647.5, Default},
        {std::numeric_limits<double>::quiet_NaN(), Default},
        {std::numeric_limits<double>::infinity(), Default},
        {Text(u"  +12 "), 12},
        {Text(u"-3.5"), -4},
        {Text(u"1e3"), 1000},
        {Text(u"&HFFFFFFFF"), -1},
        {Text(u"&H"), Default},
        {Text(u"+-1"), Default},
        {Text(u"12 apples"), Default},
        {Text(u"inf"), Default},
        {Text(u"１２"), Default},
        {DateTime{1900, 1, 1}, 2},
        {DateTime{2026, 3, 4, 18, 0, 0}, 46086}, // 46085.75
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(VariantToLong(value, Default), expected) << testing::PrintToString(VariantToString(value, u"?"));
    }
}

TEST(ModGenericTest, ConvertsToString) {
    const std::pair<Value, Text> cases[] = {
        {std::monostate(), u"none"},
        {Text(u"x"), u"x"},
        {true, u"True"},
        {false, u"False"},
        {int64_t(-5), u"-5"},
        {0.1, u"0.1"},
        {-0.0, u"0"},
        {1.0 / 3, u"0.333333333333333"},
        {1e20, u"1E+20"},
        {std::numeric_limits<double>::quiet_NaN(), u"none"},
    };
    for (const auto& [value, expected] : cases) EXPECT_EQ(VariantToString(value, u"none"), expected);
}

TEST(ModGenericTest, FormatsDatesByLocale) {
    const DateTime date{2026, 3, 4, 5, 6, 7};
    EXPECT_EQ(FormatLocalDateTime(date, "C"), u"2026-03-04 05:06:07");
    EXPECT_EQ(FormatLocalDateTime(date, "no such locale"), u"2026-03-04 05:06:07");
    // Whatever the user's locale is, the parts are there.
    const Text local = FormatLocalDateTime(date);
    for (const TextView part : {u"26", u"3", u"4", u"5", u"06", u"07"}) EXPECT_NE(local.find(part), Text::npos);
    // A date alone shows no time.
    EXPECT_EQ(VariantToString(DateTime{2026, 3, 4}, u"").find(u':'), Text::npos);
    EXPECT_NE(VariantToString(DateTime{2026, 3, 4, 0, 0, 1}, u"").find(u':'), Text::npos);
}

TEST(ModGenericTest, LooksAtFiles) {
    const test::TempFolder folder;
    const Text plain = folder.Write(u"plain.db", "x"), odd = folder.Write(u"é 語 😀 'x'.db", "");
    EXPECT_TRUE(FileExists(plain));
    EXPECT_TRUE(FileExists(odd));
    EXPECT_FALSE(IsFileReadOnly(odd));
    for (const Text& path : {folder.File(u"none"), folder.File(u""), plain + u"/x", Text(), Text{0xD800}})
        EXPECT_FALSE(FileExists(path) || IsFileReadOnly(path)) << ToUtf8(path);
    const std::filesystem::path path = folder.Path() / "plain.db";
    using std::filesystem::perms;
    const perms writing = perms::owner_write | perms::group_write | perms::others_write;
    std::filesystem::permissions(path, writing, std::filesystem::perm_options::remove);
    EXPECT_TRUE(IsFileReadOnly(plain));
    EXPECT_TRUE(FileExists(plain));
    std::filesystem::permissions(path, perms::owner_write, std::filesystem::perm_options::add);
    EXPECT_FALSE(IsFileReadOnly(plain));
}

TEST(ModGenericTest, MakesFileNamesAndPlurals) {
    EXPECT_EQ(MakeValidFileName(u"a\\b/c:d*e?f\"g<h>i|j", u"_"), u"a_b_c_d_e_f_g_h_i_j");
    EXPECT_EQ(MakeValidFileName(u"//", u""), u"");
    // In that order: what a replacement brings in is replaced when its turn comes later, and only then.
    EXPECT_EQ(MakeValidFileName(u"\\", u"/"), u"/");
    EXPECT_EQ(MakeValidFileName(u"\\", u":"), u":");
    EXPECT_EQ(MakeValidFileName(u"/\\", u"\\|"), u"\\\\|\\\\|");
    for (const long count : {0, 1, -1, 2}) EXPECT_EQ(Pluralize(u"lesson", count), count == 1 ? u"lesson" : u"lessons");
}

std::vector<Text> Items(const IDCollection& collection) { return {collection.begin(), collection.end()}; }

TEST(ModGenericTest, CollectsIdentifiersInOrderAndOnce) {
    IDCollection collection;
    for (const Text id : {u"b", u"a", u"b", u"", u"A"}) CollectionAddKey(collection, id);
    EXPECT_EQ(Items(collection), (std::vector<Text>{u"b", u"a", u"", u"A"}));
    CollectionRemoveKey(collection, u"none");
    CollectionRemoveKey(collection, *collection.begin()); // the text inside the collection itself
    EXPECT_FALSE(CollectionHasKey(collection, u"b"));
    CollectionAddKey(collection, u"b");

    IDCollection copy = collection;
    CollectionRemoveAll(collection, copy);
    EXPECT_TRUE(collection.IsEmpty());
    EXPECT_EQ(copy.Count(), 4u);
    CollectionRemoveKey(copy, u"a");
    CollectionAddAll(collection, copy);
    CollectionAddAll(collection, collection);
    EXPECT_EQ(Items(collection), (std::vector<Text>{u"", u"A", u"b"}));
    CollectionRemoveAll(collection, collection);
    EXPECT_TRUE(collection.IsEmpty());
}

} // namespace
} // namespace dax
