#include "support/SilentServer.h"

#include "data/ConnectionString.h"

#ifndef _WIN32

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace dax::test {

namespace {

sockaddr_in Loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int ConnectTo(const std::string& port, int flags = 0) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | flags, 0);
    sockaddr_in address = Loopback(std::stoi(port));
    (void)!connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
    return socket;
}

} // namespace

SilentServer::SilentServer(Kind kind) : listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = Loopback(0);
    socklen_t size = sizeof address;
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        listen(listener, kind == Kind::Full ? 0 : 100) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::runtime_error("no port to listen on");
    port = std::to_string(ntohs(address.sin_port));
    for (int i = 0; kind == Kind::Full && i < 4; ++i) fillers.push_back(ConnectTo(port, SOCK_NONBLOCK));
}

SilentServer::SilentServer(const Text& connectionString) : SilentServer(Kind::Accepts) {
    realPort = ToUtf8(ConnectionKeywords(connectionString).First({u"Port"}));
    thread = std::jthread([this](const std::stop_token& stop) { Serve(stop); });
}

SilentServer::~SilentServer() {
    thread = {}; // ends it
    Recover();
    for (const int filler : fillers) close(filler);
    close(listener);
}

Text SilentServer::ConnectionThrough(const Text& connectionString, const Text& more) const {
    return connectionString + u";Port=" + FromUtf8(port) + u";" + more;
}

void SilentServer::StopAnsweringAt(std::string bytes, bool isForwardedThen) {
    const std::scoped_lock lock(mutex);
    fatal = std::move(bytes);
    isForwarded = isForwardedThen;
}

void SilentServer::Recover() {
    const std::scoped_lock lock(mutex);
    for (const Pair& pair : pairs) {
        close(pair.client);
        close(pair.server);
    }
    pairs.clear();
    fatal.clear();
    isSilent = false;
}

// False when that side has ended.
bool SilentServer::Forward(int from, int to, bool isClients) {
    std::array<char, 65536> bytes;
    const ssize_t count = recv(from, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count <= 0) return count < 0 && errno == EAGAIN; // it was another one's, already closed
    const std::string_view seen(bytes.data(), static_cast<size_t>(count));
    isSilent = isClients && !fatal.empty() && seen.find(fatal) != std::string_view::npos;
    return (isSilent && !isForwarded) || send(to, bytes.data(), seen.size(), MSG_NOSIGNAL) == count;
}

void SilentServer::Serve(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        std::vector<pollfd> waits{{listener, POLLIN, 0}};
        {
            const std::scoped_lock lock(mutex);
            for (const Pair& pair : pairs)
                for (const int end : {pair.client, pair.server}) waits.push_back({end, POLLIN, 0});
        }
        poll(waits.data(), isSilent ? 1 : waits.size(), 5);
        const std::scoped_lock lock(mutex);
        if (waits[0].revents != 0) pairs.push_back({accept(listener, nullptr, nullptr), ConnectTo(realPort)});
        for (size_t i = 1; i + 1 < waits.size() && !isSilent; i += 2) {
            const auto pair = std::ranges::find(pairs, waits[i].fd, &Pair::client);
            if (pair == pairs.end()) continue; // broken meanwhile
            if ((waits[i].revents == 0 || Forward(pair->client, pair->server, true)) &&
                (isSilent || waits[i + 1].revents == 0 || Forward(pair->server, pair->client, false)))
                continue;
            close(pair->client);
            close(pair->server);
            pairs.erase(pair);
        }
    }
}

} // namespace dax::test

#endif
