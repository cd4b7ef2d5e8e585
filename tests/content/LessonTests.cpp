#include "base/Error.h"
#include "content/ContentLesson.h"
#include "content/LayoutTree.h"
#include "content/LessonText.h"

#include "support/TestDatabases.h"

#include <gtest/gtest.h>

#include <set>

namespace dax {
namespace {

std::shared_ptr<ContentStoryboard> Page(const Text& sbid) { return std::make_shared<ContentStoryboard>(sbid); }

TEST(ContentLesson, CollectionsFindRefuseAndKeepTheirOrder) {
    ContentLesson lesson;
    const auto pages = lesson.Storyboards();
    for (const char16_t* sbid : {u"b", u"a", u"c"}) pages->Add(Page(sbid));
    EXPECT_THROW(pages->Add(Page(u"a")), Error);
    EXPECT_THROW(pages->Add(Page(u"")), Error);
    EXPECT_THROW(pages->Add(nullptr), Error);
    pages->Remove(u"a");
    pages->Remove(u"unknown");
    EXPECT_EQ(pages->Item(u"a"), nullptr);
    pages->Add(Page(u"a"));
    Text order;
    for (const auto& page : pages->All()) order += page->SBID();
    EXPECT_EQ(order, u"bca");
    EXPECT_EQ(pages->Count(), 3);
    std::set<Text> identifiers;
    Text digits;
    for (int i = 0; i < 1000; ++i) digits += *identifiers.insert(ContentStoryboard().SBID()).first;
    EXPECT_EQ(identifiers.size() * 32, digits.size()) << "each is another one";
    const std::set<char16_t> used(digits.begin(), digits.end());
    EXPECT_EQ(Text(used.begin(), used.end()), u"0123456789abcdef");

    const auto maps = lesson.Maps();
    const auto main = std::make_shared<ContentMap>(u"Main");
    const auto extra = std::make_shared<ContentMap>(u"Extra");
    maps->Add(main);
    EXPECT_THROW(maps->SetDefaultMap(extra), Error);
    EXPECT_THROW(maps->SetDefaultMap(nullptr), Error);
    EXPECT_EQ(maps->DefaultMap(), nullptr);
    maps->Add(extra);
    EXPECT_THROW(maps->Add(main), Error);
    EXPECT_THROW(maps->Add(nullptr), Error);
    maps->SetDefaultMap(extra);
    EXPECT_EQ(maps->DefaultMap(), extra);
    extra->SetName(u"Other");
    EXPECT_EQ(maps->Item(Text(u"Other")), extra);
    EXPECT_EQ(maps->Item(Text(u"Extra")), nullptr);
    EXPECT_EQ(maps->Item(0), main);
    EXPECT_EQ(maps->Item(2), nullptr);
    EXPECT_EQ(maps->Item(-1), nullptr);
}

TEST(ContentMap, WhatIsElsewhereAlreadyIsSkipped) {
    ContentMap map;
    map.SetLayout({{u"a", 1}, {u"b", 2}, {u"c", 3}, {u"d", 2}, {u"e", 1}, {u"f", 2}});
    LayoutTree tree;
    tree.AddChild(tree.Root(), u"b", u"");
    map.FillTree(tree, tree.Root());
    map.ReadLayout(tree, tree.Root());
    EXPECT_EQ(map.Layout(),
              (std::vector<LayoutEntry>{{u"b", 1}, {u"a", 1}, {u"c", 2}, {u"d", 2}, {u"e", 1}, {u"f", 2}}));
    EXPECT_THROW(tree.AddChild(MapTree::NodeRef{9}, u"g", u""), Error);
}

// Nodes in a cycle, or without keys, with and without an end.
struct OddTree : MapTree {
    int keyed, size;
    bool isChain;
    OddTree(int keyed, int size, bool isChain) : keyed(keyed), size(size), isChain(isChain) {}
    NodeRef After(NodeRef node) const {
        const auto next = static_cast<size_t>(node) + 1;
        return size && next > static_cast<size_t>(size) ? NodeRef::None : NodeRef{next};
    }
    bool Contains(const Text&) const override { return false; }
    NodeRef AddChild(NodeRef, const Text&, const Text&) override { throw Error(5, u"full"); }
    Text Key(NodeRef node) const override {
        return keyed ? ToText(static_cast<long long>(static_cast<size_t>(node) % static_cast<size_t>(keyed))) : Text();
    }
    NodeRef FirstChild(NodeRef node) const override {
        return isChain || node == NodeRef{1} ? After(node) : NodeRef::None;
    }
    NodeRef Next(NodeRef node) const override { return isChain ? NodeRef::None : After(node); }
};

TEST(ContentMap, OddTreesAreRefusedOrRead) {
    ContentMap map;
    map.SetLayout({{u"kept", 1}});
    for (const OddTree& endless : {OddTree(7, 0, false), OddTree(7, 0, true), OddTree(0, 0, false)}) {
        EXPECT_THROW(map.ReadLayout(endless, MapTree::NodeRef{1}), Error);
        EXPECT_EQ(map.Layout(), (std::vector<LayoutEntry>{{u"kept", 1}}));
    }
    map.ReadLayout(OddTree(0, 5, true), MapTree::NodeRef{1});
    EXPECT_TRUE(map.Layout().empty());
}

const TextView sample = u"lesson\t1\n"
                        u"storyboard\ts1\ttext\tINTRO\tWelcome\\tback\\\\ \\n\n"
                        u"storyboard\ts2\t\t\t\n"
                        u"map\tMain\tdefault\n"
                        u"page\t1\ts1\n"
                        u"page\t2\ts2\n"
                        u"page\t1\tmissing\n"
                        u"map\t\n"
                        u"current\ts2\n";

Text Again(TextView text) { return LessonText::Save(*LessonText::Load(text)); }

TEST(LessonText, ReadsWhatItWrites) {
    const auto lesson = LessonText::Load(sample);
    const auto page = lesson->Storyboards()->Item(u"s1");
    ASSERT_TRUE(page);
    EXPECT_EQ(page->StoryboardType(), u"text");
    EXPECT_EQ(page->Identifier(), u"INTRO");
    EXPECT_EQ(page->Title(), u"Welcome\tback\\ \n");
    ASSERT_EQ(lesson->Maps()->Count(), 2);
    EXPECT_EQ(lesson->Maps()->DefaultMap(), lesson->Maps()->Item(Text(u"Main")));
    EXPECT_EQ(lesson->CurrentSBID(), u"s2");
    EXPECT_EQ(LessonText::Save(*lesson), sample);

    Text windows;
    for (const char16_t unit : sample) windows += unit == u'\n' ? Text(u"\r\n\r\n") : Text(1, unit);
    EXPECT_EQ(Again(windows), sample) << "line ends of any system, blank lines";
    EXPECT_EQ(Again(sample.substr(0, sample.size() - 1)), sample) << "no last line end";
    EXPECT_EQ(Again(u"lesson\t1"), u"lesson\t1\n");
}

TEST(LessonText, RefusesWithTheLine) {
    const struct {
        Text text;
        const char* place;
    } cases[] = {
        {u"", "Line 0"},
        {u"lesson\t2\n", "Line 1"},
        {u"lesson\t1\n\n?\n", "Line 3"},
        {u"lesson\t1\nstoryboard\ta\tb\tc\n", "Line 2"},
        {u"lesson\t1\nstoryboard\ta\tb\tc\td\te\n", "Line 2"},
        {u"lesson\t1\nstoryboard\ta\t\t\t\nstoryboard\ta\t\t\t\n", "Line 3"},
        {u"lesson\t1\nstoryboard\ta\t\t\t\\x\n", "Line 2"},
        {u"lesson\t1\npage\t1\ta\n", "Line 2"},
        {u"lesson\t1\nmap\tm\tmain\n", "Line 2"},
        {u"lesson\t1\nmap\tm\tdefault\nmap\tn\tdefault\n", "Line 3"},
        {u"lesson\t1\nmap\tm\npage\t2\ta\n\n", "Line 2"},
        {u"lesson\t1\nmap\tm\npage\t1\ta\npage\t1\ta\nmap\tn\n", "Line 2"},
        {u"lesson\t1\nmap\tm\npage\t1\ta\npage\t2\tb\npage\t1\tc\npage\t3\td\n", "Line 2"},
        {u"lesson\t1\nmap\tm\npage\t1\t\n", "Line 2"},
        {u"lesson\t1\nmap\tm\npage\t0\ta\n", "Line 3"},
        {u"lesson\t1\nmap\tm\npage\t99999999999999999999\ta\n", "Line 3"},
        {u"lesson\t1\nmap\tm\\", "Line 2"},
    };
    for (const auto& [text, place] : cases) {
        const auto failure = test::FailureOf([&text] { LessonText::Load(text); });
        EXPECT_TRUE(ToUtf8(failure.Description()).starts_with(std::string(place) + ":")) << failure.what();
    }
}

// Nothing where a list should be, null in a list, and no element is requested beyond the list's count.
TEST(LessonText, SavesAHostsLesson) {
    struct HostsMaps : ContentMaps {
        int32_t Count() const override { return count; }
        int32_t count = 1;
    };
    struct HostsPages : ContentStoryboards {
        std::vector<std::shared_ptr<Storyboard>> All() const override { return {nullptr, Page(u"s")}; }
    };
    struct HostsLesson : ContentLesson {
        std::shared_ptr<StoryboardMaps> Maps() const override { return maps; }
        std::shared_ptr<dax::Storyboards> Storyboards() const override { return pages; }
        std::shared_ptr<HostsMaps> maps;
        std::shared_ptr<HostsPages> pages;
    } lesson;
    EXPECT_EQ(LessonText::Save(lesson), u"lesson\t1\n");
    lesson.pages = std::make_shared<HostsPages>();
    lesson.maps = std::make_shared<HostsMaps>();
    lesson.maps->Add(std::make_shared<ContentMap>(u"a\rb"));
    const Text saved = u"lesson\t1\nstoryboard\ts\t\t\t\nmap\ta\\rb\n";
    EXPECT_EQ(Again(saved), saved);
    for (const int32_t count : {3, 1}) { // two that are not there; one too many
        lesson.maps->count = count;
        EXPECT_EQ(LessonText::Save(lesson), saved);
        lesson.maps->Add(std::make_shared<ContentMap>(u"more"));
    }
}

} // namespace
} // namespace dax
