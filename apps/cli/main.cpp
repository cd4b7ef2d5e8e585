// dax: the work of the controls from the command line.
#include "Command.h"
#include "Console.h"
#include "Target.h"

#include <algorithm>

namespace dax::cli {

namespace {

const Command* const Commands[] = {&SampleCommand,   &CreateCommand, &ValidateCommand, &ValidateConnectorCommand,
                                   &CatalogsCommand, &PickCommand,   &TreeCommand,     &LessonCommand,
                                   &InfoCommand,     &LocksCommand,  &EditCommand,     &MapCommand};
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
           u"  \"Driver={PostgreSQL Unicode};Server=localhost;Database=course;UID=me;PWD=secret\"\n"
           u"  \"Driver={MariaDB Unicode};Server=localhost;Database=course;UID=me;PWD=secret\"\n"
           u"  \"Provider=SQLOLEDB;Data Source=server;Initial Catalog=course;Integrated Security=SSPI\"\n\n"
           u"Exit codes: 0 valid or done, 1 refused or not all done, 2 wrong usage, 3 failure.\n"
           u"'dax COMMAND --help' explains one command; 'dax --trace COMMAND' shows its statements; 'dax --version'\n"
           u"tells the version.";
}

ExitCode Dispatch(std::span<const Text> words) {
    // The one option that may stand before the command as well as after it.
    const bool isTracedFirst = !words.empty() && words[0] == TraceOption;
    if (isTracedFirst) words = words.subspan(1);
    if (words.empty()) {
        Complain(Overview());
        return WrongUsage;
    }
    if (words[0] == u"--help" || words[0] == u"-h" || words[0] == u"help") {
        Print(Overview());
        return Success;
    }
    if (words[0] == u"--version") {
        Print(u"dax " + FromUtf8(DAX_VERSION));
        return Success;
    }
    const auto found = std::find_if(std::begin(Commands), std::end(Commands),
                                    [&](const Command* command) { return command->name == words[0]; });
    if (found == std::end(Commands)) {
        Complain(u"dax: there is no command '" + words[0] + u"'. 'dax --help' lists them.");
        return WrongUsage;
    }
    const Command& command = **found;
    try {
        const Arguments arguments = command.Parse(words.subspan(1));
        if (arguments.Has(u"--help")) {
            Print(command.Help());
            return Success;
        }
        if (isTracedFirst || arguments.Has(TraceOption))
            SetStatementObserver([](TextView statement) { Complain(statement); });
        try {
            return command.run(arguments);
        } catch (const Error& error) {
            Complain(u"dax " + Text(command.name) + u": " +
                     (arguments.HasPlace(0) ? ParseTarget(arguments.Place(0)).shown + u": " : Text()) +
                     error.Description());
            return Failure;
        }
    } catch (const Refusal& refusal) {
        Complain(u"dax " + Text(command.name) + u": " + refusal.Message());
        return Refused;
    } catch (const UsageError& error) {
        Complain(u"dax " + Text(command.name) + u": " + error.Message() + u"\n'dax " + Text(command.name) +
                 u" --help' explains it.");
        return WrongUsage;
    }
}

ExitCode Run(std::span<const Text> words) {
    PrepareConsole();
    try {
        return Dispatch(words);
    } catch (const Error& error) {
        Complain(u"dax: " + error.Description());
    } catch (const std::bad_alloc&) {
        Complain(u"dax: Not enough memory.");
    } catch (const std::exception& error) {
        Complain(u"dax: " + FromUtf8(error.what()));
    }
    return Failure;
}

} // namespace

} // namespace dax::cli

#ifdef _WIN32
int wmain(int count, wchar_t** words) {
    std::vector<dax::Text> texts;
    for (int i = 1; i < count; ++i) {
        const std::wstring_view word(words[i]);
        texts.emplace_back(word.begin(), word.end());
    }
    return dax::cli::Run(texts);
}
#else
int main(int count, char** words) {
    std::vector<dax::Text> texts;
    for (int i = 1; i < count; ++i) texts.push_back(dax::FromUtf8(words[i]));
    return dax::cli::Run(texts);
}
#endif
