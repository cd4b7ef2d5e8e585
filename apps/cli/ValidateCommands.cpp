// dax validate and dax validate-connector: the outcome as the status panel shows it.
#include "Command.h"
#include "Console.h"
#include "Target.h"
#include "validation/DatabaseValidator.h"

namespace dax::cli {

namespace {

ExitCode Show(const DatabaseValidator& validator, bool isValid) {
    const StatusDisplay& display = validator.Display();
    bool isFirst = true;
    const auto paragraph = [&](const Text& title, const Text& text) {
        if (title.empty() && text.empty()) return;
        if (!isFirst) Print(u"");
        isFirst = false;
        if (!title.empty()) Print(title);
        if (!text.empty()) Print(text);
    };
    paragraph(display.statusTitle, display.statusMessage);
    paragraph(display.detailTitle, display.detailText);
    if (isValid) return Success;
    return validator.ErrorType() == veUnexpectedError ? Failure : Refused;
}

ExitCode Validate(const Arguments& arguments) {
    const Target target = ParseTarget(arguments);
    DatabaseValidator validator;
    const bool isMDB = target.isFile || arguments.Has(u"--mdb");
    const bool isValid =
        validator.ValidateDataConnection(target.connection, arguments.Value(u"--catalog", target.shown), isMDB);
    const ExitCode code = Show(validator, isValid);
    if (isValid) {
        Print(validator.ValidateSupportsTalk(target.connection) ? u"discussions: supported"
                                                                : u"discussions: not supported (no talk tables)");
    }
    return code;
}

ExitCode ValidateConnector(const Arguments& arguments) {
    DatabaseValidator validator;
    const bool isValid =
        validator.ValidateCommonConnection(ParseTarget(arguments).connection, arguments.Value(u"--source"),
                                           arguments.Value(u"--catalog"), arguments.Value(u"--user"));
    return Show(validator, isValid);
}

constexpr Option ValidateOptions[] = {
    {u"--catalog", u"NAME", u"the name shown in messages; with --mdb the path of the file"},
    {u"--mdb", u"", u"a connection string that opens a database file: check the file too"},
};
constexpr Option ConnectorOptions[] = {
    {u"--source", u"SERVER", u"the server that holds the connector", true},
    {u"--catalog", u"NAME", u"the connector's catalog", true},
    {u"--user", u"NAME", u"the user who wants to work", true},
};

} // namespace

const Command ValidateCommand = {u"validate",
                                 u"FILE-or-CONNECTION",
                                 1,
                                 1,
                                 u"Check whether a content database can be used, and why not.\n"
                                 u"Leaves no changes in it.",
                                 ValidateOptions,
                                 Validate};

const Command ValidateConnectorCommand = {u"validate-connector",
                                          u"FILE-or-CONNECTION",
                                          1,
                                          1,
                                          u"Check whether a user can work through a connector database, and why not.",
                                          ConnectorOptions,
                                          ValidateConnector};

} // namespace dax::cli
