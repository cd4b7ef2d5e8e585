// An open ODBC connection: its handles, its engine and its transaction.
#pragma once

#include "data/ConnectionString.h"
#include "data/Session.h"
#include "data/odbc/Odbc.h"

namespace dax {

class OdbcStatement;

class OdbcConnection final : public Session {
public:
    // Connects; throws Error with what the user can do about it. A driver of an unknown name may turn out to serve a
    // known engine, which SqlDialect returns then.
    explicit OdbcConnection(const ConnectionTarget& target);
    ~OdbcConnection() override;

    SQLHDBC Handle() const { return connection.Get(); }
    const Dialect& SqlDialect() const override { return *dialect; }
    // Texts go to the driver as UTF-8 through the narrow functions.
    bool IsNarrow() const { return dialect->narrowOnUnix && ManagerIsUnix(); }
    // The driver's own limit for a statement in seconds; 0: none is set.
    int StatementLimit() const { return statementLimit; }
    // True when the driver returns long columns in any order, bound ones too.
    bool HasGetDataAnyOrder() const { return hasGetDataAnyOrder; }

    std::unique_ptr<Statement> NewStatement() override;
    void Begin() override;
    void Commit() override;
    void Rollback() override;
    bool InTransaction() const override { return inTransaction; }
    std::vector<Text> KeyColumns(const Text& table) override;
    std::vector<Text> TableNames() override;

private:
    Text CatalogName() const;
    void Connect(const ConnectionTarget& target);
    [[noreturn]] void ThrowConnectError(const ConnectionTarget& target);
    Engine EngineConnectedTo() const;
    void EndTransaction();

    EnvironmentHandle environment;
    ConnectionHandle connection;
    const Dialect* dialect;
    int statementLimit;
    bool isConnected = false, inTransaction = false, hasGetDataAnyOrder = false;
};

} // namespace dax
