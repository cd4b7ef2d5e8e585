// dax catalogs: what the picker would offer to a user.
#include "Command.h"
#include "Console.h"
#include "Target.h"
#include "validation/SQLDBPicker.h"

namespace dax::cli {

namespace {

Text RightsText(const SQLDBPicker& picker) {
    if (picker.IsAdmin()) return u"administrator";
    return picker.IsReadOnly() ? u"read only" : u"read and write";
}

ExitCode Catalogs(const Arguments& arguments) {
    const Target target = ParseTarget(arguments.Place(0));
    const Text user = arguments.Value(u"--user");
    if (!arguments.Has(u"--record")) {
        for (const TextView detail : {u"--ip", u"--os", u"--app"}) {
            if (arguments.Has(detail)) throw UsageError(Text(detail) + u" goes with --record MACHINE.");
        }
    }
    const Text machine = arguments.Value(u"--record");
    if (arguments.Has(u"--record") && (user + machine).find(u'\'') != Text::npos) {
        Complain(u"dax catalogs: the connection history takes no apostrophe in the user's or the machine's name. Leave "
                 u"--record out.");
        return Refused;
    }
    const auto list = std::make_shared<MemoryComboBox>();
    SQLDBPicker picker(list);
    bool isKnown = false;
    try {
        isKnown = picker.LoadPicker(target.connection, user, arguments.Value(u"--default"));
    } catch (const Error& error) {
        throw Error(error.Number(), error.Description() + u"\n'dax validate-connector' tells whether it is a connector "
                                                          u"database.");
    }
    if (!isKnown) {
        Complain(u"dax catalogs: the connector does not know the user '" + user + u"'.");
        return Refused;
    }
    if (list->ListCount() == 0) {
        Complain(u"dax catalogs: the user '" + user + u"' may open no catalog of this connector.");
        return Refused;
    }
    const int chosen = list->ListIndex();
    if (picker.IsSuperuser()) Print(user + u" is a super user.");
    for (int i = 0; i < list->ListCount(); ++i) {
        list->SetListIndex(i);
        Print(Text(i == chosen ? u"* " : u"  ") + picker.Title() + u"  [" + picker.DBCatalog() + u"]  login " +
              picker.DBUsername() + u", " + RightsText(picker));
    }
    list->SetListIndex(chosen);
    if (arguments.Has(u"--record")) {
        picker.UpdateConnectionHistory(machine, arguments.Value(u"--ip", u"127.0.0.1"), arguments.Value(u"--os"),
                                       arguments.Value(u"--app", u"dax"));
        Print(u"Recorded: " + user + u" opens " + picker.DBCatalog() + u" from " + machine + u".");
    }
    return Success;
}

constexpr Option Options[] = {
    {u"--user", u"NAME", u"the user whose catalogs are listed", true},
    {u"--default", u"CATALOG", u"the catalog chosen at first"},
    {u"--record", u"MACHINE", u"enter a connection to the chosen catalog in the history"},
    {u"--ip", u"ADDRESS", u"with --record: the machine's address (127.0.0.1)"},
    {u"--os", u"TEXT", u"with --record: its operating system"},
    {u"--app", u"TEXT", u"with --record: the version of the application (dax)"},
};

} // namespace

const Command CatalogsCommand = {u"catalogs",
                                 u"FILE-or-CONNECTION",
                                 1,
                                 1,
                                 u"List the content databases that a user may open through a connector.\n"
                                 u"The chosen one has a star; passwords are not shown.",
                                 Options,
                                 Catalogs};

} // namespace dax::cli
