// A report list's window as a screen reader finds it: its columns by their captions, then its rows, each named by its
// first cell and described by the others.
#pragma once

#include "controls/ListModel.h"
#include "controls/win32/Accessible.h"

#include <commctrl.h>

namespace dax {

class ListAccessible : public Accessible {
public:
    explicit ListAccessible(const ListModel& list) : model(list) {}

    void Reordered() const { RaiseEvent(EVENT_OBJECT_REORDER, Self); }
    void Changed(const NMLISTVIEW& change) const; // a row's focus or selection, or all rows'
    void SeveralChanged() const { RaiseEvent(EVENT_OBJECT_SELECTIONWITHIN, Self); }
    void OnFocusGained();

    std::vector<Element> Elements() override;
    LONG Count() const override { return Columns() + Rows(); }
    bool Has(Element element) const override { return IsRow(element) || IsColumn(element); }
    LONG Role(Element element) const override;
    LONG State(Element element) const override;
    Text Name(Element element) const override;
    Text Description(Element element) const override;
    RECT Place(Element element) const override;
    Element ElementAt(POINT point) override;
    Element Focused() override;
    std::vector<Element> Selected() override;
    bool Select(Element element, LONG flags) override;

private:
    // Rows have the numbers that the system uses in its events: their places from 1.
    static constexpr Element FirstColumn = 0x1000'0000;

    LONG Rows() const { return static_cast<LONG>(model.Items().size()); }
    LONG Columns() const { return static_cast<LONG>(model.Columns().size()); }
    bool IsRow(Element element) const { return element > 0 && element <= Rows(); }
    bool IsColumn(Element element) const { return element >= FirstColumn && element - FirstColumn < Columns(); }
    static size_t RowOf(Element element) { return static_cast<size_t>(element - 1); }
    static size_t ColumnOf(Element element) { return static_cast<size_t>(element - FirstColumn); }
    void SetState(LPARAM row, UINT state, UINT mask) const;

    const ListModel& model;
};

} // namespace dax
