// A server of a test's own, or a cluster of three nodes, to be stopped at any time and started again.
#pragma once

#ifndef _WIN32

#include "support/TestDatabases.h"

#include <cstdio>

namespace dax::test {

// Goes with its data at the end, also when the program that has it is killed. Throws std::runtime_error when the
// server fails to start or stop, with the standard error of tools/servers.
class OwnServer {
public:
    enum class Kind { PostgreSQL, Cluster };
    // Why there can be none; empty when there can.
    static std::string SkipReason();
    explicit OwnServer(Kind kind = Kind::PostgreSQL);
    ~OwnServer();
    OwnServer(const OwnServer&) = delete;
    OwnServer& operator=(const OwnServer&) = delete;

    // The administrator's; of a cluster, that of a node, from 1.
    const Text& ConnectionString(int node = 1) const { return connectionStrings.at(static_cast<size_t>(node) - 1); }
    void Stop() { Send("stop\n"); } // at once, as if the power failed
    void Start() { Send("start\n"); }
    void KillNode(int node) { Send("kill " + std::to_string(node) + "\n"); }
    void StartNode(int node) { Send("start " + std::to_string(node) + "\n"); }
    void ContinueFrom(int node) { Send("bootstrap " + std::to_string(node) + "\n"); }

private:
    std::string ReadLine();
    void Send(const std::string& command);
    [[noreturn]] void Fail(const std::string& what) const;

    TempFolder folder;
    std::filesystem::path errors;
    int child = 0, channel = -1;
    FILE* answers = nullptr;
    std::vector<Text> connectionStrings;
};

} // namespace dax::test

#endif
