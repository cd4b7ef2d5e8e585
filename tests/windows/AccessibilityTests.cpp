// What a screen reader finds in our windows: every node with its state and its check, every row and column.
#include "windows/ScreenReader.h"
#include "windows/TreeControlHost.h"

#include <gmock/gmock.h>

namespace dax::test {

using ::testing::ElementsAre;

TEST(Accessibility, EveryNodeHasItsLevelNameStateAndCheck) {
    LessonMapHost host(true);
    host.Open("A: a b( c ) | B: d | C:");
    host.At(u"b").SetExpanded(false);
    modTreeviewAPI::SetSubtreeCheck(host.At(u"b"), true);
    host.Editor().SetCurrentSBID(u"d");
    const ScreenReader reader(host.Tree());
    EXPECT_THAT(reader.DescribeAll(),
                ElementsAre("0 A (3) open", "1 Title of a", "1 Title of b closed checked",
                            "2 Title of c checked hidden", "0 B (1) open", "1 Title of d selected focused", "0 C (0)"));
    EXPECT_EQ(reader.Role(CHILDID_SELF), ROLE_SYSTEM_OUTLINE);
    EXPECT_TRUE(reader.State(CHILDID_SELF) & STATE_SYSTEM_FOCUSABLE);
    SetFocus(host.host.handle);
    host.Editor().SetCheckboxes(false);
    EXPECT_EQ(reader.Describe(reader.Find(u"Title of d")), "1 Title of d selected");
    EXPECT_EQ(reader.Describe(reader.Find(u"Title of b")), "1 Title of b closed") << "no boxes, no checks";

    EditorHost groups(140);
    groups.OpenSample();
    groups.At(u"B").SetExpanded(false);
    EXPECT_THAT(ScreenReader(groups.Tree()).DescribeAll(),
                ElementsAre("0 the database open", "1 entry A open", "2 entry a", "2 entry b", "2 entry c open",
                            "3 entry d", "3 entry e", "2 entry f beyond", "1 entry B closed beyond", "2 entry g hidden",
                            "2 entry h hidden"));
}

TEST(Accessibility, NodesAreFoundWhereTheyAreUntilTheyGo) {
    LessonMapHost host;
    host.Open("A: a b( c ) | B: d | C:");
    const ScreenReader reader(host.Tree());
    const std::vector<LONG> before = reader.Elements();
    for (const LONG each : before) {
        const RECT place = reader.Place(each);
        EXPECT_EQ(reader.At({(place.left + place.right) / 2, (place.top + place.bottom) / 2}), each);
        EXPECT_EQ(reader.Role(each), ROLE_SYSTEM_OUTLINEITEM);
    }
    const RECT all = reader.Place(CHILDID_SELF);
    EXPECT_EQ(reader.At({all.left + 5, all.bottom - 5}), CHILDID_SELF) << "below the rows";
    EXPECT_EQ(reader.At({all.left - 50, all.top}), -1);
    const LONG map = before[0], a = before[1], b = before[2], c = before[3], other = before[4];
    host.At(u"b").SetExpanded(false);
    const std::tuple<LONG, LONG, LONG> steps[] = {
        {map, NAVDIR_RIGHT, a},      {a, NAVDIR_LEFT, map},      {map, NAVDIR_UP, 0}, {b, NAVDIR_UP, a},
        {b, NAVDIR_RIGHT, c},        {b, NAVDIR_NEXT, c},        {c, NAVDIR_DOWN, 0}, {b, NAVDIR_DOWN, other},
        {0, NAVDIR_FIRSTCHILD, map}, {other, NAVDIR_PREVIOUS, c}};
    for (const auto& [from, direction, to] : steps) EXPECT_EQ(reader.Step(from, direction), to) << from << direction;
    host.Model().Remove(host.At(u"b"));
    for (const LONG gone : {b, c, 1L, 0x20000000L}) EXPECT_EQ(reader.Act(gone), E_INVALIDARG);
}

TEST(Accessibility, SelectsChecksAndExpandsAsTheUserDoesAndRaisesEvents) {
    LessonMapHost host(true);
    host.Open("A: a b( c ) | B: d | C:");
    const ScreenReader reader(host.Tree());
    const LONG b = reader.Find(u"Title of b"), map = reader.Find(u"B (1)");
    EXPECT_EQ(reader.Select(b, SELFLAG_ADDSELECTION), E_INVALIDARG) << "one at a time";
    EXPECT_EQ(reader.Action(b), L"Check");
    host.Editor().SetCurrentSBID(u"d");
    SetFocus(host.host.handle);
    host.Take();
    WinEvents events(reader);
    const auto act = [&](LONG id, const wchar_t* next) {
        return [&reader, id, next] {
            EXPECT_EQ(reader.Act(id), S_OK);
            EXPECT_EQ(reader.Action(id), next);
        };
    };
    const struct {
        std::function<void()> act;
        const char *announced, *received;
    } cases[] = {
        {[&] { reader.Select(map, SELFLAG_TAKEFOCUS | SELFLAG_TAKESELECTION); }, "focus B (1), ", "selected -"},
        {[&] { reader.Select(b); }, "focus Title of b, ", "selected b"},
        {act(b, L"Uncheck"), "state Title of b, state Title of c, ", "checked"},
        {[&] { host.Editor().SetCheckboxes(false); }, "", ""},
        {act(map, L"Expand"), "state B (1), ", ""},
        {[&] { host.At(u"a").SetCaption(u"new"); }, "name new, ", ""},
        {[&] { host.Model().Remove(host.At(u"c")); }, "order, ", ""},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        events.received.clear();
        each.act();
        EXPECT_TRUE(UserInput::Await([&] { return events.received.find(each.announced) != std::string::npos; }));
        EXPECT_TRUE(UserInput::Await([&] { return host.received.size() >= std::strlen(each.received); }));
        EXPECT_EQ(host.Take(), each.received);
        host.ExpectMirror();
    }
    EXPECT_EQ(reader.Act(reader.Find(u"new")), DISP_E_MEMBERNOTFOUND);
}

// A host may hold the object as long as it likes, and release the control while it uses it.
TEST(Accessibility, TheObjectOutlivesItsWindow) {
    const long living = WindowBase::LiveCount();
    for (const char* event : {"", "selected", "checked"}) {
        SCOPED_TRACE(event);
        LessonMapHost host(true);
        host.OpenSample();
        const ScreenReader reader(host.Tree());
        const LONG b = reader.Find(u"Title of b");
        host.releaseAt = event;
        if (!*event) host.Release();
        reader.Select(b);
        reader.Act(b);
        EXPECT_TRUE(UserInput::Await([&] { return host.control == nullptr; }));
        LONG count = 1;
        VARIANT out{};
        for (const HRESULT result : {reader->get_accChildCount(&count), reader->get_accFocus(&out), reader.Select(b),
                                     reader->accHitTest(0, 0, &out), reader.Act(b)})
            EXPECT_EQ(result, CO_E_OBJNOTCONNECTED);
        EXPECT_EQ(reader.Name(b), "");
        EXPECT_EQ(count, 0);
        EXPECT_GT(WindowBase::LiveCount(), living) << "its code must stay";
    }
    EXPECT_TRUE(UserInput::Await([&] { return WindowBase::LiveCount() == living; }));
}

} // namespace dax::test
