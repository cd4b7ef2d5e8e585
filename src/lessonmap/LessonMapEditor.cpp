#include "lessonmap/LessonMapEditor.h"

#include "lessonmap/LessonMapEditorGuards.h"
#include "lessonmap/modLME.h"
#include "tree/modTVW.h"

#include <utility>

namespace dax {

LessonMapEditor::LessonMapEditor() {
    dragDrop.AutoExpand.AddPermanent([](Node& node) { node.SetExpanded(true); });
    dragDrop.Drop.AddPermanent([this](Node& dragged, const DropTarget& target) { OnDrop(dragged, target); });
    subclasser.SelectionChanged.AddPermanent([this] { OnSelectionChanged(); });
    subclasser.CheckStateChanged.AddPermanent([this] {
        if (suspendedNotifications == 0) Raise(ItemChecked);
    });
    AttachWindow(nullptr); // which switches the notifications on
}

// Releasing the reference that hosts hold closes the editor; running operations hold the other one.
std::shared_ptr<LessonMapEditor> LessonMapEditor::Create() {
    std::shared_ptr<LessonMapEditor> owner(new LessonMapEditor);
    LessonMapEditor* const editor = owner.get();
    return {editor, [owner = std::move(owner)](LessonMapEditor*) mutable {
                owner->Close();
                owner.reset();
            }};
}

void LessonMapEditor::Close() {
    isClosed = true;
    // A running Raise calls no further listener.
    AfterSelectionChange = {};
    ItemChecked = {};
    MapChanged = {};
    DeleteRequest = {};
    ContextMenuRequest = {};
    Error = {};
    CheckboxesChanged = {};
    PropertyChanged = {};
    AttachWindow(nullptr);
}

void LessonMapEditor::AttachWindow(TreeWindow* newWindow) {
    CancelDrag();
    window = newWindow;
    dragDrop.Bind(isClosed ? nullptr : tree.get(), newWindow);
    subclasser.RegisterWindows(isClosed ? nullptr : tree.get(), newWindow);
    if (window && isDisplayLocked) window->FreezeDisplay(true);
}

void LessonMapEditor::SetImageList(PictureKeys keys) {
    const auto self = shared_from_this();
    imageList = std::make_shared<PictureKeys>(std::move(keys));
    if (lesson) Refresh();
}

bool LessonMapEditor::Build() {
    const auto images = imageList; // the host may set another one meanwhile
    const DrawingGuard drawing(*this);
    return modLME::BuildMap(tree.get(), *images, lesson, captionStyle, showDefaultMapOnly);
}

void LessonMapEditor::SaveLayouts() const { modLME::SaveMapLayouts(*tree, lesson); }

void LessonMapEditor::SetLesson(std::shared_ptr<dax::Lesson> newLesson) {
    const auto self = shared_from_this();
    bool isRepaired = false;
    LessonRef before; // its destruction may call back: it is destroyed last
    {
        const OperationGuard busy(*this);
        const NotificationGuard silence(*this);
        const DrawingGuard drawing(*this);
        const Text sbidBefore = CurrentSBID();
        // Another lesson with the same pages keeps expansion and selection, not the checks, which are for an action on
        // that one.
        if (newLesson != lesson) SetAllChecks(false);
        before = std::exchange(lesson, newLesson);
        if (!lesson) {
            tree->Clear();
            return;
        }
        isRepaired = Build();
        const Text record = newLesson->CurrentSBID();
        SelectWithoutEvents(record.empty() ? sbidBefore : record);
        if (isRepaired) SaveLayouts();
    }
    if (isRepaired && IsCurrentLesson(newLesson)) Raise(MapChanged, mctMapsInitialized);
    RaiseSelectionChange(newLesson);
}

// The lesson's record of a storyboard that no node shows stays as it is.
void LessonMapEditor::SelectWithoutEvents(const Text& sbid) {
    const Node* const node = tree->Find(sbid);
    if (!node || !node->Parent()) return;
    tree->Select(tree->Find(sbid));
    RecordSelection();
}

LessonMapEditor::StoryboardRef LessonMapEditor::CurrentStoryboard() const {
    const auto self = shared_from_this();
    const DepthGuard guard(depth);
    return modLME::FindStoryboard(lesson, CurrentSBID());
}

void LessonMapEditor::SetCurrentStoryboard(const StoryboardRef& storyboard) {
    const auto self = shared_from_this();
    const DepthGuard guard(depth);
    if (lesson) SetCurrentSBID(storyboard ? storyboard->SBID() : Text());
}

Text LessonMapEditor::CurrentSBID() const {
    const Node* const node = tree->Selected();
    return node && node->Parent() ? node->Key() : Text();
}

void LessonMapEditor::SetCurrentSBID(const Text& sbid) {
    const auto self = shared_from_this();
    const DepthGuard guard(depth);
    const LessonRef was = lesson;
    const Text requested = sbid;
    if (!was) return;
    const auto find = [&] {
        Node* const node = tree->Find(requested);
        return node && node->Parent() ? node : nullptr;
    };
    if (!requested.empty() && !find()) return;
    was->SetCurrentSBID(requested);
    if (!IsCurrentLesson(was)) return;
    Node* const node = find();
    if (node || requested.empty()) tree->Select(node); // notifies the host through the subclasser
}

void LessonMapEditor::RecordSelection() {
    const LessonRef was = lesson;
    const DepthGuard guard(depth);
    if (was) was->SetCurrentSBID(CurrentSBID());
}

void LessonMapEditor::RaiseSelectionChange(const LessonRef& was) {
    if (!IsCurrentLesson(was)) return;
    const StoryboardRef storyboard = CurrentStoryboard();
    if (IsCurrentLesson(was)) Raise(AfterSelectionChange, storyboard);
}

void LessonMapEditor::OnSelectionChanged() {
    if (suspendedNotifications > 0 || isClosed) return;
    const auto self = shared_from_this();
    const LessonRef was = lesson;
    const DepthGuard guard(depth);
    RecordSelection();
    RaiseSelectionChange(was);
}

void LessonMapEditor::Refresh() {
    const auto self = shared_from_this();
    const OperationGuard busy(*this);
    const NotificationGuard silence(*this);
    Build();
}

void LessonMapEditor::RaiseError(const dax::Error& failure, const char16_t* operation) {
    Raise(Error, failure.Number(), failure.Description(), Text(operation));
}

void LessonMapEditor::RaisePropertyChanged(const Text& name) { Raise(PropertyChanged, name); }

void LessonMapEditor::SetAllowDragDrop(bool isAllowed) {
    const auto self = shared_from_this();
    const bool isNew = std::exchange(allowDragDrop, isAllowed) != isAllowed;
    if (!isAllowed) CancelDrag();
    if (isNew) RaisePropertyChanged(u"AllowDragDrop");
}

void LessonMapEditor::SetCaptionStyle(LessonMapEditorCaptionStyles style) {
    const auto self = shared_from_this();
    if (std::exchange(captionStyle, style) == style) return;
    RaisePropertyChanged(u"CaptionStyle");
    if (lesson) Refresh();
}

void LessonMapEditor::SetCheckboxes(bool isOn) {
    const auto self = shared_from_this();
    if (std::exchange(checkboxes, isOn) == isOn) return;
    if (!isOn) SetAllChecks(false);
    Raise(CheckboxesChanged);
    RaisePropertyChanged(u"Checkboxes");
}

void LessonMapEditor::SetLocked(bool locked) {
    const auto self = shared_from_this();
    const bool isNew = std::exchange(isLocked, locked) != locked;
    if (locked) CancelDrag();
    if (isNew) RaisePropertyChanged(u"Locked");
}

void LessonMapEditor::SetShowDefaultMapOnly(bool isOnly) {
    const auto self = shared_from_this();
    if (std::exchange(showDefaultMapOnly, isOnly) == isOnly) return;
    RaisePropertyChanged(u"ShowDefaultMapOnly");
    const LessonRef was = lesson;
    if (!was) return;
    const OperationGuard busy(*this);
    const NotificationGuard silence(*this);
    Build();
    // The current page may have been in a map that was hidden.
    SelectWithoutEvents(was->CurrentSBID());
}

void LessonMapEditor::ReadProperties(PropertyBag& bag) {
    const auto self = shared_from_this();
    const auto flag = [&bag](const Text& name, bool byDefault) {
        const Value value = bag.ReadProperty(name, byDefault);
        const bool* const found = std::get_if<bool>(&value);
        return found ? *found : byDefault;
    };
    SetAllowDragDrop(flag(u"AllowDragDrop", true));
    const Value style = bag.ReadProperty(u"CaptionStyle", int64_t{csTitle});
    const int64_t* const number = std::get_if<int64_t>(&style);
    // Any number is kept, as it is when it is set: all but csIdentifier show the titles.
    const bool isNumber = number && std::in_range<int32_t>(*number);
    SetCaptionStyle(isNumber ? static_cast<LessonMapEditorCaptionStyles>(*number) : csTitle);
    SetCheckboxes(flag(u"Checkboxes", false));
    SetLocked(flag(u"Locked", false));
    SetShowDefaultMapOnly(flag(u"ShowDefaultMapOnly", false));
}

void LessonMapEditor::WriteProperties(PropertyBag& bag) const {
    const auto self = shared_from_this();
    bag.WriteProperty(u"AllowDragDrop", allowDragDrop, true);
    bag.WriteProperty(u"CaptionStyle", int64_t{captionStyle}, int64_t{csTitle});
    bag.WriteProperty(u"Checkboxes", checkboxes, false);
    bag.WriteProperty(u"Locked", isLocked, false);
    bag.WriteProperty(u"ShowDefaultMapOnly", showDefaultMapOnly, false);
}

void LessonMapEditor::FreezeDisplay(bool frozen) {
    if (std::exchange(isDisplayLocked, frozen) != frozen && window) window->FreezeDisplay(frozen);
}

void LessonMapEditor::ExpandAll() {
    const auto self = shared_from_this();
    const NotificationGuard silence(*this);
    modTVW::SetAllExpanded(*tree, true);
    ShowSelected();
}

void LessonMapEditor::ShowSelected() {
    if (window && tree->Selected()) window->EnsureVisible(*tree->Selected());
}

void LessonMapEditor::CollapseAll() {
    const auto self = shared_from_this();
    const LessonRef was = lesson;
    const Node* const selected = tree->Selected();
    {
        const NotificationGuard silence(*this);
        modTVW::SetAllExpanded(*tree, false);
        if (tree->Selected() == selected) return;
        RecordSelection();
    }
    RaiseSelectionChange(was);
}

Text LessonMapEditor::FindNextSBID(const Text& criteria, FindTypes findType, bool exactMatch, bool wrapSearch) const {
    const auto self = shared_from_this();
    const DepthGuard guard(depth);
    return modLME::FindNextSBID(*tree, lesson, criteria, findType, exactMatch, wrapSearch);
}

} // namespace dax
