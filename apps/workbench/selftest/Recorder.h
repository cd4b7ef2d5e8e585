// What the checks of the self-test have found. A check runs in a process of its own group, which may end at any point:
// each step is in a file before the next begins, so that it survives a crash of its process.
#pragma once

#include <windows.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace dax::workbench::selftest {

enum class Outcome { Passed, Failed, Skipped };

struct Shot {
    std::wstring caption, path; // of a PNG file
};

struct Result {
    std::wstring name;
    Outcome outcome = Outcome::Failed;
    std::wstring text{}; // the reason, or what was measured
    int milliseconds = 0;
    std::vector<Shot> shots{};
};

struct Findings {
    std::vector<std::pair<std::wstring, std::wstring>> facts; // of the machine
    std::vector<Result> results;
    bool isRunning = false;  // the last check has not come to its end
    bool isComplete = false; // all checks of the group have
};

// The writer of such a file.
class Recorder {
public:
    // Throws HostError when the file cannot be written.
    explicit Recorder(const std::wstring& path);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder();

    void Begin(const std::wstring& name);
    // Of the check that has begun; a second end of it is left out, as when its time runs out at the very end.
    void End(Outcome outcome, const std::wstring& text);
    void Add(const Shot& shot);
    void AddFact(const std::wstring& name, const std::wstring& value);
    void Complete();

private:
    void Write(wchar_t kind, const std::vector<std::wstring>& fields);

    HANDLE file = INVALID_HANDLE_VALUE;
    std::recursive_mutex mutex; // the one who watches the time writes, too
    ULONGLONG begun = 0;
    bool isRunning = false;
};

// Adds what the file has to what was found before; a last line that is cut off is left out.
void ReadFindings(const std::wstring& path, Findings& findings);

// The bytes of a file; none when it cannot be read.
std::string ReadBytes(const std::wstring& path);

} // namespace dax::workbench::selftest
