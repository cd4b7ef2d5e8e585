#include "hierarchy/LessonTokens.h"

#include "base/modGeneric.h"

#include <vector>

namespace dax {

namespace {

Text Safe(const Text& name) { return modGeneric::MakeValidFileName(name, u"_"); }

using Field = Text (Node::*)() const;

// From the top-level ancestor, the last in `line`, down to line[first]. Joined in one step: a lesson may be deep.
Text JoinPath(const std::vector<const Node*>& line, size_t first, Field field) {
    Text path;
    for (size_t i = line.size(); i-- > first;) {
        path += Safe((line[i]->*field)());
        if (i > first) path += u'\\';
    }
    return path;
}

} // namespace

void SetLessonTokens(const Node* lesson, PropertyCollection& tokens) {
    if (!lesson || !lesson->Parent()) return;
    std::vector<const Node*> line; // the lesson, its parent and so on, the root left out
    for (const Node* node = lesson; node->Parent(); node = node->Parent()) line.push_back(node);
    const Node& top = *line.back();
    // A top-level lesson counts as its own parent.
    const size_t parent = line.size() > 1 ? 1 : 0;

    tokens.SetValue(u"LessonTitle", lesson->Caption());
    tokens.SetValue(u"LessonIdentifier", lesson->Tag());
    tokens.SetValue(u"LessonID", lesson->Key());
    tokens.SetValue(u"LessonTitlePath", JoinPath(line, 0, &Node::Caption));
    tokens.SetValue(u"LessonIdentifierPath", JoinPath(line, 0, &Node::Tag));
    tokens.SetValue(u"TopTitle", top.Caption());
    tokens.SetValue(u"TopIdentifier", top.Tag());
    tokens.SetValue(u"TopTitlePath", Safe(top.Caption()));
    tokens.SetValue(u"TopIdentifierPath", Safe(top.Tag()));
    tokens.SetValue(u"ParentTitle", line[parent]->Caption());
    tokens.SetValue(u"ParentIdentifier", line[parent]->Tag());
    tokens.SetValue(u"ParentTitlePath", JoinPath(line, parent, &Node::Caption));
    tokens.SetValue(u"ParentIdentifierPath", JoinPath(line, parent, &Node::Tag));
}

} // namespace dax
