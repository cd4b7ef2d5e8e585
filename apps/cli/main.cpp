// dax: the work of the controls from the command line.
#include "Command.h"
#include "Console.h"
#include "Interruption.h"
#include "Suggestion.h"
#include "System.h"
#include "Target.h"
#include "base/Secrets.h"

#include "data/BuiltInEngine.h"

namespace dax::cli {

namespace {

const Command* const Commands[] = {&SampleCommand,   &CreateCommand, &ValidateCommand, &ValidateConnectorCommand,
                                   &CatalogsCommand, &PickCommand,   &TreeCommand,     &LessonCommand,
                                   &InfoCommand,     &FindCommand,   &LocksCommand,    &EditCommand,
                                   &MapCommand,      &CopyCommand};
constexpr TextView TraceOption = u"--trace";

Text Overview() {
    Text help = u"usage: dax COMMAND [ARGUMENTS]\n\nShows, checks and changes content databases: their lessons, locks "
                u"and lesson maps.\n";
    for (const Command* command : Commands) {
        Text name(command->name);
        name.resize(20, u' ');
        help += u"\n  " + name + Text(command->summary.substr(0, command->summary.find(u'\n')));
    }
    return help +
           u"\n\nA database is the path of a SQLite file, or a connection string such as\n"
           u"  \"Driver={PostgreSQL Unicode};Server=localhost;Database=course;UID=me\"\n"
           u"  \"Driver={MariaDB Unicode};Server=localhost;Database=course;UID=me\"\n"
           u"  \"Provider=SQLOLEDB;Data Source=server;Initial Catalog=course;Integrated Security=SSPI\"\n"
           u"with the password in it (PWD=…), or better in --password-env, --password-file or\n"
           u"--password-prompt, so that it is not visible on the command line. No message shows a password.\n\n"
           u"Exit codes: 0 valid or done, 1 refused, nothing found or not all done, 2 wrong usage, 3 failure;\n"
           u"130 interrupted by Ctrl+C (on Windows C000013A).\n"
           u"'dax help COMMAND' explains one command; 'dax --trace COMMAND' shows its statements; 'dax --version'\n"
           u"prints the version.";
}

// Throws UsageError.
const Command& CommandNamed(const Text& name) {
    Suggestion suggestion(name);
    for (const Command* command : Commands) {
        if (command->name == name) return *command;
        suggestion.Offer(command->name);
    }
    throw UsageError(u"There is no command '" + MaskPasswords(name) + u"'." + suggestion.Question() +
                     u" 'dax help' lists them.");
}

ExitCode ShowHelp(std::span<const Text> words) {
    if (words.size() > 1) throw UsageError(u"'help' explains one command at a time.");
    Print(words.empty() || words[0].starts_with(u'-') || words[0] == u"help" ? Overview()
                                                                             : CommandNamed(words[0]).Help());
    return Success;
}

// The place that a command works on, for messages; empty when it has none.
Text PlaceOf(const Arguments& arguments) {
    return arguments.HasPositional(0) ? ParseTarget(arguments.Positional(0)).shown + u": " : Text();
}

ExitCode RunCommand(const Command& command, std::span<const Text> words, bool isTraced) {
    const Text prefix = u"dax " + Text(command.name) + u": ";
    try {
        const Arguments arguments = command.Parse(words);
        if (arguments.Has(u"--help")) {
            Print(command.Help());
            return Success;
        }
        if (isTraced || arguments.Has(TraceOption))
            SetStatementObserver([](TextView statement) { PrintError(statement); });
        try {
            return command.run(arguments);
        } catch (const Error& error) {
            PrintError(prefix + PlaceOf(arguments) + error.Description());
            return Failure;
        }
    } catch (const RefusedError& error) {
        PrintError(prefix + error.Message());
        return Refused;
    } catch (const UsageError& error) {
        PrintError(prefix + error.Message() + u"\n'dax help " + Text(command.name) + u"' explains the command.");
        return WrongUsage;
    } catch (const Interrupted& interrupted) {
        PrintError(prefix + u"Interrupted. " + interrupted.Message());
        EndInterrupted();
    } catch (const OutputError& error) {
        if (!error.IsClosed()) PrintError(prefix + error.Message());
        return error.IsClosed() ? static_cast<ExitCode>(EndWithClosedOutput()) : Failure;
    }
}

ExitCode Dispatch(std::span<const Text> words) {
    // The one option that is allowed before the command as well as after it.
    const bool isTracedFirst = !words.empty() && words[0] == TraceOption;
    if (isTracedFirst) words = words.subspan(1);
    if (words.empty()) {
        PrintError(Overview());
        return WrongUsage;
    }
    if (words[0] == u"--help" || words[0] == u"-h" || words[0] == u"help") return ShowHelp(words.subspan(1));
    if (words[0] == u"--version") {
        Print(u"dax " + FromUtf8(DAX_VERSION) + u"\nwith " + BuiltInEngine() + u" (public domain)");
        return Success;
    }
    return RunCommand(CommandNamed(words[0]), words.subspan(1), isTracedFirst);
}

ExitCode Run(std::span<const Text> words) {
    for (const Text& word : words)
        for (const Text& password : PasswordsIn(word)) AddSecret(password);
    try {
        return Dispatch(words);
    } catch (const UsageError& error) {
        PrintError(u"dax: " + error.Message());
        return WrongUsage;
    } catch (const OutputError& error) {
        if (error.IsClosed()) return static_cast<ExitCode>(EndWithClosedOutput());
        PrintError(u"dax: " + error.Message());
    } catch (const Error& error) {
        PrintError(u"dax: " + error.Description());
    } catch (const std::bad_alloc&) {
        PrintError(u"dax: There is not enough memory.");
    } catch (const std::exception& error) {
        PrintError(u"dax: " + FromUtf8(error.what()));
    }
    return Failure;
}

// The arguments as texts; exit code WrongUsage for one that is no text.
template <typename Unit, typename Convert>
int RunMain(int count, Unit** words, const Convert& toText) {
    PrepareStreams();
    WatchInterrupts();
    std::vector<Text> texts;
    for (int i = 1; i < count; ++i) {
        const std::basic_string_view<Unit> word(words[i]);
        texts.push_back(toText(word));
        const std::string utf8 = ToUtf8(texts.back());
        const bool isText = [&] {
            if constexpr (sizeof(Unit) == 1)
                return utf8 == word;
            else
                return FromUtf8(utf8) == texts.back();
        }();
        if (isText) continue;
        PrintError(u"dax: Argument " + ToText(i) + u" is not valid " + (sizeof(Unit) == 1 ? u"UTF-8" : u"UTF-16") +
                   u". Set the terminal to UTF-8, or put the text into a file of commands in UTF-8.");
        return WrongUsage;
    }
    return Run(texts);
}

} // namespace

} // namespace dax::cli

#ifdef _WIN32
int wmain(int count, wchar_t** words) {
    return dax::cli::RunMain(count, words, [](std::wstring_view word) { return dax::Text(word.begin(), word.end()); });
}
#else
int main(int count, char** words) {
    return dax::cli::RunMain(count, words, [](std::string_view word) { return dax::FromUtf8(word); });
}
#endif
