// Validates a content or connector database and keeps the outcome: for the host as an error, for the user as texts
// and a picture.
#pragma once

#include "base/Enumerations.h"
#include "base/Value.h"
#include "controls/Event.h"
#include "validation/StatusPanel.h"

#include <functional>

namespace dax {

// Every validation starts from a clean state, shows that it is busy (Changed, then ProcessMessages once), and shows
// its outcome (Changed). None throws. In design mode, and from within the yield of ProcessMessages, a validation
// does nothing and returns false. Callers must hold a reference: the yield may release the control.
class DatabaseValidator {
public:
    const Text& CommonConnectionString() const { return commonConnectionString; }
    const Text& DataConnectionString() const { return dataConnectionString; }
    const Text& CatalogName() const { return catalogName; }
    bool MDBMode() const { return isMDBMode; }
    ValidationErrorTypes ErrorType() const { return errorType; }
    int32_t ErrorNumber() const { return errorNumber; }
    const Text& ErrorDescription() const { return errorDescription; }

    // `catalog` is the full path of the file in MDB mode, else a name that is only shown.
    bool ValidateDataConnection(Text connection, Text catalog, bool isMDB);
    bool ValidateCommonConnection(Text connection, Text dataSource, Text catalog, Text currentUser);
    // Whether the discussion tables exist; the display does not change.
    bool ValidateSupportsTalk(const Text& connection) noexcept;

    const StatusDisplay& Display() const { return display; }
    void ClearDisplay();
    // Shows a sample under this title and switches validating off, until LeaveDesignMode.
    void ShowDesignSample(const Text& displayName);
    void LeaveDesignMode();

    Event<> Changed;                       // Display() is another one: repaint
    std::function<void()> ProcessMessages; // lets the busy state be painted; may be empty
    std::function<DateTime()> Clock = Now;

private:
    struct Outcome;

    template <typename Check>
    bool Validate(Check check, const Text& unexpectedMessage);
    Outcome CheckMDB();
    Outcome CheckSQL();
    Outcome CheckConnector(const Text& currentUser);
    void SetError(int32_t number, Text description);
    void ShowBusy();
    void Show(const Outcome& outcome);

    Text commonConnectionString, dataConnectionString, commonDataSource, catalogName;
    Text shownName; // the catalog in messages, without a password that a path may contain
    bool isMDBMode = false;
    ValidationErrorTypes errorType = veNone;
    int32_t errorNumber = 0;
    Text errorDescription;
    StatusDisplay display;
    bool isDesignMode = false;
    bool isValidating = false;
};

} // namespace dax
