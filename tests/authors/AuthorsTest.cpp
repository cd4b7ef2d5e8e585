// Several authors on one course: what a save that checks for conflicts refuses, and that none of them loses anything.

#include "hierarchy/EditorFixture.h"
#include "support/OwnServer.h"
#include "tree/modTVW.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <random>
#include <thread>

namespace dax {
namespace {

class Authors : public test::EngineTest, protected test::RecordingEditor {
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
        Text conflict; // empty: nothing that counts was changed
    };
    std::vector<Text> many;
    for (int i = 0; i < 12; ++i) many.push_back(test::RowStatement(u"m" + ToText(i), u"M", u"g", 2, 9, 1));
    Text ten = u"'M' was added";
    for (int i = 1; i < 10; ++i) ten += u", 'M' was added";
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
        {many, u": " + ten + u" and 2 more."},
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
        EXPECT_EQ(editor->SaveDatabase(), each.conflict.empty()) << ToUtf8(error);
        EXPECT_EQ(Shape(), shape);
        if (each.conflict.empty()) continue;
        EXPECT_EQ(errorNumber, ErrorNumbers::Conflict);
        EXPECT_NE(error.find(each.conflict), Text::npos) << ToUtf8(error);
        EXPECT_EQ(test::ReadRows(database->ConnectionString()), rows);
        editor->SetConflictCheck(false);
        EXPECT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
    }
}

// An author, with what the saves reported as saved.
struct Log {
    std::vector<std::pair<Text, Text>> marks; // an entry, and what was appended to its title
    std::vector<Text> added;
    int refusals = 0;
};

constexpr int minSaves = 30; // saves of all authors

void Work(const Text& connectionString, int number, std::atomic<int>& saves, Log& log) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    test::RecordingEditor recorded;
    GroupEditor& editor = *recorded.editor;
    editor.SetConnectionString(connectionString);
    editor.SetConflictCheck(true);
    std::mt19937 random(static_cast<unsigned>(number));
    for (int round = 0; saves < minSaves && std::chrono::steady_clock::now() < end; ++round) {
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
    EXPECT_EQ(marks, saves) << "titles hold what no save reported as saved";
    EXPECT_GE(saves, minSaves);
    std::cout << saves << " saves, " << refusals << " refused\n";
}

TEST_P(Authors, FourLoseNothing) { FourAuthorsLoseNothing({database->ConnectionString()}); }

#ifndef _WIN32
// Three nodes, an author on each. Nothing but the rows is shared between them.
class AuthorsOnACluster : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (test::OwnServer::SkipReason().empty())
            cluster = std::make_unique<test::OwnServer>(test::OwnServer::Kind::Cluster);
    }
    static void TearDownTestSuite() { cluster.reset(); }
    void SetUp() override {
        if (const std::string why = test::OwnServer::SkipReason(); !why.empty()) GTEST_SKIP() << why;
        database = std::make_unique<test::TestDatabase>(Engine::MariaDB, cluster->ConnectionString());
        test::CreateTables(*database);
        for (int node = 1; node <= 3; ++node) {
            strings.push_back(database->ConnectionStringThrough(cluster->ConnectionString(node)));
            authors[node - 1].editor->SetConnectionString(strings.back());
        }
    }
    void Fill(int entries) {
        database->Run({u"DELETE FROM velmoraLessons"});
        std::vector<Text> rows;
        for (int i = 1; i <= entries; ++i) rows.push_back(test::RowStatement(u"e" + ToText(i), u"E", u"", 1, i, 1));
        database->Run(rows);
    }
    // The rows through each node are those of one tree.
    void ExpectRowsOf(test::RecordingEditor& author) {
        for (const Text& string : strings) {
            test::RecordingEditor other;
            other.editor->SetConnectionString(string);
            ASSERT_TRUE(other.editor->LoadDatabase()) << ToUtf8(other.error);
            EXPECT_EQ(other.Shape(), author.Shape());
        }
    }

    static inline std::unique_ptr<test::OwnServer> cluster;
    std::unique_ptr<test::TestDatabase> database;
    std::vector<Text> strings;
    test::RecordingEditor authors[3];
};

TEST_F(AuthorsOnACluster, ReadWhatOtherNodesWrote) {
    Fill(1);
    for (int i = 0; i < 100; ++i) {
        test::RecordingEditor& writer = authors[i % 3];
        ASSERT_TRUE(writer.editor->LoadDatabase());
        writer.editor->UpdateLesson(u"e1", ToText(i), u"", ltLesson);
        ASSERT_TRUE(writer.editor->SaveDatabase()) << ToUtf8(writer.error);
        for (test::RecordingEditor& reader : authors) {
            ASSERT_TRUE(reader.editor->LoadDatabase());
            ASSERT_EQ(reader.editor->GetLessonTitle(u"e1"), ToText(i));
        }
    }
}

TEST_F(AuthorsOnACluster, TheLoserOfAConflictGetsAnErrorAndCanSaveNext) {
    Fill(300);
    bool hasConflict = false;
    for (int round = 0; round < 50 && !hasConflict; ++round) {
        bool isSaved[2];
        {
            std::vector<std::jthread> saving;
            for (int i : {0, 1}) {
                ASSERT_TRUE(authors[i].editor->LoadDatabase());
                authors[i].editor->SetCurrentLessonID(u"e" + ToText(100 + i));
                authors[i].editor->AddLesson(u"n" + ToText(round * 2 + i), u"N", u"", ltLesson);
            }
            for (int i : {0, 1}) saving.emplace_back([&, i] { isSaved[i] = authors[i].editor->SaveDatabase(); });
        }
        ASSERT_TRUE(isSaved[0] || isSaved[1]) << ToUtf8(authors[0].error);
        if (isSaved[0] && isSaved[1]) continue;
        hasConflict = true;
        test::RecordingEditor& winner = authors[isSaved[0] ? 0 : 1];
        test::RecordingEditor& loser = authors[isSaved[0] ? 1 : 0];
        EXPECT_NE(loser.error.find(u"at the same moment"), Text::npos) << ToUtf8(loser.error);
        ExpectRowsOf(winner);
        EXPECT_TRUE(modTVW::NodeExists(loser.editor->Tree(), u"n" + ToText(round * 2 + (isSaved[0] ? 1 : 0))));
        EXPECT_TRUE(loser.editor->SaveDatabase()) << ToUtf8(loser.error);
    }
    EXPECT_TRUE(hasConflict) << "no two saves met";
}

TEST_F(AuthorsOnACluster, FourLoseNothing) {
    database->Run(test::SampleRows());
    FourAuthorsLoseNothing(strings);
}

TEST_F(AuthorsOnACluster, NodesFailAndComeBack) {
    Fill(3000);
    test::RecordingEditor& author = authors[1];
    ASSERT_TRUE(author.editor->LoadDatabase());
    const Text before = author.Shape();
    author.editor->SetCurrentLessonID(u"e7");
    author.editor->MoveCurrent(gmtUp);
    int sent = 0;
    SetStatementObserver([&](TextView statement) {
        if (statement.starts_with(u"UPDATE") && ++sent == 1500) cluster->KillNode(2);
    });
    EXPECT_FALSE(author.editor->SaveDatabase());
    SetStatementObserver({});
    EXPECT_NE(author.error.find(u"connection to the server was lost"), Text::npos) << ToUtf8(author.error);
    EXPECT_FALSE(author.editor->SaveDatabase()); // no server
    ASSERT_TRUE(authors[0].editor->LoadDatabase()) << ToUtf8(authors[0].error);
    EXPECT_EQ(authors[0].Shape(), before);

    // The other nodes continue without it, and have changes for it when it comes back.
    authors[0].editor->UpdateLesson(u"e1", u"Meanwhile", u"", ltLesson);
    EXPECT_TRUE(authors[0].editor->SaveDatabase()) << ToUtf8(authors[0].error);
    cluster->StartNode(2);
    EXPECT_TRUE(author.editor->SaveDatabase()) << ToUtf8(author.error);
    ExpectRowsOf(author);

    // Less than half of the nodes: nothing is read or written until it is bootstrapped.
    cluster->KillNode(2);
    cluster->KillNode(3);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (authors[0].error.find(u"most of its cluster") == Text::npos && std::chrono::steady_clock::now() < end)
        authors[0].editor->LoadDatabase();
    EXPECT_FALSE(authors[0].editor->LoadDatabase());
    EXPECT_NE(authors[0].error.find(u"most of its cluster"), Text::npos) << ToUtf8(authors[0].error);
    cluster->ContinueFrom(1);
    ASSERT_TRUE(authors[0].editor->LoadDatabase()) << ToUtf8(authors[0].error);
    EXPECT_EQ(authors[0].Shape(), author.Shape());
    cluster->StartNode(2);
    cluster->StartNode(3);
    ExpectRowsOf(author);
}
#endif

} // namespace
} // namespace dax
