// dax catalogs and dax pick: what the picker would offer to a user, and what a host gets from the choice.
#include "Command.h"
#include "Console.h"
#include "Target.h"
#include "data/CatalogConnection.h"
#include "validation/SQLDBPicker.h"

namespace dax::cli {

namespace {

Text RightsText(const SQLDBPicker& picker) {
    if (picker.IsAdmin()) return u"administrator";
    return picker.IsReadOnly() ? u"read only" : u"read and write";
}

// Throws Refusal when the user is unknown or may open nothing.
void Load(SQLDBPicker& picker, const ComboBox& list, const Target& connector, const Text& user, const Text& catalog) {
    bool isKnown = false;
    try {
        isKnown = picker.LoadPicker(connector.connection, user, catalog);
    } catch (const Error& error) {
        throw Error(error.Number(), error.Description() + u"\n'dax validate-connector' tells whether it is a connector "
                                                          u"database.");
    }
    if (!isKnown) throw Refusal(u"the connector does not know the user '" + user + u"'.");
    if (list.ListCount() == 0) throw Refusal(u"the user '" + user + u"' may open no catalog of this connector.");
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
        throw Refusal(u"the connection history takes no apostrophe in the user's or the machine's name. Leave "
                      u"--record out.");
    }
    const auto list = std::make_shared<MemoryComboBox>();
    SQLDBPicker picker(list);
    Load(picker, *list, target, user, arguments.Value(u"--default"));
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

ExitCode Pick(const Arguments& arguments) {
    const Target target = ParseTarget(arguments.Place(0));
    const Text user = arguments.Value(u"--user"), catalog = arguments.Value(u"--catalog");
    const auto list = std::make_shared<MemoryComboBox>();
    SQLDBPicker picker(list);
    Load(picker, *list, target, user, catalog);
    if (!catalog.empty() && picker.DBCatalog() != catalog) {
        throw Refusal(u"the user '" + user + u"' may not open the catalog '" + catalog + u"', or there is none.");
    }
    Print(CatalogConnection(target.connection, picker.DBCatalog(), picker.DBUsername(), picker.DBPassword()));
    return Success;
}

constexpr Option PickOptions[] = {
    {u"--user", u"NAME", u"the user who wants to work", true},
    {u"--catalog", u"NAME", u"the catalog; without it the one that the picker chooses, the first"},
};
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

const Command PickCommand = {u"pick",
                             u"FILE-or-CONNECTION",
                             1,
                             1,
                             u"Print what opens a catalog that a user may open through a connector.\n"
                             u"It is a connection string for the other commands, with the login and the password that\n"
                             u"the connector keeps; for a connector in a file, the path of a file beside it.",
                             PickOptions,
                             Pick};

} // namespace dax::cli
