// Objects that a host passes to the controls and to a lesson: what is asked of them, and what comes of those that fail.
#include "ControlCases.h"
#include "HostObjects.h"
#include "Scripts.h"

#include <commctrl.h>

namespace dax::test {

namespace {

using Arguments = HostObjects::Arguments;

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
        OcxTest::TearDown();
    }

    void SetLesson(ObjectRef value) { Put(control, L"Lesson", value, DISPATCH_PROPERTYPUTREF); }
    // A lesson of the library with the pages a, b and c in the maps that the records describe.
    static ComPtr<IDispatch>
    Lesson(const Text& records = u"map\tM\tdefault\npage\t1\ta\npage\t1\tb\nmap\tN\npage\t1\tc\n") {
        const auto lesson = Create(L"ContentObjects.Lesson");
        Text pages = u"lesson\t1\n";
        for (const Text sbid : {u"a", u"b", u"c"})
            pages += u"storyboard\t" + sbid + u"\ttext\tid " + sbid + u"\ttitle " + sbid + u"\n";
        Call(lesson, L"Load", {pages + records});
        return lesson;
    }
    ComPtr<IDispatch> Nodes() { return Get(Get(control, L"tvwObject"), L"Nodes"); }

    // The texts of all nodes: "above[below beside] top".
    std::string Shown() {
        const auto nodes = Nodes();
        return NumberOf(Call(nodes, L"Count")) == 0 ? "" : Written(Get(Get(nodes, L"Item", {1}), L"FirstSibling"));
    }

    // Whatever it has been through, the editor works as ever.
    void ExpectUsable(const std::string& where) {
        SetLesson(nullptr);
        SetLesson(Lesson());
        EXPECT_EQ(Shown(), "M (2)[title a title b] N (1)[title c]") << where;
        Put(control, L"CurrentSBID", u"b");
        EXPECT_EQ(heard, "AfterSelectionChange(b)") << where;
        SetLesson(nullptr);
    }

    ComPtr<IDispatch> control;
    std::string heard; // the last event

private:
    static std::string Written(ComPtr<IDispatch> node) {
        std::string text;
        for (; node; node = Get(node, L"Next")) {
            text += (text.empty() ? "" : " ") + ToUtf8(GetText(node, L"Text"));
            if (const auto child = Get(node, L"Child")) text += "[" + Written(child) + "]";
        }
        return text;
    }

    Sink sink{[this](const HeardEvent& event) { heard = event.Described(); }};
};

} // namespace

TEST_F(HostObjectTest, EveryFailureOfALessonIsAnError) {
    enum Fault { Missing, Failing, Endless, Words, Nothing };
    for (const char* member : {"Maps", "Storyboards", "CurrentSBID", "Count", "Item", "Remove", "DefaultMap", "Name",
                               "FillTree", "ReadLayout", "SBID", "Title", "StoryboardType", "_NewEnum"})
        for (const Fault fault : {Missing, Failing, Endless, Words, Nothing})
            for (const bool isShownBefore : {false, true}) {
                const std::string where = std::string(member) + " " + std::to_string(fault);
                HostObjects host;
                const auto real = Lesson(), lesson = host.Of(real), pages = Get(real, L"Storyboards");
                const auto page = host.Of(Get(pages, L"Item", {u"b"}));
                Call(pages, L"Remove", {u"b"});
                Call(pages, L"Add", {page});
                if (isShownBefore) SetLesson(lesson);
                if (fault == Missing) host.missing = member;
                if (fault == Endless) host.missing = "_NewEnum"; // collections are asked for their Count
                host.instead = [&](const std::string& called, const Arguments&) -> std::optional<Variant> {
                    if (called != member) return {};
                    if (fault == Failing) throw CallFailure{E_FAIL, u"on purpose", u""};
                    return fault == Endless ? Variant(INT32_MAX) : fault == Words ? Variant(u"words") : Variant();
                };
                const std::function<void()> actions[] = {
                    [&] { SetLesson(lesson); },
                    [&] { Put(control, L"CurrentSBID", u"b"); },
                    [&] { Call(control, L"MoveCurrent", {5}); },
                    [&] {
                        Call(control, L"FindNextSBID", {u"x", 1, false, true});
                    },
                    [&] { Get(control, L"OrphanedStoryboards"); },
                    [&] {
                        Call(control, L"RemoveStoryboard", {page, true});
                    },
                };
                int failures = 0;
                for (const auto& action : actions) failures += FAILED(CodeOf(action));
                if (fault == Failing || (fault == Missing && member != std::string("_NewEnum"))) {
                    EXPECT_GT(failures, 0) << where << " cannot go unnoticed";
                }
                ExpectUsable(where);
            }
}

TEST_F(HostObjectTest, AMapThatMisusesTheTreeIsRefused) {
    using Fill = std::function<void(ObjectRef nodes, ObjectRef root)>;
    const std::pair<const char*, Fill> cases[] = {
        {"the same page twice",
         [](ObjectRef nodes, ObjectRef root) {
             for (int i = 0; i < 2; ++i) Call(nodes, L"Add", {root, 4, u"c", u"?"});
         }},
        {"removes its node", [](ObjectRef nodes, ObjectRef root) { Call(nodes, L"Remove", {root}); }},
        {"takes the other's key",
         [](ObjectRef nodes, ObjectRef root) {
             Put(Get(nodes, L"Item", {u"M"}), L"Key", u"x");
             Put(root, L"Key", u"M");
         }},
        {"shows another lesson", [&](ObjectRef, ObjectRef) { SetLesson(nullptr); }},
        {"refreshes", [&](ObjectRef, ObjectRef) { Call(control, L"Refresh"); }},
    };
    for (const auto& [name, fill] : cases) {
        HostObjects host;
        int calls = 0;
        host.instead = [&](const std::string& member, const Arguments& arguments) -> std::optional<Variant> {
            if (member != "FillTree" || ++calls != 2) return {};
            fill(arguments[0].Object(), arguments[1].Object());
            return Variant();
        };
        EXPECT_NE(CodeOf([&] { SetLesson(host.Of(Lesson())); }), S_OK) << name;
        EXPECT_EQ(calls, 2) << name;
        EXPECT_EQ(Shown(), "") << name;
        ExpectUsable(name);
    }
}

TEST_F(HostObjectTest, ALessonWithoutMapsGetsOne) {
    const auto lesson = Create(L"ContentObjects.Lesson");
    SetLesson(lesson);
    EXPECT_EQ(GetText(Get(Get(lesson, L"Maps"), L"Item", {0}), L"Name"), u"key");
    Call(control, L"AddStoryboard", {Get(Get(Lesson(), L"Storyboards"), L"Item", {u"a"})});
    SetLesson(nullptr);
    SetLesson(lesson);
    EXPECT_EQ(Shown(), "key (1)[title a]") << "the new map keeps the layout";
}

TEST_F(HostObjectTest, FailuresOfTheUsersDoingAreTold) {
    HostObjects host;
    HostedControl hosted(ControlCases().back());
    Put(hosted.control, L"Lesson", host.Of(Lesson()), DISPATCH_PROPERTYPUTREF);
    const auto tree = Get(hosted.control, L"tvwObject"), last = Get(Get(tree, L"Nodes"), L"Item", {u"c"});
    EXPECT_EQ(NumberOf(Call(tree, L"hWnd")), static_cast<int32_t>(reinterpret_cast<INT_PTR>(hosted.child)));
    EXPECT_EQ(GetText(Get(tree, L"HitTest", {30, 5}), L"Key"), u"M");
    Call(hosted.control, L"CollapseAll");
    EXPECT_TRUE(Call(last, L"EnsureVisible").Bool());
    EXPECT_FALSE(Call(last, L"EnsureVisible").Bool());

    Put(tree, L"SelectedItem", last, DISPATCH_PROPERTYPUTREF);
    hosted.heard.clear();
    host.instead = [](const std::string& member, const Arguments&) -> std::optional<Variant> {
        if (member == "CurrentSBID") throw CallFailure{HRESULT(0x800A04D2), u"on purpose", u""};
        return {};
    };
    hosted.Press(VK_UP);
    EXPECT_EQ(hosted.heard, std::vector<DISPID>{7});
    hosted.Close();
}

TEST_F(HostObjectTest, PicturesAreFoundByTheirKeys) {
    const HIMAGELIST images = ImageList_Create(16, 16, 0, 4, 0);
    const auto handle = reinterpret_cast<INT_PTR>(images);
    SetLesson(Lesson());
    const auto expect = [this](int root, int page) {
        EXPECT_EQ(NumberOf(Call(Get(Nodes(), L"Item", {u"M"}), L"Image")), root);
        EXPECT_EQ(NumberOf(Call(Get(Nodes(), L"Item", {u"a"}), L"Image")), page);
    };
    expect(1, 5);
    if (static_cast<long>(handle) == handle) { // scripts have no wider numbers
        Call(control, L"SetImageList", {static_cast<long>(handle), u"text,_custom,_undefined,_root"});
        expect(4, 1);
    }
    HostObjects host;
    const auto list = host.Of(nullptr), pictures = host.Of(nullptr), picture = host.Of(nullptr);
    int asked = 0;
    host.instead = [&](const std::string& member, const Arguments& arguments) -> std::optional<Variant> {
        if (member == "ListImages") return pictures;
        if (member == "Count") return 2;
        if (member == "Key") return asked == 1 ? u"_custom" : u"_root";
        if (member == "Item") {
            asked = NumberOf(arguments.at(0));
            return picture;
        }
        Variant value;
        value.vt = VT_I8;
        value.llVal = handle;
        return value;
    };
    Call(control, L"SetImageList", {list});
    expect(2, 1);
    EXPECT_NE(CodeOf([&] { Call(control, L"SetImageList", {1}); }), S_OK);
    host.missing = "hImageList";
    EXPECT_NE(CodeOf([&] { Call(control, L"SetImageList", {pictures}); }), S_OK);
    expect(2, 1);
    EXPECT_EQ(Get(Get(control, L"tvwObject"), L"ImageList").Get(), list.Get());
    Call(control, L"SetImageList", {0});
    expect(1, 5);
    ImageList_Destroy(images);
}

TEST_F(HostObjectTest, ALessonKeepsAHostsPagesAndMaps) {
    HostObjects host;
    const auto source = Lesson(), lesson = Create(L"ContentObjects.Lesson");
    const auto pages = Get(lesson, L"Storyboards"), maps = Get(lesson, L"Maps");
    const auto page = host.Of(Get(Get(source, L"Storyboards"), L"Item", {u"a"}));
    const auto map = host.Of(Get(Get(source, L"Maps"), L"Item", {u"M"}));
    Call(pages, L"Add", {page});
    EXPECT_EQ(Get(pages, L"Item", {u"a"}).Get(), page.Get());
    EXPECT_EQ(GetText(lesson, L"Save"), u"lesson\t1\nstoryboard\ta\ttext\tid a\ttitle a\n");
    host.missing = "Title";
    EXPECT_EQ(CodeOf([&] { GetText(lesson, L"Save"); }), HRESULT(0x800A01B6));
    host.missing.clear();
    Call(maps, L"Add", {map});
    Put(maps, L"DefaultMap", map);
    EXPECT_EQ(Get(maps, L"Item", {u"M"}).Get(), map.Get());
    EXPECT_NE(CodeOf([&] { GetText(lesson, L"Save"); }), S_OK) << "only the host knows the layout";
}

// A map writes to any object with Add, and with Contains or Item, and reads any with Key, Child and Next.
TEST_F(HostObjectTest, AMapFillsAndReadsAnyTree) {
    HostObjects host;
    const auto lesson = Lesson(u"map\tT\tdefault\npage\t1\ta\npage\t2\tb\n");
    const auto map = Get(Get(lesson, L"Maps"), L"Item", {u"T"});
    SetLesson(Lesson(u"map\tM\tdefault\n"));
    const auto nodes = host.Of(Nodes()), root = host.Of(Get(Nodes(), L"Item", {u"M"}));
    for (const char* unknown : {"", "Contains"}) {
        host.missing = unknown;
        for (int i = 0; i < 2; ++i) Call(map, L"FillTree", {nodes, root}); // what is there is passed over
        EXPECT_EQ(NumberOf(Call(nodes, L"Count")), 3);
        Call(nodes, L"Remove", {u"b"});
        Call(map, L"ReadLayout", {root});
        EXPECT_TRUE(GetText(lesson, L"Save").ends_with(u"map\tT\tdefault\npage\t1\ta\n"));
        Call(nodes, L"Add", {u"a", 4, u"b"});
        Call(map, L"ReadLayout", {root});
        EXPECT_TRUE(GetText(lesson, L"Save").ends_with(u"page\t1\ta\npage\t2\tb\n"));
        Call(nodes, L"Remove", {u"a"});
    }
    host.instead = [](const std::string& member, const Arguments&) {
        return member == "Add" ? std::optional(Variant()) : std::nullopt;
    };
    EXPECT_NE(CodeOf([&] { Call(map, L"FillTree", {nodes, root}); }), S_OK) << "nothing is added";
}

TEST_F(HostObjectTest, AGroupOfLocksIsAnyCollection) {
    const Course course;
    const auto locks = Create(L"DAXControls.LockManager"), editor = Create(L"DAXControls.GroupEditor");
    for (const auto& each : {locks, editor}) Put(each, L"ConnectionString", course.ConnectionString());
    Call(editor, L"LoadDatabase");
    std::string error;
    Sink failing([&](const HeardEvent& event) {
        if (event.name == "Error") error = ToUtf8(event.arguments[0]);
    });
    failing.Connect(locks);
    Put(locks, L"LockDisplayType", 3);
    const auto shown = [&] {
        error.clear();
        Call(locks, L"RebuildDisplay");
        return NumberOf(Call(locks, L"LockCount"));
    };
    HostObjects host;
    Put(locks, L"GroupIDCollection", host.Of(Get(editor, L"GetChildLessonIDCollection", {u"g"})));
    const std::tuple<HRESULT, int, std::string> items[] = {
        {S_OK, 2, ""},
        {HRESULT(0x800A0005), 0, ""}, // there is no such item
        {DISP_E_BADINDEX, 0, ""},
        {DISP_E_TYPEMISMATCH, 2, ""}, // takes places only: enumerated
        {E_OUTOFMEMORY, 0, "7"},
        {HRESULT(0x800A0046), 0, "70"},
    };
    for (const auto& [code, count, number] : items) {
        host.instead = [code = code](const std::string& member, const Arguments&) -> std::optional<Variant> {
            if (member == "Item" && FAILED(code)) throw CallFailure{code, u"", u""};
            return {};
        };
        EXPECT_EQ(shown(), count) << code;
        EXPECT_EQ(error, number) << code;
    }
    const auto dictionary = Create(L"Scripting.Dictionary");
    Put(dictionary, L"CompareMode", 1);
    Call(dictionary, L"Add", {u"D", u""});
    Put(locks, L"GroupIDCollection", dictionary, DISPATCH_PROPERTYPUTREF);
    EXPECT_EQ(shown(), 1);
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
