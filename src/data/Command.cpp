#include "data/Command.h"

#include "data/Dialect.h"

namespace dax {

void Command::AppendStoredDate(Value value, Text stored) {
    if (DialectOf(connection.Kind()).datesAsText && !IsNull(value) && !stored.empty()) value = std::move(stored);
    AppendParameter(std::move(value));
}

int64_t Command::Execute(int) { return connection.ExecuteWith(commandText, parameters); }

} // namespace dax
