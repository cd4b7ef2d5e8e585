#include "validation/SQLDBPicker.h"

#include "base/modGeneric.h"
#include "controls/Reentrance.h"
#include "data/modDB.h"

namespace dax {

using modGeneric::VariantToLong;

namespace {

enum Rights { rightsAdmin = 1, rightsReadOnly = 2 };

} // namespace

SQLDBPicker::SQLDBPicker(std::shared_ptr<ComboBox> comboBox)
    : cboCatalogs(std::move(comboBox)), clickListener(cboCatalogs->Click.Add([this] { HandleSelection(); })) {}

bool SQLDBPicker::LoadPicker(Text connection, Text user, Text catalog) {
    Clear();
    if (connection.empty() || isDesignMode) return false;
    connectionString = std::move(connection);
    username = std::move(user);
    defaultCatalog = std::move(catalog);
    bool isKnown = false;
    try {
        isKnown = ReadEntries();
        FillList();
    } catch (...) {
        Clear();
        throw;
    }
    if (isKnown)
        HandleSelection();
    else
        RaiseCatalogChanged();
    return isKnown;
}

bool SQLDBPicker::ReadEntries() {
    Connection connection;
    connection.Open(connectionString);
    int32_t userID = -1;
    {
        Recordset user;
        user.Open(u"SELECT userID, username, superUser"
                  u" FROM velmoraDBUsers"
                  u" WHERE username = " +
                      modDB::QuoteSQLString(username),
                  connection, adOpenForwardOnly, adLockReadOnly);
        if (user.Eof()) return false;
        userID = VariantToLong(user.Field(u"userID"), -1);
        isSuperuser = VariantToLong(user.Field(u"superUser"), 0) != 0;
    }
    Recordset rows;
    rows.Open(isSuperuser ? Text(u"SELECT dbCatalogName, username, password, dbTitle, dbDescription, 1 AS rights"
                                 u" FROM velmoraDBList")
                          : u"SELECT dbCatalogName, username, password, dbTitle, dbDescription, rights"
                            u" FROM velmoraDBList "
                            u"     INNER JOIN velmoraDBUserRights ON velmoraDBList.dbID = velmoraDBUserRights.dbID"
                            u" WHERE velmoraDBUserRights.userID = " +
                                ToText(userID),
              connection, adOpenForwardOnly, adLockReadOnly);
    const auto text = [&rows](TextView field) { return modGeneric::VariantToString(rows.Field(field), {}); };
    for (; !rows.Eof(); rows.MoveNext()) {
        const int32_t rights = VariantToLong(rows.Field(u"rights"), 0);
        entries.push_back({text(u"dbTitle"), text(u"dbDescription"), text(u"dbCatalogName"), text(u"username"),
                           text(u"password"), rights == rightsAdmin, rights == rightsReadOnly});
    }
    return true;
}

void SQLDBPicker::FillList() {
    const FlagGuard guard(isLoading);
    const Entry* preferred = nullptr;
    for (const Entry& entry : entries) {
        cboCatalogs->AddItem(entry.title);
        if (!preferred && entry.catalog == defaultCatalog) preferred = &entry;
    }
    // Selected by title, so that of two catalogs with one title the first is taken, deliberately.
    const int index = preferred ? modGeneric::FindComboIndex(*cboCatalogs, preferred->title) : -1;
    if (!entries.empty()) cboCatalogs->SetListIndex(index >= 0 ? index : 0);
}

void SQLDBPicker::HandleSelection() {
    if (isLoading) return;
    const int index = cboCatalogs->ListIndex();
    selected =
        index >= 0 && static_cast<size_t>(index) < entries.size() ? entries[static_cast<size_t>(index)] : Entry{};
    RaiseCatalogChanged();
}

// Last in every call: a listener may release the picker.
void SQLDBPicker::RaiseCatalogChanged() {
    CatalogChanged.Raise(selected.catalog, selected.login, selected.password, selected.title, selected.description);
}

void SQLDBPicker::Clear() {
    const FlagGuard guard(isLoading);
    cboCatalogs->Clear();
    entries.clear();
    selected = {};
    connectionString.clear();
    username.clear();
    defaultCatalog.clear();
    isSuperuser = false;
}

void SQLDBPicker::UpdateConnectionHistory(const Text& machineName, const Text& machineIP, const Text& osVersion,
                                          const Text& appVersion) {
    if (connectionString.empty() || selected.catalog.empty() || isDesignMode) return;
    Recordset recordset;
    // Both names are put between the apostrophes unescaped, deliberately: hosts rely on the statement's form.
    recordset.Open(u"SELECT username, machineName, machineIP, osVersion, appVersion, lastConnect, lastCatalog"
                   u" FROM velmoraConnectionHistory"
                   u" WHERE username = '" +
                       username + u"' " + u" AND machineName = '" + machineName + u"'",
                   connectionString, adOpenDynamic, adLockOptimistic);
    if (recordset.Eof()) recordset.AddNew();
    recordset.SetField(u"username", username);
    recordset.SetField(u"lastConnect", Clock());
    recordset.SetField(u"lastCatalog", selected.catalog);
    recordset.SetField(u"machineName", machineName);
    recordset.SetField(u"machineIP", machineIP);
    recordset.SetField(u"OSVersion", osVersion);
    recordset.SetField(u"AppVersion", appVersion);
    recordset.Update();
    recordset.Close();
}

} // namespace dax
