// A server on the loopback that does not answer: at all, or from a moment on.
#pragma once

#ifndef _WIN32

#include "base/Text.h"

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace dax::test {

class SilentServer {
public:
    enum class Kind { Accepts, Full };
    // Accepts connections and is silent, or does not even accept, since its queue is full.
    explicit SilentServer(Kind kind);
    // Hands everything on between its clients and the server of that string.
    explicit SilentServer(const Text& connectionString);
    // Closes all connections.
    ~SilentServer();
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    const std::string& Port() const { return port; }
    // The same string, to this server; `more` follows.
    Text ThroughIt(const Text& connectionString, const Text& more) const;

    // From now on nothing is handed on, either way.
    void FallSilent() {
        const std::scoped_lock lock(mutex);
        isSilent = true;
    }
    // The same from the moment when a client sends these bytes; the server still gets them, or not.
    void FallSilentAt(std::string bytes, bool handedOn);
    // Breaks what was silent, and serves new clients again.
    void Recover();

private:
    struct Pair {
        int client, server;
    };
    void Serve(const std::stop_token& stop);
    bool HandOn(int from, int to, bool isClients);

    std::string port, realPort, fatal;
    int listener = -1;
    bool isHandedOn = false;
    std::atomic<bool> isSilent = false;
    std::vector<Pair> pairs;
    std::vector<int> fillers;
    std::mutex mutex;
    std::jthread thread;
};

} // namespace dax::test

#endif
