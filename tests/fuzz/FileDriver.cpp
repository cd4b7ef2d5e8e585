// Course files as somebody may have made them: real ones, with bytes and pages changed, opened and used.
#include "fuzz/Driver.h"
#include "hierarchy/EditorFixture.h"
#include "locks/LockManager.h"
#include "validation/DatabaseValidator.h"

#include <chrono>

namespace dax::fuzz {

namespace {

// A file and, in WAL mode, the log beside it with the last changes.
struct Course {
    std::string file, log;
    size_t pageSize;
    Course(size_t pageSize, const Text& journal) : pageSize(pageSize) {
        std::vector<Text> statements = Schema::CreateStatements(Schema::Database::Content, Engine::SQLite);
        statements.insert(statements.begin(), {u"PRAGMA page_size = " + ToText(pageSize),
                                               u"PRAGMA auto_vacuum = " + ToText(pageSize == 512 ? 1 : 0)});
        statements.push_back(u"PRAGMA journal_mode = " + journal);
        for (const Text& row : test::SampleRows()) statements.push_back(row);
        for (int i = 0; i < 30; ++i) {
            statements.push_back(test::RowStatement(u"k" + ToText(i), u"K", u"g", 2, 10 + i, 1, Text(200, u'p')));
            statements.push_back(test::LockStatement(u"k" + ToText(i), u"'ann'", 1));
        }
        const test::TestDatabase database(Engine::SQLite);
        Connection open; // keeps the log from being taken into the file
        open.Open(database.Name());
        for (const Text& statement : statements) open.Execute(statement);
        file = test::ReadFile(database.Name());
        log = test::ReadFile(database.Name() + u"-wal");
    }
};

class FileDriver {
public:
    explicit FileDriver(Input input) : bytes(input) {
        static const Course courses[] = {{512, u"delete"}, {4096, u"delete"}, {1024, u"wal"}};
        const Course& course = bytes.OneOf(courses);
        std::string file = course.file, log = course.log;
        while (!bytes.AtEnd()) {
            isChanged = true;
            Change(!log.empty() && bytes.Below(2) ? log : file, course.pageSize / 2);
        }
        folder.Write(u"course.db", file);
        if (!log.empty()) folder.Write(u"course.db-wal", log);
    }

    void Run() {
        const auto begin = std::chrono::steady_clock::now();
        Validate();
        Edit();
        DeleteLocks();
        // No other program has the file, so there is no wait; a machine may be busy.
        Require(std::chrono::steady_clock::now() - begin < std::chrono::seconds(60), "it ends");
    }

private:
    // Truncated, a page in the place of another, or a byte changed: at the file's head, at a page's or anywhere.
    void Change(std::string& content, size_t pageSize) {
        const size_t pages = content.size() / pageSize, kind = bytes.Below(8);
        const size_t anywhere = bytes.Below(256) * 256 + bytes.Below(256);
        if (kind == 0) return content.resize(pageSize + anywhere % (content.size() - pageSize + 1));
        const size_t page = bytes.Below(pages) * pageSize;
        if (kind == 1)
            return (void)content.replace(page, pageSize, content.substr(anywhere % pages * pageSize, pageSize));
        const size_t place = kind < 4 ? anywhere % 100 : kind < 6 ? page + anywhere % 32 : anywhere % content.size();
        static constexpr char marks[] = {0, 1, 2, '\x7F', '\x80', '\xFE', '\xFF', 13};
        content[place] = bytes.Below(2) ? bytes.OneOf(marks) : static_cast<char>(bytes.Below(256));
    }

    void Validate() {
        DatabaseValidator validator;
        const bool isValid = validator.ValidateDataConnection(name, name, true);
        Require(isValid || (validator.ErrorNumber() != 0 && !validator.ErrorDescription().empty()), "it says why not");
        Require(isValid || isChanged, "a file as it was made is valid");
        validator.ValidateSupportsTalk(name);
    }

    // The rows, or nothing where they cannot be read.
    std::map<Text, Text> Rows() const {
        try {
            return test::ReadRows(name);
        } catch (const Error& error) {
            Require(!error.Description().empty(), "an error has a text");
            return {};
        }
    }

    void Edit() {
        test::RecordingEditor recorded;
        recorded.editor->SetConnectionString(name);
        const bool isLoaded = recorded.editor->LoadDatabase();
        Require(isLoaded || !recorded.error.empty(), "it says why it does not load");
        Require(isLoaded || isChanged, "a file as it was made loads");
        if (!isLoaded) return;
        const std::map<Text, Text> before = Rows();
        recorded.editor->RemoveLesson(u"h", true);
        recorded.editor->AddLesson(u"n", u"New", u"n", ltLesson);
        for (const Text& id : recorded.editor->GetChildLessonIDCollection(u""))
            recorded.editor->UpdateLesson(id, Text(300, u'\u00E9'), u"", ltLesson);
        const bool isSaved = recorded.editor->SaveDatabase();
        Require(isSaved || !recorded.error.empty(), "it says why it does not save");
        Require(isSaved || isChanged, "a file as it was made is saved");
        const std::map<Text, Text> after = Rows();
        Require(isSaved || before.empty() || after.empty() || after == before, "what was not saved changed nothing");
    }

    void DeleteLocks() {
        const auto list = std::make_shared<ListModel>();
        LockManager manager(list);
        manager.connectionString = name;
        manager.isAdministrator = true;
        manager.SetupColumns();
        bool isReported = false;
        manager.Error.AddPermanent([&isReported](int32_t number, const Text& text, const Text&, const Text&, int32_t&) {
            Require(number != 0 && !text.empty(), "an error has a number and a text");
            isReported = true;
        });
        manager.Refresh();
        for (size_t item = 0; item < list->Items().size(); ++item) list->SetSelected(item, true);
        manager.DeleteSelected();
        Require(isReported || isChanged || manager.LockCount() == 0, "the locks are deleted");
    }

    Bytes bytes;
    bool isChanged = false;
    test::TempFolder folder;
    Text name = folder.File(u"course.db");
};

} // namespace

void DriveFile(Input input) { FileDriver(input).Run(); }

} // namespace dax::fuzz
