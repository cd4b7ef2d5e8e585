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
    // Accepts connections and never answers, or does not even accept, since its queue is full.
    explicit SilentServer(Kind kind);
    // Forwards everything between its clients and the server of that string.
    explicit SilentServer(const Text& connectionString);
    // Closes all connections.
    ~SilentServer();
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    const std::string& Port() const { return port; }
    // The same string, to this server; `more` follows.
    Text ConnectionThrough(const Text& connectionString, const Text& more) const;

    // From now on nothing is forwarded, either way.
    void StopAnswering() {
        const std::scoped_lock lock(mutex);
        isSilent = true;
    }
    // The same from the moment when a client sends these bytes; the server still gets them, or not.
    void StopAnsweringAt(std::string bytes, bool isForwardedThen);
    // Closes all connections, and serves new clients again.
    void Recover();

private:
    struct Pair {
        int client, server;
    };
    void Serve(const std::stop_token& stop);
    bool Forward(int from, int to, bool isClients);

    std::string port, realPort, fatal;
    int listener = -1;
    bool isForwarded = false;
    std::atomic<bool> isSilent = false;
    std::vector<Pair> pairs;
    std::vector<int> fillers;
    std::mutex mutex;
    std::jthread thread;
};

} // namespace dax::test

#endif
