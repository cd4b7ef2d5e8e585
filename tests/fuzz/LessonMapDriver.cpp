// Moves, additions, removals, checks and drags in the lesson map, from bytes.
#include "fuzz/Driver.h"
#include "fuzz/LessonMapModel.h"
#include "lessonmap/LessonMapEditor.h"
#include "tree/FakeTreeWindow.h"

namespace dax::fuzz {

namespace {

constexpr const char* lessons[] = {"M: p1 p2( p3 ) p4 | N: p5 | O:",
                                   "",
                                   "M:",
                                   "M: p1( p2( p3( p4 ) ) )",
                                   "M: p1 p2 | N: p2 p3( p1 p4 )",
                                   "M: p1 | M: p2"};
constexpr const char16_t* pages[] = {u"p1", u"p2", u"p3", u"p4", u"p5", u"q1", u"q2", u"q3", u"M", u"temp2"};
constexpr int keys[] = {13, 27, 32, 38, 40, 46, 93, 113};
// A letter for each byte: move, add, remove, check, check all, select, rebuild, expand, drag, click, key, property.
constexpr char actions[] = {'m', 'm', 'm', 'm', 'a', 'a', 'a', 'r', 'r', 'c',
                            'C', 's', 's', 'b', 'e', 'd', 'd', 'l', 'k', 'p'};

// What of the model still holds after a step.
enum class Known { All, Shape, Nothing };

class LessonMapDriver {
public:
    explicit LessonMapDriver(Input input)
        : bytes(input), callsBack(bytes.Below(4) == 0), lesson(test::MakeLesson(bytes.OneOf(lessons))) {
        window.client.bottom = 100'000;
        editor->SetWindow(&window);
        editor->SetLesson(lesson);
        editor->MapChanged.Add([this](MapChangeTypes type) { told += std::to_string(type); });
        if (!callsBack) return;
        const auto callBack = [this] {
            if (depth < 3 && bytes.Below(3) == 0) Step();
            if (bytes.Below(40) != 39 || !editor) return;
            editor->SetWindow(nullptr);
            editor.reset(); // the host lets go of it
        };
        editor->AfterSelectionChange.Add([callBack](const auto&) { callBack(); });
        editor->ItemChecked.Add(callBack);
        editor->MapChanged.Add([callBack](MapChangeTypes) { callBack(); });
        editor->DeleteRequest.Add(callBack);
        editor->ContextMenuRequest.Add(callBack);
    }
    ~LessonMapDriver() {
        if (editor) editor->SetWindow(nullptr);
    }
    LessonMapDriver(const LessonMapDriver&) = delete;
    LessonMapDriver& operator=(const LessonMapDriver&) = delete;

    void Run() {
        // A page in two maps shows once; the layouts follow when they are written back.
        (void)editor->CheckedStoryboards();
        Check();
        model.Read(*tree, *lesson);
        while (!bytes.AtEnd()) {
            told.clear();
            expected.clear();
            const Known known = Step();
            if (!editor) return;
            Check();
            if (!callsBack) Compare(known);
        }
        // What is checked, and the lesson of it.
        editor->SetShowDefaultMapOnly(false);
        const auto checked = editor->CheckedStoryboards();
        Require(static_cast<size_t>(editor->CheckedStoryboardCount()) == checked.size(), "checks are counted right");
        const auto part = editor->GetCheckedLesson();
        Require(!part || part->Storyboards()->Count() == static_cast<int32_t>(checked.size()),
                "the lesson of what is checked");
    }

private:
    void Compare(Known known) {
        const test::LessonMapModel should = model;
        model.Read(*tree, *lesson);
        if (known == Known::Nothing) return;
        RequireEqual(model.Print(), should.Print(), "the map");
        RequireEqual(told, expected, "what was told of the map");
        Require(model.pages == should.pages, "no page comes or goes by itself");
        if (known == Known::Shape) return;
        RequireEqual(model.selected, should.selected, "the selected page");
        Require(model.checked == should.checked, "what is checked");
    }

    Known Step() {
        if (!editor) return Known::Nothing;
        ++depth;
        Known known = Known::Nothing;
        try {
            known = Do(bytes.OneOf(actions));
        } catch (const Error&) {
            // A listener that calls back may be refused; a host alone never is.
            if (!callsBack) throw;
        }
        --depth;
        return known;
    }

    Known Do(char action) {
        switch (action) {
        case 'm': {
            const auto movement = static_cast<StoryboardMovementTypes>(bytes.Below(8)); // 0 and 7 are none
            const bool can = editor->CanMoveCurrent(movement);
            if (!callsBack) Require(can == model.Move(movement), "CanMoveCurrent");
            if (can) expected = "2";
            editor->MoveCurrent(movement);
            return Known::All;
        }
        case 'a':
            Add();
            return Known::All;
        case 'r': {
            const auto page = AnyPage();
            const bool withChildren = bytes.Below(2) == 0;
            const bool isHidden = editor->ShowDefaultMapOnly() && !model.Has(page->SBID()); // maybe with others below
            if (!callsBack && model.Remove(page->SBID(), withChildren)) expected = "3";
            editor->RemoveStoryboard(page, withChildren);
            return isHidden ? Known::Nothing : Known::All;
        }
        case 'c':
            if (Node* const node = AnyNode()) node->SetChecked(!node->IsChecked());
            return Known::Shape;
        case 'C':
            bytes.Below(2) ? editor->CheckAllStoryboards() : editor->UncheckAllStoryboards();
            return Known::Shape;
        case 's': {
            Node* const node = AnyNode();
            model.selected = modTVW::GetNodeKey(node);
            tree->Select(node);
            return Known::All;
        }
        case 'b':
            bytes.Below(2) ? editor->Refresh() : editor->SetCaptionStyle(csIdentifier);
            return Known::All;
        case 'e':
            bytes.Below(2) ? editor->CollapseAll() : editor->ExpandAll();
            return Known::Shape;
        case 'd':
            return Drag();
        case 'l':
            if (Node* const node = AnyNode()) Click(*node);
            return Known::Shape;
        case 'k':
            editor->OnKeyDown(bytes.OneOf(keys));
            if (editor) editor->OnKeyPress(bytes.OneOf(keys));
            if (editor) editor->OnMouseUp(MouseButton::Right);
            return Known::Shape;
        default:
            ChangeProperty();
            return Known::Nothing;
        }
    }

    // The name of a map is refused, and any page when there is no map.
    void Add() {
        const auto page = AnyPage();
        const Text sbid = page->SBID();
        const bool isRefusedRightly = tree->IsEmpty() || (model.Has(sbid) && !model.IsPage(sbid));
        if (!callsBack && !isRefusedRightly && model.Add(sbid)) expected = "1";
        bool isRefused = false;
        try {
            editor->AddStoryboard(page);
        } catch (const Error&) {
            isRefused = true;
        }
        if (!callsBack) Require(isRefused == isRefusedRightly, "what AddStoryboard refuses");
    }

    // On the upper half of a page it goes before that; elsewhere it lands where the window's rules say.
    Known Drag() {
        editor->ExpandAll();
        Node* const from = AnyNode();
        Node* const to = AnyNode();
        if (!from) return Known::Shape;
        const int part = bytes.Below(2) ? 20 : static_cast<int>(bytes.Below(100));
        const bool isCancelled = bytes.Below(8) == 7;
        const bool isDrag = editor->AllowDragDrop() && !editor->Locked() && from->Parent();
        const bool isForetold = !isDrag || isCancelled || (part == 20 && to->Parent());
        if (isDrag) model.selected = from->Key();
        if (isDrag && isForetold && !isCancelled && !callsBack && model.Drop(from->Key(), to->Key())) expected = "2";
        const Point way[] = {window.At(*from), window.At(*from, 95), window.At(*to, part)};
        window.MoveTo(way[0]);
        editor->OnMouseDown(MouseButton::Left);
        for (const Point& point : {way[1], way[2]}) {
            window.MoveTo(point);
            if (editor) editor->OnMouseMove(MouseButton::Left);
        }
        if (editor && isCancelled) editor->OnKeyPress(27);
        if (editor) editor->OnMouseUp(MouseButton::Left);
        if (expected.empty()) expected = told; // a drop on the place where it was may be told, too
        return isForetold ? Known::All : Known::Nothing;
    }

    void Click(const Node& node) {
        const Point point = bytes.Below(2) ? window.AtBox(node) : window.At(node);
        const bool isCtrlDown = bytes.Below(2) == 0;
        window.MoveTo(point);
        bytes.Below(3) ? editor->OnClick(point, isCtrlDown) : editor->OnDblClick(point, isCtrlDown);
    }

    void ChangeProperty() {
        const bool isOn = bytes.Below(2) == 0;
        switch (bytes.Below(5)) {
        case 0:
            editor->SetCheckboxes(isOn);
            window.hasCheckBoxes = isOn;
            break;
        case 1:
            editor->SetLocked(isOn);
            break;
        case 2:
            editor->SetShowDefaultMapOnly(isOn);
            break;
        case 3:
            editor->SetAllowDragDrop(isOn);
            break;
        default:
            editor->SetLesson(nullptr);
            if (editor) editor->SetLesson(callsBack && isOn ? test::MakeLesson(bytes.OneOf(lessons)) : lesson);
        }
    }

    void Check() const {
        CheckTree(*tree);
        if (callsBack) (void)editor->CheckedStoryboards(); // whatever a listener did: written back it must agree
        if (callsBack && editor->Lesson() != lesson) return;
        for (const Node* root = tree->First(); root; root = root->Next()) {
            RequireEqual(ToUtf8(root->Caption()),
                         ToUtf8(MapOf(*root) + u" (" + ToText(modTVW::CountDescendants(root)) + u")"),
                         "a map's caption");
        }
        if (!editor->ShowDefaultMapOnly()) CheckLayouts();
        std::set<Text> seen;
        for (int32_t i = 0; i < lesson->Maps()->Count(); ++i)
            for (const auto& entry : std::dynamic_pointer_cast<ContentMap>(lesson->Maps()->Item(i))->Layout())
                Require(seen.insert(entry.sbid).second, "no page stands in two maps, shown or not");
        // While no page is selected the lesson may remember one that was not shown for a while.
        const Text current = editor->CurrentSBID();
        if (!current.empty()) RequireEqual(ToUtf8(lesson->CurrentSBID()), ToUtf8(current), "the lesson's current page");
        for (const auto& page : editor->OrphanedStoryboards())
            Require(!tree->Find(page->SBID()), "an orphan is not in the tree");
    }

    // The maps hold what the tree shows, each under its own name.
    void CheckLayouts() const {
        int32_t index = 0;
        for (const Node* root = tree->First(); root; root = root->Next(), ++index) {
            const auto map = std::dynamic_pointer_cast<ContentMap>(lesson->Maps()->Item(index));
            Require(map != nullptr, "a root for each map");
            std::vector<LayoutEntry> shown;
            for (const Node* node = modTVW::GetNextNode(root, root); node; node = modTVW::GetNextNode(node, root))
                shown.push_back({node->Key(), modTVW::GetIndentLevel(node)});
            RequireEqual(test::Print("map", map->Layout()), test::Print("map", shown), "the layout");
        }
        Require(index == lesson->Maps()->Count(), "a root for each map");
    }

    // Roots are keyed by the map's name, made unique.
    static Text MapOf(const Node& root) { return root.Caption().substr(0, root.Caption().rfind(u" (")); }

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

    Bytes bytes;
    bool callsBack;
    int depth = 0;
    std::string told, expected; // the types of MapChanged
    test::LessonMapModel model;
    std::shared_ptr<ContentLesson> lesson;
    std::shared_ptr<LessonMapEditor> editor = LessonMapEditor::Create();
    std::shared_ptr<NodeTree> tree = editor->tvwObject();
    test::FakeTreeWindow window{*tree};
};

} // namespace

void DriveLessonMap(Input input) { LessonMapDriver(input).Run(); }

} // namespace dax::fuzz
