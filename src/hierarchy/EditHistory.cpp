#include "hierarchy/EditHistory.h"

#include "base/Error.h"
#include "tree/modTVW.h"

#include <utility>

namespace dax {

EditHistory::EditHistory(NodeTree& tree, IDCollection& added, IDCollection& deleted)
    : tree(tree), added(added), deleted(deleted) {
    tree.AddListener(*this);
}

EditHistory::~EditHistory() { tree.RemoveListener(*this); }

bool EditHistory::Undo() {
    if (depth > 0 || done.empty()) return false;
    undone.push_back(std::move(done.back()));
    done.pop_back();
    Apply(undone.back(), true);
    return true;
}

bool EditHistory::Redo() {
    if (depth > 0 || undone.empty()) return false;
    done.push_back(std::move(undone.back()));
    undone.pop_back();
    Apply(done.back(), false);
    return true;
}

void EditHistory::Clear() {
    done.clear();
    undone.clear();
    open = {};
    isOpenDiscarded = true;
    stored.clear();
}

void EditHistory::Saved() {
    ++saves; // also for an edit that is open: a host may save in its handler of a change
    stored.clear();
}

void EditHistory::Begin() {
    if (depth++ > 0) return;
    isOpenDiscarded = false;
    open.saves = saves;
    open.selectedBefore = SelectedKey();
}

void EditHistory::End() {
    if (--depth > 0) return;
    Step step = std::exchange(open, {});
    if (isOpenDiscarded || step.changes.empty()) return;
    step.selectedAfter = SelectedKey();
    try {
        done.push_back(std::move(step));
        if (done.size() > maxEdits) done.pop_front();
        undone.clear();
    } catch (const std::bad_alloc&) {
        Clear(); // what cannot be kept cannot be undone
    }
}

void EditHistory::SetTexts(Node& node, const Text& caption, const Text& tag, int image) {
    if (node.Caption() == caption && node.Tag() == tag && node.Image() == image) return;
    Change change{Kind::Texts, node.Key()};
    change.branch.push_back({{}, caption, tag, image});
    Exchange(change);
    open.changes.push_back(std::move(change));
}

void EditHistory::MarkAdded(const Text& id) {
    AddPending(added, id);
    RemovePending(deleted, id);
}

void EditHistory::MarkDeleted(const Text& id) {
    stored.try_emplace(id, !added.Contains(id));
    AddPending(deleted, id);
    RemovePending(added, id);
}

void EditHistory::AddPending(IDCollection& list, const Text& id) {
    if (list.Add(id)) open.pending.push_back({&list, id, true});
}

void EditHistory::RemovePending(IDCollection& list, const Text& id) {
    if (!list.Contains(id)) return;
    open.pending.push_back({&list, id, false, list.NextOf(id)});
    list.Remove(id);
}

void EditHistory::NodeAdded(Node& node) {
    if (IsRecording()) open.changes.push_back({Kind::Inserted, node.Key(), {}, PositionOf(node)});
}

void EditHistory::NodeRemoving(Node& node) {
    if (IsRecording()) open.changes.push_back({Kind::Removed, node.Key(), PositionOf(node), {}, Capture(node)});
}

void EditHistory::NodeMoving(Node& node) {
    if (IsRecording()) open.changes.push_back({Kind::Moved, node.Key(), PositionOf(node)});
}

void EditHistory::NodeMoved(Node& node) {
    if (IsRecording() && !open.changes.empty()) open.changes.back().to = PositionOf(node);
}

void EditHistory::NodeChanged(Node& node, NodeAspect aspect) {
    if (!IsRecording() || aspect != NodeAspect::Expanded) return;
    open.changes.push_back({Kind::Expanded, node.Key()});
    open.changes.back().isExpanded = node.IsExpanded();
}

void EditHistory::Apply(Step& step, bool undo) {
    try {
        const TreeUpdate update(tree);
        const size_t count = step.changes.size();
        for (size_t i = 0; i < count; ++i) Apply(step.changes[undo ? count - 1 - i : i], undo);
        ApplyPending(step, undo);
        const std::optional<Text>& selected = undo ? step.selectedBefore : step.selectedAfter;
        tree.Select(selected ? &Find(*selected) : nullptr);
    } catch (...) {
        Clear(); // part of an edit cannot be undone
        throw;
    }
}

void EditHistory::Apply(Change& change, bool undo) {
    switch (change.kind) {
    case Kind::Inserted:
    case Kind::Removed:
        if ((change.kind == Kind::Inserted) == undo) {
            Node& top = Find(change.key);
            change.branch = Capture(top);
            tree.Remove(top);
        } else {
            Restore(change, undo ? change.from : change.to);
        }
        break;
    case Kind::Moved: {
        const Position& to = undo ? change.from : change.to;
        Node& node = Find(change.key);
        if (to.previous.empty())
            tree.Move(node, &Find(to.parent), InsertPosition::FirstChild);
        else
            tree.Move(node, &Find(to.previous), InsertPosition::After);
        break;
    }
    case Kind::Texts:
        Exchange(change);
        break;
    case Kind::Expanded:
        Find(change.key).SetExpanded(change.isExpanded != undo);
        break;
    }
}

// Between two saves the lists are restored exactly, order included. Across a save they follow from the database.
void EditHistory::ApplyPending(Step& step, bool undo) {
    const std::vector<PendingChange> before = std::exchange(step.pending, {});
    open.pending.clear();
    if (step.saves == saves) {
        Revert(before);
    } else {
        for (const Change& change : step.changes) {
            if (change.kind != Kind::Inserted && change.kind != Kind::Removed) continue;
            if ((change.kind == Kind::Inserted) != undo) {
                // The branch is in the tree again.
                Node* const top = &Find(change.key);
                for (Node* node = top; node; node = modTVW::GetNextNode(node, top)) {
                    const auto known = stored.find(node->Key());
                    if (known != stored.end() && known->second)
                        RemovePending(deleted, node->Key());
                    else
                        MarkAdded(node->Key());
                }
            } else {
                for (const Entry& entry : change.branch) MarkDeleted(entry.key);
            }
        }
    }
    step.pending = std::exchange(open.pending, {});
    step.saves = saves;
}

void EditHistory::Revert(const std::vector<PendingChange>& changes) {
    for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
        if (change->isAdded) {
            RemovePending(*change->list, change->id);
        } else {
            change->list->Insert(change->id, change->next);
            open.pending.push_back({change->list, change->id, true});
        }
    }
}

void EditHistory::Restore(const Change& change, const Position& position) {
    std::vector<Node*> path; // the last node at each depth
    for (const Entry& entry : change.branch) {
        const auto level = static_cast<size_t>(entry.depth);
        Node* node = nullptr;
        if (level > 0)
            node = &tree.Add(path[level - 1], InsertPosition::LastChild, entry.key, entry.caption, entry.image);
        else if (position.previous.empty())
            node = &tree.Add(&Find(position.parent), InsertPosition::FirstChild, entry.key, entry.caption, entry.image);
        else
            node = &tree.Add(&Find(position.previous), InsertPosition::After, entry.key, entry.caption, entry.image);
        node->SetTag(entry.tag);
        path.resize(level);
        path.push_back(node);
    }
    for (const Entry& entry : change.branch) {
        if (entry.isExpanded) Find(entry.key).SetExpanded(true);
    }
}

void EditHistory::Exchange(Change& change) {
    Node& node = Find(change.key);
    Entry& kept = change.branch.front();
    Entry shown{{}, node.Caption(), node.Tag(), node.Image()};
    node.SetCaption(kept.caption);
    node.SetTag(kept.tag);
    node.SetImage(kept.image);
    kept = std::move(shown);
}

std::optional<Text> EditHistory::SelectedKey() const {
    const Node* const selected = tree.Selected();
    return selected ? std::optional(selected->Key()) : std::nullopt;
}

Node& EditHistory::Find(const Text& key) const {
    Node* const node = key.empty() ? tree.First() : tree.Find(key);
    if (!node) throw Error(ErrorNumbers::Automation, u"The entry '" + key + u"' is no longer in the hierarchy.");
    return *node;
}

EditHistory::Position EditHistory::PositionOf(const Node& node) {
    return {modTVW::GetNodeKey(node.Parent()), modTVW::GetNodeKey(node.Previous())};
}

std::vector<EditHistory::Entry> EditHistory::Capture(const Node& top) {
    std::vector<Entry> branch;
    int depth = 0;
    const Node* last = nullptr;
    for (const Node* node = &top; node; node = modTVW::GetNextNode(node, &top)) {
        if (last && node->Parent() == last)
            ++depth;
        else if (last)
            for (const Node* up = last; up->Parent() != node->Parent(); up = up->Parent()) --depth;
        branch.push_back({node->Key(), node->Caption(), node->Tag(), node->Image(), node->IsExpanded(), depth});
        last = node;
    }
    return branch;
}

} // namespace dax
