// The scopes that the files of LessonMapEditor share.
#pragma once

#include "controls/Reentrance.h"
#include "lessonmap/LessonMapEditor.h"

#include <exception>

namespace dax {

// While content objects fill the tree, read layouts back or change their collections, nothing else
// may do so: the tree is incomplete.
class LessonMapEditor::OperationGuard {
public:
    explicit OperationGuard(LessonMapEditor& editor) : busy(editor.isBusy) {
        if (!busy.IsFirst())
            throw dax::Error(ErrorNumbers::Automation,
                             u"The lesson map is being changed; this call is possible only after that has finished.");
    }

private:
    const FlagGuard busy;
};

// The editor's own changes: no selection and check events of the tree. Afterwards notifications are on unless a drag is
// in progress; a drag that the changes ended does not leave them off.
class LessonMapEditor::NotificationGuard {
public:
    explicit NotificationGuard(LessonMapEditor& editor) : editor(editor) {
        if (editor.suspendedNotifications++ == 0) editor.subclasser.SetActive(false);
    }
    ~NotificationGuard() {
        if (--editor.suspendedNotifications == 0) editor.subclasser.SetActive(!editor.dragDrop.Active());
    }
    NotificationGuard(const NotificationGuard&) = delete;
    NotificationGuard& operator=(const NotificationGuard&) = delete;

private:
    LessonMapEditor& editor;
};

// Suspends drawing. The window may be destroyed meanwhile.
class LessonMapEditor::DrawingGuard {
public:
    explicit DrawingGuard(const LessonMapEditor& editor) : editor(editor), window(editor.window) {
        if (window) window->HoldDrawing(true);
    }
    ~DrawingGuard() {
        if (window && window == editor.window) window->HoldDrawing(false);
    }
    DrawingGuard(const DrawingGuard&) = delete;
    DrawingGuard& operator=(const DrawingGuard&) = delete;

private:
    const LessonMapEditor& editor;
    TreeWindow* const window;
};

// Counts a level of nesting for a scope. Throws Error where a host's objects call back without end.
class LessonMapEditor::DepthGuard {
public:
    explicit DepthGuard(int& depth) : depth(depth) {
        if (depth >= maxDepth)
            throw dax::Error(ErrorNumbers::Automation, u"The lesson's objects call each other endlessly.");
        ++depth;
    }
    ~DepthGuard() { --depth; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;

private:
    int& depth;
};

// An edit of the tree, written to the maps. When it fails, or a map refuses its part, the tree shows again what
// the lesson holds, and the failure is rethrown.
template <typename Action>
void LessonMapEditor::KeepEdit(const Action& edit) {
    std::exception_ptr failure;
    try {
        edit();
        SaveLayouts();
        return;
    } catch (...) {
        failure = std::current_exception();
    }
    try {
        Build();
        Node* const current = lesson ? tree->Find(lesson->CurrentSBID()) : nullptr;
        if (current && current->Parent()) tree->Select(current);
    } catch (const dax::Error&) { // the tree is empty or shows the lesson: both are valid
    }
    std::rethrow_exception(failure);
}

// Listeners may call back recursively: beyond a certain depth no event is raised.
template <typename TheEvent, typename... Arguments>
void LessonMapEditor::Raise(const TheEvent& event, const Arguments&... arguments) {
    if (isClosed || depth >= maxEventDepth) return;
    const DepthGuard guard(depth);
    event.Raise(arguments...);
}

} // namespace dax
