// Objects that a host passes to the controls and to a lesson: which members are called, and the effect of failures.
#include "ControlHost.h"

#include <commctrl.h>

#include <map>
#include <optional>

namespace dax::test {

namespace {

using Arguments = std::vector<Variant>; // as written; of a put its value

// Automation objects of a host: each passes its calls on to an object of the library, unless the test intervenes.
class HostObjects {
public:
    // What a call does instead: its result, or the CallFailure that it throws. Empty: the real object does it.
    std::function<std::optional<Variant>(const std::string& member, const Arguments& arguments)> instead;
    std::string missing; // a member that no object has

    ~HostObjects() { EXPECT_TRUE(living.empty()) << "the library still refers to a host's object"; }

    // The same object for the same real one, and for itself. Null: an object that has every member, all of them done by
    // `instead`.
    ComPtr<IDispatch> Of(const ComPtr<IDispatch>& real) {
        for (Object* each : living)
            if (real && (each == real.Get() || each->real.Get() == real.Get())) return ComPtr<IDispatch>(each);
        return MakeCom<Object>(*this, real);
    }

private:
    class Object final : public DispatchObject<> {
    public:
        Object(HostObjects& all, ComPtr<IDispatch> real) : real(std::move(real)), all(all) {
            all.living.push_back(this);
        }
        STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* dispids) override {
            const std::string name = ToUtf8(FromWide(names[0]));
            *dispids = static_cast<DISPID>(members.size()) + 1;
            const HRESULT result = name == all.missing ? DISP_E_UNKNOWNNAME
                                   : real              ? FindMember(real.Get(), names[0], *dispids)
                                                       : S_OK;
            if (SUCCEEDED(result)) members[*dispids] = name;
            return result;
        }
        STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD kind, DISPPARAMS* parameters, VARIANT* result,
                            EXCEPINFO* exception, UINT*) override {
            const ComPtr<Object> kept(this);
            const auto member = members.find(dispid);
            if (member == members.end() || member->second == all.missing) return DISP_E_MEMBERNOTFOUND;
            Arguments arguments;
            for (const VARIANT* argument : ReceivedArguments(*parameters)) arguments.push_back(Dereferenced(*argument));
            DispatchResult done;
            try {
                if (auto other = all.instead ? all.instead(member->second, arguments) : std::nullopt)
                    done.value = *other;
                else
                    done = CallReal(dispid, kind, std::move(arguments));
            } catch (const CallFailure& failure) {
                done = {failure.code, {}, failure.description, u""};
            }
            if (SUCCEEDED(done.code)) done.value.MoveTo(result);
            if (SUCCEEDED(done.code) || !exception) return done.code;
            *exception = {};
            exception->scode = done.code;
            exception->bstrDescription = ToBstr(done.description);
            return DISP_E_EXCEPTION;
        }
        const ComPtr<IDispatch> real;

    private:
        ~Object() override { std::erase(all.living, this); }

        DispatchResult CallReal(DISPID dispid, WORD kind, Arguments arguments) {
            for (Variant& argument : arguments)
                for (const Object* each : all.living)
                    if (argument.vt == VT_DISPATCH && argument.pdispVal == each) argument = Variant(each->real);
            DispatchResult done = InvokeMember(real.Get(), dispid, kind, arguments);
            if (done.value.vt == VT_DISPATCH && done.value.pdispVal) done.value = Variant(all.Of(done.value.pdispVal));
            return done;
        }

        HostObjects& all;
        std::map<DISPID, std::string> members{{DISPID_NEWENUM, "_NewEnum"}};
    };

    std::vector<Object*> living;
};

class HostObjectTest : public OcxTest {
protected:
    void SetLesson(ObjectRef value) { Put(control, L"Lesson", value, DISPATCH_PROPERTYPUTREF); }
    // A lesson of the library with the pages a, b and c in the maps that the records describe.
    static ComPtr<IDispatch>
    Lesson(const Text& maps = u"map\tM\tdefault\npage\t1\ta\npage\t1\tb\nmap\tN\npage\t1\tc\n") {
        const auto lesson = Create(L"ContentObjects.Lesson");
        Text text = u"lesson\t1\n";
        for (const Text sbid : {u"a", u"b", u"c"})
            text += u"storyboard\t" + sbid + u"\ttext\tid " + sbid + u"\ttitle " + sbid + u"\n";
        Call(lesson, L"Load", {text + maps});
        return lesson;
    }
    ComPtr<IDispatch> Nodes() { return Get(Get(control, L"tvwObject"), L"Nodes"); }
    ComPtr<IDispatch> Node(const char16_t* key) { return Get(Nodes(), L"Item", {key}); }

    // The paths of all nodes, in the order of adding.
    std::string Shown() {
        std::string paths;
        for (const Variant& node : Enumerated(Nodes())) paths += ToUtf8(GetText(node.Object(), L"FullPath")) + ";";
        return paths;
    }

    HostObjects host;
    const ComPtr<IDispatch> control = Create(L"DAXControls.LessonMapEditor");
};

} // namespace

TEST_F(HostObjectTest, EveryFailureOfALessonIsAnError) {
    enum Fault { Missing, Failing, Misusing, Endless, Words, Nothing };
    for (const std::string member : {"Maps", "Storyboards", "CurrentSBID", "Count", "Item", "Remove", "DefaultMap",
                                     "Name", "FillTree", "ReadLayout", "SBID", "Title", "StoryboardType", "_NewEnum"})
        for (const Fault fault : {Missing, Failing, Misusing, Endless, Words, Nothing})
            for (const bool isShownBefore : {false, true}) {
                const std::string where = member + " " + std::to_string(fault);
                const auto real = Lesson(), lesson = host.Of(real), pages = Get(real, L"Storyboards");
                const auto page = host.Of(Get(pages, L"Item", {u"b"}));
                Call(pages, L"Remove", {u"b"});
                Call(pages, L"Add", {page});
                if (isShownBefore) SetLesson(lesson);
                if (fault == Missing) host.missing = member;
                if (fault == Endless) host.missing = "_NewEnum"; // collections are read by their Count
                host.instead = [&](const std::string& called, const Arguments& arguments) -> std::optional<Variant> {
                    if (called != member) return {};
                    if (fault == Failing) throw CallFailure{E_FAIL, u"on purpose", u""};
                    if (fault == Misusing && called == "FillTree") Call(arguments[0].Object(), L"Remove", {u"M"});
                    if (fault == Misusing && called == "Item") Call(control, L"Refresh");
                    return fault == Endless ? Variant(INT32_MAX) : fault == Words ? Variant(u"words") : Variant();
                };
                const auto find = [&] { Call(control, L"FindNextSBID", {u"x", 1, false, true}); };
                const auto remove = [&] { Call(control, L"RemoveStoryboard", {page, true}); };
                const std::function<void()> actions[] = {
                    [&] { SetLesson(lesson); },
                    [&] { Put(control, L"CurrentSBID", u"b"); },
                    [&] { Call(control, L"MoveCurrent", {5}); },
                    [&] { Get(control, L"OrphanedStoryboards"); },
                    find,
                    remove,
                };
                int failures = 0;
                for (const auto& action : actions) failures += FAILED(CodeOf(action));
                const bool isNoticed = fault == Failing || (fault == Missing && member != "_NewEnum") ||
                                       (fault == Misusing && member == "FillTree") ||
                                       (fault == Endless && member == "Count");
                EXPECT_TRUE(failures > 0 || !isNoticed) << where;
                // Afterwards the editor must work as before.
                host.missing.clear();
                host.instead = nullptr;
                SetLesson(Lesson());
                Put(control, L"CurrentSBID", u"b");
                EXPECT_EQ(Shown(), "M (2);M (2)\\title a;M (2)\\title b;N (1);N (1)\\title c;") << where;
                EXPECT_EQ(GetText(Get(control, L"CurrentStoryboard"), L"SBID"), u"b") << where;
                SetLesson(nullptr);
            }
}

TEST_F(HostObjectTest, ALessonWithoutMapsGetsOne) {
    const auto lesson = Create(L"ContentObjects.Lesson");
    SetLesson(lesson);
    EXPECT_EQ(GetText(Get(Get(lesson, L"Maps"), L"Item", {0}), L"Name"), u"key");
    Call(control, L"AddStoryboard", {Get(Get(Lesson(), L"Storyboards"), L"Item", {u"a"})});
    SetLesson(nullptr);
    SetLesson(lesson);
    EXPECT_EQ(Shown(), "key (1);key (1)\\title a;") << "the new map keeps the layout";
}

TEST_F(HostObjectTest, FailuresOfUserActionsRaiseError) {
    HostedControl hosted(ControlCases().back());
    Put(hosted.control, L"Lesson", host.Of(Lesson()), DISPATCH_PROPERTYPUTREF);
    const auto tree = Get(hosted.control, L"tvwObject"), last = Get(Get(tree, L"Nodes"), L"Item", {u"c"});
    EXPECT_EQ(Call(tree, L"hWnd").Long(), static_cast<int32_t>(reinterpret_cast<INT_PTR>(hosted.child)));
    EXPECT_EQ(GetText(Get(tree, L"HitTest", {30, 5}), L"Key"), u"M");
    Call(hosted.control, L"CollapseAll");
    EXPECT_TRUE(Call(last, L"EnsureVisible").Bool());
    EXPECT_FALSE(Call(last, L"EnsureVisible").Bool());

    Put(hosted.control, L"CurrentSBID", u"c");
    hosted.received.clear();
    host.missing = "CurrentSBID";
    hosted.Press(VK_UP);
    EXPECT_EQ(hosted.received, std::vector<DISPID>{7});
    hosted.Close();
}

TEST_F(HostObjectTest, PicturesAreFoundByTheirKeys) {
    const HIMAGELIST images = ImageList_Create(16, 16, 0, 4, 0);
    SetLesson(Lesson());
    const auto expect = [this](int root, int page) {
        EXPECT_EQ(Call(Node(u"M"), L"Image").Long(), root);
        EXPECT_EQ(Call(Node(u"a"), L"Image").Long(), page);
    };
    const auto list = host.Of(nullptr), pictures = host.Of(nullptr), picture = host.Of(nullptr);
    int index = 0;
    host.instead = [&](const std::string& member, const Arguments& arguments) -> std::optional<Variant> {
        if (member == "ListImages") return pictures;
        if (member == "Count") return 2;
        if (member == "Key") return index == 1 ? u"_custom" : u"_root";
        if (member == "Item") return index = arguments.at(0).Long(), picture;
        Variant value;
        value.vt = VT_I8;
        value.llVal = reinterpret_cast<INT_PTR>(images);
        return value;
    };
    Call(control, L"SetImageList", {list});
    expect(2, 1);
    EXPECT_NE(CodeOf([&] { Call(control, L"SetImageList", {1}); }), S_OK);
    expect(2, 1);
    EXPECT_EQ(Get(Get(control, L"tvwObject"), L"ImageList").Get(), list.Get());
    Call(control, L"SetImageList", {0});
    expect(1, 5);
    ImageList_Destroy(images);
}

// A map writes to any object with Add, and with Contains or Item, and reads any with Key, Child and Next.
TEST_F(HostObjectTest, AMapFillsAndReadsAnyTree) {
    const auto lesson = Lesson(u"map\tT\tdefault\npage\t1\ta\npage\t2\tb\n");
    const auto map = Get(Get(lesson, L"Maps"), L"Item", {u"T"});
    SetLesson(Lesson(u"map\tM\tdefault\n"));
    const auto nodes = host.Of(Nodes()), root = host.Of(Node(u"M"));
    for (const char* unknown : {"", "Contains"}) {
        host.missing = unknown;
        for (int i = 0; i < 2; ++i) Call(map, L"FillTree", {nodes, root}); // what is there is passed over
        EXPECT_EQ(Call(nodes, L"Count").Long(), 3);
        Call(nodes, L"Remove", {u"b"});
        Call(map, L"ReadLayout", {root});
        EXPECT_TRUE(GetText(lesson, L"Save").ends_with(u"map\tT\tdefault\npage\t1\ta\n"));
        Call(nodes, L"Add", {u"a", 4, u"b"});
        Call(map, L"ReadLayout", {root});
        EXPECT_TRUE(GetText(lesson, L"Save").ends_with(u"page\t1\ta\npage\t2\tb\n"));
        Call(nodes, L"Remove", {u"a"});
    }
    host.missing = "Add";
    EXPECT_NE(CodeOf([&] { Call(map, L"FillTree", {nodes, root}); }), S_OK);
    Call(Get(lesson, L"Maps"), L"Add", {host.Of(Create(L"ContentObjects.StoryboardMap"))});
    EXPECT_NE(CodeOf([&] { Call(lesson, L"Save"); }), S_OK) << "only the host knows the layout";
}

TEST_F(HostObjectTest, AGroupOfLocksIsAnyCollection) {
    const Course course;
    const auto locks = Create(L"DAXControls.LockManager"), editor = Create(L"DAXControls.GroupEditor");
    for (const auto& each : {locks, editor}) Put(each, L"ConnectionString", course.ConnectionString());
    Call(editor, L"LoadDatabase");
    std::string error;
    Sink failing([&](const RecordedEvent& event) {
        if (event.text.starts_with("Error(")) error = event.text.substr(6, event.text.find(',') - 6);
    });
    failing.Connect(locks);
    Put(locks, L"LockDisplayType", 3);
    Put(locks, L"GroupIDCollection", host.Of(Get(editor, L"GetChildLessonIDCollection", {u"g"})));
    const std::tuple<HRESULT, int, std::string> items[] = {
        {S_OK, 2, ""},
        {HRESULT(0x800A0005), 0, ""}, // there is no such item
        {DISP_E_TYPEMISMATCH, 2, ""}, // takes places only: enumerated
        {E_OUTOFMEMORY, 0, "7"},
        {HRESULT(0x800A0046), 0, "70"},
    };
    for (const auto& [code, count, number] : items) {
        host.instead = [code = code](const std::string& member, const Arguments&) -> std::optional<Variant> {
            if (member == "Item" && FAILED(code)) throw CallFailure{code, u"", u""};
            return {};
        };
        error.clear();
        Call(locks, L"RebuildDisplay");
        EXPECT_EQ(Call(locks, L"LockCount").Long(), count) << code;
        EXPECT_EQ(error, number) << code;
    }
    const TempFolder folder;
    const Text script = folder.Write(u"groups.js", R"(
var locks = new ActiveXObject('DAXControls.LockManager'), keys = { a: 1, b: 2 };
var dictionary = new ActiveXObject('Scripting.Dictionary');
function show(group) { locks.GroupIDCollection = group; locks.RebuildDisplay(); WScript.Echo(locks.LockCount); }
locks.ConnectionString = WScript.Arguments(0); locks.LockDisplayType = 3; show(['c', 'd']);
show({ Item: function (key) { return keys[key]; } }); keys.d = 3; locks.Refresh(); WScript.Echo(locks.LockCount);
dictionary.Add('d', ''); show(dictionary); WScript.Echo(dictionary.Count);
)");
    const auto outcome = RunScript(ToWide(script), Quoted(course.ConnectionString()));
    EXPECT_EQ(outcome.output + outcome.errors, "3\n2\n3\n1\n1\n");
}

} // namespace dax::test
