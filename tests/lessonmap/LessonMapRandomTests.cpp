#include "lessonmap/EditorFixture.h"

#include <random>
#include <set>

namespace dax {
namespace {

using test::EditorFixture;
using test::Print;

// The lesson map as lists in lists, with rules written down a second time.
struct Item {
    Item(std::string id, std::vector<Item> items = {}) : id(std::move(id)), items(std::move(items)) {}
    std::string id;
    std::vector<Item> items;
};

struct Model {
    std::vector<Item> maps;
    std::string selected;
    std::set<std::string> checked;

    struct Place {
        std::vector<size_t> path; // map, page, page of the page …
        bool IsNone() const { return path.empty(); }
    };

    Place Find(const std::string& id) const {
        Place place;
        FindIn(maps, id, place.path);
        return place;
    }
    static bool FindIn(const std::vector<Item>& items, const std::string& id, std::vector<size_t>& path) {
        for (size_t i = 0; i < items.size(); ++i) {
            path.push_back(i);
            if (items[i].id == id || FindIn(items[i].items, id, path)) return true;
            path.pop_back();
        }
        return false;
    }
    // The list in which the place lies; `up` levels higher.
    std::vector<Item>& ListOf(const Place& place, size_t up = 0) {
        std::vector<Item>* list = &maps;
        for (size_t i = 0; i + 1 + up < place.path.size(); ++i) list = &(*list)[place.path[i]].items;
        return *list;
    }
    Item Take(const Place& place) {
        auto& list = ListOf(place);
        Item item = list[place.path.back()];
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(place.path.back()));
        return item;
    }
    static void Put(std::vector<Item>& list, size_t index, Item item) {
        list.insert(list.begin() + static_cast<std::ptrdiff_t>(index), std::move(item));
    }

    bool Move(StoryboardMovementTypes movement) {
        const Place at = Find(selected);
        if (at.path.size() < 2) return false;
        const size_t index = at.path.back(), above = at.path[at.path.size() - 2], map = at.path[0];
        const bool isTop = at.path.size() == 2;
        auto& list = ListOf(at);
        auto& parents = ListOf(at, 1);
        switch (movement) {
        case smtUp:
            if (index > 0) {
                std::swap(list[index], list[index - 1]);
                return true;
            }
            if (isTop || above == 0) return false;
            parents[above - 1].items.push_back(Take(at));
            return true;
        case smtDown:
            if (index + 1 < list.size()) {
                std::swap(list[index], list[index + 1]);
                return true;
            }
            if (isTop || above + 1 == parents.size()) return false;
            Put(parents[above + 1].items, 0, Take(at));
            return true;
        case smtIndent:
            if (index == 0) return false;
            list[index - 1].items.push_back(Take(at));
            return true;
        case smtOutdent:
            if (isTop) return false;
            Put(parents, above + 1, Take(at));
            return true;
        case smtNextMap:
            if (map + 1 == maps.size()) return false;
            Put(maps[map + 1].items, 0, Take(at));
            return true;
        case smtPreviousMap:
            if (map == 0) return false;
            maps[map - 1].items.push_back(Take(at));
            return true;
        }
        return false;
    }

    void Add(const std::string& id) {
        const Place at = Find(selected);
        if (at.path.size() < 2) {
            Put(maps[0].items, 0, {id, {}});
        } else {
            Put(ListOf(at), at.path.back() + 1, {id, {}});
        }
        selected = id;
    }

    void Remove(const std::string& id, bool includeChildren) {
        const Place at = Find(id);
        const std::string parent = ListOf(at, 1)[at.path[at.path.size() - 2]].id;
        auto& list = ListOf(at);
        size_t index = at.path.back();
        std::vector<size_t> path;
        const bool isOwn = selected == id;
        const bool isInside = includeChildren && FindIn(list[index].items, selected, path);
        if (!includeChildren) {
            const std::vector<Item> children = list[index].items;
            for (const Item& child : children) Put(list, index + 1, child);
            list[index].items.clear();
        }
        Uncheck(list[index]);
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
        if (isOwn || isInside) {
            selected = index < list.size() ? list[index].id : index > 0 ? list[index - 1].id : parent;
        }
    }
    void Uncheck(const Item& item) {
        checked.erase(item.id);
        for (const Item& each : item.items) Uncheck(each);
    }
    bool Drop(const std::string& id, const std::string& target) {
        const Place from = Find(id);
        std::vector<size_t> path;
        if (id == target || FindIn(ListOf(from)[from.path.back()].items, target, path)) return false;
        const Item item = Take(from);
        const Place to = Find(target);
        Put(ListOf(to), to.path.back(), item);
        return true;
    }
    static void Flatten(const std::vector<Item>& items, int32_t depth, std::vector<LayoutEntry>& layout) {
        for (const Item& item : items) {
            layout.push_back({FromUtf8(item.id), depth});
            Flatten(item.items, depth + 1, layout);
        }
    }
    std::string Print() const {
        std::string text;
        for (const Item& map : maps) {
            std::vector<LayoutEntry> layout;
            Flatten(map.items, 1, layout);
            text += (text.empty() ? "" : " | ") + test::Print(map.id, layout);
        }
        return text;
    }
    std::vector<std::string> Pages() const {
        std::vector<LayoutEntry> layout;
        for (const Item& map : maps) Flatten(map.items, 1, layout);
        std::vector<std::string> pages;
        for (const LayoutEntry& entry : layout) pages.push_back(ToUtf8(entry.sbid));
        return pages;
    }
};

class LessonMapRandom : public EditorFixture {
protected:
    size_t Below(size_t number) { return random() % number; }
    std::string AnyPage() {
        const auto pages = model.Pages();
        return pages[Below(pages.size())];
    }
    void Drag(const std::string& from, const std::string& to) {
        window.MoveTo(window.At(At(FromUtf8(from))));
        editor->MouseDown(MouseButton::Left);
        window.MoveTo(window.At(At(FromUtf8(from)), 95));
        editor->MouseMove(MouseButton::Left);
        window.MoveTo(window.At(At(FromUtf8(to)), 20));
        editor->MouseMove(MouseButton::Left);
        editor->MouseUp(MouseButton::Left);
    }

    // One random step of both; answers what the host must hear of the map.
    std::string Step() {
        const bool hasPages = !model.Pages().empty();
        switch (hasPages ? Below(10) : 6 + Below(2)) {
        case 0:
        case 1: {
            const auto movement = static_cast<StoryboardMovementTypes>(1 + Below(6));
            const bool canMove = editor->CanMoveCurrent(movement);
            const bool moves = model.Move(movement);
            EXPECT_EQ(canMove, moves) << movement;
            editor->MoveCurrent(movement);
            return moves ? "changed 2" : "";
        }
        case 2: {
            const std::string from = AnyPage(), to = AnyPage();
            editor->ExpandAll();
            const std::string before = model.Print();
            model.selected = from;
            model.Drop(from, to);
            Drag(from, to);
            // A drop on the place where it was may be told, too.
            return before == model.Print() ? heard.substr(std::min(heard.find("changed"), heard.size())) : "changed 2";
        }
        case 3: {
            const std::string page = AnyPage();
            const bool includeChildren = Below(2) == 0;
            model.Remove(page, includeChildren);
            editor->RemoveStoryboard(NewPage(FromUtf8(page)), includeChildren);
            return "changed 3";
        }
        case 4: {
            const std::string page = AnyPage();
            Node& node = At(FromUtf8(page));
            node.SetChecked(!node.IsChecked());
            if (!model.checked.erase(page)) model.checked.insert(page);
            return "";
        }
        case 5:
            model.selected = AnyPage();
            editor->SetCurrentSBID(FromUtf8(model.selected));
            return "";
        case 6:
        case 7: {
            const std::string page = "p" + std::to_string(++lastPage);
            model.Add(page);
            editor->AddStoryboard(NewPage(FromUtf8(page)));
            return "changed 1";
        }
        case 8:
            if (Below(3) == 0) {
                model.selected = model.maps[Below(model.maps.size())].id;
                tree->Select(tree->Find(FromUtf8(model.selected)));
            }
            if (Below(3) == 0) editor->CollapseAll(), model.selected = SelectedKey();
            return "";
        default:
            editor->Refresh();
            return "";
        }
    }
    std::string SelectedKey() { return ToUtf8(modTVW::GetNodeKey(tree->Selected())); }

    std::mt19937 random{20260301};
    Model model;
    int lastPage = 0;
};

TEST_F(LessonMapRandom, TreeAndLessonFollowTheModel) {
    window.client.bottom = 100'000;
    for (int run = 0; run < 60; ++run) {
        Open("M: p1 p2( p3 ) p4 | N: p5 | O:");
        lastPage = 5;
        model = {{{"M", {{"p1"}, {"p2", {{"p3"}}}, {"p4"}}}, {"N", {{"p5"}}}, {"O"}}, "", {}};
        for (int step = 0; step < 80; ++step) {
            heard.clear();
            const std::string expected = Step();
            ASSERT_EQ(Shown(), model.Print()) << run << "." << step;
            ASSERT_EQ(SelectedKey(), model.selected) << run << "." << step;
            ASSERT_EQ(ToUtf8(editor->CurrentSBID()), model.Find(model.selected).path.size() > 1 ? model.selected : "");
            ASSERT_EQ(lesson->CurrentSBID(), editor->CurrentSBID()) << run << "." << step;
            ASSERT_EQ(heard.find("changed") == std::string::npos ? "" : heard.substr(heard.find("changed"), 9),
                      expected)
                << run << "." << step;
        }
        std::set<std::string> checked;
        for (const auto& page : editor->CheckedStoryboards()) checked.insert(ToUtf8(page->SBID()));
        ASSERT_EQ(checked, model.checked);
        ASSERT_EQ(editor->CheckedStoryboardCount(), static_cast<int32_t>(checked.size()));
        for (const Node* root = tree->First(); root; root = root->Next()) {
            ASSERT_EQ(root->Caption(), root->Key() + u" (" + ToText(modTVW::CountDescendants(root)) + u")");
        }
        ASSERT_EQ(lesson->Storyboards()->Count(), static_cast<int32_t>(model.Pages().size()));
        ASSERT_TRUE(editor->OrphanedStoryboards().empty());
        Node* const current = tree->Selected();
        ASSERT_TRUE(!current || current->IsSelected());
    }
}

// Whatever the size and the shape, every operation is over at once.
TEST_F(LessonMapRandom, DeepWideAndManyMaps) {
    constexpr int count = 20'000;
    for (const int shape : {0, 1, 2}) { // wide, deep, ten maps
        lesson = std::make_shared<ContentLesson>();
        const auto page = [](int i) { return u"s" + ToText(i); };
        for (int i = 0; i < count; ++i) {
            lesson->Storyboards()->Add(std::make_shared<ContentStoryboard>(page(i), u"Title " + ToText(i)));
        }
        const int maps = shape == 2 ? 10 : 2;
        std::vector<std::shared_ptr<ContentMap>> map;
        for (int m = 0, i = 0; m < maps; ++m) {
            map.push_back(std::make_shared<ContentMap>(u"M" + ToText(m)));
            std::vector<LayoutEntry> layout;
            const int until = shape == 2 ? (m + 1) * count / maps : count;
            for (int depth = 1; i < until; ++i, ++depth)
                layout.push_back({page(i), shape ? 1 + (depth - 1) % count : 1});
            map.back()->SetLayout(std::move(layout));
            lesson->Maps()->Add(map.back());
        }
        const auto before = map[0]->Layout();
        editor->SetLesson(nullptr);
        editor->SetLesson(lesson);
        ASSERT_EQ(tree->Count(), count + maps);
        EXPECT_EQ(editor->FindNextSBID(u"title 19999", ftTitle, true, true), u"s19999");
        editor->SetCurrentSBID(u"s19999");
        EXPECT_EQ(editor->FindNextSBID(u"TITLE 19999", ftTitle, true, true), u"");
        editor->CheckAllStoryboards();
        EXPECT_EQ(editor->CheckedStoryboardCount(), count);
        EXPECT_EQ(editor->CheckedStoryboards().size(), static_cast<size_t>(count));
        const auto part = std::static_pointer_cast<ContentMap>(editor->GetCheckedLesson()->Maps()->Item(0));
        EXPECT_TRUE(part->Layout() == before);
        editor->CollapseAll();
        editor->ExpandAll();
        editor->SetCurrentSBID(u"s0");
        editor->MoveCurrent(smtNextMap);
        EXPECT_EQ(map[1]->Layout()[0].sbid, u"s0");
        editor->SetCurrentSBID(u"s0");
        editor->MoveCurrent(smtPreviousMap);
        EXPECT_EQ(map[0]->Layout().size(), before.size());
        editor->Refresh();
        EXPECT_EQ(tree->Count(), count + maps);
        editor->RemoveStoryboard(editor->CurrentStoryboard(), false);
        EXPECT_EQ(tree->Count(), count + maps - 1);
        EXPECT_TRUE(editor->OrphanedStoryboards().empty());
        editor->RemoveStoryboard(lesson->Storyboards()->Item(tree->First()->FirstChild()->Key()), true);
        EXPECT_EQ(lesson->Storyboards()->Count(), tree->Count() - maps);
        EXPECT_EQ(map[0]->Layout().size(), static_cast<size_t>(modTVW::CountDescendants(tree->First())));
    }
    // As many maps of one name as pages.
    lesson = std::make_shared<ContentLesson>();
    for (int i = 0; i < count; ++i) lesson->Maps()->Add(std::make_shared<ContentMap>(u"M"));
    editor->SetLesson(lesson);
    EXPECT_EQ(tree->Last()->Key(), u"M_19999");
}

} // namespace
} // namespace dax
