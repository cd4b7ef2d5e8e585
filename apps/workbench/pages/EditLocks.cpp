#include "pages/EditLocks.h"

#include "com/Variant.h"
#include "locks/LockManager.h"
#include "locks/LockRules.h"

#include <algorithm>

namespace dax::workbench {

namespace {

constexpr size_t maxLines = 10;

} // namespace

std::wstring DescribeEditLocks(const std::wstring& connection, const std::vector<std::wstring>& lessonIDs) {
    const auto list = std::make_shared<ListModel>();
    LockManager manager(list);
    manager.connectionString = FromWide(connection);
    manager.SetupColumns();
    std::wstring failure;
    manager.Error.AddPermanent([&failure](int32_t, const Text& description, const Text&, const Text&, int32_t& action) {
        failure = ToWide(description);
        action = actAbort;
    });
    manager.Refresh();
    if (!failure.empty()) return L"Whether somebody is editing it could not be determined: " + failure;

    std::wstring lines;
    size_t count = 0;
    for (size_t item = 0; item < list->Items().size(); ++item) {
        const LockRecord& lock = manager.Records()[static_cast<size_t>(list->Items()[item].tag)];
        const bool isEditing = lock.lockType == lltEditLesson || lock.lockType == lltEditGuide;
        if (!isEditing || lock.invalid ||
            std::find(lessonIDs.begin(), lessonIDs.end(), ToWide(lock.lessonID)) == lessonIDs.end())
            continue;
        if (++count > maxLines) continue;
        lines += L"\n\u2022 " + ToWide(lock.username) + L" on " + ToWide(lock.machineName) + L": \u201C" +
                 ToWide(list->Cell(item, 0)) + L"\u201D, " +
                 ToWide(LockRules::LockTypeText(static_cast<int64_t>(lock.lockType)));
    }
    if (count == 0) return {};
    if (count > maxLines) lines += L"\n\u2022 and " + std::to_wstring(count - maxLines) + L" more";
    return L"Somebody is editing what would be removed:" + lines;
}

} // namespace dax::workbench
