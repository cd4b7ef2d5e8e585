// Objects that a host passes to the controls and to a lesson: what is asked of them, and what comes of those that fail.
#include "ControlCases.h"
#include "FakeLesson.h"
#include "Scripts.h"

#include <commctrl.h>

namespace dax::test {

namespace {

using Arguments = FakeDispatch::Arguments;

class HostObjectTest : public OcxTest {
protected:
    void SetUp() override {
        OcxTest::SetUp();
        control = Create(L"DAXControls.LessonMapEditor");
        sink.Connect(control);
    }
    void TearDown() override {
        sink.Disconnect();
        EXPECT_TRUE(sink.IsReleased());
        control.Reset();
        lesson.Reset();
        EXPECT_EQ(FakeDispatch::living, 0);
        OcxTest::TearDown();
    }

    void SetLesson(ObjectRef value) { Put(control, L"Lesson", value, DISPATCH_PROPERTYPUTREF); }
    // A lesson of the library with the pages a and b in the maps that the records describe.
    void Show(const Text& records) {
        lesson = Create(L"ContentObjects.Lesson");
        Call(lesson, L"Load",
             {u"lesson\t1\nstoryboard\ta\ttext\t\ttitle a\nstoryboard\tb\ttext\t\ttitle b\n" + records});
        SetLesson(lesson);
    }
    ComPtr<IDispatch> Nodes() { return Get(Get(control, L"tvwObject"), L"Nodes"); }
    ComPtr<IDispatch> Node(const char16_t* key) { return Get(Nodes(), L"Item", {key}); }

    // The texts of all nodes: "above[below beside] top".
    std::string Shown() {
        const auto nodes = Nodes();
        return NumberOf(Call(nodes, L"Count")) == 0 ? "" : Written(Get(Get(nodes, L"Item", {1}), L"FirstSibling"));
    }
    std::string Heard() { return std::exchange(heard, {}); } // since the last call

    // Whatever it has been through, the editor works as ever.
    void ExpectUsable(const std::string& where) {
        SetLesson(nullptr);
        Show(u"map\tM\tdefault\npage\t1\ta\npage\t1\tb\n");
        EXPECT_EQ(Shown(), "M (2)[title a title b]") << where;
        Put(control, L"CurrentSBID", u"b");
        EXPECT_TRUE(Heard().ends_with("AfterSelectionChange(b)")) << where;
    }

    ComPtr<IDispatch> control, lesson;
    std::string heard;

private:
    static std::string Written(ComPtr<IDispatch> node) {
        std::string text;
        for (; node; node = Get(node, L"Next")) {
            text += (text.empty() ? "" : " ") + ToUtf8(GetText(node, L"Text"));
            if (const auto child = Get(node, L"Child")) text += "[" + Written(child) + "]";
        }
        return text;
    }

    Sink sink{[this](const HeardEvent& event) { heard += (heard.empty() ? "" : " ") + event.Described(); }};
};

bool IsEachOnce(const std::string& shown) {
    for (const char* title : {"title a", "title b", "title c"}) {
        const size_t first = shown.find(title);
        if (first != std::string::npos && shown.find(title, first + 1) != std::string::npos) return false;
    }
    return true;
}

} // namespace

TEST_F(HostObjectTest, EveryFailureOfALessonIsAnError) {
    enum Fault { Missing, Failing, Text, Nothing };
    using Choose = FakeDispatch& (*)(const FakeLesson&);
    const Choose lessons = [](const FakeLesson& host) -> FakeDispatch& { return *host.lesson.Get(); };
    const Choose pageLists = [](const FakeLesson& host) -> FakeDispatch& { return *host.pageList.Get(); };
    const Choose mapLists = [](const FakeLesson& host) -> FakeDispatch& { return *host.mapList.Get(); };
    const Choose maps = [](const FakeLesson& host) -> FakeDispatch& { return *host.maps[0].second.Get(); };
    const Choose pages = [](const FakeLesson& host) -> FakeDispatch& { return *host.pages[0].second.Get(); };
    const std::pair<Choose, const wchar_t*> members[] = {
        {lessons, L"Maps"},        {lessons, L"Storyboards"}, {lessons, L"CurrentSBID"},  {pageLists, L"Count"},
        {pageLists, L"Item"},      {pageLists, L"Remove"},    {mapLists, L"Count"},       {mapLists, L"Item"},
        {mapLists, L"DefaultMap"}, {maps, L"Name"},           {maps, L"FillTree"},        {maps, L"ReadLayout"},
        {pages, L"SBID"},          {pages, L"Title"},         {pages, L"StoryboardType"},
    };
    for (const auto& [choose, member] : members)
        for (const Fault fault : {Missing, Failing, Text, Nothing})
            for (const bool isShownBefore : {false, true}) {
                const std::string where = ToUtf8(FromWide(member)) + " " + std::to_string(fault);
                FakeLesson host;
                host.Fill();
                if (isShownBefore) SetLesson(host.lesson);
                FakeDispatch& object = choose(host);
                object.members[member] = [fault](const auto&) -> Variant {
                    if (fault == Failing) throw CallFailure{E_FAIL, u"on purpose", u""};
                    return fault == Text ? Variant(u"not what it should be") : Variant();
                };
                if (fault == Missing) object.members.erase(member);
                int failures = 0;
                const std::function<void()> actions[] = {
                    [&] { SetLesson(host.lesson); },
                    [&] { Put(control, L"CurrentSBID", u"b"); },
                    [&] { Call(control, L"MoveCurrent", {5}); },
                    [&] {
                        Call(control, L"FindNextSBID", {u"x", 1, false, true});
                    },
                    [&] { Get(control, L"OrphanedStoryboards"); },
                    [&] {
                        Call(control, L"RemoveStoryboard", {host.pages[1].second, true});
                    },
                };
                for (const auto& action : actions) {
                    failures += FAILED(CodeOf(action));
                    EXPECT_TRUE(IsEachOnce(Shown())) << where;
                }
                if (fault == Missing || fault == Failing) {
                    EXPECT_GT(failures, 0) << where << " cannot go unnoticed";
                }
                ExpectUsable(where);
            }
}

TEST_F(HostObjectTest, AMapThatMisusesTheTreeIsRefused) {
    using Fill = std::function<void(ObjectRef nodes, ObjectRef root)>;
    const auto add = [](ObjectRef nodes, const Variant& above, const char16_t* key) {
        Call(nodes, L"Add", {above, 4, key, u"?"});
    };
    const std::pair<const char*, Fill> cases[] = {
        {"the same page twice",
         [&](ObjectRef nodes, ObjectRef root) {
             add(nodes, root, u"a");
             add(nodes, root, u"a");
         }},
        {"removes its node", [&](ObjectRef nodes, ObjectRef root) { Call(nodes, L"Remove", {root}); }},
        {"takes the other's key",
         [&](ObjectRef nodes, ObjectRef root) {
             Put(Get(nodes, L"Item", {u"M"}), L"Key", u"x");
             Put(root, L"Key", u"M");
         }},
        {"shows another lesson", [&](ObjectRef, ObjectRef) { SetLesson(nullptr); }},
        {"refreshes", [&](ObjectRef, ObjectRef) { Call(control, L"Refresh"); }},
    };
    for (const auto& [name, fill] : cases) {
        FakeLesson host;
        host.Fill();
        int calls = 0;
        host.maps[1].second->members[L"FillTree"] = [&, fill = fill](const Arguments& arguments) {
            ++calls;
            fill(arguments.at(0).pdispVal, arguments.at(1).pdispVal);
            return Variant();
        };
        EXPECT_NE(CodeOf([&] { SetLesson(host.lesson); }), S_OK) << name;
        EXPECT_EQ(calls, 1) << name;
        EXPECT_EQ(Shown(), "") << name;
        ExpectUsable(name);
    }
}

TEST_F(HostObjectTest, ALessonWithoutMapsGetsOne) {
    FakeLesson host;
    host.AddPage(u"a");
    ComPtr<IDispatch> added;
    host.mapList->members[L"Add"] = [&](const auto& arguments) {
        added = arguments.at(0).Object();
        return Variant();
    };
    host.mapList->members[L"Count"] = [&](const auto&) { return added ? 1 : 0; };
    for (const wchar_t* member : {L"Item", L"DefaultMap"})
        host.mapList->members[member] = [&](const auto&) { return added; };
    SetLesson(host.lesson);
    ASSERT_TRUE(added);
    EXPECT_EQ(GetText(added, L"Name"), u"key");
    EXPECT_EQ(Heard(), "MapChanged(0) AfterSelectionChange()");
    Call(control, L"AddStoryboard", {host.pages[0].second});
    SetLesson(nullptr);
    SetLesson(host.lesson);
    EXPECT_EQ(Shown(), "key (1)[title a]") << "the new map keeps the layout";
    SetLesson(nullptr);
    added.Reset();
}

TEST_F(HostObjectTest, ALessonIsShownAndWritten) {
    FakeLesson host;
    host.Fill();
    host.defaultMap = 1;
    host.current = u"b";
    SetLesson(host.lesson);
    EXPECT_EQ(Shown(), "N (1)[title c] M (2)[title a title b]");
    EXPECT_EQ(Heard(), "AfterSelectionChange(b)");
    Call(control, L"MoveCurrent", {6});
    EXPECT_EQ(Heard(), "MapChanged(2)");
    EXPECT_EQ(host.layouts[u"N"], (std::vector<Text>{u"c", u"b"}));
    Call(control, L"RemoveStoryboard", {Get(control, L"CurrentStoryboard"), true});
    EXPECT_EQ(host.pages.size(), 2u);
    EXPECT_EQ(host.layouts[u"N"], std::vector<Text>{u"c"});
    SetLesson(nullptr);
}

TEST_F(HostObjectTest, FailuresOfTheUsersDoingAreTold) {
    FakeLesson host;
    std::vector<Text> sbids;
    for (int n = 0; n < 40; ++n) sbids.push_back(u"p" + ToText(n));
    for (const Text& sbid : sbids) host.AddPage(sbid);
    host.AddMap(u"M", sbids);
    HostedControl hosted(ControlCases().back());
    Put(hosted.control, L"Lesson", host.lesson, DISPATCH_PROPERTYPUTREF);
    const auto tree = Get(hosted.control, L"tvwObject"), last = Get(Get(tree, L"Nodes"), L"Item", {u"p39"});
    EXPECT_EQ(NumberOf(Call(tree, L"hWnd")), static_cast<int32_t>(reinterpret_cast<INT_PTR>(hosted.child)));
    EXPECT_EQ(GetText(Get(tree, L"HitTest", {30, 5}), L"Key"), u"M");
    EXPECT_TRUE(Call(last, L"EnsureVisible").Bool());
    EXPECT_FALSE(Call(last, L"EnsureVisible").Bool());

    Put(tree, L"SelectedItem", last, DISPATCH_PROPERTYPUTREF);
    hosted.heard.clear();
    host.before = [](const std::string& member) {
        if (member == "CurrentSBID") throw CallFailure{HRESULT(0x800A04D2), u"on purpose", u""};
    };
    hosted.Press(VK_UP);
    EXPECT_EQ(hosted.heard, std::vector<DISPID>{7});
    host.before = [](const std::string&) {};
    hosted.Close();
}

TEST_F(HostObjectTest, PicturesAreFoundByTheirKeys) {
    const HIMAGELIST images = ImageList_Create(16, 16, 0, 4, 0);
    ASSERT_TRUE(images);
    const long handle = static_cast<long>(reinterpret_cast<INT_PTR>(images));
    Show(u"map\tM\tdefault\npage\t1\ta\n");
    const auto expect = [this](int root, int page) {
        EXPECT_EQ(NumberOf(Call(Node(u"M"), L"Image")), root);
        EXPECT_EQ(NumberOf(Call(Node(u"a"), L"Image")), page);
    };
    expect(1, 5);
    if (reinterpret_cast<HIMAGELIST>(static_cast<INT_PTR>(handle)) == images) { // scripts have no wider numbers
        Call(control, L"SetImageList", {handle, u"text,_custom,_undefined,_root"});
        expect(4, 1);
    }
    const auto list = MakeCom<FakeDispatch>(), pictures = MakeCom<FakeDispatch>();
    list->members[L"hImageList"] = [&](const auto&) {
        Variant value;
        value.vt = VT_I8;
        value.llVal = reinterpret_cast<INT_PTR>(images);
        return value;
    };
    list->members[L"ListImages"] = [&](const auto&) { return pictures; };
    pictures->members[L"Count"] = [](const auto&) { return 2; };
    pictures->members[L"Item"] = [](const auto& arguments) {
        const auto picture = MakeCom<FakeDispatch>();
        const bool isFirst = NumberOf(arguments.at(0)) == 1;
        picture->members[L"Key"] = [isFirst](const auto&) { return isFirst ? u"_custom" : u"_root"; };
        return picture;
    };
    Call(control, L"SetImageList", {list});
    expect(2, 1);
    for (const Variant& wrong : {Variant(1), Variant(pictures)})
        EXPECT_NE(CodeOf([&] { Call(control, L"SetImageList", {wrong}); }), S_OK);
    expect(2, 1);
    EXPECT_EQ(Get(Get(control, L"tvwObject"), L"ImageList").Get(), list.Get());
    Call(control, L"SetImageList", {0});
    expect(1, 5);
    ImageList_Destroy(images);
}

TEST_F(HostObjectTest, ALessonKeepsAHostsPagesAndMaps) {
    FakeLesson host;
    host.Fill();
    Show(u"");
    const auto pages = Get(lesson, L"Storyboards"), maps = Get(lesson, L"Maps");
    Call(lesson, L"Load", {u"lesson\t1\n"});
    Call(pages, L"Add", {host.pages[0].second});
    EXPECT_EQ(Get(pages, L"Item", {u"a"}).Get(), host.pages[0].second.Get());
    EXPECT_EQ(GetText(lesson, L"Save"), u"lesson\t1\nstoryboard\ta\tText\tid a\ttitle a\n");
    host.before = [](const std::string& member) {
        if (member == "Title") throw CallFailure{HRESULT(0x800A03E9), u"no title today", u""};
    };
    EXPECT_EQ(CodeOf([&] { GetText(lesson, L"Save"); }), HRESULT(0x800A03E9));
    host.before = [](const std::string&) {};
    Call(maps, L"Add", {host.maps[0].second});
    Put(maps, L"DefaultMap", host.maps[0].second);
    EXPECT_EQ(Get(maps, L"Item", {u"M"}).Get(), host.maps[0].second.Get());
    EXPECT_NE(CodeOf([&] { GetText(lesson, L"Save"); }), S_OK) << "only the host knows the layout";
    SetLesson(nullptr);
    Call(lesson, L"Load", {u"lesson\t1\n"});
}

// A map writes to any object with Add, and with Contains or Item, and reads any with Key, Child and Next.
TEST_F(HostObjectTest, AMapFillsAndReadsAnyTree) {
    struct FakeNode {
        FakeRef object = MakeCom<FakeDispatch>();
        std::vector<FakeNode*> children;
    };
    Show(u"map\tM\npage\t1\ta\npage\t2\tb\n");
    const auto map = Get(Get(lesson, L"Maps"), L"Item", {u"M"});
    const auto nodes = MakeCom<FakeDispatch>();
    std::map<Text, FakeNode> tree;
    const auto make = [&](const Text& key) -> FakeNode& {
        FakeNode& node = tree[key];
        node.object->members[L"Key"] = [key](const auto&) { return key; };
        node.object->members[L"Child"] = [&node](const auto&) {
            return node.children.empty() ? Variant() : Variant(node.children[0]->object);
        };
        node.object->members[L"Next"] = [](const auto&) { return Variant(); };
        return node;
    };
    const auto contains = [&](const auto& arguments) { return tree.contains(TextOf(arguments.at(0))); };
    for (const bool knowsKeys : {true, false}) {
        FakeNode& root = make(u"");
        nodes->members.clear();
        if (knowsKeys)
            nodes->members[L"Contains"] = contains;
        else
            nodes->members[L"Item"] = [&](const auto& arguments) -> Variant {
                if (!contains(arguments)) throw CallFailure{HRESULT(0x800A8B11), u"element not found", u""};
                return tree[TextOf(arguments.at(0))].object;
            };
        nodes->members[L"Add"] = [&](const auto& arguments) {
            FakeNode& added = make(TextOf(arguments.at(2)));
            for (auto& [key, above] : tree)
                if (above.object.Get() == arguments.at(0).pdispVal) above.children.push_back(&added);
            return added.object;
        };
        for (int i = 0; i < 2; ++i) Call(map, L"FillTree", {nodes, root.object}); // what is there is passed over
        EXPECT_TRUE(root.children.size() == 1 && tree[u"a"].children.size() == 1 && tree.size() == 3);
        tree[u"a"].children.clear();
        Call(map, L"ReadLayout", {root.object});
        EXPECT_TRUE(GetText(lesson, L"Save").ends_with(u"map\tM\tdefault\npage\t1\ta\n"));
        tree[u"a"].children.push_back(&tree[u"b"]);
        Call(map, L"ReadLayout", {root.object});
        EXPECT_TRUE(GetText(lesson, L"Save").ends_with(u"page\t1\ta\npage\t2\tb\n"));
        for (auto& [key, node] : tree) node.object->members.clear();
        tree.clear();
    }
    nodes->members[L"Add"] = [](const auto&) { return Variant(); };
    EXPECT_NE(CodeOf([&] { Call(map, L"FillTree", {nodes, make(u"").object}); }), S_OK) << "nothing is added";
    tree[u""].object->members.clear();
    nodes->members.clear();
}

TEST_F(HostObjectTest, AGroupOfLocksIsAnyCollection) {
    const Course course;
    const auto locks = Create(L"DAXControls.LockManager");
    std::string error;
    Sink failing([&](const HeardEvent& event) {
        if (event.name == "Error") error = ToUtf8(event.arguments[0]);
    });
    failing.Connect(locks);
    Put(locks, L"ConnectionString", course.ConnectionString());
    Put(locks, L"LessonID", u"c");
    Put(locks, L"LockDisplayType", 3);
    const auto shown = [&] {
        error.clear();
        Call(locks, L"RebuildDisplay");
        return NumberOf(Call(locks, L"LockCount"));
    };
    const auto own = MakeCom<FakeDispatch>();
    int asked = 0;
    std::vector<Variant> elements{u"a", u"a", u"d"};
    own->members[L"_NewEnum"] = [&](const auto&) {
        ++asked;
        return FakeEnumerator::Of(elements);
    };
    Put(locks, L"GroupIDCollection", own);
    EXPECT_EQ(asked, 0) << "stored, and of no interest before it is used";
    EXPECT_EQ(shown(), 4) << "a, d, and the lesson's two";
    elements = {u"b"};
    const std::tuple<HRESULT, int, std::string> items[] = {
        {HRESULT(0x800A0005), 3, ""}, {DISP_E_BADINDEX, 3, ""},       {S_OK, 3, ""}, // there is no such item
        {DISP_E_TYPEMISMATCH, 3, ""},                                                // takes places only: enumerated
        {E_OUTOFMEMORY, 0, "7"},      {HRESULT(0x800A0046), 0, "70"},
    };
    for (const auto& [code, count, number] : items) {
        own->members[L"Item"] = [&, code = code](const auto& arguments) -> Variant {
            if (TextOf(arguments.at(0)) == u"b") return u"b";
            if (FAILED(code)) throw CallFailure{code, u"", u""};
            return {};
        };
        EXPECT_EQ(shown(), count) << code;
        EXPECT_EQ(error, number) << code;
    }
    own->members.clear();
    shown();
    EXPECT_EQ(error, "438");

    const auto dictionary = Create(L"Scripting.Dictionary");
    Put(dictionary, L"CompareMode", 1);
    Call(dictionary, L"Add", {u"D", u""});
    Put(locks, L"GroupIDCollection", dictionary, DISPATCH_PROPERTYPUTREF);
    EXPECT_EQ(shown(), 3);
    EXPECT_EQ(NumberOf(Call(dictionary, L"Count")), 1) << "asking adds nothing";
    failing.Disconnect();

    const TempFolder folder;
    const Text script = folder.Write(u"groups.js", R"(
var locks = new ActiveXObject('DAXControls.LockManager'), keys = { a: 1, b: 2 };
function show(group) { locks.GroupIDCollection = group; locks.RebuildDisplay(); WScript.Echo(locks.LockCount); }
locks.ConnectionString = WScript.Arguments(0); locks.LockDisplayType = 3; show(['c', 'd']);
show({ Item: function (key) { return keys[key]; } }); keys.d = 3; locks.Refresh(); WScript.Echo(locks.LockCount);
)");
    const auto outcome = RunScript(ToWide(script), Quoted(course.ConnectionString()));
    EXPECT_EQ(outcome.output + outcome.errors, "3\n2\n3\n");
}

} // namespace dax::test
