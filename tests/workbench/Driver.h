// Starts the workbench, the real program, and drives it from outside through its windows.
#pragma once

#include "base/Text.h"

#include <windows.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace dax::test {

std::wstring Wide(const Text& text);
// The program beside the test program.
std::wstring WorkbenchPath();

class Workbench {
public:
    explicit Workbench(const std::vector<std::wstring>& arguments, const std::wstring& program = WorkbenchPath());
    Workbench(const Workbench&) = delete;
    Workbench& operator=(const Workbench&) = delete;
    ~Workbench(); // ends the program if it still runs

    // Waits for the program's end; its exit code, or -1 when it has not ended in a generous time.
    int ExitCode();
    // What it wrote to its standard output and error; after its end.
    std::string Said() const;

    // Waits for the window with all that is in it; null when it does not come.
    HWND Frame();
    // A field of page n, null as long as the page does not exist.
    HWND Field(int page, int id);
    std::wstring FieldText(int page, int id);
    // Waits until the field's text begins so.
    bool Shows(int page, int id, const std::wstring& text);
    // The first window of that class anywhere below, as inside a control; waits until there is one.
    HWND Inside(HWND parent, const wchar_t* className);
    // What the last line of the event log says, its columns with blanks between; with `control`, of that control's.
    std::wstring LastLogged(const std::wstring& control = {});
    // A key as the keyboard gives it to the window that has the focus.
    void Press(HWND window, WPARAM key, bool withAlt = false);
    // The keys go down together and come up again, on the keyboard that all programs share; the program has to be in
    // the foreground, which is waited for.
    void Type(std::initializer_list<WORD> keys);
    void Write(const wchar_t* text); // the same with a text
    // Clicks of the left button at a point of the window.
    void Click(HWND window, int x, int y, int count = 1);
    // Clicks into a field and puts a text there; false when it does not take the focus.
    bool Fill(int page, int id, const wchar_t* text);
    // Comes to page n by the arrow key.
    bool Show(int page);
    // Does what a button of page n does, also one of a toolbar.
    void Command(int page, int id);
    // Clicks a button of a toolbar.
    void ClickTool(int page, int id);
    // Waits for a window of its own, as a menu, a drop-down list or a question; null when it does not come.
    HWND Popup(const wchar_t* className);
    HWND Question() { return Popup(L"#32770"); }
    std::string QuestionText(); // of all that it shows, buttons included
    // The texts of all fields, labels and buttons that are shown.
    std::vector<std::wstring> Labels();
    // Gives the answer with that number; false when nobody asked.
    bool Answer(int button);
    // The window that has the focus in the program.
    HWND Focus();

    // Waits until it holds; false after a generous time, or when the program has ended.
    bool Until(const std::function<bool()>& condition);

private:
    PROCESS_INFORMATION process{};
    HANDLE output = INVALID_HANDLE_VALUE;
    std::wstring outputPath;
    HWND frame = nullptr;
};

// Empty when the file cannot be read.
std::string ReadBytes(const std::wstring& path);

} // namespace dax::test
