// What the pages have in common: a heading, labelled fields, buttons, the place of a control, a line for the result.
#pragma once

#include "automation/ControlHost.h"
#include "pages/Page.h"
#include "ui/Ids.h"
#include "ui/Toolbar.h"
#include "ui/Window.h"

namespace dax::workbench {

enum class Tone { Plain, Good, Bad, Hint };

// A shortcut key of a command of the page.
struct Shortcut {
    WORD key;
    bool control, alt;
    int command;
};

class FormPage : public Page, protected workbench::Window {
public:
    bool Create(HWND parent, int id) override;
    HWND Window() const override { return Handle(); }
    void StyleChanged() override;
    void TakeFocus() override;
    const std::wstring& Problem() const override { return problem; }
    std::vector<MenuEntry> Menu() const override { return tools.Window() ? tools.Menu() : std::vector<MenuEntry>(); }
    void ShowMenu() override { ShowMenuAt({-1, -1}); }
    std::wstring Keys() const override { return L"F5 Validate"; }
    bool HandleKey(const MSG& message) override;
    std::wstring Failure() const override { return resultTone == Tone::Bad ? FieldText(idResult) : std::wstring(); }

protected:
    explicit FormPage(PageContext& shared) : context(shared) {}

    virtual std::wstring Heading() const = 0;
    virtual std::wstring Explanation() const = 0;
    // Makes the fields in tab order.
    virtual void Build() = 0;
    // Places everything below `top` (both in pixels, margins taken off by the caller through Left and Right).
    virtual void Arrange(int top, int bottom) = 0;
    virtual void Command(int id, int notification) = 0;
    virtual std::vector<Shortcut> Shortcuts() const { return {}; }
    // Does the command when everything that is under way has ended, as within a control's event.
    void Later(int id) { PostMessageW(Handle(), WM_COMMAND, static_cast<WPARAM>(id), 0); }
    bool HasFocus(int id) const;
    void FocusField(int id) const; // with its text selected
    void ShowMenuAt(POINT at);     // on the screen, see ShowContextMenu
    // A right click within the page, at a place on the screen.
    virtual void RightClicked(HWND window, POINT at);
    // Clears the result line when the user continues with something else.
    virtual void ClearResult() { ShowResult({}, Tone::Plain); }

    // Fields, in tab order. A label's mnemonic leads to the field that follows.
    HWND AddLabel(const std::wstring& text, int id = idLabelDefault);
    HWND AddEdit(int id, const std::wstring& hint = {});
    HWND AddButton(int id, const std::wstring& text, bool isDefault = false);
    HWND AddCheck(int id, const std::wstring& text);
    // A drop-down list; the first of the choices is chosen.
    HWND AddChoice(int id, std::initializer_list<const wchar_t*> choices);
    void AddToolbar(int id, const std::vector<Tool>& buttons);
    // A text that shows the current state.
    HWND AddOutput(int id);
    // Null, and the problem kept, when the control cannot be created.
    std::unique_ptr<ControlHost> AddControl(int id, bool tabStop, const std::wstring& name,
                                            ControlEventHandler handler);

    // The page shows this instead of its fields; the first problem counts.
    void Refuse(const std::wstring& why) {
        if (problem.empty()) problem = why;
    }

    HWND Field(int id) const { return GetDlgItem(Handle(), id); }
    std::wstring FieldText(int id) const;
    void SetField(int id, const std::wstring& text);
    // What is typed as the connection. From then on the field shows dots for a password, as does the answer;
    // ConnectionFor takes it as the whole.
    std::wstring TakeConnection();
    void SetHint(int id, const std::wstring& hint);
    bool Checked(int id) const;
    void SetChecked(int id, bool isChecked) const;
    int Choice(int id) const; // counted from 0; -1: none
    void SetChoice(int id, int choice) const;
    void ShowResult(const std::wstring& text, Tone tone);

    // Layout in pixels.
    int Left() const { return context.style.Margin(); }
    int Right() const;
    void Place(HWND child, int left, int top, int right, int bottom) const;
    // A label (or none) before a field that ends at `right`; returns the top of the next row.
    int PlaceRow(HWND label, int id, int top, int labelLeft, int fieldLeft, int right) const;
    // A button at the left edge given; returns the left edge of the next.
    int PlaceButton(int id, int left, int top) const;
    int PlaceCheck(int id, int left, int top) const; // the same for a check box
    int PlaceToolbar(int top) const;                 // over the whole width; returns the top of what follows
    // A border round a control, with empty space of the window's colour between (at 96 dots per inch).
    void Frame(HWND child, int space = 0) { framed.push_back({child, space}); }

    // Runs calls to a control: with a wait cursor, not nested, an error shown as the result.
    void Run(const std::function<void()>& work);
    // A call, noted in the log.
    Variant Call(const ControlHost& host, const std::wstring& control, const wchar_t* method,
                 const std::vector<Variant>& arguments = {});
    // Asks for a database file and puts its path into the field.
    bool Browse(int id);

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

    PageContext& context;
    Toolbar tools;

private:
    static constexpr int idLabelDefault = -1;

    HWND Add(const wchar_t* className, const std::wstring& text, DWORD style, DWORD extendedStyle, int id);
    void ArrangeAll();
    void PaintFrames(HDC dc) const;
    LRESULT Colour(HDC dc, HWND child) const;

    std::wstring problem;
    std::vector<std::pair<HWND, int>> framed;
    Tone resultTone = Tone::Plain;
};

// The outcome of a validation in one line: the answer, the error's name and number.
std::wstring DescribeOutcome(const Automation& validator, bool valid);

} // namespace dax::workbench
