// The rows of two tables compared value by value, in bounded memory, whatever the order in which they come.
#pragma once

#include "data/RowWriter.h"

#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace dax {

// The next row, valid until the one after it; empty at the end.
using NextRow = std::function<std::span<const RowField>()>;

// Names a row in messages: its key columns with their values, or all columns where there is no key.
Text IdentifierOf(std::span<const RowField> row, std::span<const RowColumn> columns, const std::vector<bool>& isKey);

struct RowDifference {
    enum class Kind { Value, Missing, Additional };
    Kind kind;
    size_t column;   // of a value
    Text identifier; // of the row
};

// `columns` are those of the rows, `isKey` says which of them identify a row. `source` and `target` begin to read
// their table; they are called again when the two orders differ so much that the rows that wait for their counterpart
// would need more memory than `maxUnits` (in UTF-16 units): then each pass compares a part of the rows. Rows that
// appear several times must appear as often in both. The first difference by the order of the source, within the part.
std::optional<RowDifference> CompareRows(std::span<const RowColumn> columns, const std::vector<bool>& isKey,
                                         const std::function<NextRow()>& source, const std::function<NextRow()>& target,
                                         size_t maxUnits = 16 * 1024 * 1024);

} // namespace dax
