#include "data/StoredRows.h"

namespace dax {

bool StoredRows::Read(Statement& rows, size_t columnCount, size_t rowsAtMost, size_t unitsAtMost) {
    columns = columnCount;
    while (count < rowsAtMost && texts.size() < unitsAtMost) {
        if (!rows.Next()) return false;
        for (size_t column = 0; column < columns; ++column) {
            const bool isThere = rows.AppendField(column, texts);
            places.push_back(uint64_t{texts.size()} * 2 + (isThere ? 0 : 1));
        }
        ++count;
    }
    return true;
}

void StoredRows::Clear() {
    count = 0;
    places.resize(1);
    texts.clear();
}

std::optional<TextView> StoredRows::Field(size_t row, size_t column) const {
    const uint64_t* const place = &places[row * columns + column];
    if ((place[1] & 1) != 0) return {};
    const auto begin = static_cast<size_t>(place[0] / 2), end = static_cast<size_t>(place[1] / 2);
    return TextView(texts).substr(begin, end - begin);
}

} // namespace dax
