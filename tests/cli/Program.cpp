#include "Program.h"

#include "base/CommandLine.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <sstream>
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>
#else
#include <sys/wait.h>
#endif

namespace dax::test {

size_t CountFiles(const TempFolder& folder) {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
}

#ifdef _WIN32

std::filesystem::path ProgramPath() { return std::filesystem::path(_pgmptr).parent_path() / "dax.exe"; }

Outcome RunDax(const std::vector<Text>& words, const std::string& input) {
    const TempFolder folder;
    folder.Write(u"input", input);
    const std::filesystem::path program = ProgramPath(), streams[] = {folder.Path() / "input", folder.Path() / "output",
                                                                      folder.Path() / "errors"};
    std::vector<Text> quoted = {QuotedArgument(program.u16string())};
    for (const Text& word : words) quoted.push_back(QuotedArgument(word));
    std::vector<const wchar_t*> pointers;
    for (const Text& word : quoted) pointers.push_back(reinterpret_cast<const wchar_t*>(word.c_str()));
    pointers.push_back(nullptr);
    // The program inherits our standard streams, which are files meanwhile.
    std::fflush(nullptr);
    int former[3];
    for (int stream = 0; stream < 3; ++stream) {
        former[stream] = _dup(stream); // negative: there is none
        const int flags = _O_BINARY | (stream == 0 ? _O_RDONLY : _O_CREAT | _O_TRUNC | _O_WRONLY);
        const int file = _wopen(streams[stream].c_str(), flags, _S_IREAD | _S_IWRITE);
        _dup2(file, stream);
        _close(file);
    }
    const int exitCode = static_cast<int>(_wspawnv(_P_WAIT, program.c_str(), pointers.data()));
    const int reason = errno;
    for (int stream = 0; stream < 3; ++stream) {
        if (former[stream] < 0) continue;
        _dup2(former[stream], stream);
        _close(former[stream]);
    }
    if (exitCode == -1) ADD_FAILURE() << program << " did not start or ended with -1: " << std::strerror(reason);
    return {exitCode, ReadFile(streams[1]), ReadFile(streams[2])};
}

#else

std::filesystem::path ProgramPath() { return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "dax"; }

namespace {

std::string Quoted(const std::string& word) {
    std::string quoted = "'";
    for (const char letter : word) quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    return quoted + "'";
}

} // namespace

Outcome RunShell(const std::filesystem::path& folder, const std::string& script) {
    const TempFolder results;
    const std::filesystem::path output = results.Path() / "output", errors = results.Path() / "errors";
    // By a path without blanks, so that scripts need no quotes.
    const std::filesystem::path program = results.Path() / "dax";
    std::filesystem::create_symlink(ProgramPath(), program);
    const std::string command = "cd " + Quoted(folder.string()) + " && dax=" + Quoted(program.string()) +
                                " timeout -k 5 300 bash -c " + Quoted(script) + " >" + Quoted(output.string()) + " 2>" +
                                Quoted(errors.string()) + " </dev/null";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(output), ReadFile(errors)};
}

Outcome RunDax(const std::vector<Text>& words, const std::string& input) {
    const TempFolder folder;
    folder.Write(u"input", input);
    std::string script = "exec $dax <input";
    for (const Text& word : words) script += " " + Quoted(ToUtf8(word));
    return RunShell(folder.Path(), script);
}

#endif

std::vector<Text> Words(const std::string& line) {
    std::istringstream stream(line);
    std::vector<Text> words;
    for (std::string word; stream >> std::quoted(word, '"', '\0');) words.push_back(FromUtf8(word));
    return words;
}

Outcome RunOn(const Text& database, const std::string& line, const std::string& input) {
    std::vector<Text> words = Words(line);
    words.insert(words.begin() + 1, database);
    return RunDax(words, input);
}

void ExpectOutput(const Text& database, std::initializer_list<ExpectedOutput> cases) {
    for (const auto& [line, exitCode, part, input] : cases) {
        const Outcome outcome = RunOn(database, line, input);
        EXPECT_EQ(outcome.exitCode, exitCode) << line << "\n" << outcome.errors;
        EXPECT_THAT(outcome.output + outcome.errors, ::testing::HasSubstr(part)) << line;
    }
}

} // namespace dax::test
