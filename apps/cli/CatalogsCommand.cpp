// dax catalogs and dax pick: what the picker would offer to a user, and what a host gets from the choice.
#include "Command.h"
#include "Console.h"
#include "Json.h"
#include "System.h"
#include "Target.h"
#include "base/Secrets.h"
#include "data/CatalogConnection.h"
#include "validation/SQLDBPicker.h"

namespace dax::cli {

namespace {

Text RightsText(const SQLDBPicker& picker) {
    if (picker.IsAdmin()) return u"administrator";
    return picker.IsReadOnly() ? u"read only" : u"read and write";
}

// Throws RefusedError when the user is unknown or may open nothing.
void Load(SQLDBPicker& picker, const ComboBox& list, const Target& connector, const Text& user, const Text& catalog) {
    bool isKnown = false;
    try {
        isKnown = picker.LoadPicker(connector.connection, user, catalog);
    } catch (const Error& error) {
        throw Error(error.Number(), error.Description() +
                                        u"\n'dax validate-connector' checks whether it is a connector "
                                        u"database.");
    }
    if (!isKnown) throw RefusedError(u"The connector does not know the user '" + user + u"'.");
    if (list.ListCount() == 0)
        throw RefusedError(u"The user '" + user + u"' may not open any catalog of this connector.");
}

ExitCode Catalogs(const Arguments& arguments) {
    const Target target = ParseTarget(arguments);
    const Text user = arguments.Value(u"--user");
    if (!arguments.Has(u"--record")) {
        for (const TextView detail : {u"--ip", u"--os", u"--app"}) {
            if (arguments.Has(detail)) throw UsageError(u"'" + Text(detail) + u"' requires --record MACHINE.");
        }
    }
    const Text machine = arguments.Value(u"--record");
    if (arguments.Has(u"--record") && (user + machine).find(u'\'') != Text::npos) {
        throw RefusedError(u"The connection history takes no apostrophe in the user's or the machine's name. Leave "
                           u"--record out.");
    }
    const auto list = std::make_shared<ComboBox>();
    SQLDBPicker picker(list);
    Load(picker, *list, target, user, arguments.Value(u"--default"));
    const int chosen = list->ListIndex();
    Text description;
    picker.CatalogChanged.AddPermanent(
        [&description](const Text&, const Text&, const Text&, const Text&, const Text& about) { description = about; });
    JsonArray catalogs;
    Output lines;
    if (picker.IsSuperuser()) lines.Line(user + u" is a super user.");
    for (int i = 0; i < list->ListCount(); ++i) {
        list->SetListIndex(i);
        lines.Line(Text(i == chosen ? u"* " : u"  ") + picker.Title() + u"  [" + picker.DBCatalog() + u"]  login " +
                   picker.DBUsername() + u", " + RightsText(picker));
        JsonObject catalog;
        catalog.Add(u"catalog", picker.DBCatalog()).Add(u"title", picker.Title());
        catalog.Add(u"description", description).Add(u"login", picker.DBUsername());
        catalog.Add(u"rights", RightsText(picker)).Add(u"chosen", i == chosen);
        catalogs.AddRaw(catalog.Result());
    }
    list->SetListIndex(chosen);
    if (arguments.Has(u"--record")) {
        picker.UpdateConnectionHistory(machine, arguments.Value(u"--ip", u"127.0.0.1"), arguments.Value(u"--os"),
                                       arguments.Value(u"--app", u"dax"));
        lines.Line(u"Recorded: " + user + u" opens " + picker.DBCatalog() + u" from " + machine + u".");
    }
    if (!arguments.Has(u"--json")) {
        lines.Finish();
        return Success;
    }
    JsonObject all;
    all.Add(u"user", user).Add(u"superUser", picker.IsSuperuser()).AddRaw(u"catalogs", catalogs.Result());
    Print(all.Add(u"recorded", arguments.Has(u"--record")).Result());
    return Success;
}

ExitCode Pick(const Arguments& arguments) {
    const Target target = ParseTarget(arguments);
    const Text user = arguments.Value(u"--user"), catalog = arguments.Value(u"--catalog");
    const auto list = std::make_shared<ComboBox>();
    SQLDBPicker picker(list);
    Load(picker, *list, target, user, catalog);
    if (!catalog.empty() && picker.DBCatalog() != catalog) {
        throw RefusedError(u"The user '" + user + u"' may not open a catalog '" + catalog + u"', or there is none.");
    }
    const Text found =
        CatalogConnection(target.connection, picker.DBCatalog(), picker.DBUsername(), picker.DBPassword());
    const Text masked = MaskPasswords(found);
    const bool isHidden = masked != found && IsTerminal(stdout) && !arguments.Has(u"--show-password");
    Print(isHidden ? masked : found);
    if (isHidden)
        PrintError(u"dax pick: The password is not shown on a terminal. Programs that read the output get it; "
                   u"--show-password shows it.");
    return Success;
}

constexpr Option PickOptions[] = {
    {u"--user", u"NAME", u"the user", true},
    {u"--catalog", u"NAME", u"the catalog; without it the first one, which the picker chooses"},
    {u"--show-password", u"", u"print the password on a terminal, too"},
};
constexpr Option CatalogsOptions[] = {
    {u"--user", u"NAME", u"the user whose catalogs are listed", true},
    {u"--default", u"CATALOG", u"the catalog to choose; without it the first one"},
    {u"--record", u"MACHINE", u"record a connection to the chosen catalog in the history"},
    {u"--ip", u"ADDRESS", u"with --record: the machine's address (127.0.0.1)"},
    {u"--os", u"TEXT", u"with --record: its operating system"},
    {u"--app", u"TEXT", u"with --record: the version of the application (dax)"},
    {u"--json", u"",
     u"print an object for programs: user, superUser, \"catalogs\", each with catalog,\n"
     u"title, description, login, rights, chosen; recorded"},
};

} // namespace

const Command CatalogsCommand = {
    u"catalogs",
    u"FILE-or-CONNECTION",
    1,
    1,
    u"List the content databases that a user may open through a connector.\n"
    u"Prints a line for each: title, catalog, login and rights. A star marks the chosen one;\n"
    u"passwords are not shown.",
    CatalogsOptions,
    Catalogs};

const Command PickCommand = {u"pick",
                             u"FILE-or-CONNECTION",
                             1,
                             1,
                             u"Print the connection string of a catalog that a user may open through a connector.\n"
                             u"It can be given to the other commands. It contains the login and the password\n"
                             u"that are stored in the connector; for a connector in a file, it is the path of a\n"
                             u"file in the same folder. On a terminal the password is shown as dots.",
                             PickOptions,
                             Pick};

} // namespace dax::cli
