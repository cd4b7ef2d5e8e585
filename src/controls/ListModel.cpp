#include "controls/ListModel.h"

#include <algorithm>

namespace dax {

void ListModel::SetColumns(std::vector<ListColumn> newColumns) {
    columns = std::move(newColumns);
    if (listener) listener->ColumnsChanged();
}

int ListModel::ColumnIndex(TextView key) const {
    const auto found = std::ranges::find(columns, key, &ListColumn::key);
    return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

void ListModel::ClearItems() {
    items.clear();
    Changed();
}

void ListModel::EndFilling() {
    --filling;
    Changed();
}

size_t ListModel::AddItem(Text firstCell) {
    ListItem item;                                          // whole before the list has it
    item.cells.resize(std::max<size_t>(columns.size(), 1)); // at once: growing for each cell takes longer
    item.cells[0] = std::move(firstCell);
    items.push_back(std::move(item));
    Changed();
    return items.size() - 1;
}

void ListModel::SetCell(size_t item, int column, Text text) {
    if (column < 0) return;
    auto& cells = items[item].cells;
    const auto place = static_cast<size_t>(column);
    if (cells.size() <= place) cells.resize(place + 1);
    cells[place] = std::move(text);
    Changed();
}

const Text& ListModel::Cell(size_t item, size_t column) const {
    static const Text none;
    if (item >= items.size() || column >= items[item].cells.size()) return none;
    return items[item].cells[column];
}

void ListModel::AutosizeColumns() {
    if (listener) listener->AutosizeColumns();
}

void ListModel::Changed() {
    ++revision;
    if (filling == 0 && listener) listener->ItemsChanged();
}

} // namespace dax
