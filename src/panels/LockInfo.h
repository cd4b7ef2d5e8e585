// Who holds which locks on the entry selected in a GroupEditor, in at most four lines.
#pragma once

#include "base/Value.h"
#include "controls/Event.h"
#include "controls/Reentrance.h"
#include "hierarchy/GroupEditor.h"
#include "panels/PanelLayout.h"

#include <functional>

namespace dax {

struct LockSummary {
    bool isAvailable = true; // the last update could read the database
    int32_t lockCount = 0;   // locks of every type but connection tests
    int32_t editLessonCount = 0, readLessonCount = 0, editGuideCount = 0, readGuideCount = 0;
    Text editLessonText, lessonDetailText, editGuideText, guideDetailText;
    bool operator==(const LockSummary&) const = default;

    void CountLock(const Value& username, const Value& lockDate, const Value& lockType);
    // Replaces names by numbers of users where several hold locks. For a group the user who edits a lesson is never
    // named, but the only one who edits a guide is: deliberate.
    void FinishLesson();
    void FinishGroup();
    PanelLayout Layout() const;
};

class LockInfo {
public:
    // Reads the locks table once; nothing while the sample is shown. With null the panel shows that there is no data;
    // an editor without a connection string leaves the display as it is. Raises Error when the database fails.
    void UpdateFrom(GroupEditor* editor);
    // What a host sees while it is being designed, until Clear.
    void ShowDesignSample(const DateTime& now);
    void Clear(); // as before the first update: "no locks"

    int32_t LockCount() const { return summary.lockCount; }
    const Text& ConnectionString() const { return connectionString; }
    const LockSummary& Summary() const { return summary; }
    void Paint(Surface& surface) const;

    std::function<void()> Changed; // repaint
    Event<int32_t, const Text&> Error;

private:
    LockSummary summary;
    bool isSample = false;
    Text connectionString;
    Revision revision; // a host may release the panel inside Error
};

} // namespace dax
