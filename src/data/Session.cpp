#include "data/Session.h"

#include "base/Error.h"
#include "data/ConnectionString.h"
#include "data/StatementText.h"
#include "data/odbc/LimitedSession.h"
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
// they are read once, and again when a name was not among them.
ConnectionTarget TargetHere(const Text& connectionString, Engine engine = Engine::Other) {
    static std::mutex mutex;
    static std::vector<Text> known;
    const std::scoped_lock lock(mutex);
    const OdbcConfiguration odbc{[] {
                                     if (known.empty()) known = InstalledDrivers();
                                     return known;
                                 },
                                 DriverOfDataSource, SettingOfDataSource};
    ConnectionTarget target = TranslateConnectionString(connectionString, odbc, engine);
    if (target.driver.empty() ||
        std::ranges::any_of(known, [&](const Text& name) { return EqualNoCase(name, target.driver); }))
        return target;
    known.clear();
    return TranslateConnectionString(connectionString, odbc, engine);
}

// In one call where the engine takes that; one by one when it refuses, to find the one that it rejects.
void RunSettings(Statement& statement, const Dialect& dialect) {
    const std::span<const SessionSetting> settings = dialect.settings;
    if (dialect.statementsPerCall >= settings.size() && settings.size() > 1) {
        std::vector<Text> all;
        for (const SessionSetting& setting : settings) all.emplace_back(setting.statement);
        try {
            statement.ExecuteBatch(all);
            return;
        } catch (const Error& error) {
            if (error.Number() == ErrorNumbers::Timeout) throw; // other errors are thrown below
        }
    }
    for (const SessionSetting& setting : settings) {
        Text refusal;
        bool isDone = false;
        for (const TextView form : {setting.statement, setting.otherwise, setting.asQuery}) {
            if (isDone || form.empty()) continue;
            try {
                statement.Execute(form);
                isDone = true;
            } catch (const Error& error) {
                if (error.Number() == ErrorNumbers::Timeout) throw;
                if (refusal.empty()) refusal = error.Description();
            }
        }
        if (!isDone && !setting.isProbed)
            throw Error(u"The server refuses a setting without which texts, dates or transactions could be wrong: " +
                        Text(setting.statement) + u". It says: " + refusal);
    }
}

void RunProbe(Statement& statement, const Dialect& dialect) {
    statement.Execute(dialect.probe);
    statement.OpenRows();
    const bool answersWell = statement.Next() && statement.FieldText(0) == dialect.answer;
    statement.Close();
    if (!answersWell)
        throw Error(u"The server reads texts in another way than required: it takes a backslash as an escape "
                    u"character, or misreads letters. Texts would be stored wrongly, so the connection was closed.");
}

std::unique_ptr<Session> Connect(const ConnectionTarget& target, LimitedSession::Time began) {
    if (DialectOf(target.engine).timeoutBy == TimeoutBy::Driver) return std::make_unique<OdbcConnection>(target);
    return std::make_unique<LimitedSession>(target, began);
}

} // namespace

void SetStatementObserver(StatementObserver observer) { Observer() = std::move(observer); }

void Observe(TextView statement) {
    if (const StatementObserver& observer = Observer()) observer(statement);
}

void Statement::Execute(TextView statement, std::span<const Value> parameters, std::span<const int> codes) {
    const Dialect& dialect = SqlDialect();
    Await();
    Close();
    Text storage;
    TextView adapted = statement;
    if (!PassesUnchanged(statement, dialect)) adapted = storage = AdaptStatement(statement, dialect);
    Observe(adapted);
    std::optional<Parametrized> parametrized;
    if (parameters.empty()) parametrized = ParametrizeLongLiterals(adapted, dialect.maxLiteral);
    if (parametrized)
        Run(parametrized->statement, parametrized->values, {});
    else
        Run(adapted, parameters, codes);
}

void Statement::Start(TextView statement, std::vector<Value> parameters) {
    const Dialect& dialect = SqlDialect();
    Await();
    Close();
    Text adapted = PassesUnchanged(statement, dialect) ? Text(statement) : AdaptStatement(statement, dialect);
    Observe(adapted);
    RunAsync(std::move(adapted), std::move(parameters));
}

void Statement::ExecuteBatch(std::span<const Text> adapted) {
    Await();
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

std::unique_ptr<RowWriter> Session::NewRows(const Text& table, const std::vector<RowColumn>& columns) {
    return NewStatementWriter(*this, table, columns);
}

std::unique_ptr<Session> Session::Open(const Text& connectionString) {
    const ConnectionTarget target = TargetHere(connectionString);
    if (DialectOf(target.engine).isBuiltIn) return std::make_unique<SQLiteConnection>(target);
    const auto began = LimitedSession::Time::clock::now();
    std::unique_ptr<Session> session = Connect(target, began);
    // A driver by another name: connects again, with the options that must be set.
    if (const Dialect& found = session->SqlDialect(); found.engine != target.engine && !found.isBuiltIn) {
        session.reset();
        session = Connect(TargetHere(connectionString, found.engine), began);
    }
    const Dialect& dialect = session->SqlDialect();
    const std::unique_ptr<Statement> statement = session->NewStatement();
    RunSettings(*statement, dialect);
    if (!dialect.probe.empty()) RunProbe(*statement, dialect);
    session->EndOpening();
    return session;
}

} // namespace dax
