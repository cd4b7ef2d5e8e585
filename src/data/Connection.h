// A database connection in ADO's vocabulary: open, execute, transactions.
#pragma once

#include "base/Error.h"
#include "base/Value.h"

#include <functional>
#include <memory>
#include <span>

namespace dax {

enum CursorTypes { adOpenForwardOnly = 0, adOpenKeyset = 1, adOpenDynamic = 2, adOpenStatic = 3 };
enum LockTypes { adLockReadOnly = 1, adLockPessimistic = 2, adLockOptimistic = 3, adLockBatchOptimistic = 4 };
enum CursorLocations { adUseServer = 2, adUseClient = 3 };
enum ExecuteOptions {
    adOptionUnspecified = -1,
    adCmdText = 1,
    adCmdTable = 2,
    adAsyncFetch = 32,
    adExecuteNoRecords = 128,
};

enum class Engine { Access, SQLServer, SQLite, PostgreSQL, MariaDB, Other };

class Session; // the back end; private to this module
class Statement;

class Connection {
public:
    Connection();
    // Rolls back a transaction that was not committed and closes.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Takes every form of connection string that hosts use (see ConnectionString.h).
    // Throws Error: no driver (names it and how to get it), no server, wrong password, no database.
    void Open(const Text& connectionString);
    void Close();
    bool IsOpen() const;

    // Runs one statement; adapted to the engine first, sent verbatim to Access and SQL Server.
    // Returns the number of rows affected, -1 where the engine does not report it.
    int64_t Execute(const Text& statement, int options = adCmdText | adExecuteNoRecords);
    // The same for many, in order, several per round trip where the engine takes them. Stops at the first that
    // fails; run inside a transaction, since some before it may have been done.
    // `progress`, when given, receives the number of statements done so far.
    void ExecuteAll(std::span<const Text> statements, const std::function<void(size_t)>& progress = {});

    void BeginTrans();
    void CommitTrans();
    void RollbackTrans();
    bool InTransaction() const;

    void Cancel() noexcept;

    Engine Kind() const;

private:
    friend class Command;
    friend class DatabaseCopy;
    friend class RecordsetState;
    Session& Opened() const; // Error when the connection is closed
    Statement& Scratch();    // for statements without rows
    int64_t ExecuteWith(TextView statement, std::span<const Value> parameters);

    std::unique_ptr<Session> session;
    std::unique_ptr<Statement> scratch; // destroyed before the session
};

// Called with every statement as it is sent (after adaption), without its parameters. Null: none.
using StatementObserver = std::function<void(TextView statement)>;
void SetStatementObserver(StatementObserver observer);

} // namespace dax
