#include "data/Connection.h"

#include "data/odbc/OdbcConnection.h"
#include "data/odbc/OdbcStatement.h"
#include "data/StatementText.h"

namespace dax {

Connection::Connection() = default;
Connection::~Connection() = default;

void Connection::Open(const Text& connectionString) {
    if (native) throw Error(ErrorNumbers::Unspecified, u"The connection is open already.");
    native = std::make_unique<OdbcConnection>(connectionString);
}

void Connection::Close() { native.reset(); }

bool Connection::IsOpen() const { return native != nullptr; }

OdbcConnection& Connection::Native() {
    if (!native) throw Error(ErrorNumbers::Unspecified, u"The connection is closed.");
    return *native;
}

int64_t Connection::Execute(const Text& statement, int) {
    OdbcStatement& scratch = Native().Scratch();
    scratch.Execute(statement);
    const int64_t rows = scratch.RowCount();
    scratch.CloseCursor();
    return rows;
}

void Connection::ExecuteAll(std::span<const Text> statements, const std::function<void(size_t)>& progress) {
    OdbcStatement& scratch = Native().Scratch();
    const Dialect& dialect = native->Quirks();
    std::vector<Text> batch;
    size_t units = 0, done = 0;
    const auto report = [&](size_t count) {
        done += count;
        if (progress) progress(done);
    };
    const auto flush = [&] {
        if (batch.empty()) return;
        const size_t count = batch.size();
        scratch.ExecuteBatch(batch);
        batch.clear();
        units = 0;
        report(count);
    };
    for (const Text& statement : statements) {
        Text adapted;
        const bool joins = dialect.statementsPerCall > 1 && statement.size() < longestBatch &&
                           StandsAlone(adapted = AdaptStatement(statement, dialect)) &&
                           !TakeLongLiterals(adapted, dialect.longestLiteral);
        if (!joins) {
            flush();
            scratch.Execute(statement);
            report(1);
            continue;
        }
        if (batch.size() == dialect.statementsPerCall || units + adapted.size() > longestBatch) flush();
        units += adapted.size();
        batch.push_back(std::move(adapted));
    }
    flush();
    scratch.CloseCursor();
}

void Connection::BeginTrans() { Native().Begin(); }
void Connection::CommitTrans() { Native().Commit(); }
void Connection::RollbackTrans() { Native().Rollback(); }
bool Connection::InTransaction() const { return native && native->InTransaction(); }

void Connection::Cancel() noexcept {
    if (native) native->Cancel();
}

Engine Connection::Kind() const {
    if (!native) throw Error(ErrorNumbers::Unspecified, u"The connection is closed.");
    return native->Quirks().engine;
}

} // namespace dax
