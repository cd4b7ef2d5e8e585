#include "ConnectorPage.h"
#include "ValidatorPage.h"

namespace dax::workbench {

const std::vector<PageEntry>& PageTable() {
    static const std::vector<PageEntry> table = {
        {L"Validator", L"validator",
         [](Bench& bench) -> std::unique_ptr<Page> { return std::make_unique<ValidatorPage>(bench); }},
        {L"Connector and picker", L"connector",
         [](Bench& bench) -> std::unique_ptr<Page> { return std::make_unique<ConnectorPage>(bench); }},
    };
    return table;
}

} // namespace dax::workbench
