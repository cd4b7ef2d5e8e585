#include "base/modGeneric.h"

#include "base/Dates.h"
#include "support/TestDatabases.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

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
        {DateTime{1900, 1, 1}, 2},
        {DateTime{2026, 3, 4, 18, 0, 0}, 46086}, // 46085.75
        {DateTime{1899, 12, 30, 18, 0, 0}, 1},   // the first day; before it the time counts away from it, too
        {DateTime{1899, 12, 28, 18, 0, 0}, -3},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(VariantToLong(value, Default), expected) << testing::PrintToString(VariantToString(value, u"?"));
    }
    // The same on every platform and in every locale.
    const std::pair<int32_t, std::vector<Text>> texts[] = {
        {12, {u"  +12 ", u"\t12\r\n", u"00000000000000000000000012"}},
        {5, {u"5+", u"5.", u"0.05e2", u"+ 5 $"}},
        {-5, {u"5-", u"5 -", u"- 5", u"(5)", u"( 5 ) ", u"-$5", u"(5$)"}},
        {1, {u"0.6", u".51"}},
        {10, {u"1,0,", u"10.4999999999999999999999999999", u"&ha", u"&HA"}},
        {1000, {u"1,000", u"$1,000.5", u"1d3", u"1E+3", u"1D3 $"}},
        {0, {u"-.5", u"0.5", u"1e-400", u"0e99999999999999999999", u"&h0"}},
        {2, {u"2.5", u"1.5", u"25e-1", u"2.4999999999999999999999999999999"}},
        {3, {u"2.5000000000000000000000000000001", u"&O3"}},
        {-4, {u"-3.5", u"4.5-"}},
        {2147483647, {u"2147483647.4999", u"&H7FFFFFFF"}},
        {-2147483647 - 1, {u"-2147483648.5", u"&h80000000"}},
        {15, {u" &o17 ", u"&HF"}},
        {65535, {u"&HFFFF"}}, // of 32 bits, not of 16
        {32768, {u"&H8000&"}},
        {-1, {u"&hffffffff"}},
        {Default, {u"2147483647.5", u"2147483648", u"1e400", u"1e99999999999999999999", u"&H1FFFFFFFF"}},
        {Default, {u"5(", u"(5)-", u"1e-+3", u"&HG", u"$$5"}},
        {Default, {u"",          u" ",    u"-",     u"$",     u".",     u"()",         u"&",    u"&H",     u"&H-1",
                   u"-&H1",      u"&O8",  u"&17",   u"+-1",   u"5-+",   u"-5-",        u"(5",   u"5)",     u"-(5)",
                   u"$5$",       u",1",   u"1.5.2", u"1.5,2", u"1 000", u"1e",         u"1e 3", u"e5",     u"1e1.5",
                   u"12 apples", u"0x1F", u"1&",    u"inf",   u"True",  u"2026-03-01", u"１２", u"\u00A05"}},
    };
    for (const auto& [expected, group] : texts)
        for (const Text& text : group) EXPECT_EQ(VariantToLong(text, Default), expected) << ToUtf8(text);
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
    // Whatever the user's locale is, the parts are there, and a date alone shows no time.
    const Text local = FormatLocalDateTime(date), day = VariantToString(DateTime{2026, 3, 4}, u"");
    for (const TextView part : {u"26", u"3", u"4", u"5", u"06", u"07"}) EXPECT_NE(local.find(part), Text::npos);
    EXPECT_TRUE(local.starts_with(day + u" ") && day.find(u':') == Text::npos) << ToUtf8(local) << ToUtf8(day);
    for (const DateTime& time : {DateTime{2026, 3, 4, 1}, {2026, 3, 4, 0, 1}, {2026, 3, 4, 0, 0, 1}})
        EXPECT_NE(VariantToString(time, u"").find(u':'), Text::npos);
    const DateTime before = Now();
    const std::time_t now = std::time(nullptr);
    char text[20];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
    EXPECT_LE(ToUtf8(dax::FormatDate(before)), text);
    EXPECT_LE(text, ToUtf8(dax::FormatDate(Now())));
#ifdef __linux__
    const test::TempFolder folder;
    const std::string place = folder.Path().string();
    if (std::system(("localedef -i de_DE -f UTF-8 " + place + "/de_DE.UTF-8 2>" + place + "/said").c_str()) != 0)
        GTEST_SKIP() << "the machine has no sources of locales";
    const auto formats = [&] { // in a process of its own: the C library keeps what it reads of such a place
        setenv("LOCPATH", place.c_str(), 1);
        bool isRight = FormatLocalDateTime(date, "de_DE.UTF-8") == u"04.03.2026 05:06:07";
        for (const std::string plain : {"C", "C.UTF-8"})
            for (const std::string& name : {plain, "LC_CTYPE=de_DE.UTF-8;LC_NUMERIC=C;LC_TIME=" + plain +
                                                       ";LC_COLLATE=C;LC_MONETARY=C;LC_MESSAGES=C"})
                isRight = isRight && FormatLocalDateTime(date, name.c_str()) == u"2026-03-04 05:06:07";
        return isRight;
    };
    EXPECT_EXIT(std::_Exit(formats() ? 0 : 1), testing::ExitedWithCode(0), "");
#endif
}

TEST(ModGenericTest, ReadsDatesAsTheyAreWritten) {
    const std::pair<Text, std::vector<Text>> cases[] = {
        {u"2024-02-09 00:00:00", {u"2024-2-9", u"2024/02/9", u" 2024-02-09 \t", u"2024-2-9 ", u"2024-2-9 12:00 am"}},
        {u"2024-12-31 23:59:59", {u"2024-12-31 23:59:59", u"2024/12/31T11:59:59PM", u"2024-12-31 \t11:59:59 pm"}},
        {u"2024-01-01 12:00:00", {u"2024-1-1 12:00", u"2024-01-01T12:0:0 PM"}},
        {u"2024-01-31 01:02:03.123456789", {u"2024-1-31 1:2:3.1234567891", u"2024-01-31 01:02:03.123456789 AM"}},
        {u"2024-01-01 00:00:00.5", {u"2024-01-01 0:0:0.5"}},
        {u"2000-02-29 00:00:00", {u"2000-02-29"}},
        {u"2024-02-29 00:00:00", {u"2024-02-29"}},
        {u"0999-04-30 00:00:00", {u"0999-4-30"}},
        {u"", {u"",           u"2023-02-29",      u"1900-02-29",      u"2024-02-30",       u"2024-04-31",
               u"2024-00-10", u"2024-13-10",      u"2024-01-00",      u"2024-01-32",       u"2024-01/01",
               u"24-1-1",     u"12024-1-1",       u"2024-001-1",      u"2024-1-1X",        u"2024-1-1 24:00",
               u"2024-1-1 0", u"2024-1-1 23:60",  u"2024-1-1 1:0:60", u"2024-1-1 0:30 AM", u"2024-1-1 13:00 PM",
               u"2024.1.1",   u"2024-1-1 1:2:3.", u"2024-1-1 1:2:",   u"2024-1-1 1:002",   u"2024-1-1 1:02 AMX",
               u"2024-1-001", u"2024-1-1 001:00"}},
    };
    for (const auto& [written, texts] : cases) {
        for (const Text& text : texts) {
            const auto date = ParseDate(text);
            EXPECT_EQ(ToUtf8(date ? dax::FormatDate(*date) : Text()), ToUtf8(written)) << ToUtf8(text);
        }
    }
}

TEST(ModGenericTest, FileExistsAndIsFileReadOnly) {
    const test::TempFolder folder;
    const Text plain = folder.Write(u"plain.db", "x"), odd = folder.Write(u"é 語 😀 'x'.db", "");
    folder.Write(u"noext", "");
    std::filesystem::create_directory(folder.Path() / "inner");
    const std::pair<Text, bool> names[] = {
        {u"plain.db", true},    {u"é 語 😀 'x'.db", true}, {u"plain.d?", true},    {u"pl*", true},
        {u"*.*", true},         {u"pl*n.*b", true},       {u"?lain.d?", true},    {u"pl*n", false},
        {u"plain.d??x", false}, {u"none", false},         {u"*.mdb", false},      {u"inner", false},
        {u"inn*", false},       {u"inner/*", false},      {u"inner/", false},     {u"", true},
        {u"none/", false},      {u"no*/plain.db", false}, {u"plain.db/x", false}, {u"no*.*", true},
        {u"noext.*", true},     {u"noex.*", false},       {u"plain.db.*", true},
    };
    for (const auto& [name, isThere] : names) EXPECT_EQ(FileExists(folder.File(name)), isThere) << ToUtf8(name);
#ifndef _WIN32 // Wine takes it for one unit everywhere, and keeps an order of its own
    EXPECT_TRUE(FileExists(folder.File(u"pl????.db??")));
    for (const char16_t digit : TextView(u"9081726354")) folder.Write(Text(u"s") + digit, "");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    std::filesystem::permissions("s0", std::filesystem::perms::owner_read);
    EXPECT_TRUE(IsFileReadOnly(u"s?")) << "the first one";
    EXPECT_FALSE(IsFileReadOnly(u"s?*4") || IsFileReadOnly(u"s4"));
    std::filesystem::current_path(before);
#endif
    for (const Text& path : {Text(), Text{0xD800}, Text(u"plain\0.db", 9)}) EXPECT_FALSE(FileExists(path));
    EXPECT_FALSE(IsFileReadOnly(odd) || IsFileReadOnly(folder.File(u"none")) || IsFileReadOnly(folder.File(u"inner")));
    using std::filesystem::perms;
    const perms writing = perms::owner_write | perms::group_write | perms::others_write;
    for (const Text name : {u"plain.db", u"inner"}) {
        const Text path = folder.File(name);
        std::filesystem::permissions(path, writing, std::filesystem::perm_options::remove);
        if ((std::filesystem::status(path).permissions() & writing) != perms::none) continue; // Wine: no such folders
        EXPECT_TRUE(IsFileReadOnly(path) && IsFileReadOnly(folder.File(name.substr(0, 3) + u"*"))) << ToUtf8(name);
        EXPECT_EQ(FileExists(path), name == u"plain.db");
        std::filesystem::permissions(path, perms::owner_write, std::filesystem::perm_options::add);
        EXPECT_FALSE(IsFileReadOnly(path));
    }
}

TEST(ModGenericTest, MakesFileNamesAndPlurals) {
    EXPECT_EQ(MakeValidFileName(u"a\\b/c:d*e?f\"g<h>i|j", u"_"), u"a_b_c_d_e_f_g_h_i_j");
    EXPECT_EQ(MakeValidFileName(u"//", u""), u"");
    // In that order: what a replacement brings in is replaced when its turn comes later, and only then.
    for (const Text later : {u"/", u":"}) EXPECT_EQ(MakeValidFileName(u"\\", later), later);
    EXPECT_EQ(MakeValidFileName(u"/\\", u"\\|"), u"\\\\|\\\\|");
    for (const long count : {0, 1, -1, 2}) EXPECT_EQ(Pluralize(u"lesson", count), count == 1 ? u"lesson" : u"lessons");
}

TEST(ModGenericTest, CollectsIdentifiersInOrderAndOnce) {
    IDCollection collection;
    for (const Text id : {u"b", u"a", u"b", u"", u"A"}) CollectionAddKey(collection, id);
    EXPECT_TRUE(std::ranges::equal(collection, std::vector<Text>{u"b", u"a", u"", u"A"}));
    CollectionRemoveKey(collection, u"none");
    CollectionRemoveKey(collection, *collection.begin()); // the text inside the collection itself
    EXPECT_FALSE(CollectionHasKey(collection, u"b"));
    CollectionAddKey(collection, u"b");
    IDCollection copy = collection, assigned;
    CollectionRemoveAll(collection, copy);
    EXPECT_TRUE(collection.IsEmpty());
    assigned = copy;
    EXPECT_TRUE(CollectionHasKey(assigned, u"a"));
    CollectionRemoveKey(copy, u"a");
    CollectionAddAll(collection, copy);
    CollectionAddAll(collection, collection);
    EXPECT_TRUE(std::ranges::equal(collection, std::vector<Text>{u"", u"A", u"b"}));
    EXPECT_EQ(assigned.Count(), 4u);
    CollectionRemoveAll(collection, collection);
    EXPECT_TRUE(collection.IsEmpty());
}

} // namespace
} // namespace dax
