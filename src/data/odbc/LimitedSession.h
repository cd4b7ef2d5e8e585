// An ODBC connection whose calls end in time, whatever its driver and its server do.
#pragma once

#include "data/odbc/CallThread.h"
#include "data/odbc/OdbcConnection.h"

namespace dax {

// Its calls run on a thread of its own. A caller waits as long as the connection string allows, then gets a
// time-out that names the server, and the connection is lost: what the driver holds of it is left to that thread,
// every later call fails at once, and nothing waits for it again.
class LimitedSession final : public Session {
public:
    using Time = CallThread::Time;
    // What it means when the server does not answer: nothing but that, or changes that are lost, or that may be stored.
    enum class Pending { Opening, Reading, Transaction, Changes };

    // Connects. Whatever runs before EndOpening has the target's limit for connecting altogether, counted from `began`.
    LimitedSession(const ConnectionTarget& target, Time began);
    // Rolls back within the limit of one call.
    ~LimitedSession() override;

    const Dialect& SqlDialect() const override { return *dialect; }
    std::unique_ptr<Statement> NewStatement() override;
    void Begin() override;
    void Commit() override;
    void Rollback() override;
    bool InTransaction() const override { return !IsLost() && connection->InTransaction(); }
    void ExtendLimit(std::chrono::seconds more) override {
        extension = more;
        stopsStatements = false;
    }
    bool StopsStatements() const { return stopsStatements; }
    std::vector<Text> KeyColumns(const Text& table) override;
    std::vector<Text> TableNames() override;

    bool IsLost() const { return calls.IsAbandoned(); }
    // Throws when it is lost; otherwise nothing of the driver's is in use on the thread.
    void RequireAlive() const;
    // Waits for the job, which must capture what CallThread requires. Start does not wait; Wait does, for what Start
    // has returned. All throw when the connection is lost.
    void Run(std::function<void()> job, Pending pending);
    CallThread::Ticket Start(std::function<void()> job) {
        RequireAlive();
        return calls.Start(std::move(job));
    }
    void Wait(const CallThread::Ticket& call, Pending pending);
    // Frees on the thread what only the thread may free, and waits for that unless the connection is lost.
    void Free(std::shared_ptr<void> held) noexcept;
    // Runs a job, beside the one that is waited for, that is to stop that one. When it has not ended within the limit
    // for connecting, which a driver may have to do for this, the connection is lost.
    void Cancel(std::function<void()> stop) noexcept;
    // The same for what a lost connection has left running on a server that may still be reachable; waits for nothing.
    static void StopLater(std::function<void()> stop) noexcept;

protected:
    void EndOpening() override { isOpening = false; }

private:
    Time EndOfCall(Time now) const;
    std::vector<Text> Names(std::function<std::vector<Text>()> ask);
    Text Server() const { return u"The server '" + server + u"'"; }
    [[noreturn]] void ThrowTimeout(Time since, Pending pending) const;

    const Text server;
    const std::chrono::seconds connectLimit, commandLimit; // the latter may be 0: none
    std::chrono::seconds extension{};
    const Time began;
    bool isOpening = true, stopsStatements = true;
    CallThread calls;
    std::shared_ptr<OdbcConnection> connection;
    const Dialect* dialect = nullptr;
};

} // namespace dax
