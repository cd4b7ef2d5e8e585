// A statement with positional parameters ("?"), in ADO's vocabulary.
#pragma once

#include "data/Connection.h"

#include <vector>

namespace dax {

class Command {
public:
    explicit Command(Connection& connection) : connection(connection) {}

    void SetCommandText(Text statement) { commandText = std::move(statement); }
    // Parameters in the order of the question marks. A date is sent the way that the engine compares it right.
    void AppendParameter(Value value) { parameters.push_back(std::move(value)); }
    // A date that was read, and its text as the recordset gave it (empty: in the usual form): an engine that keeps
    // dates as texts in the form in which a program wrote them compares with that text, every other one with the date.
    void AppendStoredDate(Value value, Text stored);
    // Returns the number of rows affected.
    int64_t Execute(int options = adCmdText | adExecuteNoRecords);

private:
    Connection& connection;
    Text commandText;
    std::vector<Value> parameters;
};

} // namespace dax
