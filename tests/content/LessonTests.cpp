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

TEST(ContentMap, WhatStandsElsewhereAlreadyIsLeftOut) {
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
    for (const OddTree& endless : {OddTree(7, 0, false), OddTree(7, 0, true), OddTree(0, 0, false)}) {
        EXPECT_THROW(map.ReadLayout(endless, MapTree::NodeRef{1}), Error);
        EXPECT_EQ(map.Layout(), (std::vector<LayoutEntry>{{u"kept", 1}}));
    }
    map.ReadLayout(OddTree(0, 5, true), MapTree::NodeRef{1});
    EXPECT_TRUE(map.Layout().empty());
}

} // namespace
} // namespace dax
