// What must come out the same on every engine.
#include "base/Error.h"
#include "data/Command.h"
#include "data/Recordset.h"
#include "data/Schema.h"
#include "data/modDB.h"
#include "support/TestDatabases.h"

#include <random>

namespace dax {

namespace {

class DataTest : public test::EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (!database) return;
        connection.Open(database->ConnectionString());
        const bool isMariaDB = GetParam() == Engine::MariaDB;
        connection.Execute(Text(u"CREATE TABLE things (thingID varchar(200) PRIMARY KEY, amount integer, made ") +
                           (isMariaDB ? u"datetime(6)" : u"timestamp") + u", story " +
                           (isMariaDB ? u"longtext" : u"text") + u")");
    }
    void TearDown() override { connection.Close(); }

    void Insert(const Text& id, const Text& story) {
        connection.Execute(u"INSERT INTO things (thingID, amount, story) VALUES (" + modDB::QuoteSQLString(id) +
                           u", 1, " + modDB::QuoteSQLString(story) + u")");
    }
    Text Story(const Text& id) {
        Recordset recordset;
        recordset.Open(u"SELECT story FROM things WHERE thingID = " + modDB::QuoteSQLString(id), connection);
        return recordset.Eof() ? Text(u"<none>") : Text(recordset.FieldText(0));
    }
    int64_t Count() {
        Recordset recordset;
        recordset.Open(u"SELECT Count(*) AS thingCount FROM things", connection);
        return std::get<int64_t>(recordset.Field(u"THINGCOUNT"));
    }
    int64_t Run(const Text& statement, const std::vector<Value>& values) {
        Command command(connection);
        command.SetCommandText(statement);
        for (const Value& value : values) command.AppendParameter(value);
        return command.Execute();
    }

    Connection connection;
};

INSTANTIATE_TEST_SUITE_P(Engines, DataTest, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

Text RandomText(std::mt19937& random, size_t length) {
    Text text;
    while (text.size() < length) {
        const uint32_t kind = random() % 8;
        uint32_t point = kind == 0   ? U"'\"\\%_?;{}[]`#-/\n\t"[random() % 17]
                         : kind < 4  ? 0x20 + random() % 0x5F
                         : kind < 6  ? 0xA0 + random() % 0xD000
                         : kind == 6 ? 0xE000 + random() % 0x1FFE
                                     : 0x10000 + random() % 0x100000;
        if (point < 0x10000) {
            text.push_back(static_cast<char16_t>(point));
        } else {
            point -= 0x10000;
            text.push_back(static_cast<char16_t>(0xD800 + (point >> 10)));
            text.push_back(static_cast<char16_t>(0xDC00 + (point & 0x3FF)));
        }
    }
    return text;
}

TEST_P(DataTest, AnyTextComesBackAsItWas) {
    std::mt19937 random(20240506);
    std::vector<Text> texts = {
        u"",      u"'",         u"''\\''",         u"\\",          u"C:\\new\\'x'", u"a?b{c}d",
        u"漢字😀", u"%_\"`[x]#", u" blanks round ", u"\r\n\t;-- x", u"#2024/05/06#", u"'2024/05/06'"};
    texts.insert(texts.end(), {Text(8001, u'\''), Text{0xFFFD, 0xE000, 0xDBFF, 0xDFFF, 0xFEFF, 0xFFFF}});
    for (const size_t length : {1, 3, 255, 256, 257, 511, 4000, 4001, 8190, 8200, 20000, 40000, 1'000'000})
        texts.push_back(RandomText(random, length));
    for (size_t i = 0; i < texts.size(); ++i) Insert(ToText(static_cast<long long>(i)), texts[i]);
    for (size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(Run(u"INSERT INTO things (thingID, story) VALUES (?, ?)",
                      {u"p" + ToText(static_cast<long long>(i)), texts[i]}),
                  1);
    for (size_t i = 0; i < texts.size(); ++i) {
        EXPECT_TRUE(Story(ToText(static_cast<long long>(i))) == texts[i]) << "literal " << i;
        EXPECT_TRUE(Story(u"p" + ToText(static_cast<long long>(i))) == texts[i]) << "parameter " << i;
    }
    // In one pass as well, where long and short texts alternate, and with all rows read at once.
    for (const CursorLocations location : {adUseServer, adUseClient}) {
        Recordset recordset;
        recordset.SetCursorLocation(location);
        recordset.Open(u"SELECT thingID, story FROM things", connection);
        size_t seen = 0;
        for (; !recordset.Eof(); recordset.MoveNext(), ++seen) {
            const Text id = modDB::QuoteSQLString(recordset.FieldText(0));
            const size_t index = static_cast<size_t>(std::stoi(ToUtf8(id).substr(id[1] == u'p' ? 2 : 1)));
            EXPECT_TRUE(recordset.FieldText(1) == texts[index]) << index;
        }
        EXPECT_EQ(seen, texts.size() * 2);
    }
    Insert(u"lone", Text{u'a', 0xD83D, u'b', 0xDE00});
    EXPECT_TRUE(Story(u"lone") == (Text{u'a', 0xFFFD, u'b', 0xFFFD}));
}

TEST_P(DataTest, NullIsNotEmpty) {
    Insert(u"empty", u"");
    connection.Execute(u"INSERT INTO things (thingID) VALUES ('null')");
    Recordset recordset;
    recordset.Open(u"SELECT thingID, amount, made, story FROM things ORDER BY thingID", connection);
    EXPECT_FALSE(recordset.FieldIsNull(3));
    EXPECT_EQ(std::get<Text>(recordset.Field(u"STORY")), u"");
    EXPECT_EQ(std::get<int64_t>(recordset.Field(u"Amount")), 1);
    EXPECT_EQ(recordset.RecordCount(), -1);
    EXPECT_EQ(recordset.FieldCount(), 4u);
    test::FailureOf([&] { (void)recordset.FieldText(4); });
    recordset.MoveNext();
    for (size_t column = 1; column < 4; ++column) {
        EXPECT_TRUE(recordset.FieldIsNull(column));
        EXPECT_TRUE(IsNull(recordset.Field(column)));
        EXPECT_TRUE(recordset.FieldText(column).empty());
    }
    EXPECT_EQ(test::FailureOf([&] { (void)recordset.Field(u"nothing"); }).Number(), ErrorNumbers::SyntaxOrColumn);
    recordset.MoveNext();
    EXPECT_TRUE(recordset.Eof());
    test::FailureOf([&] { (void)recordset.Field(0); });
    recordset.MoveNext();
    EXPECT_TRUE(recordset.Eof());
    test::FailureOf([&] { recordset.Open(u"SELECT 1", connection); });
    recordset.Close();
    EXPECT_EQ(recordset.FieldCount(), 0u);
    test::FailureOf([&] { (void)recordset.Eof(); });
    test::FailureOf([&] { connection.Open(database->ConnectionString()); });
}

TEST_P(DataTest, ParametersOfEveryKind) {
    const DateTime moment{2024, 2, 29, 23, 59, 7};
    const Value number = int64_t{5}, date = moment;
    EXPECT_EQ(Run(u"INSERT INTO things (thingID, amount, made, story) VALUES (?, ?, ?, ?)",
                  {Text(u"a"), number, date, Text(300, u'é')}),
              1);
    EXPECT_EQ(Run(u"INSERT INTO things (thingID, amount, made, story) VALUES (?, ?, ?, ?)", {Text(u"b"), {}, {}, {}}),
              1);
    EXPECT_EQ(Run(u"UPDATE things SET amount = ? WHERE amount IS NULL", {true}), 1);
    for (const Value& value : {Value(int64_t{1}), Value(1.0), Value(int64_t{5'000'000'000})})
        EXPECT_EQ(Run(u"UPDATE things SET story = 'one' WHERE amount = ?", {value}),
                  value == Value(int64_t{5'000'000'000}) ? 0 : 1);
    Recordset rows;
    rows.Open(u"SELECT amount, made, story FROM things ORDER BY thingID", connection);
    EXPECT_EQ(rows.Field(0), number);
    EXPECT_EQ(rows.Field(1), date);
    EXPECT_EQ(rows.Field(2), Value(Text(300, u'é')));
    rows.MoveNext();
    EXPECT_EQ(rows.Field(0), Value(int64_t{1}));
    EXPECT_TRUE(IsNull(rows.Field(1)));
    rows.Close();
    test::FailureOf([&] { Run(u"INSERT INTO things (thingID) VALUES (?)", {}); });
    // A date is found again, to the second, however it was written.
    connection.Execute(u"UPDATE things SET made = " + modDB::FormatSQLDate(moment, true) + u" WHERE thingID = 'b'");
    EXPECT_EQ(Run(u"DELETE FROM things WHERE made = ?", {DateTime{2024, 2, 29, 23, 59, 8}}), 0);
    EXPECT_EQ(Run(u"DELETE FROM things WHERE made = ?", {date}), 2);
}

TEST_P(DataTest, RowsAreAddedAndUpdated) {
    Recordset table;
    table.Open(u"things", connection, adOpenDynamic, adLockOptimistic, adCmdTable);
    table.AddNew();
    table.SetField(u"THINGID", Text(u"o'hara"));
    table.SetField(u"Made", DateTime{2020, 1, 2, 3, 4, 5, 0});
    table.Update();
    table.Update(); // nothing is set any more
    EXPECT_FALSE(table.Eof());
    table.SetField(u"amount", int64_t{99}); // not of the row that is added
    table.AddNew();
    test::FailureOf([&] { table.Update(); });
    table.SetField(u"thingID", Text(u"lost"));
    table.MoveNext(); // what was not written is lost
    table.Update();
    EXPECT_EQ(Count(), 1);
    table.Close();
    EXPECT_TRUE(test::FailureOf([&] { table.AddNew(); }).Tells("closed"));
    Insert(u"other", u"untouched");

    Recordset row;
    const char16_t mark = GetParam() == Engine::MariaDB ? u'`' : u'"';
    const Text source = u"SELECT thingID, amount, made, story FROM " + (mark + Text(u"things")) + mark;
    row.Open(source + u" WHERE thingID = 'o''hara'", connection, adOpenDynamic, adLockOptimistic);
    connection.Execute(u"UPDATE things SET amount = 4 WHERE thingID = 'o''hara'"); // its key tells the row all the same
    row.SetField(u"story", Text(u"twice"));
    row.SetField(u"story", Text(9000, u'ü'));
    row.SetField(u"amount", int64_t{5});
    row.SetField(u"made", Value{});
    row.Update();
    row.Close();
    EXPECT_EQ(Story(u"o'hara"), Text(9000, u'ü'));
    EXPECT_EQ(Story(u"other"), u"untouched");
    row.Open(u"SELECT amount, story FROM things WHERE thingID = 'other'", connection, adOpenDynamic, adLockOptimistic);
    row.SetField(u"story", Text(u"without its key"));
    row.Update();
    row.Close();
    EXPECT_EQ(Story(u"other"), u"without its key");
    const Text schema = GetParam() == Engine::SQLite       ? u"main."
                        : GetParam() == Engine::PostgreSQL ? u"public."
                                                           : database->Name() + u".";
    row.Open(u"SELECT * FROM " + schema + u"things WHERE thingID = 'other'", connection, adOpenDynamic,
             adLockOptimistic);
    connection.Execute(u"UPDATE things SET amount = 7 WHERE thingID = 'other'");
    row.SetField(u"story", Text(u"by its key"));
    row.Update();
    row.Close();
    EXPECT_EQ(Story(u"other"), u"by its key");
    row.Open(u"SELECT * FROM things WHERE amount = 5", connection, adOpenDynamic, adLockOptimistic);
    EXPECT_TRUE(row.FieldIsNull(2));
    connection.Execute(u"DELETE FROM things WHERE amount = 5");
    row.SetField(u"amount", int64_t{6});
    EXPECT_TRUE(test::FailureOf([&] { row.Update(); }).Tells("another user"));
    row.Close();
    row.Open(u"SELECT * FROM things", connection);
    test::FailureOf([&] { row.AddNew(); });
    test::FailureOf([&] { row.SetField(u"amount", int64_t{1}); });
}

TEST_P(DataTest, ATableWithoutKeyIsUpdatedByItsValues) {
    connection.Execute(u"CREATE TABLE loose (name varchar(20), age integer)");
    const Text inserts[] = {u"INSERT INTO loose VALUES ('a', 1)", u"INSERT INTO loose VALUES ('b', NULL)",
                            u"INSERT INTO loose VALUES (NULL, 3)"};
    connection.ExecuteAll(inserts);
    Recordset row;
    row.Open(u"SELECT name, age FROM loose WHERE age IS NULL", connection, adOpenDynamic, adLockOptimistic);
    row.SetField(u"age", int64_t{2});
    row.Update();
    row.Close();
    EXPECT_EQ(database->Ask(u"SELECT age FROM loose WHERE name = 'b'"), u"2");
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM loose WHERE age = 2"), u"1");
}

TEST_P(DataTest, TransactionsEndAsTold) {
    connection.BeginTrans();
    Insert(u"a", u"");
    test::FailureOf([&] { connection.BeginTrans(); });
    test::FailureOf([&] { Insert(u"a", u"again"); }); // the transaction goes on
    Insert(u"b", u"");
    connection.CommitTrans();
    EXPECT_FALSE(connection.InTransaction());
    connection.BeginTrans();
    Insert(u"c", u"");
    connection.RollbackTrans();
    EXPECT_EQ(Count(), 2);
    connection.BeginTrans();
    Insert(u"d", u"");
    connection.Close(); // not committed
    connection.Open(database->ConnectionString());
    EXPECT_EQ(Count(), 2);
    Insert(u"e", u"");
    EXPECT_EQ(database->Ask(u"SELECT Count(*) FROM things"), u"3"); // seen from another connection
}

TEST_P(DataTest, ManyStatementsGiveWhatOneByOneGives) {
    std::vector<Text> statements, sent;
    for (int i = 0; i < 250; ++i)
        statements.push_back(u"INSERT INTO things (thingID, amount, made, story) VALUES (" +
                             modDB::QuoteSQLString(ToText(i)) + u", " + ToText(i) +
                             u", #2024/05/06 1:02:03#, ';''--')");
    statements.push_back(u"UPDATE things SET story = " + modDB::QuoteSQLString(Text(600'000, u'\'')) +
                         u" WHERE thingID = '7'");
    statements.push_back(u"UPDATE things SET story = 'last' WHERE thingID = '8'");
    std::vector<size_t> heard;
    const StatementObserver observer = [&](TextView statement) { sent.emplace_back(statement); };
    SetStatementObserver(observer);
    connection.Close();
    connection.Open(database->ConnectionString());
    EXPECT_GT(sent.size(), 1U) << "what opening sends";
    SetStatementObserver({});
    connection.BeginTrans();
    sent.clear();
    SetStatementObserver(observer);
    connection.ExecuteAll(statements, [&](size_t done) { heard.push_back(done); });
    SetStatementObserver({});
    connection.CommitTrans();
    EXPECT_EQ(sent.size(), statements.size());
    EXPECT_NE(sent[0].find(u"'2024-05-06 01:02:03'"), Text::npos);
    EXPECT_EQ(heard.back(), statements.size());
    EXPECT_GE(heard.size(), 5u) << "no more than a hundred in a call, and a long one alone";
    EXPECT_TRUE(std::is_sorted(heard.begin(), heard.end()));
    EXPECT_EQ(Count(), 250);
    EXPECT_EQ(Story(u"7"), Text(600'000, u'\''));
    EXPECT_EQ(Story(u"8"), u"last");

    // A statement with an open quote must not run into the next one.
    const Text hostile[] = {u"DELETE FROM things WHERE thingID = '1'", u"DELETE FROM things WHERE thingID = 'x'y'",
                            u"DELETE FROM things WHERE thingID = 'or' OR ''=''"};
    connection.BeginTrans();
    EXPECT_EQ(test::FailureOf([&] { connection.ExecuteAll(hostile); }).Number(), ErrorNumbers::SyntaxOrColumn);
    EXPECT_GE(Count(), 249);
    // The error of a late statement in one call is not lost.
    const Text late[] = {u"DELETE FROM things WHERE thingID = '2'", u"INSERT INTO things (thingID) VALUES ('3')",
                         u"DELETE FROM things WHERE thingID = '4'"};
    EXPECT_EQ(test::FailureOf([&] { connection.ExecuteAll(late); }).Number(), ErrorNumbers::Integrity);
    connection.RollbackTrans();
    EXPECT_EQ(Count(), 250);
}

TEST_P(DataTest, ErrorsCarryTheNumbersHostsKnow) {
    Insert(u"a", u"");
    const std::vector<std::pair<Text, int32_t>> cases = {
        {u"SELECT TOP 1 a FROM missing", ErrorNumbers::NoTable},
        {u"SELECT TOP 1 thingID, missing FROM things", ErrorNumbers::SyntaxOrColumn},
        {u"INSERT INTO things (thingID) VALUES ('a')", ErrorNumbers::Integrity},
        {u"SELEKT 1", ErrorNumbers::SyntaxOrColumn},
        {u"SELECT 'open", ErrorNumbers::SyntaxOrColumn},
    };
    for (const auto& [statement, number] : cases) {
        const Error error = test::FailureOf([&] { connection.Execute(statement); });
        EXPECT_EQ(error.Number(), number) << ToUtf8(statement) << ": " << error.what();
        EXPECT_FALSE(error.Description().empty() || error.Description().front() == u'[') << error.what();
    }
    Recordset table;
    EXPECT_EQ(test::FailureOf([&] {
                  table.Open(u"missing", connection, adOpenDynamic, adLockOptimistic, adCmdTable);
              }).Number(),
              ErrorNumbers::NoTable);
    EXPECT_FALSE(table.IsOpen());
    EXPECT_EQ(Count(), 1); // the connection still serves
}

TEST_P(DataTest, AClientCursorFreesTheConnection) {
    for (const Text id : {u"a", u"b", u"c"}) Insert(id, u"s" + id);
    Recordset recordset;
    recordset.SetCursorLocation(adUseClient);
    recordset.Open(u"SELECT thingID, story FROM things ORDER BY thingID", connection, adOpenKeyset);
    connection.Execute(u"DELETE FROM things");
    EXPECT_EQ(recordset.RecordCount(), 3);
    Text all;
    for (; !recordset.Eof(); recordset.MoveNext()) all += std::get<Text>(recordset.Field(u"story"));
    EXPECT_EQ(all, u"sasbsc");
}

} // namespace

} // namespace dax
