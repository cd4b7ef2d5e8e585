// Several authors on one course: what a save that checks for conflicts refuses, and that none of them loses anything.

#include "hierarchy/EditorFixture.h"
#include "support/OwnServer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <random>
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

// What an author was told that it is saved.
struct Log {
    std::vector<std::pair<Text, Text>> marks; // an entry, and what was put behind its title
    std::vector<Text> added;
    int refusals = 0;
};

constexpr int wanted = 30; // saves of all authors

void Work(const Text& connectionString, int number, std::atomic<int>& saves, Log& log) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    test::HeardEditor heard;
    GroupEditor& editor = *heard.editor;
    editor.SetConnectionString(connectionString);
    editor.SetConflictCheck(true);
    std::mt19937 random(static_cast<unsigned>(number));
    for (int round = 0; saves < wanted && std::chrono::steady_clock::now() < end; ++round) {
        if (!editor.LoadDatabase()) continue;
        const IDCollection all = editor.GetChildLessonIDCollection(u"");
        const std::vector<Text> ids(all.begin(), all.end());
        const Text id = ids[random() % ids.size()], mark = u" " + ToText(number) + u"." + ToText(round) + u" ";
        editor.UpdateLesson(id, editor.GetLessonTitle(id) + mark, editor.GetLessonIdentifier(id), ltGroup);
        editor.SetCurrentLessonID(ids[random() % ids.size()]);
        editor.MoveCurrent(static_cast<GroupMovementTypes>(1 + random() % 4));
        const bool isAdding = random() % 4 == 0 && ids.size() < 200;
        const Text added = u"n" + ToText(number) + u"-" + ToText(round);
        if (isAdding) editor.AddLesson(added, u"", u"", ltGroup);
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 5));
        if (!editor.SaveDatabase()) {
            ++log.refusals;
            continue;
        }
        ++saves;
        log.marks.emplace_back(id, mark);
        if (isAdding) log.added.push_back(added);
    }
}

void FourAuthorsLoseNothing(const std::vector<Text>& connectionStrings) {
    std::atomic<int> saves = 0;
    std::vector<Log> logs(4);
    {
        std::vector<std::jthread> authors;
        for (size_t i = 0; i < logs.size(); ++i)
            authors.emplace_back(
                [&, i] { Work(connectionStrings[i % connectionStrings.size()], static_cast<int>(i), saves, logs[i]); });
    }
    const std::map<Text, Text> rows = test::ReadRows(connectionStrings[0]);
    std::ptrdiff_t refusals = 0, marks = 0;
    for (const Log& log : logs) {
        refusals += log.refusals;
        for (const Text& id : log.added) EXPECT_TRUE(rows.contains(id)) << ToUtf8(id);
        for (const auto& [id, mark] : log.marks)
            EXPECT_NE(rows.at(id).find(mark), Text::npos) << ToUtf8(mark) << " is lost from " << ToUtf8(rows.at(id));
    }
    for (const auto& [id, row] : rows) marks += std::ranges::count(row.substr(0, row.find(u'|')), u'.');
    EXPECT_EQ(marks, saves) << "titles hold what nobody was told to be saved";
    EXPECT_GE(saves, wanted);
    std::cout << saves << " saves, " << refusals << " refused\n";
}

TEST_P(Authors, FourLoseNothing) { FourAuthorsLoseNothing({database->ConnectionString()}); }

// An author on each of three nodes, between which nothing but the rows is shared. What happens when nodes are killed is
// tested by the soak, and shown in the manual.
TEST(AuthorsOnACluster, FourLoseNothing) {
    if (const std::string why = test::OwnServer::SkipReason(); !why.empty()) GTEST_SKIP() << why;
    const test::OwnServer cluster(test::OwnServer::Kind::Cluster);
    const test::TestDatabase database(Engine::MariaDB, cluster.ConnectionString());
    test::CreateTables(database);
    database.Run(test::SampleRows());
    std::vector<Text> nodes;
    for (int node = 1; node <= 3; ++node)
        nodes.push_back(database.ConnectionStringThrough(cluster.ConnectionString(node)));
    FourAuthorsLoseNothing(nodes);
    for (const Text& node : nodes) EXPECT_EQ(test::ReadRows(node), test::ReadRows(nodes[0]));
}

} // namespace
} // namespace dax
