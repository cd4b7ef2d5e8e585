// Hosts' own objects that do wrong, hosts that let go in the middle, and what a host keeps of the lesson map editor.
#include "LessonMapFixture.h"

namespace dax::test {

namespace {

class LessonMapHostTest : public LessonMapFixture {
protected:
    static void Fill(HostLessonParts& host) {
        for (const char16_t* sbid : {u"a", u"b", u"c"}) host.AddPage(sbid);
        host.AddMap(u"M", {u"a", u"b"});
        host.AddMap(u"N", {u"c"});
    }
    void SetLesson(IDispatch* value) { Put(control.Get(), L"Lesson", Variant(value), DISPATCH_PROPERTYPUTREF); }
    // Whatever it has been through, the editor works as ever.
    void ExpectUsable(const std::string& where) {
        SetLesson(nullptr);
        Heard();
        Show(u"map\tM\tdefault\npage\t1\ta\npage\t1\tb\n");
        EXPECT_EQ(Shown(), "M (2)[title a title b]") << where;
        Let(control.Get(), L"CurrentSBID", Variant(u"b"));
        EXPECT_TRUE(Heard().ends_with("AfterSelectionChange(b)")) << where;
    }
};

// Nodes that a map has no business with are written as often as a page: once.
bool IsEachOnce(const std::string& shown) {
    for (const char* title : {"title a", "title b", "title c"}) {
        const size_t first = shown.find(title);
        if (first != std::string::npos && shown.find(title, first + 1) != std::string::npos) return false;
    }
    return true;
}

} // namespace

TEST_F(LessonMapHostTest, EveryFailureOfAHostsObjectIsAnError) {
    // Each member in turn: missing, failing, answering a text, answering nothing.
    const std::vector<std::pair<const char*, const wchar_t*>> members{
        {"lesson", L"Maps"},     {"lesson", L"Storyboards"}, {"lesson", L"CurrentSBID"},  {"pages", L"Count"},
        {"pages", L"Item"},      {"pages", L"Remove"},       {"maps", L"Count"},          {"maps", L"Item"},
        {"maps", L"DefaultMap"}, {"map", L"Name"},           {"map", L"FillTree"},        {"map", L"ReadLayout"},
        {"page", L"SBID"},       {"page", L"Title"},         {"page", L"StoryboardType"},
    };
    for (const auto& [kind, member] : members) {
        for (const int fault : {0, 1, 2, 3}) {
            const std::string where = kind + ("." + ToUtf8(FromWide(member))) + " " + std::to_string(fault);
            for (const bool isLate : {false, true}) { // before the lesson is shown, or afterwards
                HostLessonParts host;
                Fill(host);
                if (isLate) SetLesson(host.lesson.Get());
                FakeDispatch& thing = kind == std::string("lesson")  ? *host.lesson.Get()
                                      : kind == std::string("pages") ? *host.pageList.Get()
                                      : kind == std::string("maps")  ? *host.mapList.Get()
                                      : kind == std::string("map")   ? *host.maps[0].second.Get()
                                                                     : *host.pages[0].second.Get();
                FakeDispatch::Member& faulty = thing.members[member];
                faulty = [fault](const auto&, WORD) -> Variant {
                    if (fault == 1) throw CallFailure{E_FAIL, u"on purpose", u""};
                    return fault == 2 ? Variant(u"not what it should be") : Variant();
                };
                if (fault == 0) thing.members.erase(member);
                int failures = 0;
                const auto attempt = [&](const std::function<void()>& action) {
                    const HRESULT code = CodeOf(action);
                    failures += FAILED(code);
                    EXPECT_TRUE(IsEachOnce(Shown())) << where;
                };
                attempt([&] { SetLesson(host.lesson.Get()); });
                attempt([&] { Let(control.Get(), L"CurrentSBID", Variant(u"b")); });
                attempt([&] { Call(control.Get(), L"MoveCurrent", {Variant(5)}); });
                attempt([&] {
                    Call(control.Get(), L"FindNextSBID", {Variant(u"x"), Variant(1), Variant(false), Variant(true)});
                });
                attempt([&] { Get(control.Get(), L"OrphanedStoryboards"); });
                attempt([&] {
                    Call(control.Get(), L"RemoveStoryboard",
                         {Variant(static_cast<IDispatch*>(host.pages[1].second.Get())), Variant(true)});
                });
                // A member that is missing or fails cannot go unnoticed.
                if (fault < 2) {
                    EXPECT_GT(failures, 0) << where;
                }
                ExpectUsable(where);
            }
        }
    }
}

TEST_F(LessonMapHostTest, AMapThatMisusesTheTreeIsRefused) {
    using Fill = std::function<void(IDispatch * nodes, IDispatch * root)>;
    const auto add = [](IDispatch* nodes, const Variant& above, const char16_t* key) {
        Call(nodes, L"Add", {above, Variant(4), Variant(key), Variant(u"?")});
    };
    const std::pair<const char*, Fill> cases[] = {
        {"the same page twice",
         [&](IDispatch* nodes, IDispatch* root) {
             add(nodes, Variant(root), u"a");
             add(nodes, Variant(root), u"a");
         }},
        {"under another map", [&](IDispatch* nodes, IDispatch*) { add(nodes, Variant(u"M"), u"c"); }},
        {"beside the maps", [&](IDispatch* nodes, IDispatch*) { add(nodes, Variant(), u"c"); }},
        {"removes its node", [&](IDispatch* nodes, IDispatch* root) { Call(nodes, L"Remove", {Variant(root)}); }},
        {"empties the tree", [&](IDispatch* nodes, IDispatch*) { Call(nodes, L"Clear"); }},
        {"takes the other's key",
         [&](IDispatch* nodes, IDispatch* root) {
             Let(Get(nodes, L"Item", {Variant(u"M")}).Get(), L"Key", Variant(u"x"));
             Let(root, L"Key", Variant(u"M"));
         }},
        {"shows another lesson", [&](IDispatch*, IDispatch*) { SetLesson(nullptr); }},
        {"refreshes", [&](IDispatch*, IDispatch*) { Call(control.Get(), L"Refresh"); }},
    };
    for (const auto& [name, fill] : cases) {
        HostLessonParts host;
        LessonMapHostTest::Fill(host);
        int calls = 0;
        host.maps[1].second->members[L"FillTree"] = [&, fill = fill](const auto& arguments, WORD) {
            ++calls;
            fill(arguments.at(0).pdispVal, arguments.at(1).pdispVal);
            return Variant();
        };
        const HRESULT code = CodeOf([&] { SetLesson(host.lesson.Get()); });
        EXPECT_EQ(calls, 1) << name;
        const std::string shown = Shown();
        EXPECT_TRUE(SUCCEEDED(code) ? IsEachOnce(shown) : shown.empty()) << name << ": " << shown;
        EXPECT_EQ(SUCCEEDED(code), name == std::string("under another map")) << name;
        ExpectUsable(name);
    }
}

TEST_F(LessonMapHostTest, ALessonWithoutMapsGetsOne) {
    HostLessonParts host;
    host.AddPage(u"a");
    ComPtr<IDispatch> added;
    host.mapList->members[L"Add"] = [&](const auto& arguments, WORD) {
        added = ObjectOf(arguments.at(0));
        return Variant();
    };
    host.mapList->members[L"Count"] = [&](const auto&, WORD) { return Variant(added ? 1 : 0); };
    host.mapList->members[L"Item"] = [&](const auto&, WORD) { return Variant(added.Get()); };
    host.mapList->members[L"DefaultMap"] = [&](const auto&, WORD) { return Variant(added.Get()); };
    SetLesson(host.lesson.Get());
    ASSERT_TRUE(added);
    EXPECT_EQ(GetText(added.Get(), L"Name"), u"key");
    EXPECT_EQ(Shown(), "key (0)");
    EXPECT_EQ(Heard(), "MapChanged(0) AfterSelectionChange()");
    Call(control.Get(), L"AddStoryboard", {Variant(static_cast<IDispatch*>(host.pages[0].second.Get()))});
    EXPECT_EQ(Shown(), "key (1)[title a]");
    SetLesson(nullptr);
    SetLesson(host.lesson.Get());
    EXPECT_EQ(Shown(), "key (1)[title a]") << "the new map keeps the layout";
    SetLesson(nullptr);
    added.Reset();
}

TEST_F(LessonMapHostTest, AHostsOwnPicturesAreFoundByTheirKeys) {
    const auto create = reinterpret_cast<HANDLE(WINAPI*)(int, int, UINT, int, int)>(
        reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(L"comctl32"), "ImageList_Create")));
    const auto destroy = reinterpret_cast<BOOL(WINAPI*)(HANDLE)>(
        reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(L"comctl32"), "ImageList_Destroy")));
    ASSERT_TRUE(create && destroy);
    const HANDLE images = create(16, 16, 0, 4, 0);
    const Variant handle(static_cast<int32_t>(reinterpret_cast<INT_PTR>(images)));
    Show(u"map\tM\tdefault\npage\t1\ta\n");
    const auto expect = [this](int root, int page) {
        EXPECT_EQ(NumberOf(Call(Node(u"M").Get(), L"Image")), root);
        EXPECT_EQ(NumberOf(Call(Node(u"a").Get(), L"Image")), page);
    };
    expect(1, 5);
    if (reinterpret_cast<HANDLE>(static_cast<INT_PTR>(handle.lVal)) == images) { // scripts have no wider numbers
        Call(control.Get(), L"SetImageList", {handle, Variant(u"text,_custom,_undefined,_root")});
        expect(4, 1);
    }
    auto list = FakeDispatch::New(), pictures = FakeDispatch::New();
    list->members[L"hImageList"] = [&](const auto&, WORD) {
        Variant value;
        value.vt = VT_I8;
        value.llVal = reinterpret_cast<INT_PTR>(images);
        return value;
    };
    list->members[L"ListImages"] = [&](const auto&, WORD) { return ObjectVariant(pictures.Get()); };
    pictures->members[L"Count"] = [](const auto&, WORD) { return Variant(2); };
    pictures->members[L"Item"] = [](const auto& arguments, WORD) {
        auto picture = FakeDispatch::New();
        const bool isFirst = NumberOf(arguments.at(0)) == 1;
        picture->members[L"Key"] = [isFirst](const auto&, WORD) { return Variant(isFirst ? u"_custom" : u"_root"); };
        return ObjectVariant(picture.Get());
    };
    Call(control.Get(), L"SetImageList", {ObjectVariant(list.Get())});
    expect(2, 1);
    for (const Variant& wrong : {Variant(u"none"), Variant(1), ObjectVariant(pictures.Get())})
        EXPECT_NE(CodeOf([&] { Call(control.Get(), L"SetImageList", {wrong}); }), S_OK);
    expect(2, 1);
    const auto tree = Get(control.Get(), L"tvwObject");
    EXPECT_EQ(Get(tree.Get(), L"ImageList").Get(), static_cast<IDispatch*>(list.Get()));
    Call(control.Get(), L"SetImageList", {Variant(0)});
    expect(1, 5);
    EXPECT_FALSE(Get(tree.Get(), L"ImageList"));
    Put(tree.Get(), L"ImageList", ObjectVariant(list.Get()), DISPATCH_PROPERTYPUTREF);
    expect(2, 1);
    Put(tree.Get(), L"ImageList", ObjectVariant(nullptr), DISPATCH_PROPERTYPUTREF);
    expect(1, 5);
    destroy(images);
}

} // namespace dax::test
