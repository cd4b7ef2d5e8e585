#include "data/odbc/LimitedSession.h"

#include "base/Error.h"
#include "data/StoredRows.h"
#include "data/odbc/OdbcStatement.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace dax {

namespace {

// The driver's objects of a statement. The thread frees them, before those of its connection.
struct HeldStatement {
    std::shared_ptr<OdbcConnection> connection;
    std::unique_ptr<OdbcStatement> statement;
    bool isToClose = false; // it returns rows, or has failed as one of several
    int64_t rowCount = -1;
};

// Rows that the thread has read, and the error that stopped it.
struct Block {
    StoredRows rows;
    bool isLast = false;
    std::exception_ptr failure;

    void Fill(OdbcStatement& statement, size_t maxRows) {
        constexpr size_t maxUnits = 65536;
        rows.Clear();
        isLast = true;
        try {
            isLast = !rows.Read(statement, statement.Columns().size(), maxRows, maxUnits);
        } catch (...) {
            failure = std::current_exception(); // thrown after the rows
        }
    }
};

// Each block may hold more rows than the one before it: a reader of the first row waits for no other, and one that
// reads all waits seldom.
constexpr size_t growth = 4, maxRows = 1024;

bool IsQuery(TextView statement) { return LowerAscii(TrimBlanks(statement).substr(0, 6)) == u"select"; }

class LimitedStatement final : public Statement {
public:
    LimitedStatement(LimitedSession& session, std::shared_ptr<OdbcConnection> connection)
        : owner(session), held(std::make_shared<HeldStatement>()) {
        held->connection = std::move(connection);
        try {
            Run([native = held] { native->statement = std::make_unique<OdbcStatement>(*native->connection); });
        } catch (...) {
            owner.Free(std::move(held));
            throw;
        }
    }
    ~LimitedStatement() override { owner.Free(std::move(held)); }

    void Await() override {
        if (started) Wait(std::exchange(started, nullptr), LimitedSession::Pending::Changes);
    }
    int64_t RowCount() const override { return owner.IsLost() ? -1 : held->rowCount; }
    const std::vector<Column>& OpenRows() override {
        const auto first = std::make_shared<Block>();
        Run([native = held, first] {
            native->statement->OpenRows();
            first->Fill(*native->statement, 1);
        });
        block = first;
        ahead = nullptr; // read what was left of the rows before, if those were not read to their end
        spare = std::make_shared<Block>();
        row = SIZE_MAX; // before the first
        nextRows = growth;
        return held->statement->Columns();
    }
    bool Next() override {
        if (++row < block->rows.Count()) return true;
        owner.RequireAlive();
        if (!block->isLast) TakeBlock();
        if (row < block->rows.Count()) return true;
        if (block->failure) std::rethrow_exception(block->failure);
        return false;
    }
    bool IsNull(size_t column) override { return !block->rows.Field(row, column); }
    TextView FieldText(size_t column) override { return block->rows.Field(row, column).value_or(TextView()); }
    void Close() noexcept override {
        if (owner.IsLost() || !held->isToClose) return; // each hop to the thread takes as long as a short statement
        try {
            Run([native = held] {
                native->isToClose = false;
                native->statement->Close();
            });
        } catch (const std::exception&) { // the next call reports it
        }
    }
    void Cancel() noexcept override {
        try {
            owner.Cancel(Stop());
        } catch (const std::exception&) { // no memory for it
        }
    }

protected:
    const Dialect& SqlDialect() const override { return owner.SqlDialect(); }
    void Run(TextView adapted, std::span<const Value> values, std::span<const int> codes) override {
        Run(Job(Text(adapted), {values.begin(), values.end()}, {codes.begin(), codes.end()}),
            IsQuery(adapted) ? LimitedSession::Pending::Reading : LimitedSession::Pending::Changes);
    }
    void RunAsync(Text adapted, std::vector<Value> values) override {
        started = owner.Start(Job(std::move(adapted), std::move(values), {}));
    }
    void RunBatch(std::span<const Text> adapted) override {
        Run(
            [native = held, all = OdbcStatement::Joined(adapted)] {
                native->isToClose = true;
                native->statement->RunBatchText(all);
                native->isToClose = false;
            },
            LimitedSession::Pending::Changes);
    }

private:
    std::function<void()> Job(Text adapted, std::vector<Value> values, std::vector<int> codes) const {
        return [native = held, text = std::move(adapted), own = std::move(values), types = std::move(codes)] {
            native->isToClose = true;
            native->statement->Run(text, own, types);
            native->isToClose = native->statement->ReturnsRows();
            native->rowCount = native->statement->RowCount();
        };
    }
    void TakeBlock() {
        if (!ahead) ReadAhead();
        Wait(std::exchange(ahead, nullptr));
        std::swap(block, spare);
        row = 0;
        if (!block->isLast && block->rows.Count() > 1) ReadAhead(); // while these are used
    }
    void ReadAhead() {
        ahead = owner.Start([native = held, into = spare, rows = nextRows] { into->Fill(*native->statement, rows); });
        nextRows = std::min(nextRows * growth, maxRows);
    }
    // `alone`: what it means outside of a transaction.
    void Run(std::function<void()> job, LimitedSession::Pending alone = LimitedSession::Pending::Reading) {
        Wait(owner.Start(std::move(job)), alone);
    }
    void Wait(const CallThread::Ticket& call, LimitedSession::Pending alone = LimitedSession::Pending::Reading) {
        try {
            owner.Wait(call, owner.InTransaction() ? LimitedSession::Pending::Transaction : alone);
        } catch (const Error&) {
            if (owner.IsLost() && owner.StopsStatements()) LimitedSession::StopLater(Stop());
            throw;
        }
    }
    std::function<void()> Stop() const {
        return [native = held] {
            if (native->statement) native->statement->Cancel();
        };
    }
    LimitedSession& owner;
    std::shared_ptr<HeldStatement> held;
    std::shared_ptr<Block> block, spare; // the spare one is the thread's while it reads ahead
    size_t row = 0, nextRows = 0;
    CallThread::Ticket ahead, started; // to read rows, to run a statement
};

} // namespace

LimitedSession::LimitedSession(const ConnectionTarget& target, Time began)
    : server(target.server), connectLimit(target.timeout), commandLimit(target.commandTimeout), began(began) {
    auto opened = std::make_shared<std::shared_ptr<OdbcConnection>>();
    try {
        Run([opened, target] { *opened = std::make_shared<OdbcConnection>(target); }, Pending::Opening);
    } catch (...) {
        Free(std::move(opened)); // opened too late
        throw;
    }
    connection = std::move(*opened);
    dialect = &connection->SqlDialect();
}

LimitedSession::~LimitedSession() { Free(std::move(connection)); }

LimitedSession::Time LimitedSession::EndOfCall(Time now) const {
    constexpr std::chrono::hours none(24 * 365);
    return isOpening ? began + connectLimit : commandLimit.count() == 0 ? now + none : now + commandLimit + extension;
}

void LimitedSession::RequireAlive() const {
    if (IsLost())
        throw Error(ErrorNumbers::Timeout,
                    Server() + u" did not answer in time, so the connection to it was closed. Open a new one.");
}

void LimitedSession::ThrowTimeout(Time since, Pending pending) const {
    const auto seconds =
        std::max<int64_t>(std::chrono::round<std::chrono::seconds>(Time::clock::now() - since).count(), 1);
    static constexpr TextView effects[] = {
        u"Check that it is running and can be reached, or allow it more time by \"Connect Timeout\" in the connection "
        u"string.",
        u"The connection was closed. Check that the server can be reached and try again, or allow it more time by "
        u"\"Command Timeout\" in the connection string.",
        u"The connection was closed, and what was not committed is lost. Check that the server can be reached and "
        u"try again, or allow it more time by \"Command Timeout\" in the connection string.",
        u"The connection was closed, and it is not known whether the last changes were stored: load again to see. "
        u"Check that the server can be reached, or allow it more time by \"Command Timeout\" in the connection string.",
    };
    throw Error(ErrorNumbers::Timeout, Server() + u" did not answer within " + ToText(seconds) +
                                           (seconds == 1 ? u" second. " : u" seconds. ") +
                                           Text(effects[static_cast<size_t>(pending)]));
}

void LimitedSession::Run(std::function<void()> job, Pending pending) { Wait(Start(std::move(job)), pending); }

void LimitedSession::Wait(const CallThread::Ticket& call, Pending pending) {
    RequireAlive();
    const Time now = Time::clock::now();
    if (calls.Wait(call, EndOfCall(now))) return;
    ThrowTimeout(isOpening ? began : now, isOpening ? Pending::Opening : pending);
}

void LimitedSession::Free(std::shared_ptr<void> held) noexcept {
    try {
        calls.Start([own = std::move(held)] {});
        const Time now = Time::clock::now();
        if (!IsLost()) calls.Run([] {}, commandLimit.count() == 0 ? now + connectLimit : EndOfCall(now));
    } catch (const std::exception&) { // no memory to wait with
    }
}

void LimitedSession::Cancel(std::function<void()> stop) noexcept {
    const uint64_t awaited = calls.Awaited();
    if (awaited == 0) return;
    const Time end = Time::clock::now() + connectLimit;
    try {
        CallThread beside;
        beside.Run(std::move(stop), end);
    } catch (const std::exception&) { // it keeps running
    }
    calls.AbandonAfter(awaited, end);
}

void LimitedSession::StopLater(std::function<void()> stop) noexcept {
    try {
        CallThread beside;
        beside.Run(std::move(stop), {}); // the time is over, so it is abandoned at once
    } catch (const std::exception&) {    // the server finds out by itself
    }
}

std::unique_ptr<Statement> LimitedSession::NewStatement() {
    return std::make_unique<LimitedStatement>(*this, connection);
}

void LimitedSession::Begin() {
    Run([own = connection] { own->Begin(); }, Pending::Reading);
}

void LimitedSession::Commit() {
    Run([own = connection] { own->Commit(); }, Pending::Changes);
}

void LimitedSession::Rollback() {
    if (!InTransaction()) return; // that of a lost connection ends with it
    Run([own = connection] { own->Rollback(); }, Pending::Transaction);
}

std::vector<Text> LimitedSession::Names(std::function<std::vector<Text>()> ask) {
    const auto names = std::make_shared<std::vector<Text>>();
    Run([ask = std::move(ask), names] { *names = ask(); }, InTransaction() ? Pending::Transaction : Pending::Reading);
    return std::move(*names);
}

std::vector<Text> LimitedSession::KeyColumns(const Text& table) {
    return Names([own = connection, table] { return own->KeyColumns(table); });
}

std::vector<Text> LimitedSession::TableNames() {
    return Names([own = connection] { return own->TableNames(); });
}

} // namespace dax
