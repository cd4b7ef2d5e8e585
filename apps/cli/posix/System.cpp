#include "System.h"

#include "Console.h"
#include "Interruption.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <iostream>
#include <string>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace dax::cli {

namespace {

std::atomic<int> received = SIGINT;

// The terminal as it was, while nothing that is typed appears.
termios shown;
bool isHidden = false;

void ShowTyping() {
    if (isHidden) tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
    isHidden = false;
}

[[noreturn]] void EndBySignal(int signal) {
    std::signal(signal, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    std::raise(signal);
    _exit(128 + signal);
}

} // namespace

void PrepareStreams() {
    // A database opened as number 1 would get what is printed. What is put there instead cannot be written.
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDONLY) != stream) _exit(3);
    std::signal(SIGPIPE, SIG_IGN);
}

bool IsTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

int EndWithClosedOutput() { EndBySignal(SIGPIPE); }

// The signals are blocked in every thread, and one waits for them, so that it may do what a handler may not.
void StartListening() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction former {};
        sigaction(signal, nullptr, &former);
        if (former.sa_handler != SIG_IGN) sigaddset(&set, signal); // a caller that ignores it (nohup) is obeyed
    }
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::thread([set] {
        for (int signal = 0; sigwait(&set, &signal) == 0;) {
            received = signal;
            OnInterrupt();
        }
    }).detach();
}

void EndInterrupted() noexcept {
    ShowTyping();
    EndBySignal(received);
}

std::optional<std::string> ReadHiddenLine(TextView question) {
    if (IsTerminal(stdin) && tcgetattr(STDIN_FILENO, &shown) == 0) {
        termios hidden = shown;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        isHidden = tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden) == 0;
    }
    PrintError(question); // first, so that nothing typed after it is echoed
    std::string line;
    const bool isRead = static_cast<bool>(std::getline(std::cin, line));
    if (isHidden) std::cerr << '\n';
    ShowTyping();
    return isRead ? std::optional(line) : std::nullopt;
}

} // namespace dax::cli
