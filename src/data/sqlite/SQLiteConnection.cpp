#include "data/sqlite/SQLiteConnection.h"

#include "data/sqlite/SQLiteErrors.h"
#include "data/sqlite/SQLiteFile.h"
#include "data/sqlite/SQLiteRows.h"
#include "data/sqlite/SQLiteStatement.h"

#include <algorithm>
#include <utility>

namespace dax {

namespace {

// Limits against hostile files, which no course reaches. Texts of many million units must be possible.
constexpr std::pair<int, int> fileLimits[] = {
    {SQLITE_LIMIT_LENGTH, 512 << 20},    {SQLITE_LIMIT_SQL_LENGTH, 512 << 20}, {SQLITE_LIMIT_COLUMN, 1000},
    {SQLITE_LIMIT_COMPOUND_SELECT, 100}, {SQLITE_LIMIT_VDBE_OP, 5'000'000},    {SQLITE_LIMIT_TRIGGER_DEPTH, 50},
    {SQLITE_LIMIT_ATTACHED, 0},          {SQLITE_LIMIT_WORKER_THREADS, 0},
};

// Steps of the engine between two checks of the time limit: some milliseconds.
constexpr int progressInterval = 100'000;

} // namespace

SQLiteConnection::SQLiteConnection(const ConnectionTarget& target)
    : path(target.path), dialect(DialectOf(target.engine)),
      wait(std::min<std::chrono::milliseconds>(target.file.lockTimeout, std::chrono::seconds(target.timeout))),
      callLimit(target.commandTimeout) {
    RequireDatabaseFile(path);
    const SQLiteWaitScope waiting(wait);
    Open(target);
    Protect();
    // A file that is no database is detected only now.
    Run("SELECT Count(*) FROM sqlite_master");
    Apply(target.file);
    wait.SetLimit(target.file.lockTimeout);
}

SQLiteConnection::~SQLiteConnection() {
    const SQLiteWaitScope waiting(wait);
    for (SQLiteStatement* const statement : statements) statement->Abandon();
    file.reset(); // which rolls back
}

void SQLiteConnection::Open(const ConnectionTarget&) {
    sqlite3* opened = nullptr;
    const int result =
        sqlite3_open_v2(SQLiteName(path).c_str(), &opened,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_EXRESCODE,
                        SQLiteFileSystem());
    file.reset(opened);
    Check(result);
    sqlite3_busy_handler(opened, SQLiteIsBusy, &wait);
    if (callLimit.count() > 0) sqlite3_progress_handler(opened, progressInterval, OnProgress, this);
}

void SQLiteConnection::Protect() {
    const auto set = [&](int option, int value) { Check(sqlite3_db_config(file.get(), option, value, nullptr)); };
    set(SQLITE_DBCONFIG_DEFENSIVE, 1);
    set(SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0);
    set(SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0);
    set(SQLITE_DBCONFIG_ENABLE_FTS3_TOKENIZER, 0);
    for (const auto& [limit, value] : fileLimits)
        if (sqlite3_limit(file.get(), limit, -1) > value) sqlite3_limit(file.get(), limit, value);
    Run("PRAGMA cell_size_check = ON");
    Run("PRAGMA mmap_size = 0"); // a file that gets shorter meanwhile would end the program
}

void SQLiteConnection::Apply(const FileSettings& settings) {
    if (settings.foreignKeys) Run("PRAGMA foreign_keys = ON");
    if (!settings.synchronous.empty()) Run(("PRAGMA synchronous = " + settings.synchronous).c_str());
    if (!settings.journalMode.empty()) Run(("PRAGMA journal_mode = " + settings.journalMode).c_str());
}

void SQLiteConnection::Run(const char* statement) {
    Observe(FromUtf8(statement));
    BeginCall();
    Check(sqlite3_exec(file.get(), statement, nullptr, nullptr, nullptr));
}

void SQLiteConnection::Check(int result) {
    if ((result & 0xFF) == SQLITE_OK || result == SQLITE_ROW || result == SQLITE_DONE) return;
    if ((result & 0xFF) == SQLITE_INTERRUPT && std::exchange(hasTimedOut, false))
        throw Error(ErrorNumbers::Timeout, u"The statement on '" + path +
                                               u"' was stopped because it took longer than " +
                                               ToText(callLimit.count()) +
                                               u" seconds, which \"Command Timeout\" in the connection string allows.");
    throw SQLiteError(file.get(), result, path);
}

// Called by the engine again and again while it works, within one call of ours or the next.
int SQLiteConnection::OnProgress(void* connection) {
    auto& self = *static_cast<SQLiteConnection*>(connection);
    const auto now = WaitClock::now();
    if (self.timedCall != self.callNumber) {
        self.timedCall = self.callNumber;
        self.callBegan = now;
    }
    self.hasTimedOut = now - self.callBegan > self.callLimit;
    return self.hasTimedOut ? 1 : 0;
}

std::unique_ptr<Statement> SQLiteConnection::NewStatement() { return std::make_unique<SQLiteStatement>(*this); }

void SQLiteConnection::RequireTransaction() const {
    if (inTransaction && sqlite3_get_autocommit(file.get()) != 0)
        throw Error(u"The transaction was rolled back after the error before, so nothing "
                    u"more can be done in it.");
}

void SQLiteConnection::Begin() {
    if (inTransaction) throw Error(u"A transaction is already open on this connection.");
    const SQLiteWaitScope waiting(wait);
    Run("BEGIN");
    inTransaction = true;
}

void SQLiteConnection::Commit() {
    if (!inTransaction) throw Error(u"No transaction is open on this connection.");
    RequireTransaction();
    const SQLiteWaitScope waiting(wait);
    Run("COMMIT");
    inTransaction = false;
}

void SQLiteConnection::Rollback() {
    if (!std::exchange(inTransaction, false) || sqlite3_get_autocommit(file.get()) != 0) return;
    const SQLiteWaitScope waiting(wait);
    Run("ROLLBACK");
}

std::vector<Text> SQLiteConnection::KeyColumns(const Text& table) {
    SQLiteStatement keys(*this);
    const Value name = table;
    keys.Execute(u"SELECT name FROM pragma_table_info(?) WHERE pk > 0 ORDER BY pk", {&name, 1});
    std::vector<Text> columns;
    keys.OpenRows();
    while (keys.Next()) columns.emplace_back(keys.FieldText(0));
    return columns;
}

std::vector<Text> SQLiteConnection::TableNames() {
    SQLiteStatement names(*this);
    names.Execute(u"SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\'");
    std::vector<Text> tables;
    names.OpenRows();
    while (names.Next()) tables.emplace_back(names.FieldText(0));
    return tables;
}

std::unique_ptr<RowWriter> SQLiteConnection::NewRows(const Text& table, const std::vector<RowColumn>& columns) {
    return std::make_unique<SQLiteRows>(*this, table, columns);
}

} // namespace dax
