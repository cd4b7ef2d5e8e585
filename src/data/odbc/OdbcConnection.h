// An open ODBC connection: its handles, its engine, its transaction and the statement handle it uses again and again.
#pragma once

#include "data/ConnectionString.h"
#include "data/Dialect.h"
#include "data/odbc/Odbc.h"

namespace dax {

class OdbcStatement;

class OdbcConnection {
public:
    // Connects; throws Error with what a person can do about it.
    explicit OdbcConnection(const Text& connectionString);
    // Rolls back what was not committed, and disconnects.
    ~OdbcConnection();
    OdbcConnection(const OdbcConnection&) = delete;
    OdbcConnection& operator=(const OdbcConnection&) = delete;

    SQLHDBC Handle() const { return connection.Get(); }
    const Dialect& Quirks() const { return *dialect; }
    // Texts go to the driver as UTF-8 through the narrow functions.
    bool IsNarrow() const { return dialect->narrowOnUnix && ManagerIsUnix(); }
    // True when the driver hands out long columns in any order, bound ones too.
    bool GetsDataFreely() const { return getsDataFreely; }

    void Begin();
    // A failed commit leaves the transaction open.
    void Commit();
    void Rollback();
    bool InTransaction() const { return inTransaction; }

    // For statements without rows.
    OdbcStatement& Scratch();
    void Cancel() noexcept;

private:
    void Connect(const ConnectionTarget& target);
    [[noreturn]] void ThrowConnectError(const ConnectionTarget& target);
    void Prepare(const ConnectionTarget& target);
    void EndTransaction();

    EnvironmentHandle environment;
    ConnectionHandle connection;
    const Dialect* dialect = &DialectOf(Engine::Other);
    std::unique_ptr<OdbcStatement> scratch;
    bool isConnected = false, inTransaction = false, getsDataFreely = false;
};

} // namespace dax
