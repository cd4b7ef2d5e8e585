// Lessons of the content object library, as scripts and hosts use them.
#include "LessonMapHost.h"

namespace dax::test {

namespace {

const Text sample = u"lesson\t1\n"
                    u"storyboard\ts1\ttext\tINTRO\tWelcome\n"
                    u"storyboard\ts2\tquestion\tQ1\tWhat did\\nyou learn?\n"
                    u"storyboard\ts3\t\t\tÜber 𝄞\n"
                    u"map\tMain\tdefault\n"
                    u"page\t1\ts1\n"
                    u"page\t2\ts2\n"
                    u"map\tExtra\n"
                    u"page\t1\ts3\n"
                    u"current\ts2\n";

class ContentLessonTest : public OcxTest {
protected:
    void SetUp() override {
        OcxTest::SetUp();
        lesson = Create(L"ContentObjects.Lesson");
        maps = Get(lesson.Get(), L"Maps");
        pages = Get(lesson.Get(), L"Storyboards");
    }
    void TearDown() override {
        for (ComPtr<IDispatch>* each : {&lesson, &maps, &pages}) each->Reset();
        EXPECT_EQ(FakeDispatch::living, 0);
        OcxTest::TearDown();
    }

    void Load(const Text& text) { Call(lesson.Get(), L"Load", {Variant(TextView(text))}); }
    Text Saved() { return TextOf(Call(lesson.Get(), L"Save")); }
    static ComPtr<IDispatch> NewPage(const Text& sbid) {
        auto page = Create(L"ContentObjects.Storyboard");
        Let(page.Get(), L"SBID", Variant(TextView(sbid)));
        return page;
    }

    ComPtr<IDispatch> lesson, maps, pages;
};

// The objects that For Each would give.
std::vector<ComPtr<IDispatch>> Enumerated(IDispatch* collection) {
    const Variant answer = Call(collection, L"_NewEnum");
    std::vector<ComPtr<IDispatch>> objects;
    const auto enumerator = Query<IEnumVARIANT>(answer.punkVal, IID_IEnumVARIANT);
    for (Variant element; enumerator && enumerator->Next(1, &element, nullptr) == S_OK; element = Variant())
        objects.push_back(ObjectOf(element));
    return objects;
}

// The number as hosts count it; 0 when the call works.
int32_t NumberOfError(const std::function<void()>& call) { return CodeOf(call) & 0xFFFF; }

// A tree of a host's own, with a list of children for each node; what is written is "key(child child)".
struct HostTree {
    explicit HostTree(bool knowsKeys) {
        root = NewNode(u"");
        nodes->members[L"Add"] = [this](const FakeDispatch::Arguments& arguments, WORD) {
            if (isDeaf) return Variant();
            const auto added = NewNode(TextOf(arguments.at(2)));
            children[arguments.at(0).pdispVal].push_back(added);
            return ObjectVariant(added.Get());
        };
        const auto find = [this](const FakeDispatch::Arguments& arguments) {
            const auto found = known.find(TextOf(arguments.at(0)));
            return found == known.end() ? nullptr : found->second;
        };
        if (knowsKeys) {
            nodes->members[L"Contains"] = [find](const auto& arguments, WORD) {
                return Variant(find(arguments) != nullptr);
            };
        } else {
            nodes->members[L"Item"] = [find](const auto& arguments, WORD) {
                if (!find(arguments)) throw CallFailure{HRESULT(0x800A8B11), u"element not found", u""};
                return ObjectVariant(find(arguments));
            };
        }
    }
    ~HostTree() {
        for (const auto& thing : all) thing->members.clear();
        nodes->members.clear();
    }
    ComPtr<FakeDispatch> NewNode(const Text& key) {
        auto node = FakeDispatch::New();
        IDispatch* const self = node.Get();
        node->members[L"Key"] = [key](const auto&, WORD) { return Variant(TextView(key)); };
        node->members[L"Child"] = [this, self](const auto&, WORD) {
            return children[self].empty() ? Variant() : ObjectVariant(children[self].front().Get());
        };
        node->members[L"Next"] = [this, self](const auto&, WORD) {
            if (isEndless) return ObjectVariant(self);
            for (const auto& [above, list] : children) {
                for (size_t i = 0; i + 1 < list.size(); ++i) {
                    if (list[i].Get() == self) return ObjectVariant(list[i + 1].Get());
                }
            }
            return Variant();
        };
        all.push_back(node);
        if (!key.empty()) known[key] = self;
        return node;
    }
    std::string Written(IDispatch* node) {
        std::string text = ToUtf8(GetText(node, L"Key"));
        if (children[node].empty()) return text;
        text += '(';
        for (const auto& child : children[node]) text += (text.back() == '(' ? "" : " ") + Written(child.Get());
        return text + ')';
    }

    ComPtr<FakeDispatch> nodes = FakeDispatch::New(), root;
    std::vector<ComPtr<FakeDispatch>> all;
    std::map<IDispatch*, std::vector<ComPtr<FakeDispatch>>> children;
    std::map<Text, IDispatch*> known;
    bool isDeaf = false, isEndless = false;
};

} // namespace

TEST_F(ContentLessonTest, ATextBecomesALessonAndATextAgain) {
    Load(sample);
    EXPECT_EQ(NumberOf(Call(pages.Get(), L"Count")), 3);
    EXPECT_EQ(NumberOf(Call(maps.Get(), L"Count")), 2);
    EXPECT_EQ(GetText(lesson.Get(), L"CurrentSBID"), u"s2");
    const auto page = Get(pages.Get(), L"Item", {Variant(u"s2")});
    EXPECT_EQ(GetText(page.Get(), L"Title"), u"What did\nyou learn?");
    EXPECT_EQ(GetText(page.Get(), L"Identifier"), u"Q1");
    EXPECT_EQ(GetText(page.Get(), L"StoryboardType"), u"question");
    const auto first = Get(maps.Get(), L"Item", {Variant(0)});
    EXPECT_EQ(Get(maps.Get(), L"Item", {Variant(u"Main")}).Get(), first.Get());
    EXPECT_EQ(Get(maps.Get(), L"DefaultMap").Get(), first.Get());
    Text order;
    for (const auto& each : Enumerated(pages.Get())) order += GetText(each.Get(), L"SBID");
    for (const auto& each : Enumerated(maps.Get())) order += GetText(each.Get(), L"Name");
    EXPECT_EQ(order, u"s1s2s3MainExtra");
    EXPECT_EQ(Saved(), sample);
    Let(page.Get(), L"Title", Variant(u"new"));
    EXPECT_NE(Saved().find(u"\tQ1\tnew\n"), Text::npos) << "the object is the lesson's own";

    try {
        Load(u"lesson\t1\nstoryboard\ta\n");
        ADD_FAILURE() << "fields are missing";
    } catch (const CallFailure& failure) {
        EXPECT_TRUE(failure.description.starts_with(u"Line 2")) << ToUtf8(failure.description);
    }
    EXPECT_EQ(NumberOf(Call(pages.Get(), L"Count")), 3) << "a text that is none changes nothing";
    Load(u"lesson\t1\n");
    EXPECT_EQ(NumberOf(Call(pages.Get(), L"Count")), 0) << "a collection follows its lesson";
    EXPECT_EQ(GetText(page.Get(), L"Title"), u"new") << "a page outlives its place";
}

TEST_F(ContentLessonTest, WhatIsRefusedChangesNothing) {
    Load(sample);
    const auto nothing = Variant(static_cast<IDispatch*>(nullptr));
    const auto first = Get(maps.Get(), L"Item", {Variant(0)});
    const auto stray = Create(L"ContentObjects.StoryboardMap");
    const struct {
        IDispatch* object;
        const wchar_t* member;
        Variant argument;
        int code;
    } cases[] = {
        {pages.Get(), L"Add", nothing, 5},
        {pages.Get(), L"Add", Variant(NewPage(u"s1").Get()), 457},
        {pages.Get(), L"Add", Variant(NewPage(u"").Get()), 5},
        {maps.Get(), L"Add", nothing, 5},
        {maps.Get(), L"Add", Variant(first.Get()), 457},
    };
    for (const auto& row : cases)
        EXPECT_EQ(NumberOfError([&] { Call(row.object, row.member, {row.argument}); }), row.code)
            << ToUtf8(FromWide(row.member));
    for (IDispatch* const value : {stray.Get(), static_cast<IDispatch*>(nullptr)})
        EXPECT_EQ(NumberOfError([&] { Let(maps.Get(), L"DefaultMap", Variant(value)); }), 5);
    for (const Variant& index : {Variant(-1), Variant(2), Variant(u"none"), Variant(u"")})
        EXPECT_FALSE(Get(maps.Get(), L"Item", {index}));
    EXPECT_FALSE(Get(pages.Get(), L"Item", {Variant(u"none")}));
    Call(pages.Get(), L"Remove", {Variant(u"none")});
    EXPECT_EQ(Saved(), sample);

    Call(pages.Get(), L"Remove", {Variant(u"s3")});
    Let(maps.Get(), L"DefaultMap", Variant(Get(maps.Get(), L"Item", {Variant(u"Extra")}).Get()));
    EXPECT_EQ(Saved().find(u"Über"), Text::npos);
    EXPECT_NE(Saved().find(u"map\tExtra\tdefault\n"), Text::npos);
}

TEST_F(ContentLessonTest, NewPagesHaveIdentitiesOfTheirOwn) {
    const auto one = Create(L"ContentObjects.Storyboard"), two = Create(L"ContentObjects.Storyboard");
    EXPECT_FALSE(GetText(one.Get(), L"SBID").empty());
    EXPECT_NE(GetText(one.Get(), L"SBID"), GetText(two.Get(), L"SBID"));
    Call(pages.Get(), L"Add", {Variant(one.Get())});
    const Variant sbid = Call(one.Get(), L"SBID");
    EXPECT_EQ(Get(pages.Get(), L"Item", {sbid}).Get(), one.Get()) << "not a copy";
}

TEST_F(ContentLessonTest, AHostsOwnPagesAndMapsAreKeptAsTheyAre) {
    HostLessonParts host;
    host.AddPage(u"h");
    host.AddMap(u"host's", {u"h"});
    IDispatch *const page = host.pages[0].second.Get(), *const map = host.maps[0].second.Get();
    Call(pages.Get(), L"Add", {Variant(page)});
    EXPECT_EQ(Get(pages.Get(), L"Item", {Variant(u"h")}).Get(), page);
    EXPECT_EQ(Saved(), u"lesson\t1\nstoryboard\th\tText\tid h\ttitle h\n");
    Call(maps.Get(), L"Add", {Variant(map)});
    Let(maps.Get(), L"DefaultMap", Variant(map));
    EXPECT_EQ(Get(maps.Get(), L"Item", {Variant(u"host's")}).Get(), map);
    EXPECT_NE(CodeOf([&] { Saved(); }), S_OK) << "only the host knows the layout";
    host.before = [](const std::string& call) {
        if (call == "Title") throw CallFailure{HRESULT(0x800A03E9), u"no title today", u""};
    };
    try {
        Saved();
        ADD_FAILURE() << "the page fails";
    } catch (const CallFailure& failure) {
        EXPECT_EQ(failure.code, HRESULT(0x800A03E9));
        EXPECT_EQ(failure.description, u"no title today");
    }
    Load(u"lesson\t1\n");
}

TEST_F(ContentLessonTest, AMapFillsAndReadsAnyTree) {
    Load(u"lesson\t1\nmap\tM\npage\t1\ta\npage\t2\tb\npage\t3\tc\npage\t1\td\n");
    const auto map = Get(maps.Get(), L"Item", {Variant(u"M")});
    for (const bool knowsKeys : {true, false}) {
        HostTree tree(knowsKeys);
        const std::initializer_list<Variant> place{Variant(static_cast<IDispatch*>(tree.nodes.Get())),
                                                   Variant(static_cast<IDispatch*>(tree.root.Get()))};
        Call(map.Get(), L"FillTree", place);
        EXPECT_EQ(tree.Written(tree.root.Get()), "(a(b(c)) d)");
        EXPECT_EQ(NumberOfError([&] { Call(map.Get(), L"FillTree", place); }), 0) << "all are there: passed over";
        EXPECT_EQ(tree.Written(tree.root.Get()), "(a(b(c)) d)");

        auto& top = tree.children[tree.root.Get()];
        std::swap(top[0], top[1]);
        Call(map.Get(), L"ReadLayout", {Variant(static_cast<IDispatch*>(tree.root.Get()))});
        const Text turned = u"lesson\t1\nmap\tM\npage\t1\td\npage\t1\ta\npage\t2\tb\npage\t3\tc\n";
        EXPECT_EQ(Saved(), turned);
        std::swap(top[0], top[1]);

        tree.isEndless = true;
        EXPECT_NE(CodeOf([&] { Call(map.Get(), L"ReadLayout", {*(place.begin() + 1)}); }), 0);
        EXPECT_EQ(Saved(), turned) << "a tree that is none changes nothing";
        tree.isEndless = false;
        Call(map.Get(), L"ReadLayout", {*(place.begin() + 1)});
    }
    HostTree deaf(true);
    deaf.isDeaf = true;
    EXPECT_NE(CodeOf([&] {
                  Call(map.Get(), L"FillTree",
                       {Variant(static_cast<IDispatch*>(deaf.nodes.Get())),
                        Variant(static_cast<IDispatch*>(deaf.root.Get()))});
              }),
              0);
    const auto nothing = Variant(static_cast<IDispatch*>(nullptr));
    EXPECT_EQ(NumberOfError([&] { Call(map.Get(), L"FillTree", {nothing, nothing}); }), 5);
    EXPECT_EQ(NumberOfError([&] { Call(map.Get(), L"ReadLayout", {nothing}); }), 5);
}

} // namespace dax::test
