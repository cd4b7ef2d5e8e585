// Drop-down list of the content catalogs that one user may open through the connector.
#pragma once

#include "base/Value.h"
#include "controls/ComboBox.h"
#include "controls/Event.h"

#include <functional>
#include <memory>

namespace dax {

class SQLDBPicker {
public:
    // Shares the list with its window, so that either may be released inside an event of the other.
    explicit SQLDBPicker(std::shared_ptr<ComboBox> cboCatalogs);
    SQLDBPicker(const SQLDBPicker&) = delete;
    SQLDBPicker& operator=(const SQLDBPicker&) = delete;

    // Lists the user's catalogs and selects the default one (by its exact name), or the first; raises CatalogChanged
    // once. False when the connection string is empty (no event) or the user unknown (an event with empty texts).
    // Throws Error when the database fails: everything is then as after Clear, and no event was raised.
    bool LoadPicker(Text connectionString, Text username, Text defaultCatalog);
    void Clear(); // raises no event

    // Records user and machine in the connector; nothing while no catalog is selected. Throws Error.
    // The user and machine names enter the statement unescaped, by contract.
    void UpdateConnectionHistory(const Text& machineName, const Text& machineIP, const Text& osVersion,
                                 const Text& appVersion);

    const Text& ConnectionString() const { return connectionString; }
    const Text& DBCatalog() const { return selected.catalog; }
    const Text& DBUsername() const { return selected.login; }
    const Text& DBPassword() const { return selected.password; }
    const Text& Title() const { return selected.title; }
    const Text& DefaultCatalog() const { return defaultCatalog; }
    const Text& Username() const { return username; }
    bool IsAdmin() const { return selected.isAdmin; }
    bool IsReadOnly() const { return selected.isReadOnly; }
    bool IsSuperuser() const { return isSuperuser; }
    bool Enabled() const { return cboCatalogs->Enabled(); }
    void SetEnabled(bool isEnabled) { cboCatalogs->SetEnabled(isEnabled); }

    // In design mode LoadPicker and UpdateConnectionHistory touch no database; the list stays empty.
    void SetDesignMode(bool isOn) { isDesignMode = isOn; }

    Event<Text, Text, Text, Text, Text> CatalogChanged; // catalog, login, password, title, description
    std::function<DateTime()> Clock = Now;

private:
    struct Entry {
        Text title, description, catalog, login, password;
        bool isAdmin = false, isReadOnly = false;
    };

    bool ReadEntries(); // false: the user is unknown
    void FillList();
    void RaiseCatalogChanged();
    void HandleSelection();

    std::shared_ptr<ComboBox> cboCatalogs;
    Subscription clickListener;
    std::vector<Entry> entries; // in the order of cboCatalogs
    Entry selected;
    Text connectionString, username, defaultCatalog;
    bool isSuperuser = false;
    bool isLoading = false; // silences CatalogChanged while the list fills
    bool isDesignMode = false;
};

} // namespace dax
