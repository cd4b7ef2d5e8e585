// A database on any engine copied to any other.
#include "data/DatabaseCopy.h"

#include "base/Dates.h"
#include "base/Error.h"
#include "data/Command.h"
#include "data/Recordset.h"
#include "data/RowComparison.h"
#include "data/Session.h"
#include "data/modDB.h"
#include "support/CourseRows.h"
#include "support/SentStatements.h"
#include "support/SilentServer.h"

#include <gmock/gmock.h>

#include <random>

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace dax {
namespace {

using test::CreateTables, test::TestDatabase;
using ::testing::HasSubstr;

using Engines = std::tuple<Engine, Engine>;

// Every row as one text, in an order that no engine decides.
std::vector<Text> RowsOf(const TestDatabase& database, TextView table) {
    Recordset recordset;
    recordset.Open(u"SELECT * FROM " + Text(table), database.ConnectionString());
    std::vector<Text> rows;
    for (; !recordset.Eof(); recordset.MoveNext()) {
        Text& row = rows.emplace_back();
        for (size_t column = 0; column < recordset.FieldCount(); ++column) {
            const Value value = recordset.Field(column);
            const auto* const date = std::get_if<DateTime>(&value);
            row += IsNull(value) ? Text(u"NULL")
                   : date        ? FormatDate(*date)
                                 : u"'" + Text(recordset.FieldText(column)) + u"'";
            row += u"|";
        }
    }
    std::ranges::sort(rows);
    return rows;
}

struct Copying : DatabaseCopy {
    Copying(const TestDatabase& from, const Text& to) : DatabaseCopy({from.ConnectionString(), u"FROM"}, {to, u"TO"}) {}
    Copying(const TestDatabase& from, const TestDatabase& to) : Copying(from, to.ConnectionString()) {}
    void Do() {
        Write([](size_t) {});
        Finish();
    }
};

class CopyTest : public ::testing::TestWithParam<Engines> {
protected:
    void SetUp() override {
        const auto [source, target] = GetParam();
        for (const Engine engine : {source, target}) DAX_NEEDS_ENGINE(engine);
        from = std::make_unique<TestDatabase>(source);
        to = std::make_unique<TestDatabase>(target);
    }
    std::unique_ptr<TestDatabase> from, to;
};

const auto anyEngine = ::testing::ValuesIn(test::AllEngines());
INSTANTIATE_TEST_SUITE_P(Engines, CopyTest, ::testing::Combine(anyEngine, anyEngine), [](const auto& pair) {
    return test::EngineName({std::get<0>(pair.param), 0}) + "To" + test::EngineName({std::get<1>(pair.param), 0});
});

TEST_P(CopyTest, EveryValueArrivesAsItWas) {
    Text longest(5'000'000, u'x');
    for (size_t i = 0; i < longest.size(); i += 7) longest[i] = i % 2 ? u'\'' : u'é';
    std::vector<Text> titles = {u"",  u"\x01",   u"\x02", u"\"\x01",       u" ",
                                u"'", u"''\\''", u"\\",   u"#2024/05/06#", u"'; DROP TABLE talkPosts; --"};
    titles.insert(titles.end(),
                  {u"\r\n\t\x01\"\\,{}\x7F", u"ẞß e\u0301é \u202E 👩‍🏫", Text(8001, u'\''), longest,
                   Text{0xFFFF, 0xFEFF, 0xDBFF, 0xDFFF, 0xE000}, Text{u'a', 0xD83D, u'b', 0xDE00}});
    for (int i = 0; i < 1500; ++i) titles.push_back(Text(static_cast<size_t>(i % 40), u'ü'));
    CreateTables(*from, Schema::Database::Content);
    {
        Connection connection;
        connection.Open(from->ConnectionString());
        connection.BeginTrans();
        int number = 0;
        for (const Text& title : titles) {
            Command insert(connection);
            insert.SetCommandText(
                u"INSERT INTO velmoraLessons (lessonID, lessonTitle, parentID, sortPosition) VALUES (?, ?, ?, ?)");
            insert.AppendParameter(u"Ä'\\ %_?{}語😀" + ToText(++number));
            insert.AppendParameter(title);
            insert.AppendParameter(number % 2 ? Value() : Value(Text()));
            insert.AppendParameter(number % 3 ? Value() : Value(int64_t{number % 2 ? INT32_MIN : INT32_MAX}));
            insert.Execute();
        }
        connection.CommitTrans();
    }
    from->Run({u"INSERT INTO velmoraUserLocks (lessonID, username, lockDate, lockType) VALUES ('', NULL, '2024-02-29 "
               u"23:59:59', -2)",
               u"INSERT INTO velmoraUserLocks (lessonID, lockDate) VALUES ('a', '1899-12-30 00:00:00.25')",
               u"INSERT INTO velmoraUserLocks (lessonID, lockDate) VALUES ('a', '1999-12-31 12:00:00.000001')",
               u"INSERT INTO velmoraUserlocks (username) VALUES ('twice'), ('twice')", // the same table
               u"INSERT INTO velmoraLessons (lessonID) VALUES ('a'), ('A'), ('a '), ('')",
               u"INSERT INTO velmoraAutonumbers (ignored) VALUES (1), (2), (3)",
               u"DELETE FROM velmoraAutonumbers WHERE ignored <> 2", u"DROP TABLE talkConfiguration",
               u"CREATE TABLE theirs (a integer)"});
    // What a copy that was killed has left belongs to no one else.
    to->Run({u"CREATE TABLE dax_copy_others (b integer)", u"CREATE TABLE dax_copy_talkPosts (b integer)"});
    size_t last = 0;
    {
        Copying copy(*from, *to);
        EXPECT_TRUE(copy.HasContent());
        EXPECT_FALSE(copy.HasConnector());
        EXPECT_EQ(copy.RowsInAll(), titles.size() + 10);
        EXPECT_THAT(copy.UnknownInSource(), ::testing::ElementsAre(u"theirs"));
        EXPECT_THAT(copy.UnknownInTarget(), ::testing::ElementsAre(u"dax_copy_others"));
        copy.Write([&](size_t done) {
            EXPECT_GE(done, last);
            last = done;
        });
        if (to->Kind() != Engine::SQLite) { // where large writes lock out readers
            EXPECT_ANY_THROW((void)to->Query(u"SELECT * FROM velmoraLessons")) << "seen too early";
        }
        copy.Finish();
    }
    EXPECT_EQ(last, 2 * (titles.size() + 10));
    for (const Schema::Table& table : Schema::Tables(Schema::Database::Content)) {
        if (table.name == u"talkConfiguration") continue;
        EXPECT_TRUE(RowsOf(*from, table.name) == RowsOf(*to, table.name)) << ToUtf8(table.name);
    }
    EXPECT_ANY_THROW((void)to->Query(u"SELECT * FROM talkConfiguration"));
    // What was generated and deleted is not generated again.
    to->Run({u"INSERT INTO velmoraAutonumbers (ignored) VALUES (9)"});
    EXPECT_EQ(to->Query(u"SELECT nextNumber FROM velmoraAutonumbers WHERE ignored = 9"), u"4");
}

TEST_P(CopyTest, SaysWhatItCannotCopy) {
    const auto failure = [&] { return std::string(test::FailureOf([&] { Copying(*from, *to).Do(); }).what()); };
    EXPECT_THAT(failure(), HasSubstr("'FROM': It has none of the tables"));
    Text same = from->ConnectionString(); // of a file in another spelling
    if (from->Kind() == Engine::SQLite) same.insert(same.find_last_of(u"/\\"), u"/.");
    EXPECT_THAT(test::FailureOf([&] { Copying(*from, same); }).what(), HasSubstr("is the source itself"));
    CreateTables(*from, Schema::Database::Connector);
    from->Run({u"INSERT INTO velmoraDBUsers VALUES (7, 'юлия', 1)", u"INSERT INTO velmoraDBUserRights VALUES (7, 1, 2)",
               u"INSERT INTO velmoraConnectionHistory (username, machineName, lastConnect) VALUES ('a', 'B', "
               u"'2020-01-02 03:04:05')"});
    // A target of another layout: what it cannot hold is reported.
    CreateTables(*to, Schema::Database::Connector);
    to->Run({u"DROP TABLE velmoraDBUsers",
             u"CREATE TABLE velmoraDBUsers (userID integer, username varchar(30), superUser integer CHECK (superUser "
             u"<> 1))"});
    EXPECT_THAT(failure(), HasSubstr("'TO': velmoraDBUsers: "));
    to->Run({u"DROP TABLE velmoraDBUsers"});
    if (to->Kind() != Engine::SQLite) { // which keeps what it is given
        to->Run({u"CREATE TABLE velmoraDBUsers (userID integer, username varchar(30), superUser varchar(9) DEFAULT "
                 u"'x')",
                 u"DROP TABLE velmoraConnectionHistory",
                 u"CREATE TABLE velmoraConnectionHistory (username text, machineName text, machineIP text, osVersion "
                 u"text, appVersion text, lastConnect date, lastCatalog text)"});
        EXPECT_THAT(failure(),
                    HasSubstr("'TO': velmoraConnectionHistory: The value of lastConnect in the row username 'a', "
                              "machineName 'B' was not the same"));
        to->Run({u"DROP TABLE velmoraConnectionHistory"});
    }
    {
        const test::SentStatements sent;
        Copying(*from, *to).Do();
        EXPECT_THAT(sent.Texts(), ::testing::Contains(HasSubstr("velmoraDBUserRights (userID, dbID, rights)")));
    }
    if (from->Kind() != Engine::PostgreSQL) from->Run({u"UPDATE velmoraDBUsers SET username = char(97, 0, 98)"});
    if (from->Kind() != Engine::PostgreSQL && to->Kind() == Engine::PostgreSQL) {
        EXPECT_THAT(failure(), HasSubstr("'FROM': velmoraDBUsers: The value of username in the row userID 7 contains"));
    } else {
        Copying(*from, *to).Do();
        EXPECT_EQ(RowsOf(*from, u"velmoraDBUsers"), RowsOf(*to, u"velmoraDBUsers"));
    }
    from->Run({u"DELETE FROM velmoraDBUsers"});
    if (from->Kind() == Engine::MariaDB) { // which is read by the key, of whichever column, some rows at a time
        from->Run(
            {u"ALTER TABLE velmoraDBUsers DROP PRIMARY KEY, MODIFY username varchar(30), ADD PRIMARY KEY (username)",
             u"INSERT INTO velmoraDBUsers WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < "
             u"200) SELECT 900 - i, concat('user ', i), 0 FROM n"});
        Copying(*from, *to).Do();
        EXPECT_EQ(RowsOf(*from, u"velmoraDBUsers"), RowsOf(*to, u"velmoraDBUsers"));
    }
    CreateTables(*from, Schema::Database::Content);
    for (const char16_t* next : {u"1", u"2"}) { // when no number was ever generated, and when one was that is gone
        Copying(*from, *to).Do();
        for (const TestDatabase* each : {from.get(), to.get()}) {
            each->Run({u"INSERT INTO velmoraAutonumbers (ignored) VALUES (9)"});
            EXPECT_EQ(each->Query(u"SELECT nextNumber FROM velmoraAutonumbers"), next);
            each->Run({u"DELETE FROM velmoraAutonumbers"});
        }
        to->Run({u"DROP TABLE velmoraAutonumbers"});
    }
    from->Run({u"ALTER TABLE velmoraDBList ADD COLUMN colour integer"});
    EXPECT_THAT(Copying(*from, *to).UnknownInSource(), ::testing::ElementsAre(u"velmoraDBList.colour"));
    from->Run({u"DROP TABLE velmoraDBList"});
    EXPECT_THAT(failure(), HasSubstr("velmoraDBList is missing"));
}

// What a copy leaves when it does not come to its end, by what the target had before: nothing, some tables, or all.
class CopyEndTest : public test::EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (!database) return;
        CreateTables(from);
        from.Run({u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 700) INSERT INTO "
                  u"velmoraLessons (lessonID, lessonTitle) SELECT i, 'new' FROM n",
                  u"INSERT INTO velmoraAutonumbers (ignored) VALUES (1)"});
    }
    std::vector<Text> Tables() const { return Session::Open(database->ConnectionString())->TableNames(); }
    using Contents = std::map<Text, std::vector<Text>>;
    Contents ContentsNow() const {
        Contents contents;
        for (const Text& table : Tables()) contents[LowerAscii(table)] = RowsOf(*database, table);
        return contents;
    }
    void Prepare(const std::vector<TextView>& missing) const {
        std::vector<Text> statements;
        for (const Text& table : Tables()) statements.push_back(u"DROP TABLE " + table);
        for (const Schema::Table& table : Schema::Tables(Schema::Database::Content)) {
            if (missing.empty() || std::ranges::find(missing, table.name) != missing.end()) continue;
            std::ranges::move(Schema::CreateStatements(table, database->Kind(), table.name),
                              std::back_inserter(statements));
            if (table.columns.front().type == Schema::ColumnType::Key)
                statements.push_back(u"INSERT INTO " + Text(table.name) + u" (" + Text(table.columns.front().name) +
                                     u") VALUES ('old')");
        }
        database->Run(statements);
    }
    // Of Prepare; none at all means an empty catalog.
    const std::vector<std::vector<TextView>> starts = {{}, {u"velmoraUserLocks", u"talkPosts"}, {u"none"}};
    const TestDatabase from{Engine::SQLite};
};

class MariaDBCopyEndTest : public CopyEndTest {}; // others have nothing to do at the end but to commit
INSTANTIATE_TEST_SUITE_P(Engines, MariaDBCopyEndTest, ::testing::Values(Engine::MariaDB), test::EngineName);

// What fails within the last step: another has made the same table meanwhile; a table takes no rows.
TEST_P(MariaDBCopyEndTest, FailsAndLeavesTheTargetAsItWas) {
    Prepare(starts[1]);
    const Contents before = ContentsNow();
    Copying copy(from, *database);
    EXPECT_EQ(copy.TableWithRows(), u"velmoraLessons");
    copy.Write([](size_t) {});
    database->Run({u"CREATE TABLE talkPosts (a integer)", u"INSERT INTO talkPosts VALUES (7)"});
    EXPECT_THAT(test::FailureOf([&] { copy.Finish(); }).what(), HasSubstr("already exists"));
    EXPECT_FALSE(copy.IsInDoubt());
    EXPECT_EQ(database->Query(u"SELECT a FROM talkPosts"), u"7");
    database->Run({u"DROP TABLE talkPosts", u"CREATE TRIGGER refuses BEFORE INSERT ON velmoraLessons FOR EACH ROW "
                                            u"SIGNAL SQLSTATE '45000' SET MESSAGE_TEXT = 'No, thanks'"});
    EXPECT_THAT(test::FailureOf([&] { Copying(from, *database).Do(); }).what(), HasSubstr("No, thanks"));
    EXPECT_EQ(ContentsNow(), before);
}

#ifndef _WIN32

INSTANTIATE_TEST_SUITE_P(Engines, CopyEndTest, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

class ServerCopyEndTest : public CopyEndTest {};
INSTANTIATE_TEST_SUITE_P(Engines, ServerCopyEndTest, ::testing::Values(Engine::PostgreSQL, Engine::MariaDB),
                         test::EngineName);

// By a signal that cannot be handled, at any moment of the writing or of the last step.
TEST_P(CopyEndTest, KilledLeavesTheTargetAsItWasOrDone) {
    using Clock = std::chrono::steady_clock;
    const int kills = test::Setting("DAX_KILLS", 8);
    std::mt19937 random(7);
    for (const auto& missing : starts) {
        Prepare(missing);
        const Contents before = ContentsNow();
        long took[2] = {}; // microseconds
        {
            Copying copy(from, *database);
            const auto began = Clock::now();
            copy.Write([](size_t) {});
            const auto written = Clock::now();
            copy.Finish();
            took[0] = static_cast<long>((written - began) / std::chrono::microseconds(1));
            took[1] = static_cast<long>((Clock::now() - written) / std::chrono::microseconds(1));
        }
        const Contents after = ContentsNow();
        ASSERT_NE(before, after);
        for (const Schema::Table& table : Schema::Tables(Schema::Database::Content))
            ASSERT_EQ(after.at(LowerAscii(table.name)), RowsOf(from, table.name)) << "and no old row";
        bool isAfter = true;
        for (int kill = 0; kill < kills; ++kill) {
            if (isAfter) Prepare(missing);
            const bool isLast = kill % 2 == 1;
            const long moment = 1 + static_cast<long>(random()) % std::clamp(took[isLast], 500L, 900'000L);
            const int status = test::StatusOfChild([&] {
                Copying copy(from, *database);
                if (!isLast) test::EndAfter(moment);
                copy.Write([](size_t) {});
                if (isLast) test::EndAfter(moment);
                copy.Finish();
                return 7;
            });
            test::AwaitNoSessions(*database);
            const Contents now = ContentsNow();
            isAfter = now != before;
            ASSERT_TRUE(!isAfter || now == after) << "kill " << kill << ", missing " << missing.size();
            ASSERT_TRUE(isAfter || WIFSIGNALED(status)) << "finished, and nothing is there";
        }
    }
}

TEST_P(ServerCopyEndTest, ALostServerLeavesTheTargetAsItWasOrDone) {
    const bool isMaria = GetParam() == Engine::MariaDB;
    const std::string rows = isMaria ? "INSERT INTO dax_rows_velmoraLessons" : "unnest(",
                      last = isMaria ? "BEGIN NOT ATOMIC" : "COMMIT";
    for (const auto& [bytes, isForwarded] : {std::pair(rows, true), {last, false}, {last, true}}) {
        Prepare({});
        test::SilentServer proxy(database->ConnectionString());
        {
            Copying copy(from, proxy.ConnectionThrough(database->ConnectionString(), u"Command Timeout=1"));
            proxy.StopAnsweringAt(bytes, isForwarded);
            EXPECT_THAT(test::FailureOf([&] { copy.Do(); }).what(),
                        ::testing::ContainsRegex("'TO': .*The server '127.0.0.1:.*" +
                                                 std::string(bytes == last ? "load again to see" : "is lost")));
            EXPECT_EQ(copy.IsInDoubt(), bytes == last);
        }
        proxy.Recover();
        test::AwaitNoSessions(*database);
        EXPECT_EQ(ContentsNow().size(), bytes == last && isForwarded ? 8u : 0u) << bytes;
    }
}

#endif

// Rows of a key and a value, each of one character: a text, a number or nothing.
TEST(RowComparisonTest, FindsWhatDiffersInAnyOrder) {
    const struct {
        Text source, target;
        bool hasKey;
        std::string difference;
    } cases[] = {
        {u"a1 b2 c3", u"a1 b2 c3", true, ""},
        {u"a1 b2 c3 d4", u"d4 a1 c3 b2", true, ""},
        {u"", u"", true, ""},
        {u"a1 a1 b2 a1", u"b2 a1 a1 a1", false, ""},
        {u"a1 a2 a1", u"a1 a1 a2", true, ""}, // keys that are not unique
        {u"a1 A2 ä3", u"ä3 A2 a1", true, ""},
        {u"a1 b2 c3 d4", u"d4 c7 b2 a1", true, "value 1 k 'c'"},
        {u"a1 b2 c3", u"A1 a1 b2 c3", true, "additional k 'A'"},
        {u"a1 b2 c3", u"c3 a1", true, "missing k 'b'"},
        {u"a1 b2 c3", u"c3 d2 a1", true, "missing k 'b'"},
        {u"a1", u"c3 a1", true, "additional k 'c'"},
        {u"a1 c2 b3", u"d4 a1", true, "missing k 'c'"},
        {u"a1 a1 b2", u"a1 b2", false, "missing k 'a', v 1"},
        {u"a1 a1", u"a1 a1 a1", false, "additional k 'a', v 1"},
        {u"aX bY", u"bY aZ", true, "value 1 k 'a'"},
        {u"1- 2X", u"1-", true, "missing k 2"},
        {u"a-", u"a1", true, "value 1 k 'a'"},
    };
    const std::vector<RowColumn> columns = {{u"k", RowField::Kind::Text}, {u"v", RowField::Kind::Text}};
    size_t passes = 0;
    const auto rowsOf = [&passes](const Text& all) {
        return [&all, &passes]() -> NextRow {
            ++passes;
            return [&all, place = size_t{0}, row = std::vector<RowField>(2)]() mutable -> std::span<const RowField> {
                if (place >= all.size()) return {};
                for (RowField& field : row) {
                    field.number = all[place] - u'0';
                    field.kind = field.number < 0    ? RowField::Kind::Null
                                 : field.number <= 9 ? RowField::Kind::Number
                                                     : RowField::Kind::Text;
                    field.text = field.kind == RowField::Kind::Text ? TextView(all).substr(place, 1) : TextView();
                    ++place;
                }
                ++place;
                return row;
            };
        };
    };
    for (const auto& [source, target, hasKey, expected] : cases) {
        for (const size_t maxUnits : {size_t{1}, size_t{1} << 20}) {
            passes = 0;
            const auto found = CompareRows(columns, {hasKey, false}, rowsOf(source), rowsOf(target), maxUnits);
            const std::string kinds[] = {"value " + std::to_string(found ? found->column : 0), "missing", "additional"};
            const std::string difference =
                found ? kinds[static_cast<size_t>(found->kind)] + " " + ToUtf8(found->identifier) : "";
            EXPECT_EQ(difference, expected) << ToUtf8(source) << " and " << ToUtf8(target) << ", " << maxUnits;
            EXPECT_TRUE(maxUnits > 1 ? passes == 2 : source == target || passes > 2);
        }
    }
}

} // namespace
} // namespace dax
