// The locks of a content database as requested on the command line: chosen, sorted, deleted.
#pragma once

#include "Target.h"
#include "base/IDCollection.h"
#include "locks/LockManager.h"

#include <memory>
#include <optional>

namespace dax::cli {

// Empty parts choose everything; a lock must fit all that are given.
struct LockFilter {
    Text user;
    Text lessonID;
    std::shared_ptr<const IDCollection> group; // lessonIDs
    bool onlyInvalid = false;
};

enum class LockOutcome { None, Deleted, Protected, NotDeleted, LockedAgain };

struct ListedLock {
    LockRecord record;
    Text title, identifier, type, date, age; // as the lock list shows them
    size_t item = 0;                         // its place in the list
    LockOutcome outcome = LockOutcome::None;
};

class LockList {
public:
    LockList(const Target& target, LockFilter filter);

    // `sortKey` is the key of a column, or empty. Throws Error.
    void Read(const Text& sortKey, bool isDescending);
    std::vector<ListedLock>& Locks() { return locks; }
    // Values that are missing or no date, and were passed over.
    size_t OddValues() const { return oddValues; }

    size_t CountDeletable(const Text& user, bool isAdministrator) const;
    // Deletes what may be deleted, in one transaction, and notes each lock's outcome. Throws Error; then nothing was
    // deleted. Returns the reason when the locks were deleted but could not be read again.
    std::optional<Text> Delete(const Text& user, bool isAdministrator);

private:
    bool Fits(const LockRecord& record) const;
    void SetOutcomes(const std::vector<LockRecord>& before);

    LockFilter filter;
    std::shared_ptr<ListModel> list = std::make_shared<ListModel>();
    LockManager manager;
    std::vector<ListedLock> locks;
    std::optional<Error> failure;
    Text failedIn;
    size_t oddValues = 0;
};

} // namespace dax::cli
