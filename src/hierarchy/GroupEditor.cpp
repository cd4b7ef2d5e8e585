#include "hierarchy/GroupEditor.h"

#include "tree/modTVW.h"

namespace dax {

std::shared_ptr<GroupEditor> GroupEditor::Create(PropertyCollectionFactory factory) {
    return std::shared_ptr<GroupEditor>(new GroupEditor(std::move(factory)));
}

GroupEditor::GroupEditor(PropertyCollectionFactory factory) : factory(factory), lessonPropertyStore(factory) {
    subclasser.SelectionChanged.AddPermanent([this] {
        const auto self = shared_from_this();
        AfterSelectionChange.Raise(CurrentLessonID());
    });
    dragDrop.AutoExpand.AddPermanent([](Node& node) { node.SetExpanded(true); });
    dragDrop.Ended.AddPermanent([this] {
        if (!isLoading) subclasser.SetActive(true);
    });
    dragDrop.Drop.AddPermanent([this](Node& node, const DropTarget& target) { OnDrop(node, target); });
    subclasser.RegisterWindows(&tree, nullptr);
    subclasser.SetActive(true);
}

GroupEditor::~GroupEditor() { subclasser.SetActive(false); }

void GroupEditor::SetAllowDragDrop(bool allow) {
    const auto self = shared_from_this();
    allowDragDrop = allow;
    if (!allow) CancelDrag();
    PropertyChanged.Raise(u"AllowDragDrop");
}

void GroupEditor::SetLocked(bool locked) {
    const auto self = shared_from_this();
    isLocked = locked;
    if (locked) CancelDrag();
    PropertyChanged.Raise(u"Locked");
}

void GroupEditor::SetSingleExpand(bool single) {
    const auto self = shared_from_this();
    isSingleExpand = single;
    if (window) window->SetSingleExpand(single);
    PropertyChanged.Raise(u"SingleExpand");
}

void GroupEditor::SetConflictCheck(bool check) {
    const auto self = shared_from_this();
    checksConflicts = check;
    PropertyChanged.Raise(u"ConflictCheck");
}

void GroupEditor::SetDatabaseTitle(const Text& title) {
    databaseTitle = title;
    if (Node* const root = tree.First()) root->SetCaption(title);
}

Text GroupEditor::CurrentLessonID() const { return modTVW::GetNodeKey(tree.Selected()); }

void GroupEditor::SetCurrentLessonID(const Text& lessonID) {
    const auto self = shared_from_this();
    tree.Select(modTVW::GetNodeByKey(tree, lessonID));
}

void GroupEditor::LockDisplay() {
    if (isDisplayLocked) return;
    isDisplayLocked = true;
    if (window) window->FreezeDisplay(true);
}

void GroupEditor::UnlockDisplay() {
    isDisplayLocked = false;
    if (window) window->FreezeDisplay(false);
}

void GroupEditor::ExpandAll() {
    const auto self = shared_from_this();
    modTVW::SetAllExpanded(tree, true);
    ShowSelected();
}

void GroupEditor::ShowSelected() {
    if (window && tree.Selected()) window->EnsureVisible(*tree.Selected());
}

void GroupEditor::CollapseAll() {
    const auto self = shared_from_this();
    const TreeUpdate update(tree);
    modTVW::SetAllExpanded(tree, false);
    if (Node* const root = tree.First()) root->SetExpanded(true);
}

bool GroupEditor::Clear() {
    const auto self = shared_from_this();
    BeginLoading();
    {
        const FlagGuard loading(isLoading);
        const NotificationPause silence(subclasser);
        Empty();
    }
    AfterSelectionChange.Raise({});
    return false;
}

bool GroupEditor::LoadDatabase() {
    const auto self = shared_from_this();
    if (connectionString.empty()) {
        Clear();
        return true;
    }
    BeginLoading();
    try {
        const FlagGuard loading(isLoading);
        const NotificationPause silence(subclasser);
        const TreeUpdate update(tree);
        const Text selectedKey = CurrentLessonID();
        Empty();
        Node& root = tree.Add(nullptr, InsertPosition::LastChild, {}, databaseTitle, HierarchyRows::picDatabase);
        HierarchyRows::Load(connectionString, tree, lessonPropertyStore, knownRows, progress);
        root.SetExpanded(true);
        Node* const selected = modTVW::GetNodeByKey(tree, selectedKey);
        tree.Select(selected ? selected : &root);
    } catch (...) {
        RaiseError(CurrentError(), u"LoadDatabase");
        return false;
    }
    AfterSelectionChange.Raise(CurrentLessonID());
    return true;
}

bool GroupEditor::SaveDatabase() {
    const auto self = shared_from_this();
    if (tree.IsEmpty()) {
        Error.Raise(ErrorNumbers::Automation, u"No database open.", u"SaveDatabase");
        return false;
    }
    try {
        HierarchyRows::Save(connectionString, tree, deletedLessonIDs, addedLessonIDs, knownRows, checksConflicts,
                            progress);
    } catch (...) {
        RaiseError(CurrentError(), u"SaveDatabase");
        return false;
    }
    addedLessonIDs.Clear();
    deletedLessonIDs.Clear();
    history.Saved();
    return true;
}

void GroupEditor::AddLesson(const Text& lessonID, const Text& title, const Text& identifier, LessonTypes type) {
    const auto self = shared_from_this();
    const Text id = lessonID, titleCopy = title, identifierCopy = identifier; // the caller's may be the editor's own
    if (tree.IsEmpty() || id.empty()) return;
    const RevisionCheck shown(revision);
    const EditHistory::Edit edit(history);
    if (!modTVW::NodeExists(tree, id)) {
        Node* const root = tree.First();
        Node* const selected = tree.Selected();
        if (selected && selected->Parent()) {
            tree.Add(selected, InsertPosition::After, id);
        } else {
            tree.Add(root, InsertPosition::FirstChild, id);
        }
        history.MarkAdded(id);
    }
    UpdateLesson(id, titleCopy, identifierCopy, type);
    if (shown.IsCurrent()) SetCurrentLessonID(id);
}

void GroupEditor::UpdateLesson(const Text& lessonID, const Text& title, const Text& identifier, LessonTypes type) {
    Node* const node = modTVW::GetNodeByKey(tree, lessonID);
    if (!node) return;
    const auto self = shared_from_this();
    const EditHistory::Edit edit(history);
    {
        const TreeUpdate update(tree); // the row is shown once
        history.SetTexts(*node, title, identifier, HierarchyRows::PictureOf(type));
    }
    MarkChanged();
}

void GroupEditor::RemoveLesson(const Text& lessonID, bool includeChildren) {
    const auto self = shared_from_this();
    const Text id = lessonID; // the caller's may be the node's own key
    Node* const node = modTVW::GetNodeByKey(tree, id);
    if (!node) return;
    const RevisionCheck shown(revision);
    const EditHistory::Edit edit(history);
    {
        // The selection is reported when everything is loaded.
        const TreeUpdate update(tree);
        if (includeChildren) {
            const IDCollection keys = modTVW::GetDescendantKeys(node);
            for (const Text& key : keys) history.MarkDeleted(key);
        } else {
            while (node->FirstChild()) modTVW::MoveTreeNode(tree, node->FirstChild(), gmtOutdent);
        }
        history.MarkDeleted(id);
        tree.Remove(*node);
        if (!includeChildren) ShowSelected();
    }
    if (shown.IsCurrent()) MarkChanged();
}

bool GroupEditor::CanMoveCurrent(GroupMovementTypes movement) const {
    return !isLocked && !dragDrop.Active() && modTVW::CanMoveTreeNode(tree, tree.Selected(), movement);
}

void GroupEditor::MoveCurrent(GroupMovementTypes movement) {
    const auto self = shared_from_this();
    const EditHistory::Edit edit(history);
    if (!CanMoveCurrent(movement) || !modTVW::MoveTreeNode(tree, tree.Selected(), movement)) return;
    ShowSelected();
    MarkChanged();
}

bool GroupEditor::CanUndo() const { return !isLocked && !isLoading && !dragDrop.Active() && history.CanUndo(); }

bool GroupEditor::CanRedo() const { return !isLocked && !isLoading && !dragDrop.Active() && history.CanRedo(); }

void GroupEditor::Undo() {
    const auto self = shared_from_this();
    const RevisionCheck shown(revision);
    if (CanUndo() && history.Undo() && shown.IsCurrent()) MarkChanged();
}

void GroupEditor::Redo() {
    const auto self = shared_from_this();
    const RevisionCheck shown(revision);
    if (CanRedo() && history.Redo() && shown.IsCurrent()) MarkChanged();
}

void GroupEditor::MarkChanged() {
    if (isLoading || tree.IsEmpty()) return;
    const auto self = shared_from_this();
    DataChanged.Raise();
}

void GroupEditor::BeginLoading() {
    revision.Advance();
    dragDrop.Bind(&tree, window); // ends a drag
}

void GroupEditor::Empty() {
    addedLessonIDs.Clear();
    deletedLessonIDs.Clear();
    history.Clear();
    lessonPropertyStore = LessonPropertyStore(factory);
    knownRows = {};
    tree.Clear();
}

void GroupEditor::RaiseError(const dax::Error& failure, const char16_t* method) {
    Error.Raise(failure.Number(), failure.Description(), method);
}

void GroupEditor::ReadProperties(PropertyBag& bag) {
    const auto read = [&bag](const char16_t* name, bool defaultValue) {
        const Value value = bag.ReadProperty(name, defaultValue);
        const bool* const boolean = std::get_if<bool>(&value);
        return boolean ? *boolean : defaultValue;
    };
    allowDragDrop = read(u"AllowDragDrop", true);
    isLocked = read(u"Locked", false);
    isSingleExpand = read(u"SingleExpand", false);
    checksConflicts = read(u"ConflictCheck", false);
    AttachWindow(window);
}

void GroupEditor::WriteProperties(PropertyBag& bag) const {
    bag.WriteProperty(u"AllowDragDrop", allowDragDrop, true);
    bag.WriteProperty(u"Locked", isLocked, false);
    bag.WriteProperty(u"SingleExpand", isSingleExpand, false);
    bag.WriteProperty(u"ConflictCheck", checksConflicts, false);
}

} // namespace dax
