// What must come out the same on every engine: values, rows, transactions, errors.
#include "base/Error.h"
#include "data/Command.h"
#include "data/Recordset.h"
#include "data/modDB.h"
#include "data/odbc/OdbcErrors.h"
#include "support/TestDatabases.h"

namespace dax {
namespace {

using test::FailureOf;

#ifndef _WIN32
// Drivers convert some texts by the locale's encoding: ours must arrive in any locale.
[[maybe_unused]] const int plainLocale = setenv("LC_ALL", "C", 1);
#endif

class DataTest : public test::EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (!database) return;
        connection.Open(database->ConnectionString());
        connection.Execute(u"CREATE TABLE things (thingID varchar(200) PRIMARY KEY, amount integer, made " +
                           Text(isMariaDB ? u"datetime(6), story longtext)" : u"timestamp, story text)"));
    }
    void TearDown() override { connection.Close(); }

    void Insert(const Text& id, const Text& story) {
        connection.Execute(u"INSERT INTO things (thingID, amount, story) VALUES (" + modDB::QuoteSQLString(id) +
                           u", 1, " + modDB::QuoteSQLString(story) + u")");
    }
    // The first value of the first row, queried on the same connection.
    Text Answer(const Text& query) {
        Recordset recordset;
        recordset.Open(query, connection);
        return recordset.Eof() ? Text(u"<none>") : Text(recordset.FieldText(0));
    }
    Text StoredText(const Text& id) {
        return Answer(u"SELECT story FROM things WHERE thingID = " + modDB::QuoteSQLString(id));
    }
    Text Count() { return Answer(u"SELECT Count(*) FROM things"); }
    int64_t Run(const Text& statement, const std::vector<Value>& values) {
        Command command(connection);
        command.SetCommandText(statement);
        for (const Value& value : values) command.AppendParameter(value);
        return command.Execute();
    }

    const bool isMariaDB = GetParam() == Engine::MariaDB;
    Connection connection;
};

INSTANTIATE_TEST_SUITE_P(Engines, DataTest, ::testing::ValuesIn(test::AllEngines()), test::EngineName);

TEST_P(DataTest, AnyTextComesBackAsItWas) {
    std::vector<Text> texts = {
        u"",      u"'",         u"''\\''",         u"\\",          u"C:\\new\\'x'", u"a?b{c}d",
        u"漢字😀", u"%_\"`[x]#", u" blanks round ", u"\r\n\t;-- x", u"#2024/05/06#", u"'2024/05/06'"};
    texts.insert(texts.end(), {Text(8001, u'\''), Text{0xFFFD, 0xE000, 0xDBFF, 0xDFFF, 0xFEFF, 0xFFFF}});
    for (const size_t length : {1, 3, 255, 256, 257, 511, 4000, 4001, 8190, 8200, 20000, 40000, 1'000'000}) {
        Text& text = texts.emplace_back();
        // Marks, letters of one to four bytes, and some whose low byte is that of a surrogate's high one.
        for (size_t i = length; text.size() + 13 <= length; i = i * 7 + 5)
            text +=
                i % 3 ? Text(1, static_cast<char16_t>(0x20 + i % 0xD7E0)) : Text(u"'\\\"?;{ØÙǚ漢\n😀").substr(i % 11);
        text.resize(length, u'.');
    }
    for (size_t i = 0; i < texts.size(); ++i) {
        const Text id = ToText(static_cast<long long>(i));
        Insert(id, texts[i]);
        EXPECT_EQ(Run(u"INSERT INTO things (thingID, story) VALUES (?, ?)", {id + u"p", texts[i]}), 1);
    }
    // In one pass, where long and short texts alternate, and with all rows read at once.
    for (const CursorLocations location : {adUseServer, adUseClient}) {
        Recordset rows;
        rows.SetCursorLocation(location);
        rows.Open(u"SELECT thingID, story FROM things", connection);
        size_t seen = 0;
        for (; !rows.Eof(); rows.MoveNext(), ++seen) {
            const std::string id = ToUtf8(rows.FieldText(0));
            EXPECT_TRUE(rows.FieldText(1) == texts.at(std::stoul(id))) << id;
        }
        EXPECT_EQ(seen, texts.size() * 2);
    }
    Insert(u"lone", Text{u'a', 0xD83D, u'b', 0xDE00});
    EXPECT_TRUE(StoredText(u"lone") == (Text{u'a', 0xFFFD, u'b', 0xFFFD}));
}

TEST_P(DataTest, NullIsNotEmptyWhereverTheRowsAre) {
    Insert(u"empty", u"");
    connection.Execute(u"INSERT INTO things (thingID) VALUES ('null')");
    for (const CursorLocations location : {adUseServer, adUseClient}) {
        Recordset rows;
        rows.SetCursorLocation(location);
        rows.Open(u"SELECT thingID, amount, made, story FROM things ORDER BY thingID", connection);
        EXPECT_EQ(rows.RecordCount(), location == adUseClient ? 2 : -1);
        // Read at once, they leave the connection free.
        EXPECT_EQ(location == adUseClient ? connection.Execute(u"DELETE FROM things") : 2, 2);
        EXPECT_FALSE(rows.FieldIsNull(3));
        EXPECT_EQ(rows.Field(u"STORY"), Value(Text()));
        EXPECT_EQ(rows.Field(u"Amount"), Value(int64_t{1}));
        EXPECT_EQ(rows.FieldCount(), 4u);
        EXPECT_TRUE(FailureOf([&] { (void)rows.FieldText(4); }).Mentions("no field number 4"));
        EXPECT_TRUE(FailureOf([&] { (void)rows.FieldIsNull(4); }).Mentions("no field number 4"));
        EXPECT_EQ(FailureOf([&] { (void)rows.Field(u"nothing"); }).Number(), ErrorNumbers::SyntaxOrColumn);
        rows.MoveNext();
        for (size_t column = 1; column < 4; ++column) {
            EXPECT_TRUE(rows.FieldIsNull(column) && IsNull(rows.Field(column)) && rows.FieldText(column).empty());
        }
        for (int i = 0; i < 2; ++i) {
            rows.MoveNext();
            EXPECT_TRUE(rows.Eof());
            EXPECT_TRUE(FailureOf([&] { (void)rows.Field(0); }).Mentions("no current row"));
        }
        EXPECT_TRUE(FailureOf([&] { rows.Open(u"SELECT 1", connection); }).Mentions("already open"));
        EXPECT_TRUE(FailureOf([&] { rows.Open(u"SELECT 1", database->ConnectionString()); }).Mentions("already open"));
        rows.Close();
        EXPECT_EQ(rows.FieldCount(), 0u);
        const std::function<void()> calls[] = {[&] { (void)rows.Eof(); }, [&] { rows.MoveNext(); },
                                               [&] { (void)rows.RecordCount(); }, [&] { (void)rows.Field(u"made"); }};
        for (const auto& call : calls) EXPECT_TRUE(FailureOf(call).Mentions("closed"));
        rows.Open(u"SELECT 1", connection); // in the same place
        EXPECT_EQ(rows.RecordCount(), location == adUseClient ? 1 : -1);
    }
    EXPECT_TRUE(FailureOf([&] { connection.Open(database->ConnectionString()); }).Mentions("already open"));
}

TEST_P(DataTest, ParametersOfEveryKind) {
    const DateTime moment{2024, 2, 29, 23, 59, 7};
    const Value number = int64_t{5}, date = moment;
    const Text insert = u"INSERT INTO things (thingID, amount, made, story) VALUES (?, ?, ?, ?)";
    EXPECT_EQ(Run(insert, {Text(u"a"), number, date, Text(300, u'é')}), 1);
    EXPECT_EQ(Run(insert, {Text(u"b"), {}, {}, {}}), 1);
    EXPECT_EQ(Run(insert, {Text(u"c"), int64_t{INT32_MIN}, DateTime{1899, 12, 30, 0, 0, 0, 1999}, Text()}), 1);
    EXPECT_EQ(Run(u"UPDATE things SET amount = ? WHERE amount IS NULL", {true}), 1);
    EXPECT_EQ(Run(u"UPDATE things SET story = 'none' WHERE amount = ?", {false}), 0);
    constexpr int64_t large = (int64_t{1} << 32) + 5;
    for (const Value& value : {Value(int64_t{1}), Value(1.0), Value(large), Value(-large)})
        EXPECT_EQ(Run(u"UPDATE things SET story = 'one' WHERE amount = ? OR amount = ?", {value, value}),
                  value == Value(large) || value == Value(-large) ? 0 : 1);
    Recordset rows;
    rows.Open(u"SELECT amount, made, story FROM things ORDER BY thingID", connection);
    // Servers keep millionths of a second; a file keeps what is written.
    const uint32_t fraction = GetParam() == Engine::SQLite ? 1999 : 1000;
    const Value expected[][3] = {{number, date, Text(300, u'é')},
                                 {int64_t{1}, {}, Text(u"one")},
                                 {int64_t{INT32_MIN}, DateTime{1899, 12, 30, 0, 0, 0, fraction}, Text()}};
    for (const auto& row : expected) {
        for (size_t column = 0; column < 3; ++column) EXPECT_EQ(rows.Field(column), row[column]) << column;
        rows.MoveNext();
    }
    rows.Close();
    if (isMariaDB) { // whose bits come as the units 0 and 1
        connection.Execute(u"CREATE TABLE bits (one bit(1), zero bit(1))");
        connection.Execute(u"INSERT INTO bits VALUES (1, 0)");
        rows.Open(u"SELECT one, zero FROM bits", connection);
        EXPECT_TRUE(rows.Field(0) == Value(true) && rows.Field(1) == Value(false));
        rows.Close();
    }
    rows.Open(u"SELECT CAST(2.5 AS decimal(5, 1)), CAST(7 AS decimal(5, 0))", connection);
    EXPECT_TRUE(rows.Field(0) == Value(2.5) && rows.Field(1) == Value(int64_t{7}));
    rows.Close();
    FailureOf([&] { Run(u"INSERT INTO things (thingID) VALUES (?)", {}); });
    // A date is found again, to the second, however it was written.
    connection.Execute(u"UPDATE things SET made = " + modDB::FormatSQLDate(moment, true) + u" WHERE thingID = 'b'");
    EXPECT_EQ(Run(u"DELETE FROM things WHERE made = ?", {DateTime{2024, 2, 29, 23, 59, 8}}), 0);
    EXPECT_EQ(Run(u"DELETE FROM things WHERE made = ?", {date}), 2);
}

TEST_P(DataTest, RowsAreAddedAndUpdated) {
    Insert(u"other", u"untouched");
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
    EXPECT_TRUE(FailureOf([&] { table.Update(); }).Mentions("No field"));
    table.SetField(u"thingID", Text(u"lost"));
    table.MoveNext(); // what was not written is lost
    table.Update();
    EXPECT_EQ(Count(), u"2");
    table.Close();
    EXPECT_TRUE(FailureOf([&] { table.AddNew(); }).Mentions("closed"));

    const auto update = [&](const Text& select, const Text& meanwhile, const std::pair<Text, Value>& set) {
        Recordset row;
        row.Open(select, connection, adOpenDynamic, adLockOptimistic);
        if (!meanwhile.empty()) connection.Execute(meanwhile);
        row.SetField(set.first, Text(u"first"));
        row.SetField(set.first, set.second);
        row.Update();
    };
    // The key identifies the row, whatever another has changed in it meanwhile.
    update(u"SELECT * FROM things WHERE thingID = 'o''hara'", u"UPDATE things SET amount = 5 WHERE thingID = 'o''hara'",
           {u"story", Text(9000, u'ü')});
    update(u"SELECT * FROM things WHERE thingID = 'o''hara'", {}, {u"made", {}});
    EXPECT_EQ(StoredText(u"o'hara"), Text(9000, u'ü'));
    EXPECT_EQ(StoredText(u"other"), u"untouched");
    // Without its key all that was read does.
    update(u"SELECT amount, story FROM things WHERE thingID = 'other'", {}, {u"story", Text(u"without its key")});
    EXPECT_EQ(StoredText(u"other"), u"without its key");
    EXPECT_EQ(Answer(u"SELECT thingID FROM things WHERE made IS NULL AND amount = 5"), u"o'hara");
    connection.Execute(u"CREATE TABLE loose (name varchar(20), age integer)");
    for (const Text row : {u"'a', 1", u"'b', NULL", u"NULL, 3"})
        connection.Execute(u"INSERT INTO loose VALUES (" + row + u")");
    update(u"SELECT name, age FROM loose WHERE age IS NULL", {}, {u"age", int64_t{2}});
    EXPECT_EQ(Answer(u"SELECT Sum(age) FROM loose") + Answer(u"SELECT name FROM loose WHERE age = 2"), u"6b");
    const Text row = u" FROM things WHERE amount = 5";
    EXPECT_TRUE(FailureOf([&] {
                    update(u"SELECT *" + row, u"DELETE" + row, {u"amount", int64_t{6}});
                }).Mentions("another user"));
    table.Open(u"SELECT * FROM things", connection);
    EXPECT_TRUE(FailureOf([&] { table.AddNew(); }).Mentions("read-only"));
    EXPECT_TRUE(FailureOf([&] { table.SetField(u"amount", int64_t{1}); }).Mentions("read-only"));
}

TEST_P(DataTest, TransactionsEndAsRequested) {
    EXPECT_TRUE(FailureOf([&] { connection.CommitTrans(); }).Mentions("No transaction"));
    connection.BeginTrans();
    Insert(u"a", u"");
    EXPECT_TRUE(FailureOf([&] { connection.BeginTrans(); }).Mentions("already open"));
    FailureOf([&] { Insert(u"a", u"again"); }); // the transaction continues
    Insert(u"b", u"");
    connection.CommitTrans();
    EXPECT_FALSE(connection.InTransaction());
    connection.BeginTrans();
    Insert(u"c", u"");
    connection.RollbackTrans();
    connection.RollbackTrans(); // of nothing
    Insert(u"r", u"");
    EXPECT_EQ(database->Query(u"SELECT Count(*) FROM things"), u"3"); // seen from another connection
    connection.BeginTrans();
    Insert(u"d", u"");
    connection.Close(); // not committed
    connection.Open(database->ConnectionString());
    EXPECT_EQ(Count(), u"3");
    Insert(u"e", u"");
    EXPECT_EQ(database->Query(u"SELECT Count(*) FROM things"), u"4");
    connection.BeginTrans();
    connection.Execute(u"DELETE FROM things");
    Recordset rows;
    rows.Open(u"SELECT Count(*) FROM things", connection);
    for (int i = 0; i < 2; ++i) { // the second time nothing is open any more
        modDB::CloseConnectionObjects(&rows, &connection, true);
        EXPECT_FALSE(rows.IsOpen() || connection.IsOpen());
    }
    EXPECT_EQ(database->Query(u"SELECT Count(*) FROM things"), u"4");
}

TEST_P(DataTest, ManyStatementsGiveWhatOneByOneGives) {
    std::vector<Text> statements, sent;
    for (int i = 0; i < 250; ++i)
        statements.push_back(u"INSERT INTO things (thingID, amount, made, story) VALUES ('" + ToText(i) +
                             u"', 2, #2024/05/06 1:02:03#, ';''--')");
    for (const Text& story : {Text(600'000, u'\''), Text(u"last")})
        statements.push_back(u"UPDATE things SET story = " + modDB::QuoteSQLString(story) + u" WHERE thingID = '" +
                             ToText(static_cast<long long>(story.size())) + u"'");
    statements[7] = u"INSERT INTO things (thingID) VALUES ('600000')";
    std::vector<size_t> received;
    SetStatementObserver([&](TextView statement) { sent.emplace_back(statement); });
    connection.Close();
    connection.Open(database->ConnectionString());
    connection.BeginTrans();
    const size_t opening = sent.size();
    connection.ExecuteAll(statements, [&](size_t done) { received.push_back(done); });
    SetStatementObserver({});
    connection.CommitTrans();
    EXPECT_GT(opening, 1u) << "what opening sends";
    EXPECT_EQ(sent.size() - opening, statements.size());
    EXPECT_NE(sent[opening].find(u"'2024-05-06 01:02:03'"), Text::npos);
    // A server takes a hundred in a call, and a long one alone.
    EXPECT_TRUE(GetParam() == Engine::SQLite || received == std::vector<size_t>({100, 200, 250, 251, 252}))
        << ::testing::PrintToString(received);
    EXPECT_EQ(received.back(), statements.size());
    EXPECT_EQ(Count(), u"250");
    EXPECT_EQ(StoredText(u"600000"), Text(600'000, u'\''));
    EXPECT_EQ(StoredText(u"4"), u"last");
    // Neither is too much text sent at once.
    const std::vector<Text> large(100, u"UPDATE things SET story = '" + Text(7000, u'x') + u"' WHERE thingID = '3'");
    received.clear();
    connection.ExecuteAll(large, [&](size_t done) { received.push_back(done); });
    EXPECT_TRUE(GetParam() == Engine::SQLite || received == std::vector<size_t>({70, 100}))
        << ::testing::PrintToString(received);
    // A statement with an open quote must not run into the next one.
    const Text hostile[] = {u"DELETE FROM things WHERE thingID = '1'", u"DELETE FROM things WHERE thingID = 'x'y'",
                            u"DELETE FROM things WHERE thingID = 'or' OR ''=''"};
    connection.BeginTrans();
    EXPECT_EQ(FailureOf([&] { connection.ExecuteAll(hostile); }).Number(), ErrorNumbers::SyntaxOrColumn);
    EXPECT_GE(std::stoi(ToUtf8(Count())), 249);
    // The error of a late statement in one call is not lost.
    const Text late[] = {u"DELETE FROM things WHERE thingID = '2'", u"INSERT INTO things (thingID) VALUES ('3')",
                         u"DELETE FROM things WHERE thingID = '4'"};
    EXPECT_EQ(FailureOf([&] { connection.ExecuteAll(late); }).Number(), ErrorNumbers::Integrity);
    connection.RollbackTrans();
    EXPECT_EQ(Count(), u"250");
}

TEST_P(DataTest, ErrorsCarryTheNumbersHostsKnow) {
    Insert(u"a", u"");
    const std::pair<Text, int32_t> cases[] = {
        {u"SELECT TOP 1 a FROM żółw_טǘ", ErrorNumbers::NoTable},
        {u"SELECT TOP 1 thingID, missing FROM things", ErrorNumbers::SyntaxOrColumn},
        {u"INSERT INTO things (thingID, missing) VALUES ('b', 1)", ErrorNumbers::SyntaxOrColumn},
        {u"INSERT INTO things (thingID) VALUES ('a')", ErrorNumbers::Integrity},
        {u"SELEKT 1", ErrorNumbers::SyntaxOrColumn},
        {u"SELECT 'open", ErrorNumbers::SyntaxOrColumn},
    };
    for (const auto& [statement, number] : cases) {
        const auto error = FailureOf([&] { connection.Execute(statement); });
        EXPECT_EQ(error.Number(), number) << ToUtf8(statement) << ": " << error.what();
        // The engine's message, without the names of the layers that it passed through.
        EXPECT_FALSE(error.Description().empty() || error.Mentions("]")) << error.what();
        EXPECT_EQ(std::string(error.what()).find("Error while executing"), std::string::npos) << error.what();
    }
    Recordset table;
    const auto error =
        FailureOf([&] { table.Open(u"żółw_טǘ", connection, adOpenDynamic, adLockOptimistic, adCmdTable); });
    EXPECT_TRUE(error.Number() == ErrorNumbers::NoTable && error.Mentions("żółw_טǘ")) << error.what();
    EXPECT_FALSE(table.IsOpen());
    EXPECT_TRUE(
        FailureOf([&] { table.Open(u"DELETE FROM things WHERE 1 = 0", connection); }).Mentions("returns no rows"));
    EXPECT_EQ(Count(), u"1"); // the connection still works
}

// Messages of drivers, also of those that cannot run here.
TEST(OdbcErrorTest, DriverMessagesBecomeNumbersAndAdvice) {
    using namespace ErrorNumbers;
    const struct {
        Engine engine;
        Diagnostic diagnostic;
        int32_t number;
        std::string message;
    } cases[] = {
        {Engine::PostgreSQL, {u"08001", 0, u"FATAL: password authentication failed"}, Authentication, "FATAL"},
        {Engine::PostgreSQL, {u"40001", 0, u"could not serialize"}, Unspecified, "Another transaction"},
        {Engine::PostgreSQL, {u"57P01", 0, u"shut down"}, Unspecified, "server was lost"},
        {Engine::MariaDB, {u"40001", 1213, u"Deadlock found"}, Unspecified, "rolled this one back"},
        {Engine::MariaDB, {u"HY000", 1205, u"x"}, Timeout, "x"},
        {Engine::MariaDB, {u"22001", 0, u"Duplicate entry"}, DataOverflow, "Duplicate"},
        {Engine::SQLServer, {u"42000", 229, u"denied"}, Permission, "denied"},
        {Engine::SQLServer, {u"HY000", 1205, u"x"}, Unspecified, "x"},
        {Engine::Access, {u"42S02", 0, u"x"}, NoTable, "x"},
        {Engine::Other, {u"22018", 0, u"x"}, DataMismatch, "x"},
        {Engine::Other, {u"08S01", 0, u"x"}, Unspecified, "server was lost"},
    };
    for (const auto& c : cases) {
        const test::Failure failure = FailureOf([&] { ThrowDiagnostic(c.diagnostic, c.engine); });
        EXPECT_EQ(failure.Number(), c.number) << ToUtf8(c.diagnostic.state);
        EXPECT_TRUE(failure.Mentions(c.message) && failure.Mentions(ToUtf8(c.diagnostic.message))) << failure.what();
    }
}

} // namespace
} // namespace dax
