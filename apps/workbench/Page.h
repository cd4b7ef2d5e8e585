// One page of the workbench: the place of one control, or of a few that belong together.
#pragma once

#include "CommandLine.h"
#include "ControlLibrary.h"
#include "EventLog.h"
#include "Style.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace dax::workbench {

// What all pages share.
struct Bench {
    const Options& options;
    const ControlLibrary& library;
    Style& style;
    EventLog& log;
    std::function<void(const std::wstring&)> showStatus;
    // Set while a control works: a control may let messages through, and a second call must not start within it.
    bool busy = false;
};

// A state worth a picture.
struct PageState {
    std::wstring name; // ends up in the picture's file name
    std::function<void()> enter;
};

class Page {
public:
    virtual ~Page() = default;

    // Makes the window and its controls. A control that cannot be created leaves a page that says so.
    virtual bool Create(HWND parent, int id) = 0;
    virtual HWND Window() const = 0;
    virtual void StyleChanged() = 0;
    // Fills the fields from the command line and does what it asks for; once, after Create.
    virtual void Start() = 0;
    // F5.
    virtual void Validate() = 0;
    // The button that Enter means; 0 when there is none.
    virtual int DefaultButton() const = 0;
    virtual void TakeFocus() = 0;
    virtual std::vector<PageState> States() = 0;
    // Why a control could not be created; empty when all could.
    virtual const std::wstring& Problem() const = 0;
};

// The table of pages: later controls add a line.
struct PageEntry {
    const wchar_t* title;    // in the list, with a mnemonic's worth of brevity
    const wchar_t* fileName; // of its pictures
    std::unique_ptr<Page> (*make)(Bench& bench);
};
const std::vector<PageEntry>& PageTable();

} // namespace dax::workbench
