#include "pages/ConnectorPage.h"
#include "pages/DesignPage.h"
#include "pages/HierarchyPage.h"
#include "pages/LessonMapPage.h"
#include "pages/LocksPage.h"
#include "pages/ValidatorPage.h"

namespace dax::workbench {

namespace {

template <class One>
std::unique_ptr<Page> Make(PageContext& context) {
    return std::make_unique<One>(context);
}

} // namespace

const std::vector<PageEntry>& PageTable() {
    static const std::vector<PageEntry> table = {
        {L"Validator", L"validator", Make<ValidatorPage>},
        {L"Connector and picker", L"connector", Make<ConnectorPage>},
        {L"Hierarchy", L"hierarchy", Make<HierarchyPage>},
        {L"Lesson map", L"lessonmap", Make<LessonMapPage>, true},
        {L"Locks", L"locks", Make<LocksPage>},
        {L"Design mode", L"design", Make<DesignPage>},
    };
    return table;
}

} // namespace dax::workbench
