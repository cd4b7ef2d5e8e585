#include "data/Connection.h"

#include "base/Secrets.h"
#include "data/Session.h"
#include "data/StatementText.h"

namespace dax {

Connection::Connection() = default;
Connection::~Connection() { Close(); }

void Connection::Open(const Text& connectionString) {
    if (session) throw Error(u"The connection is already open.");
    try {
        session = dax::Session::Open(connectionString);
    } catch (const Error& error) {
        // A driver may repeat a password without its keyword.
        throw Error(error.Number(), MaskPasswords(error.Description(), PasswordsIn(connectionString)));
    }
}

void Connection::Close() {
    scratch.reset();
    session.reset();
}

bool Connection::IsOpen() const { return session != nullptr; }

Session& Connection::Opened() const {
    if (!session) throw Error(u"The connection is closed.");
    return *session;
}

Statement& Connection::Scratch() {
    if (!scratch) scratch = Opened().NewStatement();
    return *scratch;
}

int64_t Connection::Execute(const Text& statement, int) { return ExecuteWith(statement, {}); }

int64_t Connection::ExecuteWith(TextView statement, std::span<const Value> parameters) {
    Statement& once = Scratch();
    once.Execute(statement, parameters);
    const int64_t rows = once.RowCount();
    once.Close();
    return rows;
}

void Connection::ExecuteAll(std::span<const Text> statements, const std::function<void(size_t)>& progress) {
    Statement& many = Scratch();
    const Dialect& dialect = session->SqlDialect();
    std::vector<Text> batch;
    size_t units = 0, done = 0;
    const auto report = [&](size_t count) {
        done += count;
        if (progress) progress(done);
    };
    const auto flush = [&] {
        if (batch.empty()) return;
        const size_t count = batch.size();
        many.ExecuteBatch(batch);
        batch.clear();
        units = 0;
        report(count);
    };
    for (const Text& statement : statements) {
        Text adapted;
        const bool joins = dialect.statementsPerCall > 1 && statement.size() < maxBatch &&
                           IsSingleStatement(adapted = AdaptStatement(statement, dialect)) &&
                           !ParametrizeLongLiterals(adapted, dialect.maxLiteral);
        if (!joins) {
            flush();
            many.Execute(statement);
            report(1);
            continue;
        }
        if (batch.size() == dialect.statementsPerCall || units + adapted.size() > maxBatch) flush();
        units += adapted.size();
        batch.push_back(std::move(adapted));
    }
    flush();
    many.Close();
}

void Connection::BeginTrans() { Opened().Begin(); }

void Connection::CommitTrans() {
    if (scratch) scratch->Close();
    Opened().Commit();
}

void Connection::RollbackTrans() {
    if (scratch) scratch->Close();
    Opened().Rollback();
}

bool Connection::InTransaction() const { return session && session->InTransaction(); }

void Connection::Cancel() noexcept {
    if (scratch) scratch->Cancel();
}

Engine Connection::Kind() const { return Opened().SqlDialect().engine; }

} // namespace dax
