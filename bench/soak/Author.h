// One simulated author at work on a catalog that others change at the same time. The author remembers what was saved
// and reports everything that is not as it must be then.
#pragma once

#include "hierarchy/GroupEditor.h"
#include "lessonmap/LessonMapEditor.h"
#include "locks/LockManager.h"

#include <atomic>
#include <map>
#include <optional>
#include <random>
#include <set>

namespace dax::soak {

// Rows belong to the author who added them: no other removes them or changes their pages. Everybody saves whole
// trees, though, so that a row's title, place and parent are those of the author who saved last.
class Author {
public:
    Author(int number, const Text& connectionString);

    // Loads the tree, edits and saves it, edits a lesson's pages, takes locks and clears some. False as soon as
    // something fails that may succeed another time; what was pending then is carried on with next time.
    bool Work();
    // Completes what is pending, when the server allows it.
    bool FinishPending();
    // Everything that was saved must be there, nothing else of this author's, and no lock of anybody's on lessons that
    // were deleted. For a time at which no author works.
    void Verify();
    // Clears what is shown.
    void ReleaseAll();

    size_t RowCount() const { return rows.size(); }
    size_t LockCount() const { return locks.size(); }
    const std::vector<std::string>& Faults() const { return faults; }

    // Read while the author works in another thread.
    std::atomic<int> rounds = 0, saves = 0, refused = 0;
    std::atomic<bool> hasFailed = false;

private:
    struct Row {
        LessonTypes type = ltLesson;
        int added = 0;             // the save that added it
        Text pages;                // the lesson's data
        std::optional<Text> tried; // what it may be instead: the result of the update is unknown
    };
    struct Lock {
        Text lessonID;
        bool isUnclear = false; // it is unknown whether it was taken
    };
    struct Edit {
        std::map<Text, Row> added;
        std::set<Text> removed;
    };

    void ReportFault(const std::string& what);
    bool Reports(const char16_t* method, const std::function<bool()>& call);
    bool Asks(const std::function<void()>& statements);
    void CheckTitle(const Text& id, const Text& title);
    Text Title(int save) const;
    bool IsOwnEntry(const Text& id) const { return id.starts_with(name + u"-"); }
    Text Random(const IDCollection& ids);
    const Text* RandomLesson();

    bool LoadTree();
    void EditTree();
    void RemoveRow(const Text& id, Edit& changes);
    bool SaveTree();
    void Saved();
    bool EditPages();
    bool TakeLock();
    bool ListLocks();
    bool ClearLocks();
    bool DeleteStaleLocks();

    Text name, connectionString;
    std::mt19937 random;
    std::shared_ptr<GroupEditor> editor = GroupEditor::Create();
    std::shared_ptr<LessonMapEditor> pageEditor = LessonMapEditor::Create();
    std::shared_ptr<ListModel> list = std::make_shared<ListModel>(), staleList = std::make_shared<ListModel>();
    LockManager manager{list}, staleLocks{staleList};
    Text received; // the methods named by the Error events of the running call

    std::map<Text, Row> rows;
    std::map<Text, Lock> locks; // by session
    std::set<Text> unclearDeletes;
    std::optional<Edit> pending;
    int version = 0, lastRow = 0, lastLock = 0;
    std::vector<std::string> faults;
};

} // namespace dax::soak
