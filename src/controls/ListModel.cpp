#include "controls/ListModel.h"

#include <algorithm>

namespace dax {

namespace {

constexpr size_t unitsOfBlock = 16 * 1024;

} // namespace

void ListModel::SetColumns(std::vector<ListColumn> newColumns) {
    columns = std::move(newColumns);
    if (listener) listener->ColumnsChanged();
}

int ListModel::ColumnIndex(TextView key) const {
    const auto found = std::ranges::find(columns, key, &ListColumn::key);
    return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

// Their memory is kept: a list that is cleared is mostly filled again at once.
void ListModel::ClearItems() {
    items.clear();
    cells.clear();
    for (Text& block : blocks) block.clear();
    currentBlock = 0;
    Changed();
}

void ListModel::EndFilling() {
    --filling;
    Changed();
}

size_t ListModel::AddItem(TextView firstCell) {
    ListItem item;
    WidenItem(item, std::max<size_t>(columns.size(), 1)); // at once: room for all cells in one place
    cells[item.firstCell] = Kept(firstCell);
    items.push_back(std::move(item));
    Changed();
    return items.size() - 1;
}

void ListModel::SetCell(size_t item, int column, TextView text) {
    if (column < 0) return;
    const TextView kept = Kept(text);
    const auto place = static_cast<size_t>(column);
    if (items[item].cellCount <= place) WidenItem(items[item], place + 1);
    cells[items[item].firstCell + place] = kept;
    Changed();
}

TextView ListModel::Cell(size_t item, size_t column) const {
    if (item >= items.size() || column >= items[item].cellCount) return {};
    return cells[items[item].firstCell + column];
}

// Its cells move to the end; their former place remains unused.
void ListModel::WidenItem(ListItem& item, size_t count) {
    const size_t first = cells.size();
    cells.resize(first + count);
    std::copy_n(cells.begin() + static_cast<ptrdiff_t>(item.firstCell), item.cellCount,
                cells.begin() + static_cast<ptrdiff_t>(first));
    item.firstCell = first;
    item.cellCount = count;
}

// A block never grows beyond what was reserved for it, so what was kept in it stays where it is.
TextView ListModel::Kept(TextView text) {
    if (text.empty()) return {};
    while (currentBlock < blocks.size() && blocks[currentBlock].capacity() - blocks[currentBlock].size() < text.size())
        ++currentBlock;
    if (currentBlock == blocks.size()) {
        Text block;
        block.reserve(std::max(unitsOfBlock, text.size()));
        blocks.push_back(std::move(block));
    }
    Text& block = blocks[currentBlock];
    const size_t begin = block.size();
    block.append(text);
    return TextView(block).substr(begin);
}

void ListModel::AutosizeColumns() {
    if (listener) listener->AutosizeColumns();
}

void ListModel::Changed() {
    ++revision;
    if (filling == 0 && listener) listener->ItemsChanged();
}

} // namespace dax
