// The queries about lessons.

#include "base/TextComparison.h"
#include "hierarchy/GroupEditor.h"
#include "hierarchy/LessonTokens.h"
#include "hierarchy/modClassification.h"
#include "tree/modTVW.h"

namespace dax {

Text GroupEditor::GetLessonTitle(const Text& lessonID) const {
    if (lessonID.empty()) return databaseTitle;
    const Node* const node = modTVW::GetNodeByKey(tree, lessonID);
    return node ? node->Caption() : Text();
}

Text GroupEditor::GetLessonIdentifier(const Text& lessonID) const {
    const Node* const node = modTVW::GetNodeByKey(tree, lessonID);
    return node ? node->Tag() : Text();
}

LessonTypes GroupEditor::GetLessonType(const Text& lessonID) const {
    if (lessonID.empty()) return ltDatabase;
    const Node* const node = modTVW::GetNodeByKey(tree, lessonID);
    return node ? HierarchyRows::TypeOf(*node) : ltInvalid;
}

int32_t GroupEditor::GetChildLessonCount(const Text& lessonID) const {
    return modTVW::CountDescendants(modTVW::GetNodeByKey(tree, lessonID));
}

IDCollection GroupEditor::GetChildLessonIDCollection(const Text& lessonID) const {
    if (lessonID.empty()) return modTVW::GetDescendantKeys(modTVW::GetFirstRootNode(tree));
    IDCollection keys = modTVW::GetDescendantKeys(modTVW::GetNodeByKey(tree, lessonID));
    keys.Add(lessonID);
    return keys;
}

Text GroupEditor::FindLesson(const Text& text, FindTypes, bool wrapAround) {
    const Text requested = FoldCase(text);
    const Node* const start = tree.Selected() ? tree.Selected() : tree.First();
    for (const Node* node = modTVW::GetNextNode(start); node != start; node = modTVW::GetNextNode(node)) {
        if (!node) {
            if (!wrapAround) return {};
            node = tree.First();
            if (node == start) return {};
        }
        if (!node->Parent()) continue;
        for (const Text& field : {node->Caption(), node->Tag(), node->Key()}) {
            if (FoldCase(field).find(requested) == Text::npos) continue;
            const Text found = node->Key();
            SetCurrentLessonID(found);
            return found;
        }
    }
    return {};
}

std::shared_ptr<PropertyCollection> GroupEditor::GetLessonProperties(const Text& lessonID) {
    return lessonPropertyStore.Get(lessonID);
}

// Walks the nodes of GetChildLessonIDCollection without collecting them.
std::shared_ptr<PropertyCollection> GroupEditor::GetAggregateProperties(const Text& lessonID) const {
    const auto self = shared_from_this(); // collections may be a host's
    int64_t groups = 0, lessons = 0, storyboards = 0;
    modClassification::Summary classification;
    const auto scratch = factory();
    const auto add = [&](const Text& id, LessonTypes type) {
        if (type != ltLesson) {
            ++groups; // the lesson itself, when it is none, and whatever else is no lesson
            return;
        }
        ++lessons;
        const auto properties = lessonPropertyStore.Peek(id, scratch);
        if (!properties) return; // it was added after the last load
        storyboards += GetNumber(*properties, u"StoryboardCount", 0);
        classification.Add(*properties);
    };
    const Node* const root = modTVW::GetFirstRootNode(tree);
    const Node* const top = lessonID.empty() ? root : modTVW::GetNodeByKey(tree, lessonID);
    for (const Node* node = modTVW::GetNextNode(top, top); node; node = modTVW::GetNextNode(node, top)) {
        add(node->Key(), HierarchyRows::TypeOf(*node));
    }
    if (!lessonID.empty()) add(lessonID, GetLessonType(lessonID));

    const auto result = factory();
    result->SetName(u"AggregateProperties");
    result->SetValue(u"GroupCount", groups);
    result->SetValue(u"LessonCount", lessons);
    result->SetValue(u"StoryboardCount", storyboards);
    result->SetValue(u"Title", GetLessonTitle(lessonID));
    result->SetValue(u"Identifier", GetLessonIdentifier(lessonID));
    result->SetValue(u"LessonType", int64_t(GetLessonType(lessonID)));
    result->SetValue(u"Classification", classification.Result());
    return result;
}

std::shared_ptr<PropertyCollection> GroupEditor::GetLessonTokens(const Text& lessonID) const {
    const auto tokens = factory();
    tokens->SetName(u"tokens");
    SetLessonTokens(modTVW::GetNodeByKey(tree, lessonID), *tokens);
    return tokens;
}

} // namespace dax
