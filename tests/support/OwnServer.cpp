#include "support/OwnServer.h"

#ifndef _WIN32

#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace dax::test {

std::string OwnServer::SkipReason() {
    return std::getenv("DAX_TEST_ROOT") ? "" : "DAX_TEST_ROOT does not tell where tools/servers is";
}

OwnServer::OwnServer(Kind kind) {
    const std::string tool = std::getenv("DAX_TEST_ROOT") + std::string("/tools/servers");
    const std::string place = folder.Path().string();
    // The tool's input ends when we do, whatever the reason; then it stops the server.
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) throw std::runtime_error("no socket pair");
    errors = folder.Path() / "errors";
    child = fork();
    if (child == 0) {
        setsid(); // what ends the test's whole group must not end the tool before it has stopped the server
        dup2(ends[1], STDIN_FILENO);
        dup2(ends[1], STDOUT_FILENO);
        dup2(open(errors.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0644), STDERR_FILENO);
        if (kind == Kind::Cluster)
            execl(tool.c_str(), tool.c_str(), "own", "--cluster", place.c_str(), nullptr);
        else
            execl(tool.c_str(), tool.c_str(), "own", place.c_str(), nullptr);
        _exit(127);
    }
    close(ends[1]);
    channel = ends[0];
    answers = fdopen(channel, "r");
    for (int left = kind == Kind::Cluster ? 3 : 1; left > 0; --left) {
        const std::string line = ReadLine();
        const size_t begin = line.find('\'') + 1;
        connectionStrings.push_back(FromUtf8(line.substr(begin, line.rfind('\'') - begin)));
    }
}

OwnServer::~OwnServer() {
    shutdown(channel, SHUT_WR);
    while (std::fgetc(answers) != EOF) {
    }
    std::fclose(answers);
    waitpid(child, nullptr, 0);
}

std::string OwnServer::ReadLine() {
    std::string line;
    for (int letter = std::fgetc(answers); letter != '\n'; letter = std::fgetc(answers)) {
        if (letter == EOF) Fail("the server ended: " + line);
        line += static_cast<char>(letter);
    }
    return line;
}

void OwnServer::Send(const std::string& command) {
    if (send(channel, command.data(), command.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(command.size()) ||
        ReadLine() != "done")
        Fail("the server did not accept: " + command);
}

void OwnServer::Fail(const std::string& what) const { throw std::runtime_error(what + "\n" + ReadFile(errors)); }

} // namespace dax::test

#endif
