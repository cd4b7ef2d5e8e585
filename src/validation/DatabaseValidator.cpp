#include "validation/DatabaseValidator.h"

#include "base/Secrets.h"
#include "base/modGeneric.h"
#include "data/modDB.h"
#include "validation/ConnectorValidation.h"
#include "validation/ContentValidation.h"

namespace dax {

namespace {

const Text openTitle = u"cannot open database connection";
const Text structureTitle = u"invalid database structure";
const Text structureMessage = u"Velmora was unable to locate all of the required database tables and fields.  ";
const Text writeTitle = u"cannot write to database";
const Text writeMessage = u"Velmora was unable to update one or more of the database tables.  ";
const Text serverAdvice =
    u"Check with your administrator to ensure that the machine and catalog are available and online, and that "
    u"the account associated with the catalog has sufficient access rights.";
const Text askAdministrator = u"Contact your administrator for further information.";

} // namespace

struct DatabaseValidator::Outcome {
    ValidationErrorTypes type = veNone;
    StatusPicture picture = StatusPicture::Information;
    Text title, message;
    bool hasDetails = false;

    static Outcome Valid(Text message) { return {veNone, StatusPicture::Information, {}, std::move(message), false}; }
};

void DatabaseValidator::SetError(int32_t number, Text description) {
    errorNumber = number;
    errorDescription = std::move(description);
}

void DatabaseValidator::ShowBusy() {
    display = {{}, u"validating database", {}, {}, StatusPicture::Busy};
    Changed.Raise();
}

void DatabaseValidator::Show(const Outcome& outcome) {
    errorType = outcome.type;
    display = {outcome.title, outcome.message, {}, {}, outcome.picture};
    if (outcome.hasDetails) {
        display.detailTitle = u"error details";
        display.detailText = errorDescription + u"\n\n" + modDB::FormatErrorNumber(errorNumber);
    }
    Changed.Raise();
}

template <typename Check>
bool DatabaseValidator::Validate(Check check, const Text& unexpectedMessage) {
    errorType = veNone;
    SetError(0, {});
    isValidating = true;
    Outcome outcome;
    try {
        ShowBusy();
        if (ProcessMessages) ProcessMessages();
        outcome = check();
    } catch (...) {
        const Error error = CurrentError();
        SetError(error.Number(), error.Description());
        outcome = {veUnexpectedError, StatusPicture::Critical, u"unexpected error", unexpectedMessage, true};
    }
    isValidating = false;
    Show(outcome);
    return outcome.type == veNone;
}

bool DatabaseValidator::ValidateDataConnection(Text connection, Text catalog, bool isMDB) {
    if (isValidating || isDesignMode) return false;
    dataConnectionString = std::move(connection);
    catalogName = std::move(catalog);
    shownName = MaskPasswords(catalogName);
    isMDBMode = isMDB;
    return Validate([this] { return isMDBMode ? CheckMDB() : CheckSQL(); },
                    u"Velmora encountered an unexpected error while attempting to validate '" + shownName + u"'.");
}

bool DatabaseValidator::ValidateCommonConnection(Text connection, Text dataSource, Text catalog, Text currentUser) {
    if (isValidating || isDesignMode) return false;
    commonConnectionString = std::move(connection);
    commonDataSource = std::move(dataSource);
    catalogName = std::move(catalog);
    return Validate([this, &currentUser] { return CheckConnector(currentUser); },
                    u"Velmora encountered an unexpected error while attempting to validate the connector database.");
}

bool DatabaseValidator::ValidateSupportsTalk(const Text& connection) noexcept {
    return !isDesignMode && ProbeTalkTables(connection);
}

DatabaseValidator::Outcome DatabaseValidator::CheckMDB() {
    // The file outcomes carry the path and file access number although no error was raised.
    const auto file = [this](ValidationErrorTypes type, StatusPicture picture, Text description, Text title,
                             Text message) {
        SetError(ErrorNumbers::PathFileAccess, std::move(description));
        return Outcome{type, picture, std::move(title), std::move(message), false};
    };
    if (catalogName.empty())
        return file(veMDBNotSelected, StatusPicture::Information, u"no file selected.", u"no file selected",
                    u"You must select a valid velmora database before using the program.");
    if (!modGeneric::FileExists(catalogName))
        return file(veMDBNotFound, StatusPicture::Exclamation, u"file not found.", u"file not found",
                    u"'" + shownName +
                        u"' was not found.  "
                        u"Select a valid velmora database before using the program.");
    if (modGeneric::IsFileReadOnly(catalogName))
        return file(veMDBReadOnly, StatusPicture::Exclamation, u"file is read-only.", u"database is read-only",
                    u"Velmora was unable to obtain a shared read/write lock on '" + shownName +
                        u"'.\n\n"
                        u"Check to ensure that the file is not marked Read-Only and that "
                        u"it is not stored in a directory with Read-Only permissions.");
    if (!modDB::TestOpenConnection(dataConnectionString, errorNumber, errorDescription))
        return {veCantOpenConnection, StatusPicture::Critical, openTitle,
                u"Velmora was unable to open a database connection to '" + shownName +
                    u"'.\n\n"
                    u"This file may not be a valid Access-format database, or it may be corrupt.  You may wish to "
                    u"validate the integrity of the file by opening it in Microsoft Access.",
                true};
    if (!ProbeContentTables(dataConnectionString, errorNumber, errorDescription))
        return {veInvalidDBStructure, StatusPicture::Critical, structureTitle,
                structureMessage + u"Check to ensure the database is a valid Velmora-format database and try again.",
                true};
    if (!TestContentWrite(dataConnectionString, errorNumber, errorDescription, true))
        return {veCantWrite, StatusPicture::Critical, writeTitle,
                writeMessage +
                    u"Check to ensure that no other processes have the database open exclusively and try again.",
                true};
    return Outcome::Valid(u"file '" + shownName + u"' validated on " + modGeneric::FormatLocalDateTime(Clock()));
}

DatabaseValidator::Outcome DatabaseValidator::CheckSQL() {
    if (!modDB::TestOpenConnection(dataConnectionString, errorNumber, errorDescription))
        return {veCantOpenConnection, StatusPicture::Critical, openTitle,
                u"Velmora was unable to open a database connection to '" + shownName + u"'.\n\n" + serverAdvice, true};
    if (!ProbeContentTables(dataConnectionString, errorNumber, errorDescription))
        return {veInvalidDBStructure, StatusPicture::Critical, structureTitle, structureMessage + askAdministrator,
                true};
    if (!TestContentWrite(dataConnectionString, errorNumber, errorDescription, false))
        return {veCantWrite, StatusPicture::Critical, writeTitle,
                writeMessage + u"Check with your administrator to ensure that the account associated with the catalog "
                               u"has sufficient access rights.",
                true};
    return Outcome::Valid(u"catalog \"" + shownName + u"\" validated on " + modGeneric::FormatLocalDateTime(Clock()));
}

DatabaseValidator::Outcome DatabaseValidator::CheckConnector(const Text& currentUser) {
    // Missing details, no catalog and no users are shown as information, not as critical, deliberately.
    if (commonDataSource.empty() || catalogName.empty())
        return {veNoCommonConnectionDetails, StatusPicture::Information, u"no connector specified",
                u"There is no data source or catalog defined for the connector.  Please enter"
                u" connection information and try again.  Check with your administrator for"
                u" details.",
                false};
    if (!modDB::TestOpenConnection(commonConnectionString, errorNumber, errorDescription))
        return {veCantOpenConnection, StatusPicture::Critical, openTitle,
                u"Velmora was unable to open a database connection to the common connector.\n\n" + serverAdvice, true};
    if (!ProbeConnectorTables(commonConnectionString, errorNumber, errorDescription))
        return {veInvalidDBStructure, StatusPicture::Critical, u"invalid connector database structure",
                structureMessage + askAdministrator, true};
    if (UserHasListedDatabase(commonConnectionString, currentUser))
        return Outcome::Valid(u"connector validated on " + modGeneric::FormatLocalDateTime(Clock()));
    if (ConnectorHasUsers(commonConnectionString))
        return {veNoDBListedForUser, StatusPicture::Information, u"no databases available",
                u"You do not have access rights to any database listed in the SQL connector.  Contact your "
                u"administrator for more information.",
                false};
    return {veNoCommonUsersExist, StatusPicture::Information, u"connector database uninitialized",
            u"The SQL connector database has no user records.  If you are the administrator, use "
            u"the Velmora Connector Management Tool to initialize the database.  If you are not "
            u"the administrator, have the administrator perform this function.",
            false};
}

void DatabaseValidator::ClearDisplay() {
    display = {};
    Changed.Raise();
}

void DatabaseValidator::ShowDesignSample(const Text& displayName) {
    isDesignMode = true;
    display = {displayName,
               u"this control is in design mode.  the display should give you an idea of how the final display will "
               u"appear.",
               u"lorem ipsum sample",
               u"Lorem ipsum dolor sit amet, consectetuer adipiscing elit. Integer feugiat lectus vitae risus, non "
               u"dapibus sem porta et. Quisque in nibh at arcu semper hendrerit, sed blandit magna ornare.\n\n" +
                   modDB::FormatErrorNumber(123456),
               StatusPicture::Information};
    Changed.Raise();
}

void DatabaseValidator::LeaveDesignMode() {
    isDesignMode = false;
    ClearDisplay();
}

} // namespace dax
