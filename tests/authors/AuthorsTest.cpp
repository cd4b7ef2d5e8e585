// Several authors on one course: what a save that checks for conflicts refuses, and that none of them loses anything.

#include "hierarchy/EditorFixture.h"

#include "tree/modTVW.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <set>
#include <thread>

namespace dax {
namespace {

class Authors : public test::EngineTest, protected test::HeardEditor {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (IsSkipped()) return;
        test::CreateTables(*database);
        database->Run(test::SampleRows());
    }
};
INSTANTIATE_TEST_SUITE_P(Engines, Authors, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

TEST_P(Authors, ASaveThatChecksRefusesWhatAnotherHasChanged) {
    struct Case {
        std::vector<Text> elsewhere;
        Text told; // empty: nothing that counts was changed
    };
    std::vector<Text> many;
    for (int i = 0; i < 12; ++i) many.push_back(test::RowStatement(u"m" + ToText(i), u"M", u"g", 2, 9, 1));
    const Case cases[] = {
        {{u"UPDATE velmoraLessons SET lessonTitle = 'New' WHERE lessonID = 'b'"}, u"'New' was renamed."},
        {{u"UPDATE velmoraLessons SET lessonTitle = 'o''neil' WHERE lessonID = 'b'"}, u"'o'neil' was renamed."},
        {{u"UPDATE velmoraLessons SET lessonType = 0 WHERE lessonID = 'a'"}, u"'A' was renamed."},
        {{u"UPDATE velmoraLessons SET parentID = 'h' WHERE lessonID = 'b'"}, u"'O'Neil' was moved."},
        {{u"UPDATE velmoraLessons SET lessonTitle = 'X', sortPosition = 9 WHERE lessonID = 'a'"},
         u"'X' was renamed and moved."},
        {{test::RowStatement(u"n", u"More", u"g", 2, 4, 1)}, u"'More' was added."},
        {{u"DELETE FROM velmoraLessons WHERE lessonID = 'd'"}, u"'D' was removed."},
        {{u"DELETE FROM velmoraLessons WHERE lessonID = 'c'"}, u"an entry that you have removed, too, was removed."},
        {many, u"and 2 more."},
        {{u"UPDATE velmoraLessons SET lessonData = 'other', guideData = 'other' WHERE lessonID = 'a'"}, u""},
        {{u"UPDATE velmoraLessons SET lessonTitle = 'A' WHERE lessonID = 'a'"}, u""},
    };
    editor->SetConnectionString(database->ConnectionString());
    for (const Case& each : cases) {
        database->Run({u"DELETE FROM velmoraLessons"});
        database->Run(test::SampleRows());
        editor->SetConflictCheck(true);
        ASSERT_TRUE(editor->LoadDatabase());
        editor->SetCurrentLessonID(u"h");
        editor->AddLesson(u"mine", u"Mine", u"", ltLesson);
        ASSERT_TRUE(editor->SaveDatabase()) << ToUtf8(error); // what was saved is known, too
        editor->MoveCurrent(gmtUp);
        editor->RemoveLesson(u"c", true);
        database->Run(each.elsewhere);
        const auto rows = test::ReadRows(database->ConnectionString());
        const Text shape = Shape();
        EXPECT_EQ(editor->SaveDatabase(), each.told.empty()) << ToUtf8(error);
        EXPECT_EQ(Shape(), shape);
        if (each.told.empty()) continue;
        EXPECT_EQ(errorNumber, ErrorNumbers::Conflict);
        EXPECT_NE(error.find(each.told), Text::npos) << ToUtf8(error);
        EXPECT_EQ(test::ReadRows(database->ConnectionString()), rows);
        editor->SetConflictCheck(false);
        EXPECT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
    }
}

// What an author did and was told that it is saved.
struct Log {
    std::map<Text, std::set<Text>> marks; // by entry: each was put behind the title it had
    std::set<Text> added;
    int saves = 0, refusals = 0;
};

void Work(const Text& connectionString, int number, std::chrono::steady_clock::time_point end, Log& log) {
    test::HeardEditor heard;
    GroupEditor& editor = *heard.editor;
    editor.SetConnectionString(connectionString);
    editor.SetConflictCheck(true);
    std::mt19937 random(static_cast<unsigned>(number));
    for (int round = 0; std::chrono::steady_clock::now() < end; ++round) {
        if (!editor.LoadDatabase()) continue;
        std::vector<Text> ids;
        for (const Node* node = editor.Tree().First(); node; node = modTVW::GetNextNode(node))
            if (node->Parent()) ids.push_back(node->Key());
        const Text mark = u" " + ToText(number) + u"." + ToText(round);
        const Text id = ids[random() % ids.size()];
        editor.UpdateLesson(id, editor.GetLessonTitle(id) + mark, editor.GetLessonIdentifier(id), ltGroup);
        editor.SetCurrentLessonID(ids[random() % ids.size()]);
        editor.MoveCurrent(static_cast<GroupMovementTypes>(1 + random() % 4));
        Text added;
        if (random() % 4 == 0 && ids.size() < 200) {
            added = u"n" + ToText(number) + u"." + ToText(round);
            editor.AddLesson(added, added, u"", ltGroup);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 5));
        if (!editor.SaveDatabase()) {
            ++log.refusals;
            continue;
        }
        ++log.saves;
        log.marks[id].insert(mark);
        if (!added.empty()) log.added.insert(added);
    }
}

// That several nodes of a cluster, or a server that stops, lose nothing is tested by the soak.
TEST_P(Authors, FourLoseNothing) {
    const char* const seconds = std::getenv("DAX_AUTHORS_SECONDS");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds ? std::atoi(seconds) : 2);
    std::vector<Log> logs(4);
    {
        std::vector<std::jthread> authors;
        for (size_t i = 0; i < logs.size(); ++i)
            authors.emplace_back([&, i] { Work(database->ConnectionString(), static_cast<int>(i), end, logs[i]); });
    }
    std::map<Text, Text> titles;
    for (const auto& [id, row] : test::ReadRows(database->ConnectionString()))
        titles[id] = row.substr(0, row.find(u'|')) + u" ";
    int saves = 0, refusals = 0;
    for (const Log& log : logs) {
        saves += log.saves;
        refusals += log.refusals;
        for (const Text& id : log.added) EXPECT_TRUE(titles.contains(id)) << ToUtf8(id);
        for (const auto& [id, marks] : log.marks) {
            for (const Text& mark : marks) {
                const size_t place = titles[id].find(mark + u" ");
                EXPECT_NE(place, Text::npos) << ToUtf8(mark) << " is lost from " << ToUtf8(titles[id]);
                EXPECT_EQ(titles[id].find(mark + u" ", place + 1), Text::npos) << ToUtf8(mark) << " is there twice";
            }
        }
    }
    size_t marks = 0;
    for (const auto& [id, title] : titles)
        for (size_t place = title.find(u'.'); place != Text::npos; place = title.find(u'.', place + 1)) ++marks;
    for (const Log& log : logs) marks -= log.added.size(); // whose titles begin with one
    EXPECT_EQ(marks, static_cast<size_t>(saves)) << "titles hold what nobody was told to be saved";
    EXPECT_GT(saves, 4);
    std::cout << saves << " saves, " << refusals << " refused\n";
}

} // namespace
} // namespace dax
