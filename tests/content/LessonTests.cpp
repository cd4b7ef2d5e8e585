#include "base/Error.h"
#include "content/ContentLesson.h"
#include "content/LayoutTree.h"

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
    std::set<char16_t> digits;
    for (int i = 0; i < 1000; ++i) {
        const Text id = ContentStoryboard().SBID();
        ASSERT_EQ(id.size(), 32u);
        ASSERT_TRUE(identifiers.insert(id).second) << "twice: " << ToUtf8(id);
        digits.insert(id.begin(), id.end());
    }
    EXPECT_EQ(Text(digits.begin(), digits.end()), u"0123456789abcdef");

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

TEST(ContentMap, LayoutsPassThroughATree) {
    const std::vector<LayoutEntry> layout = {{u"a", 1}, {u"b", 2}, {u"c", 3}, {u"d", 2}, {u"e", 1}, {u"f", 2}};
    ContentMap map(u"Main");
    map.SetLayout(layout);
    LayoutTree tree;
    map.FillTree(tree, tree.Root());
    ContentMap other;
    other.ReadLayout(tree, tree.Root());
    EXPECT_EQ(other.Layout(), layout);

    for (const std::vector<LayoutEntry>& wrong : {std::vector<LayoutEntry>{{u"a", 2}},
                                                  {{u"a", 0}},
                                                  {{u"", 1}},
                                                  {{u"a", 1}, {u"a", 2}},
                                                  {{u"a", 1}, {u"b", 2}, {u"c", 1}, {u"d", 3}}}) {
        EXPECT_THROW(map.SetLayout(wrong), Error);
        EXPECT_EQ(map.Layout(), layout);
    }

    // b stands elsewhere already: c goes where b would be.
    LayoutTree shared;
    shared.AddChild(shared.Root(), u"b", u"");
    map.FillTree(shared, shared.Root());
    other.ReadLayout(shared, shared.Root());
    EXPECT_EQ(other.Layout(),
              (std::vector<LayoutEntry>{{u"b", 1}, {u"a", 1}, {u"c", 2}, {u"d", 2}, {u"e", 1}, {u"f", 2}}));
}

// Nodes that go round in a circle, or have no keys, with and without an end.
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
    for (const bool isChain : {false, true}) {
        EXPECT_THROW(map.ReadLayout(OddTree(7, 0, isChain), MapTree::NodeRef{1}), Error);
        EXPECT_EQ(map.Layout().size(), 1u);
        EXPECT_EQ(map.Layout()[0].sbid, u"kept");
    }
    EXPECT_THROW(map.ReadLayout(OddTree(0, 0, false), MapTree::NodeRef{1}), Error);
    map.ReadLayout(OddTree(0, 5, true), MapTree::NodeRef{1});
    EXPECT_TRUE(map.Layout().empty());
    LayoutTree tree;
    EXPECT_THROW(tree.AddChild(MapTree::NodeRef{9}, u"a", u""), Error);
}

} // namespace
} // namespace dax
