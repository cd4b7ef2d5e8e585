// The content checks against real databases.
#include "EngineDatabases.h"

#include "data/modDB.h"
#include "validation/ContentValidation.h"
#include "validation/DatabaseValidator.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <regex>

namespace dax::test {

namespace {

class ContentOnEveryEngine : public OnEveryEngine {};
DAX_ON_EVERY_ENGINE(ContentOnEveryEngine);

Text Details(const DatabaseValidator& validator) {
    return validator.ErrorDescription() + u"\n\n" + modDB::FormatErrorNumber(validator.ErrorNumber());
}

void ExpectCritical(const DatabaseValidator& validator, ValidationErrorTypes type, const Text& title,
                    const Text& message) {
    EXPECT_EQ(validator.ErrorType(), type);
    EXPECT_NE(validator.ErrorNumber(), 0);
    EXPECT_FALSE(validator.ErrorDescription().empty());
    const StatusDisplay expected{title, message, u"error details", Details(validator), StatusPicture::Critical};
    EXPECT_EQ(validator.Display(), expected) << ToUtf8(validator.Display().statusMessage) << "\n"
                                             << ToUtf8(validator.Display().detailText);
}

} // namespace

TEST_P(ContentOnEveryEngine, AWholeDatabaseIsValidAndUnchanged) {
    const EngineDatabase database(GetParam(), Schema::Database::Content);
    database.Run(u"INSERT INTO velmoraProjectProperties (propertyData) VALUES ('kept')");
    const auto before = database.Counts();
    DatabaseValidator validator;
    validator.Clock = [] { return DateTime{2024, 5, 6, 7, 8, 9}; };
    EXPECT_TRUE(validator.ValidateDataConnection(database.ConnectionString(), u"Anna's catalog", false))
        << ToUtf8(validator.Display().detailText);
    EXPECT_EQ(validator.ErrorType(), veNone);
    EXPECT_EQ(validator.Display().picture, StatusPicture::Information);
    EXPECT_TRUE(validator.Display().statusMessage.starts_with(u"catalog \"Anna's catalog\" validated on "));
    EXPECT_EQ(database.Counts(), before);

    const StatusDisplay shown = validator.Display();
    EXPECT_TRUE(validator.ValidateSupportsTalk(database.ConnectionString()));
    database.Run(u"DROP TABLE talkPosts");
    EXPECT_FALSE(validator.ValidateSupportsTalk(database.ConnectionString()));
    EXPECT_FALSE(validator.ValidateSupportsTalk(u"no connection string at all"));
    EXPECT_EQ(validator.Display(), shown);
    EXPECT_TRUE(validator.ValidateDataConnection(database.ConnectionString(), u"c", false));
}

TEST_P(ContentOnEveryEngine, EachMissingTableAndColumnIsFound) {
    const EngineDatabase database(GetParam(), Schema::Database::Content);
    int32_t number = 0;
    Text description;
    database.WithoutEach([&](const Schema::Table& table, const Text& what) {
        EXPECT_EQ(ProbeTalkTables(database.ConnectionString()), !table.isOptional) << ToUtf8(what);
        EXPECT_EQ(ProbeContentTables(database.ConnectionString(), number, description), table.isOptional)
            << ToUtf8(what);
        if (table.isOptional) return;
        EXPECT_NE(number, 0);
        EXPECT_THAT(ToUtf8(LowerAscii(description)), testing::HasSubstr(ToUtf8(LowerAscii(what))));
    });
    EXPECT_TRUE(ProbeContentTables(database.ConnectionString(), number, description)) << ToUtf8(description);
    EXPECT_TRUE(ProbeTalkTables(database.ConnectionString()));
}

TEST_P(ContentOnEveryEngine, ARefusedRowInAnyTableIsReportedAndNothingStays) {
    const EngineDatabase database(GetParam(), Schema::Database::Content);
    const auto before = database.Counts();
    for (const Text table : {u"velmoraLessons", u"velmoraMilestones", u"velmoraProjectProperties", u"velmoraUserLocks",
                             u"velmoraAutonumbers"}) {
        DatabaseValidator validator;
        database.Refusing(table, u"refused here", [&] {
            EXPECT_FALSE(validator.ValidateDataConnection(database.ConnectionString(), u"c", false)) << ToUtf8(table);
        });
        ExpectCritical(validator, veCantWrite, u"cannot write to database",
                       u"Velmora was unable to update one or more of the database tables.  Check with your "
                       u"administrator to ensure that the account associated with the catalog has sufficient access "
                       u"rights.");
        EXPECT_THAT(ToUtf8(validator.ErrorDescription()), testing::HasSubstr("refused here"));
        EXPECT_EQ(database.Counts(), before) << ToUtf8(table);
    }
}

TEST(ContentValidation, AServerThatIsNotThereAndAWrongPasswordCannotBeOpened) {
    std::vector<Text> strings = {u"Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=1;Database=x;UID=u;PWD=p", u""};
    for (const char* variable : {"DAX_TEST_POSTGRES", "DAX_TEST_MARIADB"}) {
        const char* const server = std::getenv(variable);
        if (server) strings.push_back(FromUtf8(server) + u";PWD=wrong");
    }
    for (const Text& connectionString : strings) {
        SCOPED_TRACE(ToUtf8(connectionString));
        DatabaseValidator validator;
        EXPECT_FALSE(validator.ValidateDataConnection(connectionString, u"Anna's", false));
        ExpectCritical(
            validator, veCantOpenConnection, u"cannot open database connection",
            u"Velmora was unable to open a database connection to 'Anna's'.\n\nCheck with your administrator "
            u"to ensure that the machine and catalog are available and online, and that the account "
            u"associated with the catalog has sufficient access rights.");
        EXPECT_EQ(validator.ErrorDescription().find(u"PWD"), Text::npos);
    }
}

TEST(ContentValidation, TheStatementsAreSentAsTheyStand) {
    const EngineDatabase database(Engine::SQLite, Schema::Database::Content);
    std::vector<std::string> sent;
    SetStatementObserver([&sent](TextView statement) {
        if (statement.find(u"velmora") == TextView::npos) return;
        const std::string plain = std::regex_replace(ToUtf8(statement), std::regex("'[0-9a-f]{32}'"), "ID");
        sent.push_back(std::regex_replace(plain, std::regex("'[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9:]+'"), "DATE"));
    });
    int32_t number = 0;
    Text description;
    EXPECT_TRUE(ProbeContentTables(database.ConnectionString(), number, description));
    EXPECT_TRUE(TestContentWrite(database.ConnectionString(), number, description, false));
    SetStatementObserver({});
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
    EXPECT_THAT(sent.back(), testing::AllOf(testing::StartsWith("INSERT INTO"), testing::HasSubstr("ignored")));
}

} // namespace dax::test
