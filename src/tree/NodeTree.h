// The model of a tree view: nodes with unique keys, their order, expansion, checks and the selected node. It is
// complete without a window; a window follows it as a TreeListener.
#pragma once

#include "controls/Event.h"
#include "tree/Node.h"
#include "tree/TreeListener.h"

#include <vector>

namespace dax {

enum class InsertPosition { Before, After, FirstChild, LastChild };

class NodeTree {
public:
    NodeTree();
    ~NodeTree();
    NodeTree(const NodeTree&) = delete;
    NodeTree& operator=(const NodeTree&) = delete;

    // Without `relative` the new node is a top-level node: the first for Before and FirstChild, else the last.
    // Throws Error when a node has the key already. Constant time, as are all single operations here.
    Node& Add(Node* relative, InsertPosition position, TextView key, TextView caption = {}, int image = 0,
              TextView tag = {});
    // Moves the node with its branch. `relative` must not lie in that branch (see modTVW::IsInBranch).
    void Move(Node& node, Node* relative, InsertPosition position);
    // Removes the branch. When it held the selection, the next sibling, else the previous one, else the parent
    // is selected.
    void Remove(Node& node);
    void Clear();

    Node* Find(TextView key) const; // the empty key finds nothing
    int32_t Count() const { return count; }
    bool IsEmpty() const { return count == 0; }
    Node* First() const { return firstTop; } // the first top-level node
    Node* Last() const { return lastTop; }
    Node* FirstInCollection() const { return firstAdded; }

    Node* Selected() const { return selected; }
    // Expands the ancestors of the node, so that it shows. Null selects nothing.
    void Select(Node* node);
    // A new selection, by program or user; once per update. A listener may do anything, even destroy the tree.
    Event<> SelectionChanged;

    // Sets Depth and Position of every node, in one pass.
    void Number();

    void AddListener(TreeListener& listener);
    void RemoveListener(TreeListener& listener);

private:
    friend class Node;
    friend class TreeUpdate;
    enum class Fix { None, Reveal, SelectCollapsed };

    void Link(Node& node, Node* relative, InsertPosition position);
    void Unlink(Node& node);
    void Destroy(Node& top); // an unlinked branch
    Node*& BucketOf(uint32_t hash) { return buckets[hash & (buckets.size() - 1)]; }
    Node* BucketOf(uint32_t hash) const { return buckets[hash & (buckets.size() - 1)]; }
    void AddKey(Node& node, uint32_t hash);
    void RemoveKey(Node& node);
    void ReserveKey();
    Node* Find(TextView key, uint32_t hash) const;
    void CheckKey(TextView key, uint32_t hash) const;
    void FixSelection();
    void BeginUpdate();
    void EndUpdate(bool isUnwinding);
    template <typename Call>
    void Notify(Call call) const {
        for (TreeListener* listener : listeners) call(*listener);
    }

    Node *firstTop = nullptr, *lastTop = nullptr, *firstAdded = nullptr, *lastAdded = nullptr, *selected = nullptr;
    int32_t count = 0;
    // The nodes by their keys, linked through the nodes. With a std::unordered_set instead, a lesson in the editor
    // takes 412 bytes, not 377, the load of 100,000 1.5 times as long, and finding one of 300,000 1.6 to 2 times.
    std::vector<Node*> buckets;
    size_t keyCount = 0;
    std::vector<TreeListener*> listeners;
    int updates = 0;
    Fix fix = Fix::None;
    Node* selectedBefore = nullptr; // when the update began
    bool isSelectedBeforeGone = false;
};

// While one exists, changes belong together: listeners are notified of the beginning and the end, and a new selection
// is reported once, at the end.
class TreeUpdate {
public:
    explicit TreeUpdate(NodeTree& tree);
    ~TreeUpdate() noexcept(false); // listeners of the selection may throw
    TreeUpdate(const TreeUpdate&) = delete;
    TreeUpdate& operator=(const TreeUpdate&) = delete;

private:
    NodeTree& tree;
    int exceptionsBefore;
};

} // namespace dax
