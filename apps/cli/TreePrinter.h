// A branch of a node tree as lines of text.
#pragma once

#include "Console.h"
#include "tree/Node.h"

#include <functional>

namespace dax::cli {

struct TreeStyle {
    bool hasBoxes = true;     // lines that join the entries; else each level is indented by four blanks
    size_t levels = SIZE_MAX; // below the first
};

// One line for `top` and for each entry below it. Indentation ends at a depth that no screen shows: from there on the
// line begins with the depth as a number, so that a deep chain does not fill the disk.
void PrintTree(const Node& top, const TreeStyle& style, const std::function<Text(const Node&)>& describe,
               Output& output);

} // namespace dax::cli
