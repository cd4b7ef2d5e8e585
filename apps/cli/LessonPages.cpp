#include "LessonPages.h"

#include "Command.h"
#include "Course.h"
#include "Suggestion.h"
#include "TreePrinter.h"
#include "content/LessonText.h"
#include "lessonmap/modLME.h"
#include "tree/modTVW.h"

namespace dax::cli {

namespace {

// A field of a lesson's text is one word of a line.
void CheckField(const Text& text, TextView what) {
    if (text.find_first_of(u"\t\r\n") != Text::npos)
        throw RefusedError(u"The " + Text(what) + u" of a storyboard cannot hold tabs and line ends.");
}

} // namespace

LessonPages::LessonPages(const Target& target, const Text& lessonName, bool mayBeEmpty) : stored(target, lessonName) {
    if (stored.Data().empty()) {
        if (!mayBeEmpty) throw RefusedError(u"Nothing is stored in the lesson '" + lessonName + u"' yet.");
        lesson = std::make_shared<ContentLesson>();
    } else {
        try {
            lesson = LessonText::Load(stored.Data());
        } catch (const Error& error) {
            throw RefusedError(u"The lesson '" + lessonName + u"' is not stored in the form that this program reads: " +
                               error.Description());
        }
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
    // The search continues after the selected one; with nothing selected, after the first map's own entry.
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

Text LessonPages::SbidOf(const Text& name) {
    const Node* const node = modTVW::GetNodeByKey(*editor->tvwObject(), name);
    if (node && node->Parent()) return name;
    const std::vector<Text> found = Find(name, true);
    if (found.size() == 1) return found.front();
    if (found.empty()) {
        Suggestion suggestion(name);
        for (const auto& storyboard : lesson->Storyboards()->All())
            for (const Text& called : {storyboard->Identifier(), storyboard->SBID(), storyboard->Title()})
                suggestion.Offer(called);
        throw RefusedError(u"No storyboard in a map has the SBID, the identifier or the title '" + name + u"'." +
                           suggestion.Question());
    }
    Text message = CountText(static_cast<int64_t>(found.size()), u"storyboard") + u" fit '" + name +
                   u"'. Give the SBID, which is shown in braces:";
    for (const Text& each : found) message += u"\n  " + Describe(each);
    throw RefusedError(message);
}

std::shared_ptr<ContentStoryboard> LessonPages::StoryboardOf(const Text& name) {
    auto storyboard = lesson->Storyboards()->Item(name);
    if (!storyboard) storyboard = lesson->Storyboards()->Item(SbidOf(name));
    auto own = std::dynamic_pointer_cast<ContentStoryboard>(storyboard);
    if (!own) throw RefusedError(u"The storyboard '" + name + u"' is missing from the lesson; only its place is left.");
    return own;
}

void LessonPages::Move(const Text& name, StoryboardMovementTypes movement) {
    const Text sbid = SbidOf(name), current = lesson->CurrentSBID();
    editor->SetCurrentSBID(sbid);
    if (!editor->CanMoveCurrent(movement)) throw RefusedError(u"The storyboard cannot move there from its place.");
    editor->MoveCurrent(movement);
    lesson->SetCurrentSBID(current); // on which the author works; a move from here does not change it
}

void LessonPages::Fill(ContentStoryboard& storyboard, const Fields& fields) const {
    if (fields.title) storyboard.SetTitle(*fields.title);
    if (fields.identifier) storyboard.SetIdentifier(*fields.identifier);
    if (fields.type) storyboard.SetStoryboardType(*fields.type);
    CheckField(storyboard.Title(), u"title");
    CheckField(storyboard.Identifier(), u"identifier");
    CheckField(storyboard.StoryboardType(), u"type");
}

Node& LessonPages::PlaceOf(TextView where, const Text& target) {
    NodeTree& tree = *editor->tvwObject();
    if (target.empty()) {
        const auto map = lesson->Maps()->DefaultMap();
        Node* const node = map ? modTVW::GetNodeByKey(tree, map->Name()) : nullptr;
        return node ? *node : *tree.First();
    }
    Node* const map = modTVW::GetNodeByKey(tree, target);
    if (where == u"in" && map && !map->Parent()) return *map;
    return *modTVW::GetNodeByKey(tree, SbidOf(target));
}

Text LessonPages::Add(const Text& requested, const Fields& fields, TextView where, const Text& target) {
    Node& place = PlaceOf(where, target);
    const auto storyboard =
        requested.empty() ? std::make_shared<ContentStoryboard>() : std::make_shared<ContentStoryboard>(requested);
    const Text sbid = storyboard->SBID(), current = lesson->CurrentSBID();
    CheckField(sbid, u"SBID");
    Fill(*storyboard, fields);
    NodeTree& tree = *editor->tvwObject();
    if (lesson->Storyboards()->Item(sbid) || tree.Find(sbid))
        throw RefusedError(u"There is a storyboard or a map '" + sbid + u"' already.");
    editor->AddStoryboard(storyboard);
    tree.Move(*tree.Find(sbid), &place,
              where == u"before"  ? InsertPosition::Before
              : where == u"after" ? InsertPosition::After
                                  : InsertPosition::LastChild);
    modLME::UpdateMapCaptions(tree);
    modLME::SaveMapLayouts(tree, lesson);
    if (!current.empty()) lesson->SetCurrentSBID(current);
    return sbid;
}

void LessonPages::Update(const Text& name, const Fields& fields) {
    const auto storyboard = StoryboardOf(name);
    Fill(*storyboard, fields);
    editor->UpdateStoryboard(storyboard);
}

void LessonPages::Remove(const Text& name, bool keepsChildren) {
    editor->RemoveStoryboard(StoryboardOf(name), !keepsChildren);
}

void LessonPages::Save(bool isForced) { stored.Replace(LessonText::Save(*lesson), isForced); }

} // namespace dax::cli
