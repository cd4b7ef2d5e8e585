// One page of the workbench: the place of one control, or of a few that belong together.
#pragma once

#include "Options.h"
#include "automation/Automation.h"
#include "automation/ControlLibrary.h"
#include "ui/Commands.h"
#include "ui/EventLog.h"
#include "ui/Question.h"
#include "ui/Style.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace dax::workbench {

// The entry that is selected on the hierarchy page; the pages of locks and of the lesson map go by it.
struct Selection {
    std::wstring source; // the file or connection string, as people typed it
    std::wstring lessonID;
    std::wstring title;
    bool isLesson = false;
    Automation editor; // the hierarchy's control; empty before anything was loaded
};

// A catalog that was picked through the connector.
struct Catalog {
    std::wstring source; // as the fields show it
    std::wstring title;
    bool isAdministrator = false; // the user, by the connector's word
};

// What all pages share.
struct PageContext {
    const Options& options;
    const ControlLibrary& library;
    Style& style;
    EventLog& log;
    std::function<void(const std::wstring&)> showStatus;
    // Set while a control works: a control may let messages through, and a second call must not start within it.
    bool busy = false;
    Selection selection = {};
    // Shows the lesson map of the selected lesson.
    std::function<void()> openLesson = [] {};
    Catalog catalog = {};
    // Shows how that catalog is validated; when it is valid, the other pages work on it.
    std::function<void(const Catalog&)> openCatalog = {};
    // The number of the answer. While pictures are taken no question is shown: the answer is then the last choice.
    std::function<int(const Question&)> ask = {};
};

// A state worth a picture.
struct PageState {
    std::wstring name; // ends up in the picture's file name
    std::function<void()> enter;
    std::vector<std::pair<std::wstring, HWND>> controls = {}; // that it shows well: each gets a picture, too
};

// A step of an application's start, at its place among all of them.
struct StartStep {
    int place;
    std::wstring name; // ends up in the picture's file name
    std::wstring text; // what the picture shows
    std::function<void()> enter;
};

class Page {
public:
    virtual ~Page() = default;

    // Makes the window and its controls. A control that cannot be created leaves a page that says so.
    virtual bool Create(HWND parent, int id) = 0;
    virtual HWND Window() const = 0;
    virtual void StyleChanged() = 0;
    // Fills the fields from the command line and performs its actions; once, after Create.
    virtual void Start() = 0;
    // A catalog was opened.
    virtual void CatalogChanged() {}
    // Each time that the page comes to the front.
    virtual void Shown() {}
    // Shows the lesson that is selected.
    virtual void OpenLesson() {}
    // F5.
    virtual void Refresh() = 0;
    // What is typed in the fields of an entry takes effect, as far as it has not; it is then something to save.
    virtual void Apply() {}
    // The commands of the page.
    virtual std::vector<MenuEntry> Menu() const = 0;
    // Shows them as a context menu, beside what is selected.
    virtual void ShowMenu() = 0;
    // The keys of the page, for the status bar.
    virtual std::wstring Keys() const = 0;
    // A key that is the page's own; true when it is done with.
    virtual bool HandleKey(const MSG& message) = 0;
    // After a key was released somewhere on the page.
    virtual void KeyReleased() {}
    // Before the program ends: false when there is something to be saved first.
    virtual bool MayClose() { return true; }
    // The button that Enter means; 0 when there is none.
    virtual int DefaultButton() const = 0;
    virtual void TakeFocus() = 0;
    virtual std::vector<PageState> States() = 0;
    virtual std::vector<StartStep> Steps() { return {}; }
    // What the page says of the last thing that it did when that has failed; empty when it went well.
    virtual std::wstring Failure() const = 0;
    // Why a control could not be created; empty when all could.
    virtual const std::wstring& Problem() const = 0;
};

// The table of pages: later controls add a line.
struct PageEntry {
    const wchar_t* title;    // in the list; short
    const wchar_t* fileName; // of its pictures
    std::unique_ptr<Page> (*make)(PageContext& context);
    bool showsLessons = false; // the page that opens a lesson
};
const std::vector<PageEntry>& PageTable();

} // namespace dax::workbench
