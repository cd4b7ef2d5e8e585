// Validation of database files, good and bad.
#include "EngineDatabases.h"

#include "data/modDB.h"
#include "data/modGeneric.h"
#include "validation/DatabaseValidator.h"

#include <filesystem>
#include <fstream>

#ifndef _WIN32
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace dax::test {

namespace {

namespace fs = std::filesystem;

Text CannotOpen(const Text& path) {
    return u"Velmora was unable to open a database connection to '" + path +
           u"'.\n\nThis file may not be a valid Access-format database, or it may be corrupt.  You may wish to "
           u"validate the integrity of the file by opening it in Microsoft Access.";
}

} // namespace

TEST(FileValidation, FilesThatAreNone) {
    const TempFolder folder;
    const EngineDatabase whole(Engine::SQLite, Schema::Database::Content);
    const Text readOnly = folder.Write(u"anna's.db", "x");
    fs::permissions(readOnly, fs::perms::owner_read);
    const Text missing = folder.File(u"missing.db");
    const Text directory = folder.File(u"inner");
    fs::create_directory(folder.Path() / "inner");
    const Text notFoundAdvice = u"' was not found.  Select a valid velmora database before using the program.";
    const struct {
        Text path;
        ValidationErrorTypes type;
        Text description;
        StatusDisplay display;
    } cases[] = {
        {u"",
         veMDBNotSelected,
         u"no file selected.",
         {u"no file selected", u"You must select a valid velmora database before using the program.", u"", u"",
          StatusPicture::Information}},
        {missing,
         veMDBNotFound,
         u"file not found.",
         {u"file not found", u"'" + missing + notFoundAdvice, u"", u"", StatusPicture::Exclamation}},
        {directory,
         veMDBNotFound,
         u"file not found.",
         {u"file not found", u"'" + directory + notFoundAdvice, u"", u"", StatusPicture::Exclamation}},
        {readOnly,
         veMDBReadOnly,
         u"file is read-only.",
         {u"database is read-only",
          u"Velmora was unable to obtain a shared read/write lock on '" + readOnly +
              u"'.\n\nCheck to ensure that the file is not marked Read-Only and that it is not stored in a directory "
              u"with Read-Only permissions.",
          u"", u"", StatusPicture::Exclamation}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(ToUtf8(each.path));
        DatabaseValidator validator;
        // A connection string that would work is not looked at.
        EXPECT_FALSE(validator.ValidateDataConnection(whole.ConnectionString(), each.path, true));
        EXPECT_TRUE(validator.MDBMode());
        EXPECT_EQ(validator.ErrorType(), each.type);
        EXPECT_EQ(validator.ErrorNumber(), 75);
        EXPECT_EQ(validator.ErrorDescription(), each.description);
        EXPECT_EQ(validator.Display(), each.display) << ToUtf8(validator.Display().statusMessage);
    }
    fs::permissions(readOnly, fs::perms::owner_all);
}

TEST(FileValidation, FilesThatAreNoDatabaseOfOurs) {
    const TempFolder folder;
    const struct {
        Text path;
        ValidationErrorTypes type;
    } cases[] = {
        {folder.Write(u"text.db", std::string(5000, 'x')), veCantOpenConnection},
        {folder.Write(u"broken.db", "SQLite format 3" + std::string(1, '\0') + std::string(5000, 'x')),
         veCantOpenConnection},
        {folder.Write(u"empty.db", ""), veInvalidDBStructure}, // an empty file is a database without tables
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(ToUtf8(each.path));
        DatabaseValidator validator;
        EXPECT_FALSE(validator.ValidateDataConnection(each.path, each.path, true));
        EXPECT_EQ(validator.ErrorType(), each.type) << ToUtf8(validator.ErrorDescription());
        const StatusDisplay& display = validator.Display();
        EXPECT_EQ(display.picture, StatusPicture::Critical);
        EXPECT_EQ(display.statusMessage,
                  each.type == veCantOpenConnection
                      ? CannotOpen(each.path)
                      : u"Velmora was unable to locate all of the required database tables and fields.  Check to "
                        u"ensure the database is a valid Velmora-format database and try again.");
        EXPECT_EQ(display.detailText,
                  validator.ErrorDescription() + u"\n\n" + modDB::FormatErrorNumber(validator.ErrorNumber()));
    }
}

TEST(FileValidation, AGoodFileIsValidUntilSomebodyLocksIt) {
    const EngineDatabase database(Engine::SQLite, Schema::Database::Content);
    DatabaseValidator validator;
    const DateTime moment{2024, 5, 6, 7, 8, 9};
    validator.Clock = [moment] { return moment; };
    EXPECT_TRUE(validator.ValidateDataConnection(database.ConnectionString(), database.Path(), true));
    const StatusDisplay valid{{},
                              u"file '" + database.Path() + u"' validated on " +
                                  modGeneric::FormatLocalDateTime(moment),
                              {},
                              {},
                              StatusPicture::Information};
    EXPECT_EQ(validator.Display(), valid);

    Connection other;
    other.Open(database.ConnectionString());
    other.BeginTrans();
    other.Execute(u"INSERT INTO velmoraProjectProperties (propertyData) VALUES ('held')");
    EXPECT_FALSE(validator.ValidateDataConnection(database.ConnectionString(), database.Path(), true));
    EXPECT_EQ(validator.ErrorType(), veCantWrite) << ToUtf8(validator.ErrorDescription());
    EXPECT_EQ(validator.Display().statusTitle, u"cannot write to database");
    EXPECT_EQ(validator.Display().statusMessage,
              u"Velmora was unable to update one or more of the database tables.  Check to ensure that no other "
              u"processes have the database open exclusively and try again.");
    other.RollbackTrans();
    EXPECT_TRUE(validator.ValidateDataConnection(database.ConnectionString(), database.Path(), true));
}

TEST(FileValidation, AnErrorOutsideTheHelpersIsUnexpected) {
    const EngineDatabase database(Engine::SQLite, Schema::Database::Content);
    DatabaseValidator validator;
    validator.Clock = []() -> DateTime { throw Error(-2147467259, u"the clock stands still"); };
    EXPECT_FALSE(validator.ValidateDataConnection(database.ConnectionString(), database.Path(), true));
    EXPECT_EQ(validator.ErrorType(), veUnexpectedError);
    const StatusDisplay expected{
        u"unexpected error",
        u"Velmora encountered an unexpected error while attempting to validate '" + database.Path() + u"'.",
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

    validator.ShowDesignSample(u"DatabaseValidator1");
    EXPECT_EQ(validator.Display().statusTitle, u"DatabaseValidator1");
    EXPECT_TRUE(
        validator.Display().detailText.starts_with(u"Lorem ipsum dolor sit amet, consectetuer adipiscing elit."));
    EXPECT_TRUE(validator.Display().detailText.ends_with(u"\n\nerror number: 123456 (&H1E240)"));
    EXPECT_FALSE(validator.ValidateDataConnection(u"x", u"design", true));
    EXPECT_EQ(validator.CatalogName(), u"");
    EXPECT_EQ(yields, 1);
}

#ifndef _WIN32

namespace {

size_t OpenFiles() {
    return static_cast<size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : formerHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &former);
        const rlimit limit{bytes, former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &former);
        std::signal(SIGXFSZ, formerHandler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit former{};
    void (*formerHandler)(int);
};

} // namespace

TEST(FileValidation, ADiskThatTakesNoMoreRefusesTheWriteTest) {
    const EngineDatabase database(Engine::SQLite, Schema::Database::Content);
    const auto before = database.Counts();
    DatabaseValidator validator;
    {
        const FileSizeLimit limit(100);
        EXPECT_FALSE(validator.ValidateDataConnection(database.ConnectionString(), database.Path(), true));
    }
    EXPECT_EQ(validator.ErrorType(), veCantWrite) << ToUtf8(validator.ErrorDescription());
    EXPECT_EQ(database.Counts(), before);
    EXPECT_TRUE(validator.ValidateDataConnection(database.ConnectionString(), database.Path(), true));
}

TEST(FileValidation, NothingStaysOpenAfterAnyOutcome) {
    const EngineDatabase database(Engine::SQLite, Schema::Database::Content);
    const TempFolder folder;
    const Text text = folder.Write(u"text.db", std::string(5000, 'x')), empty = folder.Write(u"empty.db", "");
    const auto validateAll = [&] {
        DatabaseValidator validator;
        for (const Text& path : {database.Path(), text, empty}) validator.ValidateDataConnection(path, path, true);
        for (const Engine engine : {Engine::PostgreSQL, Engine::MariaDB})
            validator.ValidateDataConnection(ServerString(engine), u"c", false); // without our tables
    };
    validateAll(); // drivers and their libraries stay loaded
    const size_t before = OpenFiles();
    for (int round = 0; round < 3; ++round) validateAll();
    EXPECT_EQ(OpenFiles(), before);
}

#endif

} // namespace dax::test
