#include "data/StoredRows.h"

namespace dax {

bool StoredRows::Read(Statement& rows, size_t columnCount, size_t maxRows, size_t maxUnits) {
    columns = columnCount;
    while (count < maxRows && texts.size() < maxUnits) {
        if (!rows.Next()) return false;
        for (size_t column = 0; column < columns; ++column) {
            const bool isThere = rows.AppendField(column, texts);
            ends.push_back(uint64_t{texts.size()} * 2 + (isThere ? 0 : 1));
        }
        ++count;
    }
    return true;
}

void StoredRows::Clear() {
    count = 0;
    ends.resize(1);
    texts.clear();
}

std::optional<TextView> StoredRows::Field(size_t row, size_t column) const {
    const uint64_t* const bounds = &ends[row * columns + column];
    if ((bounds[1] & 1) != 0) return {};
    const auto begin = static_cast<size_t>(bounds[0] / 2), end = static_cast<size_t>(bounds[1] / 2);
    return TextView(texts).substr(begin, end - begin);
}

} // namespace dax
