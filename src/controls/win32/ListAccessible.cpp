#include "controls/win32/ListAccessible.h"

#include <oleacc.h>

namespace dax {

std::vector<ListAccessible::Element> ListAccessible::Elements() {
    std::vector<Element> all;
    all.reserve(static_cast<size_t>(Count()));
    for (LONG column = 0; column < Columns(); ++column) all.push_back(FirstColumn + column);
    for (LONG row = 1; row <= Rows(); ++row) all.push_back(row);
    return all;
}

LONG ListAccessible::Role(Element element) const {
    if (element == Self) return ROLE_SYSTEM_LIST;
    return IsColumn(element) ? ROLE_SYSTEM_COLUMNHEADER : ROLE_SYSTEM_LISTITEM;
}

LONG ListAccessible::State(Element element) const {
    if (element == Self) return STATE_SYSTEM_FOCUSABLE | STATE_SYSTEM_MULTISELECTABLE;
    RECT client{}, seen, place = Place(element);
    GetClientRect(Window(), &client);
    const LONG hidden = IntersectRect(&seen, &client, &place) ? 0 : STATE_SYSTEM_OFFSCREEN;
    if (IsColumn(element)) return hidden | STATE_SYSTEM_READONLY;
    LONG state = hidden | STATE_SYSTEM_FOCUSABLE | STATE_SYSTEM_SELECTABLE | STATE_SYSTEM_MULTISELECTABLE;
    if (model.Items()[RowOf(element)].isSelected) state |= STATE_SYSTEM_SELECTED;
    if (HasFocus() && (SendMessageW(Window(), LVM_GETITEMSTATE, RowOf(element), LVIS_FOCUSED) & LVIS_FOCUSED))
        state |= STATE_SYSTEM_FOCUSED;
    return state;
}

Text ListAccessible::Name(Element element) const {
    return IsColumn(element) ? model.Columns()[ColumnOf(element)].caption : Text(model.Cell(RowOf(element), 0));
}

Text ListAccessible::Description(Element element) const {
    Text all;
    if (!IsRow(element)) return all;
    for (size_t column = 1; column < model.Columns().size(); ++column) {
        const TextView cell = model.Cell(RowOf(element), column);
        if (cell.empty()) continue;
        all.append(all.empty() ? u"" : u"; ").append(model.Columns()[column].caption).append(u": ").append(cell);
    }
    const Text& mark = model.Items()[RowOf(element)].mark;
    if (!mark.empty()) all += (all.empty() ? u"" : u"; ") + mark;
    return all;
}

RECT ListAccessible::Place(Element element) const {
    RECT place{LVIR_BOUNDS, 0, 0, 0};
    if (IsRow(element)) {
        SendMessageW(Window(), LVM_GETITEMRECT, RowOf(element), reinterpret_cast<LPARAM>(&place));
        return place;
    }
    const auto header = reinterpret_cast<HWND>(SendMessageW(Window(), LVM_GETHEADER, 0, 0));
    SendMessageW(header, HDM_GETITEMRECT, ColumnOf(element), reinterpret_cast<LPARAM>(&place));
    MapWindowPoints(header, Window(), reinterpret_cast<POINT*>(&place), 2);
    return place;
}

ListAccessible::Element ListAccessible::ElementAt(POINT point) {
    for (LONG column = 0; column < Columns(); ++column)
        if (const RECT place = Place(FirstColumn + column); PtInRect(&place, point)) return FirstColumn + column;
    LVHITTESTINFO hit{};
    hit.pt = point;
    return static_cast<Element>(SendMessageW(Window(), LVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit))) + 1;
}

ListAccessible::Element ListAccessible::Focused() {
    return static_cast<Element>(SendMessageW(Window(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED)) + 1;
}

std::vector<ListAccessible::Element> ListAccessible::Selected() {
    std::vector<Element> all;
    for (LONG row = 1; row <= Rows(); ++row)
        if (model.Items()[RowOf(row)].isSelected) all.push_back(row);
    return all;
}

// The list notifies its parent of every change of the selection, but of a choice only when it was clicked.
bool ListAccessible::Select(Element element, LONG flags) {
    if (!IsRow(element) || (flags & SELFLAG_EXTENDSELECTION)) return false;
    const auto row = static_cast<LPARAM>(RowOf(element));
    if (flags & SELFLAG_TAKESELECTION) SetState(-1, 0, LVIS_SELECTED);
    if (flags & SELFLAG_TAKEFOCUS) SetState(row, LVIS_FOCUSED, LVIS_FOCUSED);
    if (flags & (SELFLAG_TAKESELECTION | SELFLAG_ADDSELECTION)) SetState(row, LVIS_SELECTED, LVIS_SELECTED);
    if (flags & SELFLAG_REMOVESELECTION) SetState(row, 0, LVIS_SELECTED);
    NMITEMACTIVATE click{};
    click.hdr = {Window(), 0, NM_CLICK};
    click.iItem = static_cast<int>(row);
    if (flags & ~SELFLAG_TAKEFOCUS) SendMessageW(GetParent(Window()), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&click));
    return true;
}

void ListAccessible::SetState(LPARAM row, UINT state, UINT mask) const {
    LVITEMW item{};
    item.state = state;
    item.stateMask = mask;
    SendMessageW(Window(), LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

void ListAccessible::Changed(const NMLISTVIEW& change) const {
    if (change.iItem < 0) return SeveralChanged();
    const Element row = change.iItem + 1;
    const UINT come = change.uNewState & ~change.uOldState, gone = change.uOldState & ~change.uNewState;
    if ((come & LVIS_FOCUSED) && HasFocus()) RaiseEvent(EVENT_OBJECT_FOCUS, row);
    if (come & LVIS_SELECTED) RaiseEvent(EVENT_OBJECT_SELECTIONADD, row);
    if (gone & LVIS_SELECTED) RaiseEvent(EVENT_OBJECT_SELECTIONREMOVE, row);
}

void ListAccessible::OnFocusGained() {
    if (const Element row = Focused(); row != Self) RaiseEvent(EVENT_OBJECT_FOCUS, row);
}

} // namespace dax
