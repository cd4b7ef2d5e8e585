// One entry of a NodeTree. Nodes are made, moved and destroyed by their tree alone; a node's address stays the
// same for life, also when it moves.
#pragma once

#include "tree/NodeTexts.h"

namespace dax {

class NodeTree;

class Node {
public:
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    // The texts are kept packed and unpacked at each call: keep the Text, not a view of it.
    Text Key() const { return texts.Get(NodeTexts::Key); }
    bool HasKey(TextView key) const { return texts.Is(NodeTexts::Key, key); } // without making a text
    // Throws Error when another node has the key. The empty key is no key: any number of nodes may have it.
    void SetKey(const Text& newKey);
    Text Caption() const { return texts.Get(NodeTexts::Caption); }
    void SetCaption(TextView newCaption);
    Text Tag() const { return texts.Get(NodeTexts::Tag); }
    void SetTag(TextView newTag);
    int Image() const { return image; }
    void SetImage(int newImage);

    bool IsExpanded() const { return isExpanded; }
    // Collapsing a node whose branch holds the selection selects the node, as a window does.
    void SetExpanded(bool expanded);
    bool IsChecked() const { return isChecked; }
    void SetChecked(bool checked);
    bool IsSelected() const;

    Node* Parent() const { return parent; }
    Node* FirstChild() const { return firstChild; }
    Node* LastChild() const { return lastChild; }
    Node* Previous() const { return previous; } // siblings; top-level nodes are siblings of each other
    Node* Next() const { return next; }
    Node* NextInCollection() const { return nextAdded; } // all nodes of the tree in the order of their adding

    NodeTree& Tree() const { return *tree; }

    // As of the last NodeTree::Number: ancestors, and 1 + previous siblings.
    int32_t Depth() const { return depth; }
    int32_t Position() const { return position; }

    // For the window that shows the tree: its item. The model does not use it.
    void* windowItem = nullptr;

private:
    friend class NodeTree;
    Node() = default;
    ~Node() = default;

    NodeTree* tree = nullptr;
    Node *parent = nullptr, *firstChild = nullptr, *lastChild = nullptr, *previous = nullptr, *next = nullptr;
    Node *previousAdded = nullptr, *nextAdded = nullptr;
    Node* nextInBucket = nullptr;
    NodeTexts texts;
    uint32_t hash = 0; // of the key
    int32_t depth = 0, position = 0;
    // Together they fit the gap that the alignment leaves: a node is a multiple of eight bytes.
    int image : 30 = 0;
    bool isExpanded : 1 = false, isChecked : 1 = false;
};

} // namespace dax
