#include "TreePrinter.h"

#include <algorithm>
#include <vector>

namespace dax::cli {

namespace {

constexpr size_t MaxIndent = 50;

} // namespace

void PrintTree(const Node& top, const TreeStyle& style, const std::function<Text(const Node&)>& describe,
               Output& output) {
    std::vector<bool> continues; // by depth: whether that ancestor has a next sibling
    size_t depth = 0;
    for (const Node* node = &top; node;) {
        Text line;
        continues.resize(std::min(depth, MaxIndent));
        if (depth > MaxIndent) {
            line = u"(" + ToText(static_cast<long long>(depth)) + u") ";
        } else if (!style.hasBoxes) {
            line.assign(4 * depth, u' ');
        } else if (depth > 0) {
            continues.back() = node->Next() != nullptr;
            for (size_t level = 0; level + 1 < depth; ++level) line += continues[level] ? u"│  " : u"   ";
            line += node->Next() ? u"├─ " : u"└─ ";
        }
        output.Line(line + describe(*node));

        if (node->FirstChild() && depth < style.levels) {
            node = node->FirstChild();
            ++depth;
            continue;
        }
        while (node != &top && !node->Next()) {
            node = node->Parent();
            --depth;
        }
        node = node == &top ? nullptr : node->Next();
    }
}

} // namespace dax::cli
