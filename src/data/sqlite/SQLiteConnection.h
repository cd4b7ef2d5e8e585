// An open SQLite file and its transaction, by SQLite's own interface. Files may be from anywhere: nothing in one may
// affect anything else, and no call waits for ever.
#pragma once

#include "data/ConnectionString.h"
#include "data/Session.h"
#include "data/sqlite/SQLite.h"
#include "data/sqlite/SQLiteWait.h"

namespace dax {

class SQLiteStatement;

class SQLiteConnection final : public Session {
public:
    // The file must be there; it is opened read-only where it cannot be written.
    explicit SQLiteConnection(const ConnectionTarget& target);
    ~SQLiteConnection() override;

    const Dialect& SqlDialect() const override { return dialect; }
    std::unique_ptr<Statement> NewStatement() override;
    void Begin() override;
    void Commit() override;
    void Rollback() override;
    bool InTransaction() const override { return inTransaction; }
    std::vector<Text> KeyColumns(const Text& table) override;
    std::vector<Text> TableNames() override;
    std::unique_ptr<RowWriter> NewRows(const Text& table, const std::vector<RowColumn>& columns) override;

    sqlite3* Handle() const { return file.get(); }
    SQLiteWait& Wait() { return wait; }
    // Throws when the engine has ended the transaction by itself (after a full disk, say): what follows would be
    // written at once.
    void RequireTransaction() const;
    // Throws Error for any result but success. A statement that ran too long fails as a time-out.
    void Check(int result);
    // Restarts the time limit for the next call into the engine.
    void BeginCall() { ++callNumber; }

private:
    friend class SQLiteStatement;
    void Open(const ConnectionTarget& target);
    void Protect();
    void Apply(const FileSettings& settings);
    // Runs a statement without rows that is part of no caller's statement text.
    void Run(const char* statement);
    static int OnProgress(void* connection);

    const Text path;
    const Dialect& dialect;
    SQLiteWait wait;
    SQLiteHandle file;
    bool inTransaction = false;
    std::vector<SQLiteStatement*> statements; // all that exist
    std::chrono::seconds callLimit;           // 0: no limit
    uint64_t callNumber = 0, timedCall = 0;
    WaitClock::time_point callBegan{};
    bool hasTimedOut = false;
};

} // namespace dax
