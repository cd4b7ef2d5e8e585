// The lesson map editor as hosts and scripts use it: its members, its events, its tree, and the host's own objects.
#include "ControlCases.h"
#include "LessonMapFixture.h"

namespace dax::test {

namespace {

class LessonMapTest : public LessonMapFixture {};

} // namespace

TEST_F(LessonMapTest, ShowsALessonAndTellsOfIt) {
    Show(u"map\tMain\tdefault\npage\t1\ta\npage\t2\tb\nmap\tMain\npage\t1\tc\ncurrent\tb\n");
    EXPECT_EQ(Heard(), "MapChanged(0) AfterSelectionChange(b)") << "a map has got a name of its own";
    EXPECT_EQ(Shown(), "Main (2)[title a[title b]] Main_1 (1)[title c]");
    EXPECT_EQ(GetText(control.Get(), L"CurrentSBID"), u"b");
    EXPECT_EQ(Get(control.Get(), L"CurrentStoryboard").Get(), Page(u"b").Get());
    EXPECT_EQ(Get(control.Get(), L"Lesson").Get(), lesson.Get());
    EXPECT_EQ(NumberOf(Call(control.Get(), L"GetChildStoryboardCount", {Variant(u"a")})), 1);

    Let(control.Get(), L"CaptionStyle", Variant(1));
    EXPECT_EQ(Shown(), "Main (2)[id a[id b]] Main_1 (1)[id c]");
    Let(control.Get(), L"ShowDefaultMapOnly", Variant(true));
    EXPECT_EQ(Shown(), "Main (2)[id a[id b]]");
    EXPECT_EQ(Heard(), "");
    Let(control.Get(), L"CurrentStoryboard", Variant(Page(u"a").Get()));
    EXPECT_EQ(Heard(), "AfterSelectionChange(a)");
    EXPECT_EQ(GetText(lesson.Get(), L"CurrentSBID"), u"a");
    Put(control.Get(), L"Lesson", Variant(lesson.Get()), DISPATCH_PROPERTYPUTREF);
    Put(control.Get(), L"Lesson", Variant(static_cast<IDispatch*>(nullptr)), DISPATCH_PROPERTYPUTREF);
    EXPECT_EQ(Shown(), "");
    EXPECT_EQ(Heard(), "AfterSelectionChange(a)");
    EXPECT_FALSE(Get(control.Get(), L"CurrentStoryboard"));
    EXPECT_FALSE(Get(control.Get(), L"GetCheckedLesson"));
}

TEST_F(LessonMapTest, EditsReachTheLesson) {
    Show(u"map\tM\tdefault\npage\t1\ta\npage\t1\tb\nmap\tN\n");
    Let(control.Get(), L"CurrentSBID", Variant(u"a"));
    Heard();
    const auto added = Create(L"ContentObjects.Storyboard");
    Let(added.Get(), L"SBID", Variant(u"new"));
    Call(control.Get(), L"AddStoryboard", {Variant(added.Get())});
    EXPECT_EQ(Heard(), "MapChanged(1) AfterSelectionChange(new)");
    EXPECT_EQ(Shown(), "M (3)[title a (untitled) title b] N (0)");
    Let(added.Get(), L"Title", Variant(u"later"));
    Call(control.Get(), L"UpdateSBID", {Variant(u"new")});
    EXPECT_EQ(Shown(), "M (3)[title a later title b] N (0)");
    for (const int movement : {3, 5}) {
        EXPECT_TRUE(IsTrue(Call(control.Get(), L"CanMoveCurrent", {Variant(movement)})));
        Call(control.Get(), L"MoveCurrent", {Variant(movement)});
    }
    EXPECT_FALSE(IsTrue(Call(control.Get(), L"CanMoveCurrent", {Variant(5)})));
    EXPECT_EQ(Heard(), "MapChanged(2) MapChanged(2)");
    EXPECT_EQ(Shown(), "M (2)[title a title b] N (1)[later]");
    EXPECT_NE(Saved().find(u"map\tN\npage\t1\tnew\n"), Text::npos) << ToUtf8(Saved());
    Call(control.Get(), L"RemoveStoryboard", {Variant(Page(u"a").Get()), Variant(false)});
    EXPECT_EQ(Heard(), "MapChanged(3)");
    EXPECT_FALSE(Page(u"a"));
    EXPECT_EQ(Shown(), "M (1)[title b] N (1)[later]");
}

TEST_F(LessonMapTest, ChecksAnswerPagesAndALesson) {
    Show(u"map\tM\tdefault\npage\t1\ta\npage\t2\tb\npage\t3\tc\nmap\tN\npage\t1\td\nmap\tO\ncurrent\tc\n");
    Let(control.Get(), L"Checkboxes", Variant(true));
    Call(control.Get(), L"CheckAllStoryboards");
    EXPECT_EQ(NumberOf(Call(control.Get(), L"CheckedStoryboardCount")), 4);
    Let(Node(u"b").Get(), L"Checked", Variant(false));
    const auto checked = Get(control.Get(), L"CheckedStoryboards");
    EXPECT_EQ(NumberOf(Call(checked.Get(), L"Count")), 3);
    EXPECT_EQ(Get(checked.Get(), L"Item", {Variant(2)}).Get(), Page(u"c").Get());
    EXPECT_EQ(Get(checked.Get(), L"Item", {Variant(u"d")}).Get(), Page(u"d").Get());
    for (const Variant& index : {Variant(0), Variant(4), Variant(u"b")})
        EXPECT_NE(CodeOf([&] { Get(checked.Get(), L"Item", {index}); }), S_OK);

    const auto part = Get(control.Get(), L"GetCheckedLesson");
    EXPECT_EQ(TextOf(Call(part.Get(), L"Save")), Text(u"lesson\t1\n") + PageLine(u"a") + PageLine(u"c") +
                                                     PageLine(u"d") +
                                                     u"map\tM\tdefault\npage\t1\ta\npage\t2\tc\nmap\tN\npage\t1\td\n"
                                                     u"current\tc\n");
    EXPECT_EQ(Get(Get(part.Get(), L"Storyboards").Get(), L"Item", {Variant(u"a")}).Get(), Page(u"a").Get());
    Call(control.Get(), L"UncheckAllStoryboards");
    EXPECT_EQ(NumberOf(Call(Get(control.Get(), L"CheckedStoryboards").Get(), L"Count")), 0);
}

TEST_F(LessonMapTest, FindsTheContentObjectsBesideItWithoutTheirRegistration) {
    Show(u"map\tM\tdefault\npage\t1\ta\n");
    Call(control.Get(), L"CheckAllStoryboards");
    ASSERT_HRESULT_SUCCEEDED(CallLibrary(L"contentObjects.dll", "DllUnregisterServer"));
    EXPECT_FALSE(Create(L"ContentObjects.Lesson"));
    Variant part;
    const HRESULT code = CodeOf([&] { part = Call(control.Get(), L"GetCheckedLesson"); });
    ASSERT_HRESULT_SUCCEEDED(CallLibrary(L"contentObjects.dll", "DllRegisterServer"));
    ASSERT_EQ(code, S_OK);
    EXPECT_EQ(TextOf(Call(part.pdispVal, L"Save")), Saved());
}

TEST_F(LessonMapTest, FindsPagesAndOrphans) {
    Show(u"storyboard\tlost\t\tID\tÜber\nmap\tM\tdefault\npage\t1\ta\npage\t1\tb\n");
    const auto find = [this](const char16_t* text, bool isExact, bool wraps) {
        return TextOf(
            Call(control.Get(), L"FindNextSBID", {Variant(text), Variant(4), Variant(isExact), Variant(wraps)}));
    };
    EXPECT_EQ(find(u"TITLE", false, false), u"a");
    EXPECT_EQ(find(u"id B", true, false), u"b");
    Let(control.Get(), L"CurrentSBID", Variant(u"b"));
    EXPECT_EQ(find(u"title", false, false), u"");
    EXPECT_EQ(find(u"title", false, true), u"a");
    const auto orphans = Get(control.Get(), L"OrphanedStoryboards");
    EXPECT_EQ(NumberOf(Call(orphans.Get(), L"Count")), 1);
    EXPECT_EQ(Get(orphans.Get(), L"Item", {Variant(1)}).Get(), Page(u"lost").Get());
}

TEST_F(LessonMapTest, TheTreeIsThereForHosts) {
    Show(u"map\tM\tdefault\npage\t1\ta\npage\t2\tb\npage\t1\tc\n");
    const auto tree = Get(control.Get(), L"tvwObject"), nodes = Get(tree.Get(), L"Nodes");
    const auto a = Node(u"a"), root = Node(u"M");
    EXPECT_EQ(Get(nodes.Get(), L"Item", {Variant(2)}).Get(), a.Get()) << "one object for a node";
    EXPECT_EQ(NumberOf(Call(nodes.Get(), L"Count")), 4);
    const struct {
        const wchar_t* relation;
        const char16_t* answer; // of "a"
    } relations[] = {{L"Parent", u"M"},       {L"Child", u"b"},       {L"Next", u"c"}, {L"Previous", u""},
                     {L"FirstSibling", u"a"}, {L"LastSibling", u"c"}, {L"Root", u"M"}};
    for (const auto& row : relations) {
        const auto found = Get(a.Get(), row.relation);
        EXPECT_EQ(found ? GetText(found.Get(), L"Key") : Text(), row.answer) << ToUtf8(FromWide(row.relation));
    }
    EXPECT_EQ(NumberOf(Call(root.Get(), L"Children")), 2);
    EXPECT_EQ(NumberOf(Call(root.Get(), L"Image")), 1);
    for (const char16_t* key : {u"c", u"a", u"b", u"M"}) // each by the place that it gives
        EXPECT_EQ(GetText(Get(nodes.Get(), L"Item", {Call(Node(key).Get(), L"Index")}).Get(), L"Key"), key);
    EXPECT_EQ(GetText(Node(u"b").Get(), L"FullPath"), u"M (3)\\title a\\title b");
    EXPECT_TRUE(IsTrue(Call(Node(u"b").Get(), L"EnsureVisible")) && IsTrue(Call(a.Get(), L"Expanded")));
    EXPECT_FALSE(IsTrue(Call(Node(u"b").Get(), L"EnsureVisible")));
    Let(a.Get(), L"Image", Variant(u"video"));
    EXPECT_EQ(NumberOf(Call(a.Get(), L"Image")), 7);
    Let(a.Get(), L"Tag", Variant(u"kept"));
    EXPECT_EQ(GetText(a.Get(), L"Tag"), u"kept");

    // Relative, relationship, key: where the new node stands among the nodes at the top or below "a".
    Call(nodes.Get(), L"Add", {Variant(a.Get()), Variant(4), Variant(u"child"), Variant(u"1")});
    Call(nodes.Get(), L"Add", {Variant(u"child"), Variant(3), Variant(u"before"), Variant(u"2")});
    Call(nodes.Get(), L"Add", {Variant(u"b"), Variant(0), Variant(u"first"), Variant(u"3")});
    Call(nodes.Get(), L"Add", {Variant(u"first"), Variant(1), Variant(u"last"), Variant(u"4")});
    Call(nodes.Get(), L"Add", {Variant(u"first"), Variant(2), Variant(u"next"), Variant(u"5")});
    EXPECT_EQ(Shown(), "M (3)[title a[3 5 title b 2 1 4] title c]");
    for (const auto& arguments : {std::initializer_list<Variant>{Variant(a.Get()), Variant(4), Variant(u"b")},
                                  {Variant(a.Get()), Variant(7), Variant(u"new")},
                                  {Variant(u"none"), Variant(4), Variant(u"new")},
                                  {Variant(control.Get()), Variant(4), Variant(u"new")}})
        EXPECT_NE(CodeOf([&] { Call(nodes.Get(), L"Add", arguments); }), S_OK);

    Put(tree.Get(), L"SelectedItem", Variant(Node(u"c").Get()), DISPATCH_PROPERTYPUTREF);
    EXPECT_TRUE(IsTrue(Call(Node(u"c").Get(), L"Selected")));
    EXPECT_EQ(GetText(Get(tree.Get(), L"SelectedItem").Get(), L"Key"), u"c");
    const auto next = Node(u"next");
    Call(nodes.Get(), L"Remove", {Variant(u"a")});
    EXPECT_EQ(Shown(), "M (3)[title c]");
    for (const auto& gone : {a, next}) {
        EXPECT_EQ(CodeOf([&] { GetText(gone.Get(), L"Text"); }) & 0xFFFF, 35601);
        EXPECT_NE(CodeOf([&] { Call(nodes.Get(), L"Add", {Variant(gone.Get()), Variant(4)}); }), S_OK);
    }
    EXPECT_NE(CodeOf([&] { Get(nodes.Get(), L"Item", {Variant(3)}); }), S_OK);
    Call(nodes.Get(), L"Clear");
    EXPECT_NE(CodeOf([&] { GetText(root.Get(), L"Text"); }), S_OK);
    Call(control.Get(), L"Refresh");
    EXPECT_EQ(Shown(), "M (3)[title a[title b] title c]");
}

TEST_F(LessonMapTest, AHostsOwnLessonIsShownAndWritten) {
    HostLessonParts host;
    for (const char16_t* sbid : {u"a", u"b", u"c"}) host.AddPage(sbid);
    host.AddMap(u"M", {u"a", u"b"});
    host.AddMap(u"N", {u"c"});
    host.defaultMap = 1;
    host.current = u"b";
    Put(control.Get(), L"Lesson", Variant(static_cast<IDispatch*>(host.lesson.Get())), DISPATCH_PROPERTYPUTREF);
    EXPECT_EQ(Shown(), "N (1)[title c] M (2)[title a title b]");
    EXPECT_EQ(Heard(), "AfterSelectionChange(b)");
    Call(control.Get(), L"MoveCurrent", {Variant(6)});
    EXPECT_EQ(Heard(), "MapChanged(2)");
    EXPECT_EQ(host.layouts[u"N"], (std::vector<Text>{u"c", u"b"}));
    EXPECT_EQ(host.layouts[u"M"], std::vector<Text>{u"a"});
    Call(control.Get(), L"RemoveStoryboard", {Variant(Get(control.Get(), L"CurrentStoryboard").Get()), Variant(true)});
    EXPECT_EQ(host.pages.size(), 2u);
    EXPECT_EQ(host.layouts[u"N"], std::vector<Text>{u"c"});
    const auto orphans = Get(control.Get(), L"OrphanedStoryboards");
    EXPECT_EQ(NumberOf(Call(orphans.Get(), L"Count")), 0);
    // A hidden map is filled and read by nodes of its own, which go with it.
    Let(control.Get(), L"ShowDefaultMapOnly", Variant(true));
    ComPtr<IDispatch> kept;
    FakeDispatch::Member& read = host.maps[0].second->members[L"ReadLayout"];
    read = [&kept, read](const auto& arguments, WORD kind) {
        kept = ObjectOf(arguments.at(0));
        return read(arguments, kind);
    };
    Call(control.Get(), L"AddStoryboard", {Variant(static_cast<IDispatch*>(host.pages[0].second.Get()))});
    EXPECT_EQ(host.layouts[u"M"], std::vector<Text>{});
    EXPECT_EQ(Shown(), "N (2)[title c title a]");
    EXPECT_EQ(CodeOf([&] { GetText(kept.Get(), L"Text"); }) & 0xFFFF, 35601);
    kept.Reset();
    Put(control.Get(), L"Lesson", Variant(static_cast<IDispatch*>(nullptr)), DISPATCH_PROPERTYPUTREF);
}

TEST_F(LessonMapTest, InAWindowTheTreeIsFoundAndFailuresOfTheUsersDoingAreTold) {
    HostLessonParts host;
    std::vector<Text> sbids;
    for (int n = 0; n < 40; ++n) sbids.push_back(u"p" + ToText(n));
    for (const Text& sbid : sbids) host.AddPage(sbid);
    host.AddMap(u"M", sbids);
    HostedControl hosted(ControlCases().back());
    Put(hosted.control.Get(), L"Lesson", Variant(static_cast<IDispatch*>(host.lesson.Get())), DISPATCH_PROPERTYPUTREF);
    const auto tree = Get(hosted.control.Get(), L"tvwObject");
    EXPECT_EQ(NumberOf(Call(tree.Get(), L"hWnd")), static_cast<int32_t>(reinterpret_cast<INT_PTR>(hosted.child)));
    EXPECT_EQ(GetText(Get(tree.Get(), L"HitTest", {Variant(30), Variant(5)}).Get(), L"Key"), u"M");
    const auto last = Get(Get(tree.Get(), L"Nodes").Get(), L"Item", {Variant(u"p39")});
    EXPECT_TRUE(IsTrue(Call(last.Get(), L"EnsureVisible")));
    EXPECT_FALSE(IsTrue(Call(last.Get(), L"EnsureVisible")));
    RECT client{};
    GetClientRect(hosted.child, &client);
    EXPECT_TRUE(Get(tree.Get(), L"HitTest", {Variant(30), Variant(client.bottom - 30)}));
    EXPECT_FALSE(Get(tree.Get(), L"HitTest", {Variant(30), Variant(-30)}));

    Put(tree.Get(), L"SelectedItem", Variant(last.Get()), DISPATCH_PROPERTYPUTREF);
    hosted.heard.clear();
    host.before = [](const std::string& call) {
        if (call == "CurrentSBID") throw CallFailure{HRESULT(0x800A04D2), u"on purpose", u""};
    };
    hosted.Press(VK_UP);
    EXPECT_EQ(hosted.heard, std::vector<DISPID>{7});
    host.before = [](const std::string&) {};
    hosted.LetGo();
}

} // namespace dax::test
