// A question to the user, whose buttons say what they do.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace dax::workbench {

struct Question {
    struct Choice {
        int id;
        std::wstring text;
    };

    std::wstring title;
    std::wstring text; // below the title; may be empty
    // The last one changes nothing: it is also what closing the box means.
    std::vector<Choice> choices;
    int byDefault;  // what Enter means
    int unattended; // the choice taken while pictures are made and no user can be asked
    bool isWarning = false;
};

// Shows it and waits; the number of the choice.
int AskUser(HWND owner, const Question& question);

// Before what is not saved gets lost: IDYES saves, IDNO does not, IDCANCEL continues editing.
Question AskToSave(const std::wstring& title);
// Before an entry with `below` others in it is removed: IDYES removes all, IDNO keeps these, IDCANCEL removes nothing.
// `plural` is what the others are, as "entries".
Question AskToRemove(const std::wstring& name, long below, const std::wstring& plural);

} // namespace dax::workbench
