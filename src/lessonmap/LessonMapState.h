// The scopes that the parts of LessonMapEditor share.
#pragma once

#include "lessonmap/LessonMapEditor.h"

#include <exception>

namespace dax {

// While content objects are asked to fill the tree, to take layouts back or to change their collections, nothing else
// may do so: it would work on half a tree.
class LessonMapEditor::OperationGuard {
public:
    explicit OperationGuard(LessonMapEditor& editor) : editor(editor) {
        if (editor.isBusy) {
            throw dax::Error(ErrorNumbers::Automation,
                             u"The lesson map is being changed; this call is possible only after that has finished.");
        }
        editor.isBusy = true;
    }
    ~OperationGuard() { editor.isBusy = false; }
    OperationGuard(const OperationGuard&) = delete;
    OperationGuard& operator=(const OperationGuard&) = delete;

private:
    LessonMapEditor& editor;
};

// The editor's own changes: no selection and check events of the tree. Afterwards notifications flow unless a drag is
// in progress; a drag that the changes ended does not leave them off.
class LessonMapEditor::NotificationGuard {
public:
    explicit NotificationGuard(LessonMapEditor& editor) : editor(editor) {
        if (editor.suspendedNotifications++ == 0) editor.subclasser.SetActive(false);
    }
    ~NotificationGuard() {
        if (--editor.suspendedNotifications == 0) editor.subclasser.SetActive(!editor.drag.Active());
    }
    NotificationGuard(const NotificationGuard&) = delete;
    NotificationGuard& operator=(const NotificationGuard&) = delete;

private:
    LessonMapEditor& editor;
};

// Nothing is drawn meanwhile. The window may go.
class LessonMapEditor::Undrawn {
public:
    explicit Undrawn(const LessonMapEditor& editor) : editor(editor), window(editor.window) {
        if (window) window->HoldDrawing(true);
    }
    ~Undrawn() {
        if (window && window == editor.window) window->HoldDrawing(false);
    }
    Undrawn(const Undrawn&) = delete;
    Undrawn& operator=(const Undrawn&) = delete;

private:
    const LessonMapEditor& editor;
    TreeWindow* const window;
};

// Counts a level of nesting for a scope. Throws Error where a host's objects call back without end.
class LessonMapEditor::DepthGuard {
public:
    explicit DepthGuard(int& depth) : depth(depth) {
        if (depth >= deepest)
            throw dax::Error(ErrorNumbers::Automation, u"The lesson's objects call each other endlessly.");
        ++depth;
    }
    ~DepthGuard() { --depth; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;

private:
    int& depth;
};

// An edit of the tree, handed to the maps. When it fails, or a map does not take its part, the tree shows again what
// the lesson holds, and the failure goes on.
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
    } catch (const dax::Error&) { // the tree is empty or shows the lesson: either does no harm
    }
    std::rethrow_exception(failure);
}

// A listener may call back, and be called again for that, without end: beyond some depth no event is raised.
template <typename TheEvent, typename... Arguments>
void LessonMapEditor::Raise(const TheEvent& event, const Arguments&... arguments) {
    if (isClosed || depth >= deepestEvent) return;
    const DepthGuard guard(depth);
    event.Raise(arguments...);
}

} // namespace dax
