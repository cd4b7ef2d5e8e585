// Validation of database files, good and bad.
#include "EngineDatabases.h"

#include "base/modGeneric.h"
#include "data/modDB.h"
#include "validation/DatabaseValidator.h"

#include <filesystem>

namespace dax::test {

namespace {

namespace fs = std::filesystem;

Text CannotOpen(const Text& path) {
    return u"Velmora was unable to open a database connection to '" + path +
           u"'.\n\nThis file may not be a valid Access-format database, or it may be corrupt.  You may wish to "
           u"validate the integrity of the file by opening it in Microsoft Access.";
}

} // namespace

TEST(FileValidation, FilesThatAreNoneOrNoDatabaseOfOurs) {
    const TempFolder folder;
    const EngineDatabase whole(Engine::SQLite, Schema::Database::Content);
    const Text readOnly = folder.Write(u"anna's.db", "x"), missing = folder.File(u"missing.db"),
               directory = folder.File(u"inner"), text = folder.Write(u"text.db", std::string(5000, 'x')),
               broken = folder.Write(u"broken.db", "SQLite format 3" + std::string(1, '\0') + std::string(5000, 'x')),
               empty = folder.Write(u"empty.db", ""); // a database without tables
    fs::permissions(readOnly, fs::perms::owner_read);
    fs::create_directory(folder.Path() / "inner");
    const Text notFound = u"' was not found.  Select a valid velmora database before using the program.";
    const struct {
        Text path;
        ValidationErrorTypes type;
        Text description, title, message; // without a description the file is opened
        StatusPicture picture;
    } cases[] = {
        {u"", veMDBNotSelected, u"no file selected.", u"no file selected",
         u"You must select a valid velmora database before using the program.", StatusPicture::Information},
        {missing, veMDBNotFound, u"file not found.", u"file not found", u"'" + missing + notFound,
         StatusPicture::Exclamation},
        {directory, veMDBNotFound, u"file not found.", u"file not found", u"'" + directory + notFound,
         StatusPicture::Exclamation},
        {readOnly, veMDBReadOnly, u"file is read-only.", u"database is read-only",
         u"Velmora was unable to obtain a shared read/write lock on '" + readOnly +
             u"'.\n\nCheck to ensure that the file is not marked Read-Only and that it is not stored in a directory "
             u"with Read-Only permissions.",
         StatusPicture::Exclamation},
        {text, veCantOpenConnection, u"", u"cannot open database connection", CannotOpen(text),
         StatusPicture::Critical},
        {broken, veCantOpenConnection, u"", u"cannot open database connection", CannotOpen(broken),
         StatusPicture::Critical},
        {empty, veInvalidDBStructure, u"", u"invalid database structure",
         u"Velmora was unable to locate all of the required database tables and fields.  Check to ensure the database "
         u"is a valid Velmora-format database and try again.",
         StatusPicture::Critical},
    };
    for (const auto& [path, type, description, title, message, picture] : cases) {
        SCOPED_TRACE(ToUtf8(path));
        DatabaseValidator validator;
        // The file is looked at before the connection string, even when that would work.
        EXPECT_FALSE(
            validator.ValidateDataConnection(description.empty() ? path : whole.ConnectionString(), path, true));
        EXPECT_EQ(validator.ErrorType(), type);
        StatusDisplay expected{title, message, u"", u"", picture};
        if (description.empty()) {
            expected.detailTitle = u"error details";
            expected.detailText =
                validator.ErrorDescription() + u"\n\n" + modDB::FormatErrorNumber(validator.ErrorNumber());
            EXPECT_NE(validator.ErrorNumber(), 0);
        } else {
            EXPECT_EQ(validator.ErrorNumber(), 75);
            EXPECT_EQ(validator.ErrorDescription(), description);
        }
        EXPECT_EQ(validator.Display(), expected) << ToUtf8(validator.Display().statusMessage);
    }
    fs::permissions(readOnly, fs::perms::owner_all);
}

TEST(FileValidation, AGoodFileIsValidUntilSomebodyLocksIt) {
    const EngineDatabase database(Engine::SQLite, Schema::Database::Content);
    DatabaseValidator validator;
    const DateTime moment{2024, 5, 6, 7, 8, 9};
    validator.Clock = [moment] { return moment; };
    EXPECT_TRUE(validator.ValidateDataConnection(database.ConnectionString(), database.Name(), true));
    const StatusDisplay valid{{},
                              u"file '" + database.Name() + u"' validated on " +
                                  modGeneric::FormatLocalDateTime(moment),
                              {},
                              {},
                              StatusPicture::Information};
    EXPECT_EQ(validator.Display(), valid);

    Connection other;
    other.Open(database.ConnectionString());
    other.BeginTrans();
    other.Execute(u"INSERT INTO velmoraProjectProperties (propertyData) VALUES ('held')");
    EXPECT_FALSE(validator.ValidateDataConnection(database.ConnectionString(), database.Name(), true));
    EXPECT_EQ(validator.ErrorType(), veCantWrite) << ToUtf8(validator.ErrorDescription());
    EXPECT_EQ(validator.Display().statusTitle, u"cannot write to database");
    EXPECT_EQ(validator.Display().statusMessage,
              u"Velmora was unable to update one or more of the database tables.  Check to ensure that no other "
              u"processes have the database open exclusively and try again.");
    other.RollbackTrans();
    EXPECT_TRUE(validator.ValidateDataConnection(database.ConnectionString(), database.Name(), true));
}

TEST(FileValidation, AnErrorOutsideTheHelpersIsUnexpected) {
    const EngineDatabase database(Engine::SQLite, Schema::Database::Content);
    DatabaseValidator validator;
    validator.Clock = []() -> DateTime { throw Error(-2147467259, u"the clock stands still"); };
    EXPECT_FALSE(validator.ValidateDataConnection(database.ConnectionString(), database.Name(), true));
    EXPECT_EQ(validator.ErrorType(), veUnexpectedError);
    const StatusDisplay expected{
        u"unexpected error",
        u"Velmora encountered an unexpected error while attempting to validate '" + database.Name() + u"'.",
        u"error details", u"the clock stands still\n\nerror number: -2147467259 (&H80004005)", StatusPicture::Critical};
    EXPECT_EQ(validator.Display(), expected);
}

TEST(FileValidation, TheBusyStateIsShownOnceAndASecondValidationWithinItIsRefused) {
    DatabaseValidator validator;
    std::vector<StatusDisplay> shown;
    validator.Changed.Add([&] { shown.push_back(validator.Display()); });
    int yields = 0;
    validator.ProcessMessages = [&] {
        ++yields;
        EXPECT_EQ(shown.size(), 1u);
        EXPECT_EQ(validator.ErrorType(), veNone);
        EXPECT_FALSE(validator.ValidateDataConnection(u"nested", u"nested", false));
        EXPECT_FALSE(validator.ValidateCommonConnection(u"nested", u"s", u"nested", u"u"));
        EXPECT_EQ(validator.CatalogName(), u"");
    };
    EXPECT_FALSE(validator.ValidateDataConnection(u"x", u"", true));
    EXPECT_EQ(yields, 1);
    ASSERT_EQ(shown.size(), 2u);
    const StatusDisplay busy{u"", u"validating database", u"", u"", StatusPicture::Busy};
    EXPECT_EQ(shown[0], busy);
    EXPECT_EQ(shown[1].picture, StatusPicture::Information);
}

} // namespace dax::test
