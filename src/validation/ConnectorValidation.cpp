#include "validation/ConnectorValidation.h"

#include "base/modGeneric.h"
#include "data/modDB.h"
#include "validation/Probes.h"

namespace dax {

namespace {

constexpr TextView connectorProbes[] = {
    u"SELECT TOP 1 username, machineName, machineIP, osVersion, appVersion, lastConnect, lastCatalog"
    u" FROM velmoraConnectionHistory",
    u"SELECT TOP 1 dbID, dbCatalogName, username, password, dbTitle, dbDescription"
    u" FROM velmoraDBList",
    u"SELECT TOP 1 userID, username, superUser"
    u" FROM velmoraDBUsers",
    u"SELECT TOP 1 userID, dbID, rights"
    u" FROM velmoraDBUserRights",
};

bool HasUsers(const Text& connectionString) {
    Recordset recordset;
    recordset.Open(u"SELECT Count(*) AS userCount FROM velmoraDBUsers", connectionString, adOpenForwardOnly,
                   adLockReadOnly);
    return !recordset.Eof() && modGeneric::VariantToLong(recordset.Field(u"userCount"), 0) >= 1;
}

bool HasListedDatabase(const Text& connectionString, const Text& username) {
    int32_t userID = -1;
    {
        Recordset recordset;
        recordset.Open(u"SELECT userID, superUser FROM velmoraDBUsers WHERE username = " +
                           modDB::QuoteSQLString(username),
                       connectionString, adOpenForwardOnly, adLockReadOnly);
        if (recordset.Eof()) return false;
        userID = modGeneric::VariantToLong(recordset.Field(u"userID"), -1);
        // A super user may open every catalog and needs no rights rows, not even a listed catalog.
        if (modGeneric::VariantToLong(recordset.Field(u"superUser"), 0) != 0) return true;
    }
    Recordset recordset;
    recordset.Open(u"SELECT dbCatalogName "
                   u" FROM velmoraDBList "
                   u"     INNER JOIN velmoraDBUserRights ON velmoraDBList.dbID = velmoraDBUserRights.dbID"
                   u" WHERE userID = " +
                       ToText(userID),
                   connectionString, adOpenForwardOnly, adLockReadOnly);
    return !recordset.Eof(); // whatever the rights of the row: even 0 counts, deliberately
}

template <typename Question>
bool Answer(Question question) noexcept {
    try {
        return question();
    } catch (...) {
        return false;
    }
}

} // namespace

bool ProbeConnectorTables(const Text& connectionString, int32_t& errorNumber, Text& errorDescription) noexcept {
    return Guarded(errorNumber, errorDescription, [&] { ProbeAll(connectionString, connectorProbes); });
}

bool ConnectorHasUsers(const Text& connectionString) noexcept {
    return Answer([&] { return HasUsers(connectionString); });
}

bool UserHasListedDatabase(const Text& connectionString, const Text& username) noexcept {
    return Answer([&] { return HasListedDatabase(connectionString, username); });
}

} // namespace dax
