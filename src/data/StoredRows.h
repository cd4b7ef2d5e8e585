// Rows that were read ahead: one long text, and where each value ends in it.
#pragma once

#include "data/Session.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace dax {

class StoredRows {
public:
    // Behind those that are there, until there are no more, which it returns false for, or enough: so many rows, or so
    // many UTF-16 units.
    bool Read(Statement& rows, size_t columnCount, size_t rowsAtMost = SIZE_MAX, size_t unitsAtMost = SIZE_MAX);
    void Clear(); // the memory is used again
    size_t Count() const { return count; }
    std::optional<TextView> Field(size_t row, size_t column) const; // nothing for NULL

private:
    size_t columns = 0, count = 0;
    std::vector<uint64_t> places = {0}; // after the first: twice the end of each value, plus 1 when it is NULL
    Text texts;
};

} // namespace dax
