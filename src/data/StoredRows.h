// Rows that were read ahead: one long text, and where each value ends in it.
#pragma once

#include "data/Session.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace dax {

class StoredRows {
public:
    // Appends rows up to the limits, the second in UTF-16 units; false at the end of the result set.
    bool Read(Statement& rows, size_t columnCount, size_t maxRows = SIZE_MAX, size_t maxUnits = SIZE_MAX);
    void Clear(); // the memory is used again
    size_t Count() const { return count; }
    std::optional<TextView> Field(size_t row, size_t column) const; // nothing for NULL

private:
    size_t columns = 0, count = 0;
    std::vector<uint64_t> ends = {0}; // after the first: twice the end of each value, plus 1 when it is NULL
    Text texts;
};

} // namespace dax
