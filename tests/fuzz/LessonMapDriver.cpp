// Moves, additions, removals, checks and drags in the lesson map, from bytes.
#include "fuzz/Driver.h"
#include "lessonmap/LessonMapEditor.h"
#include "lessonmap/SampleLesson.h"
#include "tree/FakeTreeWindow.h"

#include <algorithm>

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

class LessonMapDriver {
public:
    explicit LessonMapDriver(Input input)
        : bytes(input), callsBack(bytes.Below(4) == 0), lesson(test::MakeLesson(bytes.OneOf(lessons))) {
        window.client.bottom = 100'000;
        editor->SetWindow(&window);
        editor->SetLesson(lesson);
        if (!callsBack) return;
        const auto callBack = [this] {
            if (depth < 3 && bytes.Below(3) == 0) Step();
        };
        editor->AfterSelectionChange.Add([callBack](const auto&) { callBack(); });
        editor->ItemChecked.Add(callBack);
        editor->MapChanged.Add([callBack](MapChangeTypes) { callBack(); });
        editor->DeleteRequest.Add(callBack);
    }
    ~LessonMapDriver() { editor->SetWindow(nullptr); }
    LessonMapDriver(const LessonMapDriver&) = delete;
    LessonMapDriver& operator=(const LessonMapDriver&) = delete;

    void Run() {
        // A page in two maps shows once; the layouts follow when they are written back.
        (void)editor->CheckedStoryboards();
        Check();
        while (!bytes.AtEnd()) {
            const auto before = StoredPages();
            const bool mayChangePages = Step();
            Check();
            if (!mayChangePages && !callsBack) Require(StoredPages() == before, "no page comes or goes by itself");
        }
        // What is checked, and the lesson of it.
        editor->SetShowDefaultMapOnly(false);
        const auto checked = editor->CheckedStoryboards();
        Require(static_cast<size_t>(editor->CheckedStoryboardCount()) == checked.size(), "checks are counted right");
        const auto part = editor->GetCheckedLesson();
        Require(part->Storyboards()->Count() == static_cast<int32_t>(checked.size()), "the lesson of what is checked");
    }

private:
    // Pages added or removed: true.
    bool Step() {
        ++depth;
        bool mayChangePages = false;
        try {
            mayChangePages = Do(bytes.Below(20));
        } catch (const Error&) {
            // A listener that calls back may be refused; a host alone never is.
            if (!callsBack) throw;
        }
        --depth;
        return mayChangePages;
    }

    bool Do(size_t what) {
        switch (what) {
        case 0:
        case 1:
        case 2:
        case 3:
            Move();
            break;
        case 4:
        case 5:
        case 6:
            Add();
            return true;
        case 7:
        case 8:
            editor->RemoveStoryboard(AnyPage(), bytes.Below(2) == 0);
            return true;
        case 9:
            if (Node* const node = AnyNode()) node->SetChecked(!node->IsChecked());
            break;
        case 10:
            bytes.Below(2) ? editor->CheckAllStoryboards() : editor->UncheckAllStoryboards();
            break;
        case 11:
        case 12:
            tree->Select(AnyNode());
            break;
        case 13:
            bytes.Below(2) ? editor->Refresh() : editor->SetCaptionStyle(csIdentifier);
            break;
        case 14:
            bytes.Below(2) ? editor->CollapseAll() : editor->ExpandAll();
            break;
        case 15:
        case 16:
            Drag();
            break;
        case 17:
            if (Node* const node = AnyNode()) Click(*node);
            break;
        case 18:
            editor->KeyDown(bytes.OneOf(keys));
            editor->KeyPress(bytes.OneOf(keys));
            break;
        default:
            ChangeProperty();
        }
        return false;
    }

    // The name of a map is refused, and any page when there is no map.
    void Add() {
        const auto page = AnyPage();
        const Node* const shown = tree->Find(page->SBID());
        const bool isRefusedRightly = tree->IsEmpty() || (shown && !shown->Parent());
        bool isRefused = false;
        try {
            editor->AddStoryboard(page);
        } catch (const Error&) {
            isRefused = true;
        }
        if (!callsBack) Require(isRefused == isRefusedRightly, "what AddStoryboard refuses");
    }

    void Move() {
        const auto movement = static_cast<StoryboardMovementTypes>(bytes.Below(8)); // 0 and 7 are none
        const bool can = editor->CanMoveCurrent(movement);
        const std::string before = test::Print(*tree);
        editor->MoveCurrent(movement);
        if (!callsBack) Require((test::Print(*tree) != before) == can, "CanMoveCurrent foretells the move");
    }

    void Drag() {
        editor->ExpandAll();
        Node* const from = AnyNode();
        Node* const to = AnyNode();
        if (!from) return;
        const Point end = window.At(*to, static_cast<int>(bytes.Below(100)));
        window.MoveTo(window.At(*from));
        editor->MouseDown(MouseButton::Left);
        window.MoveTo(window.At(*from, 95));
        editor->MouseMove(MouseButton::Left);
        window.MoveTo(end);
        editor->MouseMove(MouseButton::Left);
        if (bytes.Below(8) == 0) editor->KeyDown(27);
        editor->MouseUp(MouseButton::Left);
    }

    void Click(const Node& node) {
        const Point point = bytes.Below(2) ? window.AtBox(node) : window.At(node);
        const bool isCtrlDown = bytes.Below(2) == 0;
        window.MoveTo(point);
        bytes.Below(3) ? editor->Click(point, isCtrlDown) : editor->DblClick(point, isCtrlDown);
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
            (void)editor->CheckedStoryboards(); // a page added while its map was hidden is in two maps by now
            break;
        case 3:
            editor->SetAllowDragDrop(isOn);
            break;
        default:
            editor->SetLesson(nullptr);
            editor->SetLesson(lesson);
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

    std::vector<Text> StoredPages() const {
        std::vector<Text> found;
        for (const auto& page : lesson->Storyboards()->All()) found.push_back(page->SBID());
        std::sort(found.begin(), found.end());
        return found;
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

    Bytes bytes;
    bool callsBack;
    int depth = 0;
    std::shared_ptr<ContentLesson> lesson;
    std::shared_ptr<LessonMapEditor> editor = LessonMapEditor::Create();
    std::shared_ptr<NodeTree> tree = editor->tvwObject();
    test::FakeTreeWindow window{*tree};
};

} // namespace

void DriveLessonMap(Input input) { LessonMapDriver(input).Run(); }

} // namespace dax::fuzz
