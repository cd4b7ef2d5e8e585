// What every command of the program has: a row in the table of commands, its arguments, an exit code.
#pragma once

#include "MessageException.h"
#include "base/Text.h"

#include <map>
#include <span>
#include <vector>

namespace dax::cli {

enum ExitCode { Success = 0, Refused = 1, WrongUsage = 2, Failure = 3 };

// The texts of the two exceptions, and of Interrupted and OutputError, follow "dax COMMAND: ". CONTRIBUTING.md
// describes how messages are written.

// The command line is not valid for the command. The text says what is wrong and what would be right.
class UsageError : public MessageException {
public:
    using MessageException::MessageException;
};

// The command refuses a valid request; nothing was changed.
class RefusedError : public MessageException {
public:
    using MessageException::MessageException;
};

struct Option {
    TextView name;  // with its two hyphens
    TextView value; // what the value means; empty for a switch
    TextView help;
    bool isRequired = false;
};

class Arguments {
public:
    bool HasPositional(size_t index) const { return index < positionals.size(); }
    const Text& Positional(size_t index) const { return positionals.at(index); }
    std::span<const Text> Positionals() const { return positionals; }
    bool Has(TextView option) const { return options.contains(Text(option)); }
    Text Value(TextView option, Text defaultValue = {}) const;
    // Throws UsageError when it is not a whole number within the bounds.
    size_t Number(TextView option, size_t defaultValue, size_t min, size_t max) const;

private:
    friend struct Command;
    std::vector<Text> positionals;
    std::map<Text, Text> options;
};

struct Command {
    TextView name;
    TextView positionalNames; // "FILE-or-CONNECTION"
    size_t minPositionals, maxPositionals;
    TextView summary;
    std::span<const Option> options;
    ExitCode (*run)(const Arguments&);

    Arguments Parse(std::span<const Text> words) const; // throws UsageError
    Text Help() const;
};

extern const Command CreateCommand, SampleCommand, ValidateCommand, ValidateConnectorCommand, CatalogsCommand,
    PickCommand, TreeCommand, LessonCommand, InfoCommand, FindCommand, LocksCommand, EditCommand, MapCommand,
    CopyCommand;

} // namespace dax::cli
