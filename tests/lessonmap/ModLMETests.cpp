#include "lessonmap/SampleLesson.h"
#include "lessonmap/modLME.h"

#include <gtest/gtest.h>

namespace dax {
namespace {

using namespace test;

class LessonMap : public testing::Test {
protected:
    bool Build(const std::shared_ptr<Lesson>& newLesson, bool defaultOnly = false,
               LessonMapEditorCaptionStyles style = csTitle) {
        lesson = newLesson;
        return modLME::BuildMap(&tree, pictures, lesson, style, defaultOnly);
    }
    std::string CaptionOf(TextView key) { return ToUtf8(tree.Find(key)->Caption()); }

    NodeTree tree;
    PictureKeys pictures;
    std::shared_ptr<Lesson> lesson;
};

TEST_F(LessonMap, IsBuiltWithTheDefaultMapFirstAndRepaired) {
    const struct {
        const char* maps;
        int defaultMap; // index, 0 for none: then the first becomes it
        bool defaultOnly, isChanged;
        const char* tree;
        const char* stored;
    } cases[] = {
        {"", 0, false, true, "key:", "key:"},
        {"A: a b( c ) | B: d", 0, false, false, "A: a b( c ) | B: d", "A: a b( c ) | B: d"},
        {"A: a | B: d", 1, false, false, "B: d | A: a", "A: a | B: d"},
        {"A: a | B: d", 1, true, false, "B: d", "A: a | B: d"},
        {"A: a | A: b | A: c", 1, false, true, "A: b | A_1: a | A_2: c", "A_1: a | A: b | A_2: c"},
        {": a | key: b", 0, false, true, "key: a | key_1: b", "key: a | key_1: b"},
        {"A: B | B: c", 0, false, true, "A: B | B_1: c", "A: B | B_1: c"},
        {"a: a", 0, false, true, "a_1: a", "a_1: a"}, // a map must not take the key of a storyboard
        {"A: a b( c ) | B: b( d ) a", 0, false, false, "A: a b( c ) | B: d", "A: a b( c ) | B: b( d ) a"},
    };
    for (const auto& [maps, defaultMap, defaultOnly, isChanged, shown, stored] : cases) {
        const auto sample = MakeLesson(maps);
        if (defaultMap > 0) sample->Maps()->SetDefaultMap(sample->Maps()->Item(defaultMap));
        EXPECT_EQ(Build(sample, defaultOnly), isChanged) << maps;
        EXPECT_EQ(Print(tree), shown) << maps;
        EXPECT_EQ(Print(*sample), stored) << maps;
        EXPECT_EQ(sample->Maps()->DefaultMap()->Name(), tree.First()->Key()) << maps;
    }
    EXPECT_FALSE(modLME::BuildMap(nullptr, pictures, lesson, csTitle, false));
}

TEST_F(LessonMap, CaptionsAndPictures) {
    const Text pair = u"\U0001F642";
    const struct {
        Text title, identifier, type;
        Text byTitle, byIdentifier, picture;
    } cases[] = {
        {u"Welcome", u"W1", u"text", u"Welcome", u"W1", u"text"},
        {u"", u"", u"", u"(untitled)", u"(no identifier)", u"_undefined"},
        {Text(80, u'x'), Text(81, u'y'), u"VIDEO", Text(80, u'x'), Text(80, u'y') + u"...", u"video"},
        {Text(79, u'x') + pair, Text(78, u'x') + pair + u"z", u"nobody", Text(79, u'x') + u"...",
         Text(78, u'x') + pair + u"...", u"_custom"},
    };
    for (const auto& [title, identifier, type, byTitle, byIdentifier, picture] : cases) {
        const auto sample = MakeLesson("Main:");
        sample->Storyboards()->Add(std::make_shared<ContentStoryboard>(u"s", title, identifier, type));
        std::static_pointer_cast<ContentMap>(sample->Maps()->Item(0))->SetLayout({{u"s", 1}, {u"gone", 2}});
        Build(sample, false, csIdentifier);
        EXPECT_EQ(CaptionOf(u"s"), ToUtf8(byIdentifier));
        Build(sample);
        EXPECT_EQ(CaptionOf(u"s"), ToUtf8(byTitle));
        EXPECT_EQ(tree.Find(u"s")->Image(), modGeneric::ImageIndexFromKey(picture, pictures));
        EXPECT_EQ(CaptionOf(u"Main"), "Main (2)");
        EXPECT_EQ(tree.Find(u"Main")->Image(), modGeneric::ImageIndexFromKey(u"_root", pictures));
        EXPECT_EQ(CaptionOf(u"gone"), "gone") << "the lesson has no such storyboard";
        EXPECT_EQ(tree.Find(u"gone")->Image(), modGeneric::ImageIndexFromKey(u"_undefined", pictures));
    }
    modLME::SetStoryboardCaption(nullptr, *tree.Find(u"s"), csTitle, pictures); // one that is missing
    EXPECT_EQ(tree.Find(u"s")->Image(), modGeneric::ImageIndexFromKey(u"_undefined", pictures));
    EXPECT_EQ(CaptionOf(u"s"), ToUtf8(cases[3].byTitle));
    const PictureKeys hosts({u"_custom", u"scene", u"scene", u""});
    EXPECT_EQ(hosts.IndexOfType(u"Scene"), 2);
    EXPECT_EQ(hosts.IndexOfType(u""), 1) << "a list without a picture for it";
    EXPECT_EQ(PictureKeys({u"a"}).IndexOfType(u"b"), 0);
}

// That checks and selection are kept is among the random edits.
TEST_F(LessonMap, KeepsWhatIsExpandedWhenRebuilt) {
    Build(MakeLesson("A: a( b( c ) ) d | B: e | C:"));
    tree.Find(u"B")->SetExpanded(false);
    tree.Find(u"a")->SetExpanded(true);
    const auto map = std::static_pointer_cast<ContentMap>(lesson->Maps()->Item(0));
    map->SetLayout({{u"d", 1}, {u"a", 1}, {u"b", 2}, {u"c", 3}});
    lesson->Maps()->Add(std::make_shared<ContentMap>(u"new"));
    Build(lesson);
    EXPECT_EQ(Print(tree), "A: d a( b( c ) ) | B: e | C: | new:");
    Text expanded;
    for (const Text& key : modTVW::GetExpandedKeys(tree)) expanded += key + u" ";
    EXPECT_EQ(expanded, u"A a C new ");
}

TEST_F(LessonMap, FindsTheNextMatch) {
    const auto sample = MakeLesson("Main: a( b ) c | Extra: d");
    const auto page = [&](const Text& sbid) {
        return std::static_pointer_cast<ContentStoryboard>(sample->Storyboards()->Item(sbid));
    };
    page(u"b")->SetTitle(u"The Ärger of the Straße");
    page(u"c")->SetTitle(u"ПРИВЕТ");
    page(u"d")->SetTitle(u"");
    Build(sample);
    const struct {
        TextView selected, criteria;
        FindTypes findType;
        bool exactMatch, wrapSearch;
        TextView found;
    } cases[] = {
        {u"", u"title of", ftTitle, false, false, u"a"},
        {u"a", u"title of", ftTitle, false, true, u""}, // the start itself is never the result
        {u"c", u"title of", ftTitle, false, true, u"a"},
        {u"Main", u"TITLE OF A", ftTitle, true, false, u"a"},
        {u"Main", u"äRGER", ftTitle, false, false, u"b"},
        {u"Main", u"STRASSE", ftTitle, false, false, u"b"},
        {u"Main", u"the ärger of the strasse", ftTitle, true, false, u""}, // only lower-cased
        {u"Main", u"the ärger of the straße", ftTitle, true, false, u"b"},
        {u"Main", u"привет", ftTitle, true, false, u"c"},
        {u"Main", u"ärger", ftID, false, false, u"b"}, // whatever is searched for, all fields are tested
        {u"Main", u"id-C", FindTypes(0), true, false, u"c"},
        {u"Main", u"D", ftTitle, true, false, u"d"},   // an SBID
        {u"Main", u"main", ftTitle, false, true, u""}, // maps never match
        {u"Main", u"", ftTitle, true, false, u"d"},    // the first without a title
    };
    for (const auto& [selected, criteria, findType, exactMatch, wrapSearch, found] : cases) {
        tree.Select(tree.Find(selected));
        EXPECT_EQ(ToUtf8(modLME::FindNextSBID(tree, lesson, Text(criteria), findType, exactMatch, wrapSearch)),
                  ToUtf8(found))
            << ToUtf8(selected) << ": " << ToUtf8(criteria);
    }
    EXPECT_EQ(modLME::FindNextSBID(NodeTree(), lesson, u"", ftTitle, false, true), u"");
    for (const bool isExact : {false, true})
        EXPECT_EQ(modLME::MatchStoryboard(tree.Find(u"b"), u"STRAßE", ftID, isExact, lesson), !isExact);
}

} // namespace
} // namespace dax
