#include "Command.h"

#include "Password.h"
#include "Suggestion.h"
#include "base/Secrets.h"

#include <algorithm>

namespace dax::cli {

namespace {

constexpr size_t HelpWidth = 90;
constexpr size_t MaxFewPositionals = 4; // a command that takes more takes any words
constexpr Option CommonOptions[] = {
    PasswordOptions[0],
    PasswordOptions[1],
    PasswordOptions[2],
    {u"--trace", u"", u"show each statement that is sent to the database, on standard error"},
    {u"--help", u"", u"explain this command, as -h does"},
};

const Option* FindOption(std::span<const Option> options, TextView name) {
    const auto isIt = [&](const Option& option) { return option.name == name; };
    const auto own = std::find_if(options.begin(), options.end(), isIt);
    if (own != options.end()) return &*own;
    const auto common = std::find_if(std::begin(CommonOptions), std::end(CommonOptions), isIt);
    return common == std::end(CommonOptions) ? nullptr : common;
}

UsageError UnknownOption(const Command& command, const Text& name) {
    Suggestion suggestion(name);
    for (const std::span<const Option> options : {command.options, std::span<const Option>(CommonOptions)})
        for (const Option& option : options) suggestion.Offer(option.name);
    return UsageError(u"'" + Text(command.name) + u"' has no option '" + name + u"'." + suggestion.Question());
}

// `-x`, which no command has, unless the command takes words of any kind and this is one of them.
bool IsShortOption(const Command& command, const Text& word, size_t positionalsBefore) {
    return word.size() > 1 && word.starts_with(u'-') &&
           (command.maxPositionals <= MaxFewPositionals || positionalsBefore == 0);
}

// What follows a connection string with a blank in it may be the rest of its password, so it is not repeated then.
UsageError TooMany(std::span<const Text> positionals, size_t max) {
    const bool isSecret = std::any_of(positionals.begin(), positionals.end(),
                                      [](const Text& each) { return MaskPasswords(each) != each; });
    return UsageError(
        (isSecret ? Text(u"There are too many arguments.") : u"'" + positionals[max] + u"' is one argument too many.") +
        u" A path or a connection string with blanks needs quotes around it.");
}

Text Syntax(const Option& option) {
    return option.value.empty() ? Text(option.name) : Text(option.name) + u" " + Text(option.value);
}

} // namespace

Text Arguments::Value(TextView option, Text defaultValue) const {
    const auto found = options.find(Text(option));
    return found == options.end() ? defaultValue : found->second;
}

size_t Arguments::Number(TextView option, size_t defaultValue, size_t min, size_t max) const {
    const auto found = options.find(Text(option));
    if (found == options.end()) return defaultValue;
    const Text& digits = found->second;
    size_t number = 0;
    bool isNumber = !digits.empty() && digits.size() <= 9;
    for (const char16_t digit : digits) {
        isNumber = isNumber && digit >= u'0' && digit <= u'9';
        if (isNumber) number = number * 10 + (digit - u'0');
    }
    if (!isNumber || number < min || number > max) {
        throw UsageError(u"'" + Text(option) + u"' takes a whole number from " + ToText(static_cast<long long>(min)) +
                         u" to " + ToText(static_cast<long long>(max)) + u", not '" + digits + u"'.");
    }
    return number;
}

Arguments Command::Parse(std::span<const Text> words) const {
    Arguments arguments;
    bool isOptionsEnd = false;
    for (size_t i = 0; i < words.size(); ++i) {
        const Text& word = words[i];
        if (word == u"-h" && !isOptionsEnd) {
            arguments.options[u"--help"];
            continue;
        }
        if (isOptionsEnd || !word.starts_with(u"--")) {
            if (!isOptionsEnd && IsShortOption(*this, word, arguments.positionals.size()))
                throw UnknownOption(*this, word);
            arguments.positionals.push_back(word);
            continue;
        }
        if (word == u"--") {
            isOptionsEnd = true;
            continue;
        }
        const size_t equals = word.find(u'=');
        const Option* option = FindOption(options, TextView(word).substr(0, equals));
        if (!option) throw UnknownOption(*this, word.substr(0, equals));
        if (option->value.empty() != (equals == Text::npos) && option->value.empty()) {
            throw UsageError(u"'" + Text(option->name) + u"' takes no value.");
        }
        Text value = equals == Text::npos ? Text() : word.substr(equals + 1);
        if (!option->value.empty() && equals == Text::npos) {
            if (++i == words.size())
                throw UsageError(u"'" + Text(option->name) + u"' needs a value: " + Syntax(*option) + u".");
            value = words[i];
        }
        arguments.options[Text(option->name)] = std::move(value);
    }
    if (arguments.Has(u"--help")) return arguments;
    if (arguments.positionals.size() < minPositionals)
        throw UsageError(u"An argument is missing: " + Text(positionalNames) + u".");
    if (arguments.positionals.size() > maxPositionals) throw TooMany(arguments.positionals, maxPositionals);
    for (const Option& option : options) {
        if (option.isRequired && !arguments.Has(option.name))
            throw UsageError(u"An option is missing: " + Syntax(option) + u".");
    }
    return arguments;
}

Text Command::Help() const {
    Text help = u"usage: dax " + Text(name);
    if (!positionalNames.empty())
        help += u" " + (minPositionals == 0 ? u"[" + Text(positionalNames) + u"]" : Text(positionalNames));
    size_t lineStart = 0;
    for (const Option& option : options) {
        const Text shown = option.isRequired ? Syntax(option) : u"[" + Syntax(option) + u"]";
        if (help.size() + 1 + shown.size() - lineStart > HelpWidth) {
            help += u"\n   ";
            lineStart = help.size() - 3;
        }
        help += u" " + shown;
    }
    help += u"\n\n" + Text(summary) + u"\n";
    const auto explain = [&](const Option& option) {
        Text shown = u"  " + Syntax(option);
        shown.resize(std::max<size_t>(shown.size() + 2, 24), u' ');
        help += u"\n" + shown;
        for (const char16_t unit : option.help) {
            help += unit;
            if (unit == u'\n') help.append(shown.size(), u' ');
        }
    };
    for (const Option& option : options) explain(option);
    for (const Option& option : CommonOptions) explain(option);
    return help;
}

} // namespace dax::cli
