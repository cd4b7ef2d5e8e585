#include "data/Session.h"

#include "data/ConnectionString.h"
#include "data/StatementText.h"
#include "data/odbc/OdbcConnection.h"
#include "data/sqlite/SQLiteConnection.h"

#include <algorithm>
#include <mutex>

namespace dax {

namespace {

StatementObserver& Observer() {
    static StatementObserver observer;
    return observer;
}

// What the string means on this machine. The manager reads its files several times for each driver that it names, so
// they are asked for once, and again when the one that is wanted was not among them.
ConnectionTarget TargetHere(const Text& connectionString, Engine engine = Engine::Other) {
    static std::mutex mutex;
    static std::vector<Text> known;
    const std::scoped_lock lock(mutex);
    const Machine machine{[] {
                              if (known.empty()) known = InstalledDrivers();
                              return known;
                          },
                          DriverOfDataSource, SettingOfDataSource};
    ConnectionTarget target = TranslateConnectionString(connectionString, machine, engine);
    if (target.driver.empty() ||
        std::ranges::any_of(known, [&](const Text& name) { return EqualNoCase(name, target.driver); }))
        return target;
    known.clear();
    return TranslateConnectionString(connectionString, machine, engine);
}

} // namespace

void SetStatementObserver(StatementObserver observer) { Observer() = std::move(observer); }

void Observe(TextView statement) {
    if (const StatementObserver& observer = Observer()) observer(statement);
}

void Statement::Execute(TextView statement, std::span<const Value> parameters, std::span<const int> codes) {
    const Dialect& dialect = Quirks();
    Close();
    Text storage;
    TextView adapted = statement;
    if (!PassesUnchanged(statement, dialect)) adapted = storage = AdaptStatement(statement, dialect);
    Observe(adapted);
    std::optional<Parametrized> parametrized;
    if (parameters.empty()) parametrized = TakeLongLiterals(adapted, dialect.longestLiteral);
    if (parametrized)
        Run(parametrized->statement, parametrized->values, {});
    else
        Run(adapted, parameters, codes);
}

void Statement::ExecuteBatch(std::span<const Text> adapted) {
    Close();
    for (const Text& statement : adapted) Observe(statement);
    RunBatch(adapted);
}

void Statement::RunBatch(std::span<const Text> adapted) {
    for (const Text& statement : adapted) {
        Close();
        Run(statement, {}, {});
    }
}

std::unique_ptr<RowWriter> Session::NewRows(const Text& table, const std::vector<Text>& columns) {
    return NewStatementWriter(*this, table, columns);
}

std::unique_ptr<Session> Session::Open(const Text& connectionString) {
    const ConnectionTarget target = TargetHere(connectionString);
    if (DialectOf(target.engine).isBuiltIn) return std::make_unique<SQLiteConnection>(target);
    return std::make_unique<OdbcConnection>(target,
                                            [&](Engine engine) { return TargetHere(connectionString, engine); });
}

} // namespace dax
