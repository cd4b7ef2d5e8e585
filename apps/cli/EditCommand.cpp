// dax edit: changes of the hierarchy, saved together or not at all.
#include "Command.h"
#include "Console.h"
#include "Editing.h"
#include "TextFile.h"

namespace dax::cli {

namespace {

constexpr size_t MaxWords = 100;

void DoLines(Editing& editing, const std::vector<EditLine>& lines) {
    Progress progress(u"editing", lines.size());
    size_t done = 0;
    for (const EditLine& line : lines) {
        const auto named = [&](const Text& message) {
            return u"Line " + ToText(static_cast<long long>(line.number)) + u": " + message;
        };
        try {
            editing.Do(line.words);
        } catch (const UsageError& error) {
            throw UsageError(named(error.Message()));
        } catch (const RefusedError& error) {
            throw RefusedError(named(error.Message()) + u"\nNothing was saved.");
        }
        progress.Report(++done);
    }
}

ExitCode Edit(const Arguments& arguments) {
    const std::span<const Text> words = arguments.Positionals().subspan(1);
    if (words.empty() != arguments.Has(u"--file")) {
        throw UsageError(words.empty() ? u"A command is missing. Give one, or --file COMMANDS."
                                       : u"Give one command, or --file COMMANDS, not both.");
    }
    std::vector<EditLine> lines;
    if (words.empty()) lines = ReadEditLines(ReadTextFile(arguments.Value(u"--file")));
    const Target target = ParseTarget(arguments);
    std::optional<InterruptScope> unsaved(std::in_place, u"Nothing was saved.");
    Course course(target);
    course.Editor().SetConflictCheck(!arguments.Has(u"--force"));
    Editing editing(course);
    if (words.empty()) {
        DoLines(editing, lines);
    } else {
        editing.Do(words);
    }
    editing.CheckSaving();
    if (!arguments.Has(u"--force")) editing.CheckLocks(target);
    if (arguments.Has(u"--dry-run") || !editing.IsAnythingDone()) {
        Print(u"Not saved: " + editing.Summary());
        return Success;
    }
    try {
        course.Save();
    } catch (const Error& error) {
        const TextView hint = error.Number() == ErrorNumbers::Conflict
                                  ? u"\nGive the command again, or --force to overwrite what the other has changed."
                                  : u"\nNothing was saved.";
        throw Error(error.Number(), error.Description() + Text(hint));
    }
    unsaved.reset();
    Text said = u"Saved: " + editing.Summary();
    for (const Text& id : editing.AddedIDs()) said += u"\nAdded: " + id;
    Announce(said);
    return Success;
}

constexpr Option EditOptions[] = {
    {u"--file", u"COMMANDS",
     u"the file with the commands, - for the standard input; in UTF-8, or in UTF-16 with a mark"},
    {u"--dry-run", u"", u"try the commands, but save nothing"},
    {u"--force", u"", u"also change what somebody is editing, or has changed since the course was loaded"},
};

const Text Summary = u"Add, update, remove and move entries of the hierarchy.\n"
                     u"All changes are saved in one transaction; if one command is wrong, nothing is saved.\n"
                     u"Entries on which somebody has a valid edit lock, and groups that contain one, are not\n"
                     u"changed or removed.\n"
                     u"Prints what was saved, and the lessonID of each entry that was added.\n\n" +
                     Text(EditGrammar);

} // namespace

const Command EditCommand = {u"edit", u"FILE-or-CONNECTION [COMMAND WORD...]", 1, MaxWords, Summary, EditOptions, Edit};

} // namespace dax::cli
