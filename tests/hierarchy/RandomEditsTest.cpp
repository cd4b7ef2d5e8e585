// Random edits, saves and reloads against a plain model: the tree after each step, the rows after each save.

#include "hierarchy/EditorFixture.h"
#include "tree/ReferenceTree.h"

#include <random>
#include <set>

namespace dax {
namespace {

struct Model {
    test::ReferenceTree tree;
    std::map<Text, Text> texts; // title|identifier|
    std::map<Text, int> types;

    std::map<Text, Text> Rows() const {
        std::map<Text, Text> rows;
        for (const auto& [id, parent] : tree.parents) {
            int depth = 1;
            for (Text up = parent; !up.empty(); up = tree.parents.at(up)) ++depth;
            rows[id] = texts.at(id) + parent + u"|" + ToText(depth) + u"|" +
                       ToText(static_cast<int>(tree.Index(id)) + 1) + u"|" + ToText(types.at(id)) + u"||";
        }
        return rows;
    }
    Text Shape(const Text& top = {}) const {
        Text shape = top;
        const auto& children = tree.children.at(top);
        for (size_t i = 0; i < children.size(); ++i) shape += (i ? u" " : u"(") + Shape(children[i]);
        return children.empty() ? shape : shape + u")";
    }
};

class RandomEdits : public test::EngineTest, protected test::HeardEditor {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (IsSkipped()) return;
        test::CreateTables(*database);
        editor->SetConnectionString(database->ConnectionString());
        ASSERT_TRUE(editor->LoadDatabase());
    }

    size_t Pick(size_t n) { return random() % n; }
    Text PickLesson() {
        if (model.tree.parents.empty()) return {};
        return std::next(model.tree.parents.begin(), static_cast<ptrdiff_t>(Pick(model.tree.parents.size())))->first;
    }

    void SelectOne() {
        const Text id = Pick(8) ? PickLesson() : Text();
        editor->SetCurrentLessonID(id);
        current = id;
    }

    void Update(const Text& id) {
        const Text title = u"O'" + ToText(static_cast<int>(Pick(1000))) + u"\\;ä?";
        const int type = static_cast<int>(Pick(3));
        model.texts[id] = title + u"|i" + id + u"|";
        model.types[id] = type;
    }

    void AddOne() {
        // Now and then a lesson that was removed: it may still have its row.
        const Text id = removed.empty() || Pick(12) ? u"k" + ToText(++next) : removed[Pick(removed.size())];
        if (model.tree.parents.contains(id)) return;
        if (current.empty()) {
            model.tree.Insert(id, u"", 0);
        } else {
            model.tree.Insert(id, model.tree.parents[current], model.tree.Index(current) + 1);
        }
        Update(id);
        const Text texts = model.texts[id];
        editor->AddLesson(id, texts.substr(0, texts.find(u'|')), u"i" + id, LessonTypes(model.types[id]));
        EXPECT_EQ(editor->CurrentLessonID(), id);
        current = id;
    }

    void RemoveOne() {
        const Text id = PickLesson();
        const bool withChildren = Pick(3) == 0;
        const Text parent = model.tree.parents[id];
        std::vector<Text> gone;
        if (withChildren) {
            model.tree.Keys(id, gone);
        } else {
            while (!model.tree.children[id].empty()) {
                model.tree.Place(Text(model.tree.children[id].front()), parent, model.tree.Index(id) + 1);
            }
        }
        gone.push_back(id);
        const bool isCurrentGone = std::find(gone.begin(), gone.end(), current) != gone.end();
        const auto& siblings = model.tree.children[parent];
        const size_t index = model.tree.Index(id);
        const Text heir = index + 1 < siblings.size() ? siblings[index + 1] : index > 0 ? siblings[index - 1] : parent;
        model.tree.Erase(id);
        removed.insert(removed.end(), gone.begin(), gone.end());
        editor->RemoveLesson(id, withChildren);
        if (isCurrentGone) current = heir;
    }

    void MoveOne() {
        const auto movement = GroupMovementTypes(1 + Pick(4));
        const auto to = current.empty() ? std::nullopt : model.tree.Destination(current, movement);
        EXPECT_EQ(editor->CanMoveCurrent(movement), to.has_value());
        editor->MoveCurrent(movement);
        if (to) model.tree.Place(current, to->first, to->second);
    }

    void Save() {
        const bool collides =
            std::any_of(saved.tree.parents.begin(), saved.tree.parents.end(), [this](const auto& row) {
                return model.tree.parents.contains(row.first) && addedAgain.contains(row.first);
            });
        ASSERT_EQ(editor->SaveDatabase(), !collides) << ToUtf8(error);
        if (!collides) {
            saved = model;
            addedAgain.clear();
        }
        ASSERT_EQ(test::ReadRows(database->ConnectionString()), saved.Rows());
    }

    void Load() {
        ASSERT_TRUE(editor->LoadDatabase());
        model = saved;
        addedAgain.clear();
        if (!model.tree.parents.contains(current)) current.clear();
    }

    void Step() {
        const size_t what = Pick(20);
        const Text before = current;
        if (what < 8 || model.tree.parents.empty()) {
            AddOne();
            if (saved.tree.parents.contains(current) && before != current) addedAgain.insert(current);
        } else if (what < 10) {
            const Text id = PickLesson();
            Update(id);
            editor->UpdateLesson(id, model.texts[id].substr(0, model.texts[id].find(u'|')), u"i" + id,
                                 LessonTypes(model.types[id]));
        } else if (what < 12) {
            RemoveOne();
            std::erase_if(addedAgain, [this](const Text& id) { return !model.tree.parents.contains(id); });
        } else if (what < 16) {
            MoveOne();
        } else if (what < 18) {
            SelectOne();
        } else if (what == 18) {
            ASSERT_NO_FATAL_FAILURE(Save());
            if (!addedAgain.empty()) Load();
        } else if (Pick(3) == 0) {
            ASSERT_NO_FATAL_FAILURE(Load());
        }
        ASSERT_EQ(Shape(), model.Shape());
        ASSERT_EQ(editor->CurrentLessonID(), current);
        ASSERT_EQ(editor->NodeCount(), static_cast<int32_t>(model.tree.parents.size()) + 1);
    }

    std::mt19937 random;
    Model model, saved;
    Text current;
    std::vector<Text> removed;
    std::set<Text> addedAgain; // in the tree as new, though their rows are still there
    int next = 0;
};
INSTANTIATE_TEST_SUITE_P(Engines, RandomEdits, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

TEST_P(RandomEdits, TreeAndRowsFollowTheModel) {
    random.seed(static_cast<unsigned>(GetParam()) + 1);
    for (int step = 0; step < 300; ++step) ASSERT_NO_FATAL_FAILURE(Step()) << "step " << step;
    ASSERT_NO_FATAL_FAILURE(Save());
}

} // namespace
} // namespace dax
