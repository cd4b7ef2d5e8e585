// The steps of building a lesson map (see modLME::BuildMap), and what the tree keeps while it is rebuilt.
#pragma once

#include "base/IDCollection.h"
#include "content/Lesson.h"
#include "lessonmap/PictureKeys.h"
#include "tree/NodeTree.h"

#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace dax {

// Expansion, checks and selection, by key.
class TreeState {
public:
    explicit TreeState(const NodeTree& tree);
    void Restore(NodeTree& tree) const;

private:
    IDCollection expanded, checked, roots;
    Text selected;
};

// Throws Error for a lesson that cannot be shown or edited.
[[noreturn]] void Refuse(const Text& description);

class MapBuilder {
public:
    using KeyedStoryboard = std::pair<Text, std::shared_ptr<Storyboard>>;

    // Reads the lesson's storyboards.
    MapBuilder(NodeTree& tree, const PictureKeys& imageList, Lesson& lesson);

    void AddMaps(bool defaultMapOnly); // the default map first; each fills its part
    void MarkMissing();                // nodes whose storyboard the lesson does not have
    // Throws Error when other nodes than the maps are at the top.
    void CheckRoots() const;
    bool IsLessonChanged() const { return isChanged; }
    const std::vector<KeyedStoryboard>& Storyboards() const { return storyboards; }

    // The default map first, if there is one; each map once.
    static std::vector<std::shared_ptr<StoryboardMap>> ListMaps(const Lesson& lesson);

private:
    void AddMap(StoryboardMap& map);
    Text UniqueName(const Text& name);
    bool IsKeyOfPage(const Text& key);

    NodeTree& tree;
    const PictureKeys& imageList;
    Lesson& lesson;
    std::vector<KeyedStoryboard> storyboards;
    std::unordered_set<Text> sbids;
    std::vector<std::shared_ptr<StoryboardMap>> maps; // those to be shown
    std::optional<std::unordered_set<Text>> listed;   // their pages, after the first lookup
    std::vector<Text> roots;
    std::unordered_map<Text, int32_t> lastNumbers; // by name: where the search for a free number continues
    bool isChanged = false;
};

} // namespace dax
