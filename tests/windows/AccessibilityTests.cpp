// What a screen reader finds in our windows: every node with its state and its check, every row and column.
#include "windows/ScreenReader.h"
#include "windows/TreeControlHost.h"

#include <gmock/gmock.h>

#include <functional>

namespace dax::test {

namespace {

using ::testing::ElementsAre;

constexpr const char* Sample = "A: a b( c ) | B: d | C:";

// Level, name and state of each.
std::vector<std::string> Told(const ScreenReader& reader) {
    std::vector<std::string> all;
    for (const LONG each : reader.Elements())
        all.push_back(reader.Value(each) + " " + reader.Name(each) + reader.StateWords(each));
    return all;
}

} // namespace

TEST(Accessibility, EveryNodeHasItsLevelNameStateAndCheck) {
    LessonMapHost host(true);
    host.Open(Sample);
    host.At(u"b").SetExpanded(false);
    modTreeviewAPI::SetSubtreeCheck(host.At(u"b"), true);
    host.Editor().SetCurrentSBID(u"d");
    const ScreenReader reader(host.TreeHandle());
    EXPECT_THAT(Told(reader),
                ElementsAre("0 A (3) open", "1 Title of a", "1 Title of b closed checked",
                            "2 Title of c checked hidden", "0 B (1) open", "1 Title of d selected focused", "0 C (0)"));
    EXPECT_EQ(reader.Role(CHILDID_SELF), ROLE_SYSTEM_OUTLINE);
    EXPECT_TRUE(reader.State(CHILDID_SELF) & STATE_SYSTEM_FOCUSABLE);
    SetFocus(host.host.handle);
    host.Editor().SetCheckboxes(false);
    EXPECT_EQ(reader.StateWords(reader.Find(u"Title of d")), " selected");
    EXPECT_EQ(reader.StateWords(reader.Find(u"Title of b")), " closed") << "no boxes, no checks";

    EditorHost groups(140);
    groups.OpenSample();
    const ScreenReader other(groups.TreeHandle());
    EXPECT_THAT(Told(other), ElementsAre("0 the database open", "1 entry g open", "2 entry a", "2 entry b",
                                         "2 entry s open", "3 entry c", "3 entry d", "1 entry h closed beyond",
                                         "2 entry e hidden", "2 entry f hidden", "1 entry i beyond"));
}

// An element is the same wherever its node goes, and unknown afterwards.
TEST(Accessibility, NodesAreFoundWhereTheyAreAndStayThemselves) {
    LessonMapHost host;
    host.Open(Sample);
    const ScreenReader reader(host.TreeHandle());
    const std::vector<LONG> before = reader.Elements();
    for (const LONG each : before) {
        const RECT place = reader.Place(each);
        EXPECT_EQ(reader.At({(place.left + place.right) / 2, (place.top + place.bottom) / 2}), each);
        EXPECT_EQ(reader.Role(each), ROLE_SYSTEM_OUTLINEITEM);
    }
    const RECT all = reader.Place(CHILDID_SELF);
    EXPECT_EQ(reader.At({all.left + 5, all.bottom - 5}), CHILDID_SELF) << "below the rows";
    EXPECT_EQ(reader.At({all.left - 50, all.top}), -1);
    const LONG a = reader.Find(u"Title of a"), b = reader.Find(u"Title of b"), c = reader.Find(u"Title of c");
    const LONG d = reader.Find(u"Title of d"), map = before[0];
    host.At(u"b").SetExpanded(false);
    const struct {
        LONG from, direction, to;
    } steps[] = {{map, NAVDIR_RIGHT, a},
                 {a, NAVDIR_LEFT, map},
                 {map, NAVDIR_UP, 0},
                 {b, NAVDIR_UP, a},
                 {b, NAVDIR_RIGHT, c},
                 {b, NAVDIR_NEXT, c},
                 {d, NAVDIR_PREVIOUS, before[4]},
                 {c, NAVDIR_DOWN, 0},
                 {b, NAVDIR_DOWN, before[4]},
                 {before[4], NAVDIR_PREVIOUS, c},
                 {CHILDID_SELF, NAVDIR_LASTCHILD, before.back()}};
    for (const auto& each : steps) EXPECT_EQ(reader.Step(each.from, each.direction), each.to) << &each - steps;
    EXPECT_TRUE(IsRectEmpty(std::vector{reader.Place(c)}.data())) << "in a closed branch";
    host.Model().Move(host.At(u"b"), &host.At(u"d"), Place::Before);
    EXPECT_EQ(reader.Find(u"Title of b"), b);
    EXPECT_EQ(reader.Find(u"Title of c"), c);
    host.Model().Remove(host.At(u"b"));
    for (const LONG gone : {b, c, 1L, 0x20000000L}) EXPECT_EQ(reader.Act(gone), E_INVALIDARG);
    host.Open("A: b");
    EXPECT_EQ(reader.Elements().size(), 2u);
    EXPECT_EQ(reader.Name(a), "") << "of the lesson before";
}

TEST(Accessibility, ChoosesTicksAndOpensAsTheUserDoes) {
    LessonMapHost host(true);
    host.Open(Sample);
    {
        const ScreenReader reader(host.TreeHandle());
        const LONG b = reader.Find(u"Title of b"), map = reader.Find(u"B (1)");
        EXPECT_EQ(reader.Select(b), S_OK);
        EXPECT_EQ(host.Take(), "selected b");
        EXPECT_EQ(reader.Select(b, SELFLAG_ADDSELECTION), E_INVALIDARG) << "one at a time";
        SetFocus(host.host.handle);
        EXPECT_EQ(reader.Select(map, SELFLAG_TAKEFOCUS | SELFLAG_TAKESELECTION), S_OK);
        EXPECT_EQ(GetFocus(), host.TreeHandle());
        EXPECT_EQ(host.Take(), "selected -");
        EXPECT_EQ(reader.Action(b), "Check");
        EXPECT_EQ(reader.Act(b), S_OK);
        EXPECT_EQ(host.Checked(), "bc");
        EXPECT_EQ(reader.Action(b), "Uncheck");
        EXPECT_TRUE(UserInput::Await([&] { return host.heard == "checked"; }));
        host.Editor().SetCheckboxes(false);
        EXPECT_EQ(reader.Action(map), "Collapse");
        EXPECT_EQ(reader.Act(map), S_OK);
        EXPECT_FALSE(host.At(u"B").IsExpanded());
        EXPECT_EQ(reader.Action(map), "Expand");
        EXPECT_EQ(reader.Act(reader.Find(u"Title of a")), DISP_E_MEMBERNOTFOUND);
        EXPECT_MIRROR(host.TreeHandle(), host.Model(), false);
    }
    // The root's branch never closes: the editor hears of it in the same way.
    EditorHost groups;
    groups.OpenSample();
    const ScreenReader reader(groups.TreeHandle());
    EXPECT_EQ(reader.Act(reader.Find(u"the database")), S_OK);
    EXPECT_TRUE(groups.At(u"").IsExpanded());
    EXPECT_FALSE(groups.At(u"g").IsExpanded());
}

TEST(Accessibility, TellsWhatChanges) {
    LessonMapHost host(true);
    host.Open(Sample);
    const ScreenReader reader(host.TreeHandle());
    HeardEvents events(reader);
    const struct {
        const char* what;
        std::function<void()> act;
        const char* heard;
    } cases[] = {
        {"selection", [&] { host.Model().Select(&host.At(u"b")); }, "select Title of b, focus Title of b, "},
        {"the focus goes", [&] { SetFocus(host.host.handle); }, ""},
        {"selection elsewhere", [&] { host.Model().Select(&host.At(u"a")); }, "select Title of a, "},
        {"the focus comes", [&] { SetFocus(host.TreeHandle()); }, "focus Title of a, "},
        {"check", [&] { host.At(u"c").SetChecked(true); }, "state Title of c, "},
        {"closed", [&] { host.At(u"b").SetExpanded(false); }, "state Title of b, "},
        {"name", [&] { host.At(u"d").SetCaption(u"new"); }, "name new, "},
        {"tag and image", [&] { host.At(u"d").SetTag(u"t"), host.At(u"d").SetImage(3); }, ""},
        {"one goes", [&] { host.Model().Remove(host.At(u"d")); }, "gone , order, "},
        {"one comes", [&] { host.Model().Add(&host.At(u"a"), Place::After, u"x", u"x"); }, "order, "},
        {"one moves", [&] { host.Model().Move(host.At(u"x"), &host.At(u"a"), Place::Before); }, "order, "},
        {"a few checks", [&] { modTreeviewAPI::SetSubtreeCheck(host.At(u"b"), false); }, "state Title of c, "},
        {"checks without boxes",
         [&] {
             host.Editor().SetCheckboxes(false);
             host.At(u"a").SetChecked(true);
         },
         ""},
        {"very many",
         [&] {
             const TreeUpdate update(host.Model());
             for (int n = 0; n < 50; ++n) host.Model().Add(&host.At(u"B"), Place::LastChild, ToText(n), ToText(n));
         },
         "order, "},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        ProcessPendingMessages();
        events.heard.clear();
        each.act();
        EXPECT_TRUE(UserInput::Await([&] { return events.heard.size() >= std::strlen(each.heard); }));
        ProcessPendingMessages();
        EXPECT_EQ(events.heard, each.heard);
    }
}

// A host may hold the object as long as it likes, and let go of the control while it uses it.
TEST(Accessibility, TheObjectOutlivesItsWindow) {
    const long living = WindowBase::LiveCount();
    for (const char* event : {"", "selected", "checked"}) {
        SCOPED_TRACE(event);
        LessonMapHost host(true);
        host.Open(Sample);
        const ScreenReader reader(host.TreeHandle());
        const LONG b = reader.Find(u"Title of b");
        host.releaseAt = event;
        if (!*event) host.control.reset();
        reader.Select(b);
        reader.Act(b);
        EXPECT_TRUE(UserInput::Await([&] { return host.control == nullptr; }));
        LONG count = 1, edge = 0;
        BSTR text = nullptr;
        VARIANT out{};
        const VARIANT child = ScreenReader::Child(b);
        IDispatch* other = nullptr;
        void* list = nullptr;
        for (const HRESULT result :
             {reader->get_accParent(&other), reader->get_accChildCount(&count), reader->get_accChild(child, &other),
              reader->get_accName(child, &text), reader->get_accValue(child, &text),
              reader->get_accDescription(child, &text), reader->get_accRole(child, &out),
              reader->get_accState(child, &out), reader->get_accHelp(child, &text),
              reader->get_accKeyboardShortcut(child, &text), reader->get_accFocus(&out), reader->get_accSelection(&out),
              reader->get_accDefaultAction(child, &text), reader.Select(b),
              reader->accLocation(&edge, &edge, &edge, &edge, child), reader->accNavigate(NAVDIR_NEXT, child, &out),
              reader->accHitTest(0, 0, &out), reader.Act(b), reader->QueryInterface(IID_IEnumVARIANT, &list)})
            EXPECT_EQ(result, CO_E_OBJNOTCONNECTED);
        EXPECT_EQ(count, 0);
        EXPECT_GT(WindowBase::LiveCount(), living) << "its code must stay";
    }
    EXPECT_TRUE(UserInput::Await([&] { return WindowBase::LiveCount() == living; }));
}

} // namespace dax::test
