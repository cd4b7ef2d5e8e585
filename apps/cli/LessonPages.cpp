#include "LessonPages.h"

#include "Command.h"
#include "Course.h"
#include "TreePrinter.h"
#include "content/LessonText.h"
#include "tree/modTVW.h"

namespace dax::cli {

LessonPages::LessonPages(const Target& target, const Text& lessonName) : stored(target, lessonName) {
    if (stored.Data().empty()) throw Refusal(u"nothing is stored in the lesson '" + lessonName + u"' yet.");
    try {
        lesson = LessonText::Load(stored.Data());
    } catch (const Error& error) {
        throw Refusal(u"the lesson '" + lessonName + u"' is not stored in the form that this program reads: " +
                      error.Description());
    }
    editor->SetLesson(lesson);
}

Text LessonPages::Describe(const Node& node) const {
    if (node.Parent()) return Describe(node.Key());
    const auto map = lesson->Maps()->DefaultMap();
    return OneLine(node.Caption()) + (map && map->Name() == node.Key() ? u"  default map" : u"");
}

Text LessonPages::Describe(const Text& sbid) const {
    const auto storyboard = lesson->Storyboards()->Item(sbid);
    if (!storyboard) return u"(missing)  {" + OneLine(sbid) + u"}";
    Text line = storyboard->Title().empty() ? Text(u"(untitled)") : OneLine(storyboard->Title());
    if (!storyboard->Identifier().empty()) line += u"  [" + OneLine(storyboard->Identifier()) + u"]";
    if (!storyboard->StoryboardType().empty()) line += u"  " + OneLine(storyboard->StoryboardType());
    line += u"  {" + OneLine(sbid) + u"}";
    return line + (sbid == lesson->CurrentSBID() ? u"  current" : u"");
}

void LessonPages::Print(bool hasBoxes) const {
    Output output;
    for (const Node* root = editor->tvwObject()->First(); root; root = root->Next()) {
        PrintTree(
            *root, {.hasBoxes = hasBoxes}, [this](const Node& node) { return Describe(node); }, output);
    }
    const auto orphans = editor->OrphanedStoryboards();
    if (!orphans.empty()) output.Line(u"in no map");
    for (const auto& orphan : orphans) output.Line(u"   " + Describe(orphan->SBID()));
    output.Finish();
}

JsonObject LessonPages::Properties(const Text& sbid) const {
    JsonObject object;
    object.Add(u"sbid", sbid);
    const auto storyboard = lesson->Storyboards()->Item(sbid);
    object.Add(u"missing", !storyboard);
    if (!storyboard) return object;
    object.Add(u"title", storyboard->Title()).Add(u"identifier", storyboard->Identifier());
    object.Add(u"type", storyboard->StoryboardType());
    return object;
}

Text LessonPages::Json(const Text& sbid) const { return Properties(sbid).Result(); }

Text LessonPages::Json() const {
    const std::shared_ptr<NodeTree> tree = editor->tvwObject();
    tree->Number();
    const auto defaultMap = lesson->Maps()->DefaultMap();
    JsonArray maps, orphans;
    for (const Node* root = tree->First(); root; root = root->Next()) {
        JsonArray pages;
        for (const Node* node = modTVW::GetNextNode(root, root); node; node = modTVW::GetNextNode(node, root)) {
            pages.AddRaw(Properties(node->Key()).AddNumber(u"level", node->Depth()).Result());
        }
        JsonObject map;
        map.Add(u"name", root->Key()).Add(u"default", defaultMap && defaultMap->Name() == root->Key());
        maps.AddRaw(map.AddRaw(u"storyboards", pages.Result()).Result());
    }
    for (const auto& orphan : editor->OrphanedStoryboards()) orphans.AddRaw(Json(orphan->SBID()));
    JsonObject all;
    all.Add(u"lessonID", stored.LessonID()).Add(u"current", lesson->CurrentSBID());
    return all.AddRaw(u"maps", maps.Result()).AddRaw(u"orphans", orphans.Result()).Result();
}

std::vector<Text> LessonPages::Find(const Text& text, bool isExact) {
    std::vector<Text> found;
    // The search goes on behind what is selected; with nothing selected, behind the first map's own entry.
    const Text selected = editor->CurrentSBID();
    editor->SetCurrentSBID({});
    for (;;) {
        const Text sbid = editor->FindNextSBID(text, ftTitle, isExact, false);
        if (sbid.empty()) break;
        found.push_back(sbid);
        editor->SetCurrentSBID(sbid);
    }
    editor->SetCurrentSBID(selected);
    return found;
}

void LessonPages::Move(const Text& name, StoryboardMovementTypes movement) {
    Text sbid = name;
    const Node* const node = modTVW::GetNodeByKey(*editor->tvwObject(), name);
    if (!node || !node->Parent()) {
        const std::vector<Text> found = Find(name, true);
        if (found.empty())
            throw Refusal(u"no storyboard in a map has the SBID, the identifier or the title '" + name + u"'.");
        if (found.size() > 1) {
            Text message = CountText(static_cast<int64_t>(found.size()), u"storyboard") + u" fit '" + name +
                           u"'. Give the SBID, which stands in braces:";
            for (const Text& each : found) message += u"\n  " + Describe(each);
            throw Refusal(message);
        }
        sbid = found.front();
    }
    const Text current = lesson->CurrentSBID();
    editor->SetCurrentSBID(sbid);
    if (!editor->CanMoveCurrent(movement)) throw Refusal(u"the storyboard cannot move there from where it stands.");
    editor->MoveCurrent(movement);
    lesson->SetCurrentSBID(current); // on which the author works; a move from here does not change it
}

void LessonPages::Save(bool isForced) { stored.Replace(LessonText::Save(*lesson), isForced); }

} // namespace dax::cli
