#include "lessonmap/MapBuilder.h"

#include "base/Error.h"
#include "content/ContentMap.h"
#include "lessonmap/DetachedMap.h"
#include "lessonmap/NodeMapTree.h"
#include "tree/modTVW.h"

namespace dax {

namespace {

// A host's list could be one without end.
constexpr int32_t maxMaps = 100'000;

std::shared_ptr<StoryboardMaps> MapsOf(const Lesson& lesson) {
    auto maps = lesson.Maps();
    if (!maps) Refuse(u"The lesson has no list of maps.");
    return maps;
}

} // namespace

void Refuse(const Text& description) { throw Error(ErrorNumbers::Automation, description); }

TreeState::TreeState(const NodeTree& tree)
    : expanded(modTVW::GetExpandedKeys(tree)), selected(modTVW::GetNodeKey(tree.Selected())) {
    for (const Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) {
        if (node->IsChecked()) checked.Add(node->Key());
    }
    for (const Node* root = tree.First(); root; root = root->Next()) roots.Add(root->Key());
}

void TreeState::Restore(NodeTree& tree) const {
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
    const auto all = MapsOf(lesson);
    if (all->Count() <= 0) all->Add(std::make_shared<ContentMap>()); // which gets a name when it is shown
    auto defaultMap = all->DefaultMap();
    if (!defaultMap) {
        defaultMap = all->Item(0);
        if (!defaultMap) Refuse(u"The lesson has no map number 0.");
        all->SetDefaultMap(defaultMap);
    }
    // The list is read before any map is filled, since a map may change it.
    maps = defaultMapOnly ? std::vector{defaultMap} : ListMaps(lesson);
    for (const auto& map : maps) AddMap(*map);
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
    if (count > maxMaps) Refuse(u"The lesson has more maps than can be shown.");
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
    const Node& added = tree.Add(nullptr, InsertPosition::LastChild, key, key,
                                 modGeneric::ImageIndexFromKey(Text(PictureKeys::Root), imageList));
    map.FillTree(nodes, NodeMapTree::RefOf(&added));

    // The layout is written back by name: a map that was renamed meanwhile has its node follow.
    const Text newName = map.Name();
    if (newName != key) {
        Node* const root = tree.Find(key);
        if (!root) Refuse(u"The map '" + key + u"' removed its own node.");
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

// As modTVW::MakeUniqueKey among the keys that the tree has or is about to get, and linear for any number of maps of
// one name.
Text MapBuilder::UniqueName(const Text& name) {
    const Text base = name.empty() ? Text(u"key") : name;
    const auto isTaken = [this](const Text& key) { return tree.Find(key) || IsKeyOfPage(key); };
    if (!isTaken(base)) return base;
    int32_t& number = lastNumbers[base];
    Text key;
    do {
        key = base + u"_" + ToText(++number);
    } while (isTaken(key));
    return key;
}

// A page that a map lists must find its key free, or the map would lose it; an orphan needs none. That a map has the
// name of a page is so rare that the maps are filled twice for it.
bool MapBuilder::IsKeyOfPage(const Text& key) {
    if (!sbids.contains(key)) return false;
    if (!listed) {
        listed.emplace();
        for (const auto& map : maps) {
            Text root = map->Name();
            while (root.empty() || sbids.contains(root)) root += u"_";
            const DetachedMap alone(map, root);
            for (const Node* node = alone.Tree().FirstInCollection(); node; node = node->NextInCollection()) {
                if (node->Parent()) listed->insert(node->Key());
            }
        }
    }
    return listed->contains(key);
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
    if (root) Refuse(u"A map added '" + root->Key() + u"' at the level of the maps.");
}

} // namespace dax
