// What a lesson map must be after any sequence of edits, with the rules written down a second time.
#pragma once

#include "base/Enumerations.h"
#include "lessonmap/SampleLesson.h"
#include "tree/ReferenceTree.h"

#include <set>

namespace dax::test {

// The maps are the children of the root, the storyboards stand under them.
struct LessonMapModel {
    ReferenceTree tree;
    Text selected;
    std::set<Text> checked;
    std::set<Text> pages; // that the lesson has, shown or not

    void Read(const NodeTree& nodes, const Lesson& lesson) {
        tree = {};
        for (const Node* node = nodes.First(); node; node = modTVW::GetNextNode(node))
            tree.Insert(node->Key(), node->Parent() ? node->Parent()->Key() : Text(), SIZE_MAX);
        ReadMarks(nodes);
        pages.clear();
        for (const auto& page : lesson.Storyboards()->All()) pages.insert(page->SBID());
    }
    void ReadMarks(const NodeTree& nodes) {
        selected = modTVW::GetNodeKey(nodes.Selected());
        checked.clear();
        for (const Node* node = nodes.First(); node; node = modTVW::GetNextNode(node))
            if (node->IsChecked()) checked.insert(node->Key());
    }

    bool Has(const Text& key) const { return tree.parents.contains(key); }
    bool IsPage(const Text& key) const { return Has(key) && !tree.parents.at(key).empty(); }
    const std::vector<Text>& Maps() const { return tree.children.at({}); }

    std::optional<std::pair<Text, size_t>> Destination(StoryboardMovementTypes movement) const {
        if (!IsPage(selected)) return {};
        if (movement == smtNextMap || movement == smtPreviousMap) {
            Text map = selected;
            while (IsPage(map)) map = tree.parents.at(map);
            const size_t index = tree.Index(map);
            if (movement == smtPreviousMap)
                return index ? std::optional(std::pair(Maps()[index - 1], SIZE_MAX)) : std::nullopt;
            return index + 1 < Maps().size() ? std::optional(std::pair(Maps()[index + 1], size_t{0})) : std::nullopt;
        }
        const auto to = tree.Destination(selected, movement);
        const Text parent = tree.parents.at(selected);
        // Within the hierarchy of its map: not into the map before or behind, and not beside a map.
        if (to && !IsPage(parent) && to->first != parent && movement != smtIndent) return {};
        return to;
    }
    bool Move(StoryboardMovementTypes movement) {
        const auto to = Destination(movement);
        if (to) tree.Place(selected, to->first, to->second);
        return to.has_value();
    }
    // True when it came into the tree or the lesson.
    bool Add(const Text& page) {
        const bool isNew = !Has(page) || !pages.contains(page);
        if (!Has(page)) {
            if (IsPage(selected))
                tree.Insert(page, tree.parents.at(selected), tree.Index(selected) + 1);
            else
                tree.Insert(page, Maps().front(), 0);
        }
        pages.insert(page);
        selected = page;
        return isNew;
    }
    bool Remove(const Text& page, bool withChildren) {
        if (!Has(page)) return pages.erase(page) > 0; // an orphan
        if (!IsPage(page)) return false;
        const Text parent = tree.parents.at(page);
        while (!withChildren && !tree.children[page].empty()) // in their order
            tree.Place(Text(tree.children[page].back()), parent, tree.Index(page) + 1);
        for (const Text& gone : tree.Remove(page, true, selected)) {
            checked.erase(gone);
            pages.erase(gone);
        }
        return true;
    }
    // On the upper half of another page, which is selected then.
    bool Drop(const Text& page, const Text& target) {
        if (tree.Contains(page, target)) return false;
        const bool isNext =
            tree.parents.at(page) == tree.parents.at(target) && tree.Index(page) + 1 == tree.Index(target);
        if (isNext && tree.children.at(page).empty()) return false; // no place to drop
        selected = target;
        const std::string before = Print();
        tree.Unlink(page);
        tree.Place(page, tree.parents.at(target), tree.Index(target));
        return Print() != before;
    }

    std::string Print() const {
        std::string text;
        for (const Text& map : Maps()) {
            std::vector<LayoutEntry> layout;
            Flatten(map, 1, layout);
            text += (text.empty() ? "" : " | ") + test::Print(ToUtf8(map), layout);
        }
        return text;
    }

private:
    void Flatten(const Text& key, int32_t depth, std::vector<LayoutEntry>& layout) const {
        for (const Text& child : tree.children.at(key)) {
            layout.push_back({child, depth});
            Flatten(child, depth + 1, layout);
        }
    }
};

} // namespace dax::test
