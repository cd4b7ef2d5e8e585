// Starts the workbench, the real program, and drives it from outside through its windows.
#pragma once

#include "support/TestDatabases.h"

#include <windows.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace dax::test {

enum Pages { validatorPage, connectorPage, hierarchyPage, mapPage, locksPage, designPage, pageCount };

std::wstring Wide(const Text& text);
// The program beside the test program.
std::filesystem::path WorkbenchPath();

class Workbench {
public:
    explicit Workbench(const std::vector<std::wstring>& arguments,
                       const std::filesystem::path& program = WorkbenchPath());
    Workbench(const Workbench&) = delete;
    Workbench& operator=(const Workbench&) = delete;
    ~Workbench(); // ends the program if it still runs

    // Waits for the program's end; its exit code, or -1 when it has not ended in a generous time.
    int ExitCode();
    // What it wrote to its standard output and error.
    std::string Output() const { return ReadFile(folder.Path() / "said"); }

    // Waits for the window with all that is in it; null when it does not come.
    HWND Frame();
    // A field of a page, null as long as the page does not exist.
    HWND Field(int page, int id);
    std::wstring FieldText(int page, int id);
    // Waits until the field's text begins so.
    bool Shows(int page, int id, const std::wstring& text);
    // The first visible window of that class anywhere below, as inside a control; waits until there is one.
    HWND Inside(HWND parent, const wchar_t* className);
    // The texts of all fields, labels and buttons that the window shows, a line each.
    static std::string TextsIn(HWND window);

    // Presses the keys together and releases them, on the keyboard that all programs share; the program has to be in
    // the foreground, which is waited for.
    void Type(std::initializer_list<WORD> keys);
    void Write(const std::string& text); // small letters and signs, one after the other
    // Clicks of a button of the mouse at a point of the window.
    void Click(HWND window, int x, int y, int count = 1, bool isRight = false);
    // Clicks a button of the page's toolbar.
    void ClickTool(int page, int id);
    // Clicks into a field and puts a text there; false when it does not take the focus.
    bool Fill(int page, int id, const wchar_t* text);
    // Shows a page by its key.
    bool Show(int page);
    // Waits until the focus is in the window.
    bool HasFocus(HWND window);
    // Waits until a menu is open, or until none is.
    bool HasMenu(bool isOpen);
    // Waits for a question with the focus; null when it does not come.
    HWND Question();
    // Gives the answer with that number; false when there is no question.
    bool Answer(int button);

    // Waits until it holds; false after a generous time, or when the program has ended.
    bool Until(const std::function<bool()>& condition);

private:
    GUITHREADINFO State();

    const TempFolder folder;
    PROCESS_INFORMATION process{};
    HWND frame = nullptr;
};

} // namespace dax::test
