// Turns a tree window's notifications into events: the selection changed, boxes were checked. The window layer passes
// the notifications in; they are ignored while not Active.
#pragma once

#include "tree/TreeWindow.h"

namespace dax {

class LMESubclasser {
public:
    LMESubclasser() = default;
    ~LMESubclasser();
    LMESubclasser(const LMESubclasser&) = delete;
    LMESubclasser& operator=(const LMESubclasser&) = delete;

    // Null unbinds. Without a window selection changes are reported all the same.
    void RegisterWindows(NodeTree* tree, TreeWindow* window);
    bool Active() const { return isActive; }
    // Either value stops a check-state event that is due.
    void SetActive(bool active);

    // The model decides about checks: these leave a branch, its top included, at the opposite of the top's
    // former check (Ctrl: the item alone), and the window shows that, whatever its own toggling would have made.
    void OnClick(Point point, bool isCtrlDown);
    void OnDblClick(Point point, bool isCtrlDown);
    void OnKeyDown(int keyCode);
    void OnTimer(TreeTimer timer);

    // Old node, new node, cancel. Declared and never raised, deliberately: hosts cannot cancel.
    Event<Node*, Node*, bool&> SelectionChanging;
    Event<> SelectionChanged;
    Event<> CheckStateChanged; // once for a burst of check changes

private:
    void Toggle(Node& node, bool isBranch);

    NodeTree* tree = nullptr;
    TreeWindow* window = nullptr;
    Subscription listener;
    bool isActive = false;
};

// Not Active for a scope; afterwards as before.
class NotificationPause {
public:
    explicit NotificationPause(LMESubclasser& subclasser) : subclasser(subclasser), wasActive(subclasser.Active()) {
        subclasser.SetActive(false);
    }
    ~NotificationPause() { subclasser.SetActive(wasActive); }
    NotificationPause(const NotificationPause&) = delete;
    NotificationPause& operator=(const NotificationPause&) = delete;

private:
    LMESubclasser& subclasser;
    const bool wasActive;
};

} // namespace dax
