// Moves, additions, removals, checks and drags in the lesson map, from bytes.
#include "fuzz/Driver.h"
#include "lessonmap/LessonMapEditor.h"
#include "lessonmap/SampleLesson.h"
#include "tree/FakeTreeWindow.h"
#include "tree/ReferenceTree.h"

#include <set>

namespace dax::fuzz {

namespace {

constexpr const char* lessons[] = {"M: p1 p2( p3 ) p4 | N: p5 | O:", "", "M:", "M: p1( p2( p3( p4 ) ) )",
                                   "M: p1 p2 | N: p2 p3( p1 p4 )"};
constexpr const char16_t* pages[] = {u"p1", u"p2", u"p3", u"p4", u"p5", u"q1", u"q2", u"q3", u"M"};
constexpr int keys[] = {13, 27, 32, 38, 40, 46, 93, 113};
// A letter for each byte: move, add, remove, check, check all, select, rebuild, expand, drag, click, key, property,
// lesson.
constexpr char actions[] = {'m', 'm', 'm', 'm', 'a', 'a', 'a', 'r', 'r', 'c', 'C',
                            's', 's', 'b', 'e', 'd', 'd', 'l', 'k', 'p', 'n'};

// What the map must be, with the rules written down a second time: the maps are the children of the root, the pages
// are under them.
struct Model : test::ReferenceTree {
    Text selected;
    std::set<Text> checked, pages; // pages that the lesson has, shown or not

    Model() = default;
    Model(const NodeTree& tree, const Lesson& lesson)
        : ReferenceTree(tree), selected(modTVW::GetNodeKey(tree.Selected())) {
        for (const Node* node = tree.First(); node; node = modTVW::GetNextNode(node))
            if (node->IsChecked()) checked.insert(node->Key());
        for (const auto& page : lesson.Storyboards()->All()) pages.insert(page->SBID());
    }

    bool IsPage(const Text& key) const { return Has(key) && !parents.at(key).empty(); }

    bool Move(StoryboardMovementTypes movement) {
        if (!IsPage(selected)) return false;
        const std::vector<Text>& maps = children.at({});
        Text map = selected;
        while (IsPage(map)) map = parents.at(map);
        const size_t index = Index(map);
        auto to = Destination(selected, movement);
        if (movement == smtPreviousMap && index > 0) to = {{maps[index - 1], SIZE_MAX}};
        if (movement == smtNextMap && index + 1 < maps.size()) to = {{maps[index + 1], 0}};
        // Else within the hierarchy of its map: not into the previous or next map, and not beside a map.
        const bool staysInMap = movement < smtNextMap && movement != smtIndent && parents.at(selected) == map;
        if (!to || (staysInMap && to->first != map)) return false;
        Place(selected, to->first, to->second);
        return true;
    }
    // True when it came into the tree or the lesson.
    bool Add(const Text& page) {
        const bool isShown = Has(page);
        if (!isShown && IsPage(selected))
            Insert(page, parents.at(selected), Index(selected) + 1);
        else if (!isShown)
            Insert(page, children.at({}).front(), 0);
        selected = page;
        return pages.insert(page).second || !isShown;
    }
    bool RemovePage(const Text& page, bool withChildren) {
        if (!Has(page)) return pages.erase(page) > 0; // an orphan
        if (!IsPage(page)) return false;
        const Text parent = parents.at(page);
        while (!withChildren && !children[page].empty()) // in their order
            Place(Text(children[page].back()), parent, Index(page) + 1);
        for (const Text& gone : Remove(page, true, selected)) {
            checked.erase(gone);
            pages.erase(gone);
        }
        return true;
    }
    // On the upper half of another page, which is selected then.
    bool Drop(const Text& page, const Text& target) {
        if (Contains(page, target)) return false;
        const bool isNext = parents.at(page) == parents.at(target) && Index(page) + 1 == Index(target);
        if (isNext && children.at(page).empty()) return false; // no place to drop
        selected = target;
        const auto before = children;
        Unlink(page);
        Place(page, parents.at(target), Index(target));
        return children != before;
    }
};

// What of the model still holds after a step.
enum class Known { All, Shape, Nothing };

class LessonMapDriver : public ControlDriver<LessonMapEditor> {
public:
    explicit LessonMapDriver(Input input)
        : ControlDriver(input, LessonMapEditor::Create()), lesson(test::MakeLesson(bytes.OneOf(lessons))) {
        window.client.bottom = 100'000;
        control->AttachWindow(&window);
        control->SetLesson(lesson);
        // A page in two maps shows once; the layouts follow when they are written back.
        (void)control->CheckedStoryboards();
        Check();
        model = Model(*tree, *lesson);
        control->MapChanged.AddPermanent([this](MapChangeTypes type) { events += std::to_string(type); });
        CallBackIn(control->AfterSelectionChange, control->ItemChecked, control->MapChanged, control->DeleteRequest,
                   control->ContextMenuRequest);
    }

    ~LessonMapDriver() override { control.reset(); } // before its window

private:
    void Round() override {
        events.clear();
        expected.clear();
        known = Known::Nothing;
        Step();
        if (!control) return;
        Check();
        if (!callsBack) Compare();
    }

    // What is checked, and the lesson of it.
    void Finish() override {
        control->SetShowDefaultMapOnly(false);
        if (!control) return;
        const auto checked = control->CheckedStoryboards();
        Require(static_cast<size_t>(control->CheckedStoryboardCount()) == checked.size(), "checks are counted right");
        const auto part = control->GetCheckedLesson();
        Require(!part || part->Storyboards()->Count() == static_cast<int32_t>(checked.size()), "the checked lesson");
    }

    void Compare() {
        const Model should = std::exchange(model, Model(*tree, *lesson));
        if (known == Known::Nothing) return;
        RequireEqual(model.children, should.children, "the map");
        RequireEqual(events, expected, "the reported changes of the map");
        RequireEqual(model.pages, should.pages, "the pages, none of which is added or removed by itself");
        if (known == Known::Shape) return;
        RequireEqual(model.selected, should.selected, "the selected page");
        RequireEqual(model.checked, should.checked, "what is checked");
    }

    void Do() override { known = Done(bytes.OneOf(actions)); }

    Known Done(char action) {
        switch (action) {
        case 'm': {
            const auto movement = static_cast<StoryboardMovementTypes>(bytes.Below(8)); // 0 and 7 are none
            const bool can = control->CanMoveCurrent(movement);
            if (!callsBack) Require(can == model.Move(movement), "CanMoveCurrent");
            if (can) expected = "2";
            control->MoveCurrent(movement);
            return Known::All;
        }
        case 'a': {
            // The name of a map is refused, and any page when there is no map.
            const auto page = AnyPage();
            const bool isRefused = tree->IsEmpty() || (model.Has(page->SBID()) && !model.IsPage(page->SBID()));
            if (!callsBack && !isRefused && model.Add(page->SBID())) expected = "1";
            try {
                control->AddStoryboard(page);
                Require(callsBack || !isRefused, "AddStoryboard must refuse it");
            } catch (const Error&) {
                Require(callsBack || isRefused, "AddStoryboard must take it");
            }
            return Known::All;
        }
        case 'r': {
            const auto page = AnyPage();
            const bool withChildren = bytes.Below(2) == 0;
            const bool isHidden = control->ShowDefaultMapOnly() && !model.Has(page->SBID()); // maybe with others below
            if (!callsBack && model.RemovePage(page->SBID(), withChildren)) expected = "3";
            control->RemoveStoryboard(page, withChildren);
            return isHidden ? Known::Nothing : Known::All;
        }
        case 'c':
            if (Node* const node = AnyNode()) node->SetChecked(!node->IsChecked());
            return Known::Shape;
        case 'C':
            bytes.Below(2) ? control->CheckAllStoryboards() : control->UncheckAllStoryboards();
            return Known::Shape;
        case 's': {
            Node* const node = AnyNode();
            model.selected = modTVW::GetNodeKey(node);
            tree->Select(node);
            return Known::All;
        }
        case 'b':
            bytes.Below(2) ? control->Refresh() : control->SetCaptionStyle(csIdentifier);
            return Known::All;
        case 'e':
            bytes.Below(2) ? control->CollapseAll() : control->ExpandAll();
            return Known::Shape;
        case 'd':
            return Drag();
        case 'l': {
            Node* const node = AnyNode();
            if (!node) return Known::Shape;
            const bool isCtrlDown = bytes.Below(2) == 0;
            window.MoveTo(bytes.Below(2) ? window.AtBox(*node) : window.At(*node));
            bytes.Below(3) ? control->OnClick(window.Pointer(), isCtrlDown)
                           : control->OnDblClick(window.Pointer(), isCtrlDown);
            return Known::Shape;
        }
        case 'k':
            control->OnKeyDown(bytes.OneOf(keys));
            if (control) control->OnKeyPress(bytes.OneOf(keys));
            if (control) control->OnMouseUp(MouseButton::Right);
            return Known::Shape;
        case 'n':
            control->SetLesson(nullptr);
            if (control) control->SetLesson(callsBack ? test::MakeLesson(bytes.OneOf(lessons)) : lesson);
            return Known::Nothing;
        default: {
            const size_t bits = bytes.Below(64);
            window.hasCheckBoxes = bits & 1;
            control->SetCheckboxes(window.hasCheckBoxes);
            control->SetLocked((bits & 6) == 0);
            control->SetAllowDragDrop(bits & 8);
            control->SetShowDefaultMapOnly((bits & 48) == 0);
            return Known::Nothing;
        }
        }
    }

    // On the upper half of a page it is dropped before that; elsewhere it lands where the window's rules say.
    Known Drag() {
        control->ExpandAll();
        Node* const from = AnyNode();
        Node* const to = AnyNode();
        if (!from) return Known::Shape;
        const int part = bytes.Below(2) ? 20 : static_cast<int>(bytes.Below(100));
        const bool isCancelled = bytes.Below(8) == 7;
        const bool isDrag = control->AllowDragDrop() && !control->Locked() && from->Parent();
        const bool isPredicted = !isDrag || isCancelled || (part == 20 && to->Parent());
        if (isDrag) model.selected = from->Key();
        if (isDrag && isPredicted && !isCancelled && !callsBack && model.Drop(from->Key(), to->Key())) expected = "2";
        const Point way[] = {window.At(*from), window.At(*from, 95), window.At(*to, part)};
        window.MoveTo(way[0]);
        control->OnMouseDown(MouseButton::Left);
        for (const Point& point : {way[1], way[2]}) {
            window.MoveTo(point);
            if (control) control->OnMouseMove(MouseButton::Left);
        }
        if (control && isCancelled) control->OnKeyPress(27);
        if (control) control->OnMouseUp(MouseButton::Left);
        if (expected.empty()) expected = events; // a drop on its own place may be reported, too
        return isPredicted ? Known::All : Known::Nothing;
    }

    void Check() const {
        CheckTree(*tree);
        if (callsBack) (void)control->CheckedStoryboards(); // whatever a listener did: written back it must agree
        if (callsBack && control->Lesson() != lesson) return;
        for (const Node* root = tree->First(); root; root = root->Next())
            RequireEqual(root->Caption(), root->Key() + u" (" + ToText(modTVW::CountDescendants(root)) + u")",
                         "a map's caption");
        if (!control->ShowDefaultMapOnly()) RequireEqual(test::Print(*lesson), test::Print(*tree), "the layouts");
        std::set<Text> seen;
        for (int32_t i = 0; i < lesson->Maps()->Count(); ++i)
            for (const auto& entry : std::dynamic_pointer_cast<ContentMap>(lesson->Maps()->Item(i))->Layout())
                Require(seen.insert(entry.sbid).second, "no page is in two maps, shown or not");
        // While no page is selected the lesson may still have one that was not shown for a while.
        const Text current = control->CurrentSBID();
        if (!current.empty()) RequireEqual(lesson->CurrentSBID(), current, "the lesson's current page");
        for (const auto& page : control->OrphanedStoryboards())
            Require(!tree->Find(page->SBID()), "an orphan is not in the tree");
    }

    std::shared_ptr<Storyboard> AnyPage() {
        const Text sbid = bytes.OneOf(pages);
        const auto known = lesson->Storyboards()->Item(sbid);
        return known ? known : std::make_shared<ContentStoryboard>(sbid, u"Title of " + sbid, u"", u"video");
    }
    Node* AnyNode() {
        size_t at = tree->IsEmpty() ? 0 : bytes.Below(static_cast<size_t>(tree->Count()));
        Node* node = tree->First();
        while (node && at-- > 0) node = modTVW::GetNextNode(node);
        return node;
    }

    Known known = Known::Nothing;
    std::string events, expected; // the types of MapChanged
    Model model;
    std::shared_ptr<ContentLesson> lesson;
    std::shared_ptr<NodeTree> tree = control->tvwObject();
    test::FakeTreeWindow window{*tree};
};

} // namespace

void DriveLessonMap(Input input) { LessonMapDriver(input).Run(); }

} // namespace dax::fuzz
