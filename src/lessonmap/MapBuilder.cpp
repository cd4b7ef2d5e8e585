#include "lessonmap/MapBuilder.h"

#include "content/ContentMap.h"
#include "base/Error.h"
#include "lessonmap/NodeMapTree.h"
#include "tree/modTVW.h"

namespace dax {

namespace {

// A host's list could be one without end.
constexpr int32_t mostMaps = 100'000;

std::shared_ptr<StoryboardMaps> MapsOf(const Lesson& lesson) {
    auto maps = lesson.Maps();
    if (!maps) Refuse(u"The lesson has no list of maps.");
    return maps;
}

} // namespace

void Refuse(const Text& description) { throw Error(ErrorNumbers::Automation, description); }

MapView::MapView(const NodeTree& tree)
    : expanded(modTVW::GetExpandedKeys(tree)), selected(modTVW::GetNodeKey(tree.Selected())) {
    for (const Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) {
        if (node->IsChecked()) checked.Add(node->Key());
    }
    for (const Node* root = tree.First(); root; root = root->Next()) roots.Add(root->Key());
}

void MapView::Restore(NodeTree& tree) const {
    const TreeUpdate update(tree);
    for (Node* root = tree.First(); root; root = root->Next()) {
        if (!roots.Contains(root->Key())) root->SetExpanded(true);
    }
    modTVW::RestoreExpanded(tree, expanded);
    for (const Text& key : checked) {
        if (Node* const node = tree.Find(key)) node->SetChecked(true);
    }
    if (Node* const node = tree.Find(selected)) tree.Select(node);
}

MapBuilder::MapBuilder(NodeTree& tree, const PictureKeys& imageList, Lesson& lesson)
    : tree(tree), imageList(imageList), lesson(lesson) {
    const auto collection = lesson.Storyboards();
    if (!collection) return;
    for (const auto& storyboard : collection->All()) {
        if (!storyboard) continue;
        storyboards.emplace_back(storyboard->SBID(), storyboard);
        sbids.insert(storyboards.back().first);
    }
}

void MapBuilder::AddMaps(bool defaultMapOnly) {
    const auto maps = MapsOf(lesson);
    if (maps->Count() <= 0) {
        maps->Add(std::make_shared<ContentMap>());
        isChanged = true;
    }
    auto defaultMap = maps->DefaultMap();
    if (!defaultMap) {
        defaultMap = maps->Item(0);
        if (!defaultMap) Refuse(u"The lesson has no map number 0.");
        maps->SetDefaultMap(defaultMap);
    }
    if (defaultMapOnly) {
        AddMap(*defaultMap);
        return;
    }
    // The list is read before any map is filled, since a map may change it.
    const auto list = ListMaps(lesson);
    for (const auto& map : list) AddMap(*map);
}

std::vector<std::shared_ptr<StoryboardMap>> MapBuilder::ListMaps(const Lesson& lesson) {
    const auto maps = MapsOf(lesson);
    std::vector<std::shared_ptr<StoryboardMap>> list;
    std::unordered_set<const void*> listed;
    if (auto defaultMap = maps->DefaultMap()) {
        listed.insert(defaultMap->Identity());
        list.push_back(std::move(defaultMap));
    }
    const int32_t count = maps->Count();
    if (count > mostMaps) Refuse(u"The lesson has more maps than can be shown.");
    for (int32_t i = 0; i < count; ++i) {
        auto map = maps->Item(i);
        if (!map) Refuse(u"The lesson has no map number " + ToText(i) + u".");
        if (listed.insert(map->Identity()).second) list.push_back(std::move(map));
    }
    return list;
}

void MapBuilder::AddMap(StoryboardMap& map) {
    const Text name = map.Name();
    Text key = UniqueName(name);
    if (key != name) {
        map.SetName(key);
        isChanged = true;
    }
    NodeMapTree nodes(tree);
    const Node& added = tree.Add(nullptr, Place::LastChild, key, key, imageList.Index(PictureKeys::Root));
    map.FillTree(nodes, NodeMapTree::RefOf(&added));

    // The layout is written back by name: a map that was renamed meanwhile has its node follow.
    const Text newName = map.Name();
    if (newName != key) {
        Node* const root = tree.Find(key);
        if (!root) Refuse(u"The map '" + key + u"' took its own node away.");
        root->SetKey(u""); // the name may be the one it had
        key = UniqueName(newName);
        root->SetKey(key);
        if (key != newName) {
            map.SetName(key);
            isChanged = true;
        }
        if (map.Name() != key) Refuse(u"The map '" + key + u"' does not keep its name.");
    }
    roots.push_back(std::move(key));
}

// As modTVW::MakeUniqueKey, but no storyboard's SBID either, and linear for any number of maps of one name.
Text MapBuilder::UniqueName(const Text& name) {
    const Text base = name.empty() ? Text(u"key") : name;
    const auto isTaken = [this](const Text& key) { return tree.Find(key) || sbids.contains(key); };
    if (!isTaken(base)) return base;
    int32_t& number = lastNumbers[base];
    Text key;
    do {
        key = base + u"_" + ToText(++number);
    } while (isTaken(key));
    return key;
}

void MapBuilder::MarkMissing() {
    const int image = imageList.IndexOfType({});
    for (Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) {
        if (!node->Parent() || sbids.contains(node->Key())) continue;
        node->SetImage(image);
        if (node->Caption().empty()) node->SetCaption(u"(untitled)");
    }
}

void MapBuilder::CheckRoots() const {
    const Node* root = tree.First();
    for (const Text& name : roots) {
        if (!root || root->Key() != name) Refuse(u"The map '" + name + u"' is not where it was put.");
        root = root->Next();
    }
    if (root) Refuse(u"A map put '" + root->Key() + u"' beside the maps.");
}

} // namespace dax
