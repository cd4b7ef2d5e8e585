// The rows and columns of a report list. A window shows the model and reports the user's selection to it.
#pragma once

#include "base/Text.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace dax {

struct ListColumn {
    Text key;     // identifies the column, whatever its position
    Text caption; // header text
    Text tag;     // the host's own; the lock list keeps the column to sort by here
};

struct ListItem {
    size_t firstCell = 0, cellCount = 0; // of those of the model, see ListModel::Cell
    int32_t tag = 0;
    bool isSelected = false;
    Text mark{}; // what sets the row apart, for screen readers; such a row is shown in italics. Empty for the others
};

// A window is notified of what changed.
class ListModelListener {
public:
    virtual ~ListModelListener() = default;
    virtual void ColumnsChanged() = 0;
    virtual void ItemsChanged() = 0; // rows were added or removed: read all of them again when painting next
    virtual void AutosizeColumns() = 0;
};

class ListModel {
public:
    ListModel() = default;
    ListModel(const ListModel&) = delete;
    ListModel& operator=(const ListModel&) = delete;

    // At most one; null for none.
    void SetListener(ListModelListener* newListener) { listener = newListener; }

    void SetColumns(std::vector<ListColumn> newColumns);
    const std::vector<ListColumn>& Columns() const { return columns; }
    // -1 for a key that no column has.
    int ColumnIndex(TextView key) const;

    void ClearItems();
    // The window is notified once, at EndFilling; until then it shows the former rows.
    void BeginFilling() { ++filling; }
    void EndFilling();
    size_t AddItem(TextView firstCell);
    void SetCell(size_t item, int column, TextView text); // nothing for column -1
    void SetTag(size_t item, int32_t tag) {
        items[item].tag = tag;
        ++revision;
    }
    void SetMark(size_t item, Text mark) {
        items[item].mark = std::move(mark);
        ++revision;
    }
    void SetSelected(size_t item, bool isSelected) {
        items[item].isSelected = isSelected;
        ++revision;
    }

    const std::vector<ListItem>& Items() const { return items; }
    // Grows with every change, selection included, so that what was counted can be kept until then.
    uint64_t Revision() const { return revision; }
    TextView Cell(size_t item, size_t column) const; // valid until ClearItems; empty beyond the cells there are

    void AutosizeColumns();

private:
    void Changed();
    TextView Kept(TextView text);
    void WidenItem(ListItem& item, size_t count);

    std::vector<ListColumn> columns;
    std::vector<ListItem> items;
    std::vector<TextView> cells; // those of one item are adjacent, in the order of the columns
    std::vector<Text>
        blocks; // their texts, many in one: a text of its own for each takes most of the time of a filling
    size_t currentBlock = 0;
    ListModelListener* listener = nullptr;
    int filling = 0;
    uint64_t revision = 0;
};

} // namespace dax
