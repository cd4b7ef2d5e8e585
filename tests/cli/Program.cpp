#include "Program.h"

#include "support/TestDatabases.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <iomanip>
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

std::filesystem::path ProgramPath() {
    if (const char* named = std::getenv("DAX_BIN")) return named;
#ifdef _WIN32
    return std::filesystem::path(_pgmptr).parent_path() / "dax.exe";
#else
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "dax";
#endif
}

namespace {

std::string Contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

#ifdef _WIN32

// As the program's start-up takes command lines apart: backslashes count only before a quote.
std::wstring Quoted(const std::wstring& word) {
    std::wstring quoted = L"\"";
    size_t backslashes = 0;
    for (const wchar_t unit : word) {
        if (unit == L'"') quoted.append(backslashes + 1, L'\\');
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        quoted += unit;
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

// Ties one of our standard streams to a file while it lives; programs started meanwhile inherit that.
class Redirection {
public:
    Redirection(int standard, const std::filesystem::path& file) : number(standard), former(_dup(standard)) {
        const int target =
            standard == 0 ? _wopen(file.c_str(), _O_RDONLY | _O_BINARY)
                          : _wopen(file.c_str(), _O_CREAT | _O_TRUNC | _O_WRONLY | _O_BINARY, _S_IREAD | _S_IWRITE);
        _dup2(target, number);
        _close(target);
    }
    ~Redirection() {
        if (former < 0) return; // there was none
        _dup2(former, number);
        _close(former);
    }

private:
    int number, former;
};

int Run(const std::vector<Text>& words, const std::filesystem::path& input, const std::filesystem::path& output,
        const std::filesystem::path& errors) {
    const std::filesystem::path program = ProgramPath();
    std::vector<std::wstring> quoted = {Quoted(program.wstring())};
    for (const Text& word : words) quoted.push_back(Quoted(std::wstring(word.begin(), word.end())));
    std::vector<const wchar_t*> pointers;
    for (const std::wstring& word : quoted) pointers.push_back(word.c_str());
    pointers.push_back(nullptr);
    std::fflush(nullptr);
    const Redirection in(0, input), out(1, output), err(2, errors);
    return static_cast<int>(_wspawnv(_P_WAIT, program.c_str(), pointers.data()));
}

#else

std::string Quoted(const std::string& word) {
    std::string quoted = "'";
    for (const char letter : word) quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    return quoted + "'";
}

int Run(const std::vector<Text>& words, const std::filesystem::path& input, const std::filesystem::path& output,
        const std::filesystem::path& errors) {
    std::string command = Quoted(ProgramPath().string());
    for (const Text& word : words) command += " " + Quoted(ToUtf8(word));
    command += " >" + Quoted(output.string()) + " 2>" + Quoted(errors.string()) + " <" + Quoted(input.string());
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

#endif

} // namespace

Outcome RunDax(const std::vector<Text>& words, const std::string& input) {
    const TempFolder folder;
    const std::filesystem::path answers = folder.Path() / "input", output = folder.Path() / "output",
                                errors = folder.Path() / "errors";
    std::ofstream(answers, std::ios::binary) << input;
    const int exitCode = Run(words, answers, output, errors);
    return {exitCode, Contents(output), Contents(errors)};
}

std::vector<Text> Words(const std::string& line) {
    std::istringstream stream(line);
    std::vector<Text> words;
    for (std::string word; stream >> std::quoted(word);) words.push_back(FromUtf8(word));
    return words;
}

Outcome RunOn(const Text& database, const std::string& line, const std::string& input) {
    std::vector<Text> words = Words(line);
    words.insert(words.begin() + 1, database);
    return RunDax(words, input);
}

void ExpectSaid(const Text& database, std::initializer_list<Said> cases) {
    for (const auto& [line, exitCode, said] : cases) {
        const Outcome outcome = RunOn(database, line);
        EXPECT_EQ(outcome.exitCode, exitCode) << line << "\n" << outcome.errors;
        EXPECT_THAT(outcome.output + outcome.errors, ::testing::HasSubstr(said)) << line;
    }
}

#ifndef _WIN32
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
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Contents(output), Contents(errors)};
}
#endif

} // namespace dax::test
