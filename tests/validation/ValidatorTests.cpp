// What the validator detects in content and connector databases, and shows.
#include "data/Schema.h"
#include "data/modDB.h"
#include "support/CourseRows.h"
#include "support/SentStatements.h"
#include "validation/ConnectorValidation.h"
#include "validation/ContentValidation.h"
#include "validation/DatabaseValidator.h"
#include "validation/SQLDBPicker.h"

#include "base/modGeneric.h"

#include <gmock/gmock.h>

#include <regex>

namespace dax::test {

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr, testing::StartsWith;

constexpr DateTime moment{2024, 5, 6, 7, 8, 9};
const Text momentText = modGeneric::FormatLocalDateTime(moment);
constexpr auto info = StatusPicture::Information, warning = StatusPicture::Exclamation,
               critical = StatusPicture::Critical;

struct Found {
    ValidationErrorTypes type;
    StatusPicture picture;
    Text title, said; // a part of the message
};

// Critical is what comes from an error of the engine, which is shown below the message.
void Expect(const DatabaseValidator& validator, bool isValid, const Found& found) {
    const StatusDisplay& shown = validator.Display();
    const bool isCritical = found.picture == StatusPicture::Critical;
    EXPECT_EQ(isValid, found.type == veNone);
    EXPECT_EQ(validator.ErrorType(), found.type);
    EXPECT_EQ(shown.picture, found.picture);
    EXPECT_EQ(shown.statusTitle, found.title);
    EXPECT_THAT(ToUtf8(shown.statusMessage), HasSubstr(ToUtf8(found.said)));
    EXPECT_EQ(shown.detailTitle, isCritical ? u"error details" : u"");
    const Text details = validator.ErrorDescription() + u"\n\n" + modDB::FormatErrorNumber(validator.ErrorNumber());
    EXPECT_EQ(shown.detailText, isCritical ? details : u"");
    EXPECT_TRUE(!isCritical || (validator.ErrorNumber() != 0 && !validator.ErrorDescription().empty()));
}

// Rows of every table, in the order of the schema.
std::vector<Text> Counts(const TestDatabase& content) {
    std::vector<Text> counts;
    for (const Schema::Table& table : Schema::Tables(Schema::Database::Content))
        counts.push_back(content.Query(u"SELECT Count(*) FROM " + Text(table.name)));
    return counts;
}

class EveryEngine : public EngineTest {};
INSTANTIATE_TEST_SUITE_P(Engines, EveryEngine, testing::ValuesIn(AllEngines()), EngineName);

} // namespace

TEST(Validator, ReportsWhatIsWrongWithAContentDatabase) {
    const TempFolder folder;
    const TestDatabase good(Engine::SQLite), refusing(Engine::SQLite);
    for (const TestDatabase* database : {&good, &refusing}) CreateTables(*database, Schema::Database::Content);
    refusing.Run({u"CREATE TRIGGER t BEFORE INSERT ON velmoraAutonumbers BEGIN SELECT RAISE(ABORT, 'refused'); END"});
    const Text whole = good.Name(), missing = folder.File(u"missing.db"), inner = folder.File(u"inner"),
               readOnly = folder.Write(u"anna's.db", "x"),
               broken = folder.Write(u"broken.db", "SQLite format 3" + std::string(1, '\0') + std::string(5000, 'x')),
               empty = folder.Write(u"empty.db", ""); // a database without tables
    fs::permissions(readOnly, fs::perms::owner_read);
    fs::create_directory(inner);
    const Text nobody = u"Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=1;Database=x;UID=u;PWD=p",
               closed = u"cannot open database connection", structure = u"invalid database structure",
               unwritable = u"cannot write to database", notFound = u"file not found",
               noDatabase = u"'.\n\nThis file may not be a valid Access-format database, or it may be corrupt.",
               rights = u"that the account associated with the catalog has sufficient access rights.";
    const struct {
        Text connection, catalog;
        bool isMDB;
        Found found;
        Text description = {}; // of what was found before the file was opened
    } cases[] = {
        {whole, whole, true, {veNone, info, u"", u"file '" + whole + u"' validated on " + momentText}},
        {whole, u"Anna's", false, {veNone, info, u"", u"catalog \"Anna's\" validated on " + momentText}},
        // The file is looked at before the connection string, even when that would work.
        {whole, u"", true, {veMDBNotSelected, info, u"no file selected", u"You must select"}, u"no file selected."},
        {whole, missing, true, {veMDBNotFound, warning, notFound, missing + u"' was not found."}, u"file not found."},
        {whole, inner, true, {veMDBNotFound, warning, notFound, inner + u"' was not found."}, u"file not found."},
        {whole, readOnly, true, {veMDBReadOnly, warning, u"database is read-only", readOnly}, u"file is read-only."},
        {broken, broken, true, {veCantOpenConnection, critical, closed, broken + noDatabase}},
        {u"", u"c", false, {veCantOpenConnection, critical, closed, rights}},
        {nobody, u"Anna's", false, {veCantOpenConnection, critical, closed, u"to 'Anna's'.\n\nCheck with"}},
        {empty, empty, true, {veInvalidDBStructure, critical, structure, u"a valid Velmora-format database"}},
        {empty, u"c", false, {veInvalidDBStructure, critical, structure, u"Contact your administrator"}},
        {refusing.Name(), whole, true, {veCantWrite, critical, unwritable, u"open exclusively"}},
        {refusing.Name(), u"c", false, {veCantWrite, critical, unwritable, rights}},
    };
    DatabaseValidator validator;
    validator.Clock = [] { return moment; };
    for (const auto& [connection, catalog, isMDB, found, description] : cases) {
        SCOPED_TRACE(ToUtf8(connection + u" " + catalog));
        Expect(validator, validator.ValidateDataConnection(connection, catalog, isMDB), found);
        if (found.picture != critical) {
            EXPECT_EQ(validator.ErrorNumber(), description.empty() ? 0 : 75);
            EXPECT_EQ(validator.ErrorDescription(), description);
        }
        EXPECT_EQ(validator.ErrorDescription().find(u"PWD"), Text::npos);
    }
    fs::permissions(readOnly, fs::perms::owner_all);
}

TEST(Validator, NeedsEveryTableAndColumnAndWritesIntoEveryTable) {
    const TestDatabase database(Engine::SQLite); // both kinds at once
    DatabaseValidator validator;
    for (const Schema::Database kind : {Schema::Database::Content, Schema::Database::Connector}) {
        const bool isContent = kind == Schema::Database::Content;
        CreateTables(database, kind);
        if (!isContent)
            database.Run({u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (1, 'super', 1)"});
        for (const Schema::Table& table : Schema::Tables(kind)) {
            // Changes the table so that `what` is reported, and back.
            const auto expect = [&](const Text& damage, ValidationErrorTypes type, const Text& what,
                                    const Text& repair) {
                SCOPED_TRACE(ToUtf8(damage));
                database.Run({damage});
                const bool isValid = isContent
                                         ? validator.ValidateDataConnection(database.Name(), u"c", false)
                                         : validator.ValidateCommonConnection(database.Name(), u"s", u"c", u"super");
                EXPECT_EQ(isValid, table.isOptional);
                EXPECT_EQ(validator.ErrorType(), table.isOptional ? veNone : type);
                EXPECT_EQ(LowerAscii(validator.ErrorDescription()).find(LowerAscii(what)) == Text::npos, isValid);
                EXPECT_EQ(validator.ValidateSupportsTalk(database.Name()),
                          !table.isOptional || type != veInvalidDBStructure);
                database.Run({repair});
            };
            const Text name(table.name), alter = u"ALTER TABLE " + name + u" RENAME ";
            expect(alter + u"TO gone", veInvalidDBStructure, name, u"ALTER TABLE gone RENAME TO " + name);
            for (const Schema::Column& column : table.columns) {
                const Text field(column.name);
                expect(alter + u"COLUMN " + field + u" TO gone", veInvalidDBStructure, field,
                       alter + u"COLUMN gone TO " + field);
            }
            if (isContent)
                expect(u"CREATE TRIGGER t BEFORE INSERT ON " + name + u" BEGIN SELECT RAISE(ABORT, 'refused'); END",
                       veCantWrite, u"refused", u"DROP TRIGGER t");
        }
    }
    EXPECT_EQ(validator.Display().statusTitle, u"invalid connector database structure");
    for (const Text& count : Counts(database)) EXPECT_EQ(count, u"0");
}

TEST_P(EveryEngine, AWholeDatabaseIsValidAndUnchanged) {
    const TestDatabase& content = *database;
    CreateTables(content, Schema::Database::Content);
    content.Run({u"INSERT INTO velmoraProjectProperties (propertyData) VALUES ('kept')"});
    const auto before = Counts(content);
    DatabaseValidator validator;
    const auto validate = [&] { return validator.ValidateDataConnection(content.ConnectionString(), u"c", false); };
    EXPECT_TRUE(validate()) << ToUtf8(validator.Display().detailText);
    EXPECT_EQ(Counts(content), before);
    EXPECT_TRUE(validator.ValidateSupportsTalk(content.ConnectionString()));
    content.Run({u"DROP TABLE talkPosts"});
    EXPECT_FALSE(validator.ValidateSupportsTalk(content.ConnectionString()));
    EXPECT_TRUE(validator.Display().statusMessage.starts_with(u"catalog")) << "this answer changes nothing";
    content.Run({u"ALTER TABLE velmoraMilestones DROP COLUMN savedBy"});
    EXPECT_FALSE(validate());
    EXPECT_THAT(ToUtf8(LowerAscii(validator.ErrorDescription())), HasSubstr("savedby"));
}

TEST_P(EveryEngine, AConnectorSaysWhoMayOpenSomething) {
    const TestDatabase& connector = *database;
    CreateTables(connector, Schema::Database::Connector);
    DatabaseValidator validator;
    validator.Clock = [] { return moment; };
    const Found valid{veNone, info, u"", u"connector validated on " + momentText},
        unused{veNoCommonUsersExist, info, u"connector database uninitialized", u"has no user records."},
        nothing{veNoDBListedForUser, info, u"no databases available", u"You do not have access rights to any database"},
        unknown{veNoCommonConnectionDetails, info, u"no connector specified", u"no data source or catalog defined"};
    const struct {
        Text row, user;
        Found found;
        Text server = u"server";
    } cases[] = {
        {u"", u"anna", unused},
        {u"DBUsers (userID, username, superUser) VALUES (2, 'anna', 0)", u"anna", nothing},
        {u"DBUsers (userID, username, superUser) VALUES (1, 'super', 7)", u"super", valid}, // needs no listed catalog
        {u"DBUsers (userID, username, superUser) VALUES (3, 'O''Neil', 0)", u"O'Neil", nothing},
        {u"DBList (dbID, dbCatalogName, username, password, dbTitle, dbDescription) VALUES (10, 'c', '', '', '', '')",
         u"O'Neil", nothing},
        {u"DBUserRights (userID, dbID, rights) VALUES (3, 10, 0)", u"O'Neil", valid}, // a row all the same
        {u"", u"anna", nothing},
        {u"", u"", nothing},
        {u"", u"super", unknown, u""},
    };
    for (const auto& [row, user, found, server] : cases) {
        SCOPED_TRACE(ToUtf8(row + user));
        if (!row.empty()) connector.Run({u"INSERT INTO velmora" + row});
        Expect(validator, validator.ValidateCommonConnection(connector.ConnectionString(), server, u"c", user), found);
        EXPECT_EQ(validator.ErrorNumber(), 0);
    }
    Expect(validator, validator.ValidateCommonConnection(u"none", u"s", u"c", u"super"),
           {veCantOpenConnection, critical, u"cannot open database connection", u"to the common connector.\n\nCheck"});
    EXPECT_FALSE(ConnectorHasUsers(u"none") || UserHasListedDatabase(u"none", u"super"));
}

TEST(Validator, StatementsAreSentAsTheyStand) {
    const TestDatabase database(Engine::SQLite);
    CreateTables(database, Schema::Database::Content);
    CreateTables(database, Schema::Database::Connector);
    std::vector<std::string> sent;
    {
        const SentStatements all;
        int32_t number = 0;
        Text description;
        EXPECT_TRUE(ProbeContentTables(database.ConnectionString(), number, description));
        EXPECT_TRUE(TestContentWrite(database.ConnectionString(), number, description, false));
        for (const std::string& statement : all.Texts()) {
            const std::string plain = std::regex_replace(statement, std::regex("'[0-9a-f]{32}'"), "ID");
            sent.push_back(std::regex_replace(plain, std::regex("'[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9:]+'"), "DATE"));
        }
    }
    const std::vector<std::string> expected = {
        "SELECT nextNumber, ignored FROM velmoraAutonumbers LIMIT 1",
        "SELECT lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, sortPosition, lessonType, "
        "lessonProperties, guideData, lessonData FROM velmoraLessons LIMIT 1",
        "SELECT milestoneID, lessonID, savedBy, savedDate, milestoneProperties, lessonData, guideData FROM "
        "velmoraMilestones LIMIT 1",
        "SELECT propertyData FROM velmoraProjectProperties LIMIT 1",
        "SELECT lessonID, username, machineName, machineIP, sessionID, lockDate, lockType FROM velmoraUserlocks "
        "LIMIT 1",
        "INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, sortPosition, "
        "lessonType, lessonProperties, guideData, lessonData)  VALUES (ID, 'validator', 'validator', '', -1, -1, -1, "
        "'', '', '')",
        "INSERT INTO velmoraMilestones (milestoneID, lessonID, savedBy, savedDate, milestoneProperties, lessonData, "
        "guideData) VALUES (ID, ID, 'validator', DATE, '', '', '')",
        "INSERT INTO velmoraProjectProperties (propertyData) VALUES ('')",
        "INSERT INTO velmoraUserlocks (lessonID, username, machineName, machineIP, sessionID, lockDate, lockType) "
        "VALUES (ID, 'validator', 'validator', '0.0.0.0', ID, DATE, -2)",
    };
    ASSERT_GT(sent.size(), expected.size());
    EXPECT_EQ(std::vector<std::string>(sent.begin(), sent.begin() + static_cast<std::ptrdiff_t>(expected.size())),
              expected);
    EXPECT_THAT(sent.back(), testing::AllOf(StartsWith("INSERT INTO"), HasSubstr("ignored")));

    database.Run({u"INSERT INTO velmoraDBUsers (userID, username, superUser) VALUES (3, 'O''Neil', 0), (1, 'super', 1)",
                  u"INSERT INTO velmoraDBList (dbID, dbCatalogName) VALUES (10, 'c')"});
    const SentStatements all;
    DatabaseValidator().ValidateCommonConnection(database.ConnectionString(), u"s", u"c", u"O'Neil");
    SQLDBPicker picker{std::make_shared<ComboBox>()};
    for (const Text user : {u"O'Neil", u"super"}) picker.LoadPicker(database.ConnectionString(), user, u"c");
    picker.UpdateConnectionHistory(u"PC", u"ip", u"os", u"1.0");
    DatabaseValidator().ValidateSupportsTalk(database.ConnectionString());
    EXPECT_THAT(
        all.Texts(),
        testing::ElementsAre(
            "SELECT username, machineName, machineIP, osVersion, appVersion, lastConnect, lastCatalog FROM "
            "velmoraConnectionHistory LIMIT 1",
            "SELECT dbID, dbCatalogName, username, password, dbTitle, dbDescription FROM velmoraDBList LIMIT 1",
            "SELECT userID, username, superUser FROM velmoraDBUsers LIMIT 1",
            "SELECT userID, dbID, rights FROM velmoraDBUserRights LIMIT 1",
            "SELECT userID, superUser FROM velmoraDBUsers WHERE username = 'O''Neil'",
            "SELECT dbCatalogName  FROM velmoraDBList      INNER JOIN velmoraDBUserRights ON "
            "velmoraDBList.dbID = velmoraDBUserRights.dbID WHERE userID = 3",
            "SELECT Count(*) AS userCount FROM velmoraDBUsers",
            "SELECT userID, username, superUser FROM velmoraDBUsers WHERE username = 'O''Neil'",
            "SELECT dbCatalogName, username, password, dbTitle, dbDescription, rights FROM velmoraDBList      INNER "
            "JOIN velmoraDBUserRights ON velmoraDBList.dbID = velmoraDBUserRights.dbID WHERE "
            "velmoraDBUserRights.userID = 3",
            "SELECT userID, username, superUser FROM velmoraDBUsers WHERE username = 'super'",
            "SELECT dbCatalogName, username, password, dbTitle, dbDescription, 1 AS rights FROM velmoraDBList",
            "SELECT username, machineName, machineIP, osVersion, appVersion, lastConnect, lastCatalog FROM "
            "velmoraConnectionHistory WHERE username = 'super'  AND machineName = 'PC'",
            StartsWith("INSERT INTO velmoraConnectionHistory "),
            "SELECT configurationID, configurationData, lastModified, revision FROM talkConfiguration LIMIT 1",
            "SELECT postID, lessonID, sbid, postData, status, lastModified, revision FROM talkPosts LIMIT 1",
            "SELECT commentID, postID, commentData, lastModified, revision FROM talkComments LIMIT 1"));
}

TEST(Validator, ShowsThatItIsBusyAndWhatItDidNotExpect) {
    const TestDatabase database(Engine::SQLite);
    CreateTables(database, Schema::Database::Content);
    DatabaseValidator validator;
    std::vector<StatusDisplay> shown;
    validator.Changed.AddPermanent([&] { shown.push_back(validator.Display()); });
    validator.ProcessMessages = [&] { // another validation within it is refused
        EXPECT_EQ(validator.ErrorType(), veNone);
        EXPECT_FALSE(validator.ValidateDataConnection(u"nested", u"nested", false));
        EXPECT_FALSE(validator.ValidateCommonConnection(u"nested", u"s", u"nested", u"u"));
        EXPECT_EQ(validator.CatalogName(), u"c");
    };
    validator.Clock = []() -> DateTime { throw Error(-2147467259, u"the clock stands still"); };
    EXPECT_FALSE(validator.ValidateDataConnection(database.Name(), u"c", false));
    EXPECT_EQ(validator.ErrorType(), veUnexpectedError);
    const std::vector<StatusDisplay> expected = {
        {u"", u"validating database", u"", u"", StatusPicture::Busy},
        {u"unexpected error", u"Velmora encountered an unexpected error while attempting to validate 'c'.",
         u"error details", u"the clock stands still\n\nerror number: -2147467259 (&H80004005)",
         StatusPicture::Critical}};
    EXPECT_EQ(shown, expected);

    validator.ProcessMessages = {};
    validator.Clock = Now;
    validator.ShowDesignSample(u"validator1");
    EXPECT_EQ(validator.Display().statusTitle, u"validator1");
    for (const bool isDesigned : {true, false}) {
        EXPECT_EQ(validator.ValidateDataConnection(database.Name(), u"c", false), !isDesigned);
        EXPECT_EQ(validator.ValidateSupportsTalk(database.Name()), !isDesigned);
        validator.LeaveDesignMode();
        EXPECT_EQ(validator.Display(), StatusDisplay());
    }
    EXPECT_EQ(shown.size(), 7u);
}

} // namespace dax::test
