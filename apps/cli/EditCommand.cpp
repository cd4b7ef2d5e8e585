// dax edit: changes of the hierarchy, saved together or not at all.
#include "Command.h"
#include "Console.h"
#include "Editing.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace dax::cli {

namespace {

constexpr size_t MostWords = 100;

Text ReadFile(const Text& path) {
    std::ifstream stream(std::filesystem::path(path), std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (!stream) throw Refusal(u"the file of commands '" + path + u"' cannot be read.");
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
    return FromUtf8(bytes);
}

void DoLines(Editing& editing, const std::vector<EditLine>& lines) {
    Progress progress(u"editing", lines.size());
    size_t done = 0;
    for (const EditLine& line : lines) {
        const auto named = [&](const Text& message) {
            return u"line " + ToText(static_cast<long long>(line.number)) + u": " + message;
        };
        try {
            editing.Do(line.words);
        } catch (const UsageError& error) {
            throw UsageError(named(error.Message()));
        } catch (const Refusal& refusal) {
            throw Refusal(named(refusal.Message()) + u"\nNothing was saved.");
        }
        progress.Report(++done);
    }
}

ExitCode Edit(const Arguments& arguments) {
    const std::span<const Text> words = arguments.Places().subspan(1);
    if (words.empty() != arguments.Has(u"--file")) {
        throw UsageError(words.empty() ? u"Missing: a command, or --file COMMANDS."
                                       : u"Give one command, or --file COMMANDS, not both.");
    }
    std::vector<EditLine> lines;
    if (words.empty()) lines = ReadEditLines(ReadFile(arguments.Value(u"--file")));
    Course course(ParseTarget(arguments.Place(0)));
    Editing editing(course);
    if (words.empty()) {
        DoLines(editing, lines);
    } else {
        editing.Do(words);
    }
    if (arguments.Has(u"--dry-run") || !editing.IsAnythingDone()) {
        editing.CheckSaving();
        Print(u"Not saved: " + editing.Summary());
        return Success;
    }
    editing.CheckSaving();
    try {
        course.Save();
    } catch (const Error& error) {
        throw Error(error.Number(), error.Description() + u"\nNothing was saved.");
    }
    Print(u"Saved: " + editing.Summary());
    return Success;
}

constexpr Option Options[] = {
    {u"--file", u"COMMANDS", u"the file with the commands, in UTF-8"},
    {u"--dry-run", u"", u"try the commands, but save nothing"},
};

const Text Summary = u"Add, update, remove and move entries of the hierarchy.\n"
                     u"All is saved in one transaction; when one command is wrong, nothing is.\n\n" +
                     Text(EditGrammar);

} // namespace

const Command EditCommand = {u"edit", u"FILE-or-CONNECTION [COMMAND WORD...]", 1, MostWords, Summary, Options, Edit};

} // namespace dax::cli
