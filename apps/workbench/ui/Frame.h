// The main window: the list of pages, the current page, the event log, the status bar.
#pragma once

#include "pages/Page.h"
#include "ui/Window.h"

namespace dax::workbench {

class Frame final : private Window {
public:
    Frame(const Options& options, const ControlLibrary& library);
    ~Frame() override;

    bool Create(bool visible);
    // The message loop; the program's exit code.
    int Run();
    // Takes every page through its states and pictures each into that folder. Returns the exit code; what went
    // wrong is said on the standard error.
    int CapturePictures(const std::wstring& folder);
    // Goes through the start of an application and pictures each step; says what each picture shows.
    int CaptureStart(const std::wstring& folder);

    // The steps of a start in their order, each with its page. Throws HostError when a page cannot be shown.
    using PlacedStep = std::pair<size_t, StartStep>;
    std::vector<PlacedStep> StartSteps();
    // Takes one and pictures it; the picture's name. Throws HostError when it fails.
    std::wstring TakeStep(const PlacedStep& placed, const std::wstring& folder);

private:
    struct Shown {
        const PageEntry* entry;
        std::unique_ptr<Page> page; // made when it is first shown
    };

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool Build();
    void Arrange();
    void ChangeStyle(int dpi, const RECT& place);
    bool Show(size_t index);
    void OpenLesson();
    void OpenCatalog(const Catalog& catalog);
    int Ask(const Question& question) const;
    bool MayClose();
    std::wstring Keys() const;
    void Step(int direction);
    Page* Current() const { return pages[current].page.get(); }
    bool HandleKey(const MSG& message);
    bool PressDefault(const MSG& message);
    bool GoTo(int id); // a command of the first menu; false: of a page
    void SelfTest();
    void BuildMenu();
    void FillPageMenu() const;
    std::vector<MenuEntry> LogMenu() const;
    void HandleMessage(MSG& message);
    void Deliver(MSG& message);
    void DispatchPending();
    void Command(int id, int notification);
    int DefaultButton() const;
    LRESULT Notify(const NMHDR& header);
    void DrawItem(const DRAWITEMSTRUCT& item) const;
    void ShowStatus(const std::wstring& text);
    bool OverSplitter(int y) const;
    void MoveSplitter(int y);

    Options options;
    const ControlLibrary& library;
    Style style;
    EventLog log;
    PageContext context;
    std::vector<Shown> pages;
    size_t current = 0;
    HWND list = nullptr;
    HWND logLabel = nullptr;
    HWND logClear = nullptr;
    HWND status = nullptr;
    HWND lastFocus = nullptr;
    HMENU pageMenu = nullptr; // the frame's, as is the whole menu
    int logShare = 150;       // height of the event log, at 96 dots per inch
    int splitterTop = 0;
    bool dragging = false;
};

} // namespace dax::workbench
