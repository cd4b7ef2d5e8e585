// A fault at every step of the built-in engine, in its calls to the system and in its memory, once or for good: what
// was to be done is done, or it is told and nothing is done; nothing is held, and what is done next works.
#include "data/DatabaseCopy.h"
#include "faults/SQLiteFaults.h"
#include "hierarchy/EditorFixture.h"
#include "locks/LockManager.h"
#include "validation/DatabaseValidator.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace dax {
namespace {

using test::SQLiteFaults;

constexpr int lessons = 12;

// A course that can be made anew in no time.
class Course {
public:
    explicit Course(const char16_t* journal) {
        test::CreateTables(*database);
        std::vector<Text> statements = test::SampleRows();
        for (int i = 0; i < lessons; ++i) {
            statements.push_back(test::RowStatement(u"k" + ToText(i), u"K", u"", 1, 10 + i, 1, Text(400, u'p')));
            statements.push_back(test::LockStatement(u"k" + ToText(i), u"'ann'", 1));
        }
        database->Run(statements);
        EXPECT_EQ(database->Ask(Text(u"PRAGMA journal_mode = ") + journal), journal);
        bytes = test::ReadFile(Name());
        rows = test::ReadRows(Name());
    }
    const Text& Name() const { return database->Name(); }
    void Restore() const {
        for (const Text ending : {u"-journal", u"-wal", u"-shm"}) std::filesystem::remove(Name() + ending);
        std::ofstream(std::filesystem::path(Name()), std::ios::binary) << bytes;
    }
    Text Locks() const { return database->Ask(u"SELECT Count(*) FROM velmoraUserLocks"); }

    std::map<Text, Text> rows;

private:
    std::unique_ptr<test::TestDatabase> database = std::make_unique<test::TestDatabase>(Engine::SQLite);
    std::string bytes;
};

// Something that is done to a course: made ready, done among faults, and looked at when they are over.
struct Work {
    explicit Work(const Course& course) : course(course) {}
    virtual ~Work() = default;
    virtual bool Do() = 0; // false: it was told that it was not done
    virtual void Check(bool isDone) = 0;
    const Course& course;
    // In WAL mode, when a commit stands in the log and then nothing works any more, neither to make sure of it nor to
    // take it back: told as not done, it is found done by whoever opens the file next. Never half of it.
    bool mayBeDone = false;
};

struct Opening : Work {
    using Work::Work;
    bool Do() override {
        Connection connection;
        try {
            connection.Open(course.Name());
            return connection.IsOpen();
        } catch (const Error& error) {
            EXPECT_NE(error.Number(), 0);
            EXPECT_FALSE(error.Description().empty());
            EXPECT_FALSE(connection.IsOpen());
            return false;
        }
    }
    void Check(bool) override { EXPECT_EQ(course.Locks(), ToText(lessons)); }
};

struct Validating : Work {
    using Work::Work;
    bool Do() override {
        DatabaseValidator validator;
        const bool isValid = validator.ValidateDataConnection(course.Name(), course.Name(), true);
        EXPECT_EQ(isValid, validator.ErrorNumber() == 0);
        EXPECT_EQ(isValid, validator.ErrorDescription().empty());
        return isValid;
    }
    void Check(bool) override { // the rows that are written to try are gone
        EXPECT_TRUE(test::ReadRows(course.Name()) == course.rows);
        EXPECT_EQ(course.Locks(), ToText(lessons));
    }
};

struct Loading : Work, test::HeardEditor {
    explicit Loading(const Course& of) : Work(of) { editor->SetConnectionString(course.Name()); }
    bool Do() override {
        const bool isLoaded = editor->LoadDatabase();
        EXPECT_EQ(heard.find(u"ELoadDatabase") == Text::npos, isLoaded);
        EXPECT_TRUE(isLoaded || (errorNumber != 0 && !error.empty()));
        return isLoaded;
    }
    void Check(bool isDone) override {
        EXPECT_TRUE(isDone || editor->LoadDatabase());
        EXPECT_EQ(editor->NodeCount(), static_cast<int>(course.rows.size()) + 1);
    }
};

struct Saving : Work, test::HeardEditor {
    explicit Saving(const Course& of) : Work(of) {
        editor->SetConnectionString(course.Name());
        EXPECT_TRUE(editor->LoadDatabase());
        editor->RemoveLesson(u"h", true);
        editor->AddLesson(u"n", u"N", u"n", ltLesson);
        for (const Text& id : editor->GetChildLessonIDCollection(u""))
            editor->UpdateLesson(id, Text(300, u'\u00E9'), u"", editor->GetLessonType(id));
    }
    bool Do() override {
        Take();
        const bool isSaved = editor->SaveDatabase();
        EXPECT_EQ(heard, isSaved ? u"" : u"ESaveDatabase ");
        EXPECT_TRUE(isSaved || (errorNumber != 0 && !error.empty()));
        return isSaved;
    }
    bool IsSaved() const {
        const std::map<Text, Text> rows = test::ReadRows(course.Name());
        return rows.size() == course.rows.size() && rows.contains(u"n") && !rows.contains(u"h") &&
               std::ranges::all_of(rows,
                                   [](const auto& row) { return row.second.starts_with(Text(300, u'\u00E9') + u"|"); });
    }
    void Check(bool isDone) override {
        if (!isDone && !(mayBeDone && IsSaved())) {
            EXPECT_TRUE(test::ReadRows(course.Name()) == course.rows);
            EXPECT_TRUE(editor->SaveDatabase()) << ToUtf8(error);
        }
        EXPECT_TRUE(IsSaved());
    }
};

struct DeletingLocks : Work {
    explicit DeletingLocks(const Course& of) : Work(of) {
        manager.connectionString = course.Name();
        manager.isAdministrator = true;
        manager.SetupColumns();
        manager.Refresh();
        for (size_t item = 0; item < list->Items().size(); ++item) list->SetSelected(item, true);
        manager.Error.Add([this](int32_t number, const Text& text, const Text&, const Text& routine, int32_t&) {
            EXPECT_TRUE(number != 0 && !text.empty());
            told = told.empty() ? routine : told;
        });
    }
    bool Do() override {
        manager.DeleteSelected();
        return told != u"DeleteSelected"; // told of Refresh: they are deleted but cannot be shown
    }
    void Check(bool isDone) override {
        const Text locks = course.Locks();
        EXPECT_TRUE(locks == (isDone ? u"0" : ToText(lessons)) || (mayBeDone && locks == u"0")) << ToUtf8(told);
        manager.Refresh();
        EXPECT_EQ(ToText(manager.LockCount()), course.Locks());
    }
    std::shared_ptr<ListModel> list = std::make_shared<ListModel>();
    LockManager manager{list};
    Text told;
};

// Into a file that has rows; both the course and the target are among what fails, as on a full disk.
struct Copying : Work {
    explicit Copying(const Course& of) : Work(of) {
        test::CreateTables(target);
        target.Run({test::RowStatement(u"old", u"0", u"", 1, 0, 1)});
        before = test::ReadRows(target.Name());
    }
    bool Do() override {
        try {
            DatabaseCopy copy({course.Name(), u"FROM"}, {target.Name(), u"TO"});
            copy.Write([](size_t) {});
            copy.Finish();
            return true;
        } catch (const Error& error) {
            EXPECT_TRUE(error.Number() != 0 && !error.Description().empty());
            return false;
        }
    }
    void Check(bool isDone) override {
        EXPECT_TRUE(test::ReadRows(target.Name()) == (isDone ? course.rows : before));
        EXPECT_TRUE(test::ReadRows(course.Name()) == course.rows);
    }
    const test::TestDatabase target{Engine::SQLite};
    std::map<Text, Text> before;
};

template <typename Made>
std::unique_ptr<Work> Make(const Course& course) {
    return std::make_unique<Made>(course);
}

struct Case {
    const char* name;
    std::unique_ptr<Work> (*make)(const Course&);
};

class EveryStep : public ::testing::TestWithParam<Case> {};
INSTANTIATE_TEST_SUITE_P(Works, EveryStep,
                         ::testing::Values(Case{"Open", Make<Opening>}, Case{"Validate", Make<Validating>},
                                           Case{"Load", Make<Loading>}, Case{"Save", Make<Saving>},
                                           Case{"DeleteLocks", Make<DeletingLocks>}, Case{"Copy", Make<Copying>}),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(EveryStep, FailsAndIsDoneOrTold) {
    // DAX_FAULTS=all: each step; else each of the first forty, and fewer and fewer of those behind.
    const bool isAll = std::getenv("DAX_FAULTS") != nullptr;
    SQLiteFaults faults;
    size_t faultCount = 0;
    for (const char16_t* journal : {u"delete", u"wal"}) {
        const Course course(journal);
        const auto run = [&](SQLiteFaults::Kind kind, size_t number, bool isLasting) {
            course.Restore();
            const auto work = GetParam().make(course);
            faults.FailAt(kind, number, isLasting);
            const bool isDone = work->Do();
            const bool wasHit = faults.Stop();
            EXPECT_TRUE(wasHit || isDone);
            EXPECT_EQ(SQLiteFaults::openFiles, 0U);
            work->mayBeDone = isLasting && Text(journal) == u"wal" && kind == SQLiteFaults::Kind::Calls;
            work->Check(isDone);
            return wasHit;
        };
        run(SQLiteFaults::Kind::Calls, 0, false); // the engine now holds what it keeps
        const size_t held = SQLiteFaults::allocations;
        for (const auto kind : {SQLiteFaults::Kind::Calls, SQLiteFaults::Kind::Memory}) {
            for (const bool isLasting : {false, true}) {
                for (size_t number = 1; run(kind, number, isLasting); number += isAll ? 1 : 1 + number / 40) {
                    ++faultCount;
                    ASSERT_EQ(SQLiteFaults::allocations, held);
                    ASSERT_FALSE(HasFailure())
                        << (kind == SQLiteFaults::Kind::Calls ? "call " : "allocation ") << number
                        << (isLasting ? " and all after it, " : ", ") << ToUtf8(journal);
                }
            }
        }
    }
    std::cout << faultCount << " faults" << std::endl;
}

} // namespace
} // namespace dax
