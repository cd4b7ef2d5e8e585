#include "pages/DesignPage.h"

#include <algorithm>
#include <array>

namespace dax::workbench {

namespace {

struct Share {
    const wchar_t* name;
    int weight; // of the column's height; 0: one line
};
constexpr std::array<Share, 4> leftColumn = {
    {{L"DatabaseValidator", 4}, {L"SQLDBPicker", 0}, {L"LessonInfo", 6}, {L"LockInfo", 4}}};
constexpr std::array<Share, 3> rightColumn = {{{L"GroupEditor", 1}, {L"LockManager", 1}, {L"LessonMapEditor", 1}}};

// The places of a column's controls, each below a line for its name.
template <size_t Count>
std::vector<RECT> Places(const std::array<Share, Count>& column, const RECT& area, const Style& style) {
    int weights = 0;
    int rest = area.bottom - area.top;
    for (const Share& one : column) {
        weights += one.weight;
        rest -= style.LineHeight() + style.Gap() + (one.weight == 0 ? style.FieldHeight() : 0);
    }
    std::vector<RECT> places;
    int top = area.top;
    for (const Share& one : column) {
        top += style.LineHeight() + style.Scale(2);
        const int height = one.weight == 0 ? style.FieldHeight() : std::max(rest * one.weight / weights, 1);
        places.push_back({area.left, top, area.right, top + height});
        top += height + style.Gap() - style.Scale(2);
    }
    return places;
}

} // namespace

bool DesignForm::Create(HWND parent, int id, const ControlLibrary& library) {
    const auto fill = [&library](const auto& column, std::vector<Placed>& placed) {
        for (const Share& one : column)
            placed.push_back(
                {one.name, std::make_unique<DesignSite>(library, std::wstring(L"DAXControls.") + one.name)});
    };
    fill(leftColumn, left);
    fill(rightColumn, right);
    return CreateAs(L"DAXWorkbenchForm", L"", WS_CHILD | WS_VISIBLE, 0, parent, id, {0, 0, 10, 10});
}

void DesignForm::PaintOne(HDC dc, const Placed& one, const RECT& place) const {
    RECT name{place.left, place.top - style.LineHeight() - style.Scale(2), place.right, place.top};
    DrawTextW(dc, one.name, -1, &name, DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    const int saved = SaveDC(dc);
    IntersectClipRect(dc, place.left, place.top, place.right, place.bottom);
    try {
        one.control->Draw(dc, place);
    } catch (const HostError& error) {
        RECT text = place;
        DrawTextW(dc, error.Text().c_str(), -1, &text, DT_WORDBREAK | DT_NOPREFIX);
    }
    RestoreDC(dc, saved);
    RECT border = place;
    InflateRect(&border, 1, 1);
    FrameRect(dc, &border, GetSysColorBrush(COLOR_BTNSHADOW));
}

void DesignForm::Paint(HDC dc) const {
    RECT area;
    GetClientRect(Handle(), &area);
    const HGDIOBJ font = SelectObject(dc, style.Plain());
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
    const int middle = (area.right - style.Margin()) / 2;
    const auto leftPlaces = Places(leftColumn, {1, 0, middle, area.bottom}, style);
    const auto rightPlaces = Places(rightColumn, {middle + style.Margin(), 0, area.right - 1, area.bottom}, style);
    for (size_t i = 0; i < left.size(); ++i) PaintOne(dc, left[i], leftPlaces[i]);
    for (size_t i = 0; i < right.size(); ++i) PaintOne(dc, right[i], rightPlaces[i]);
    SelectObject(dc, font);
}

LRESULT DesignForm::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_SIZE) InvalidateRect(Handle(), nullptr, TRUE);
    if (message == WM_PAINT) {
        PAINTSTRUCT paint;
        Paint(BeginPaint(Handle(), &paint));
        EndPaint(Handle(), &paint);
        return 0;
    }
    return Window::OnMessage(message, wParam, lParam);
}

std::wstring DesignPage::Explanation() const {
    return L"Each control is drawn without being active, as a form designer does it. Those that paint themselves show "
           L"a "
           L"sample; none touches a database.";
}

void DesignPage::Build() {
    try {
        form.Create(Window(), idDesign, context.library);
    } catch (const HostError& error) {
        Refuse(error.Text());
    }
}

void DesignPage::Arrange(int top, int bottom) {
    if (form.Handle()) Place(form.Handle(), Left(), top, Right(), bottom);
}

void DesignPage::Refresh() {
    if (form.Handle()) InvalidateRect(form.Handle(), nullptr, TRUE);
}

std::vector<PageState> DesignPage::States() {
    return {{L"mode", [] {}}};
}

} // namespace dax::workbench
