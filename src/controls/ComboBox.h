// A drop-down list, which is complete without a window; a window that mirrors it derives from it.
#pragma once

#include "base/Text.h"
#include "controls/Event.h"

#include <vector>

namespace dax {

class ComboBox {
public:
    virtual ~ComboBox() = default;

    virtual void Clear(); // raises no event
    virtual void AddItem(const Text& text) { items.push_back(text); }
    int ListCount() const { return static_cast<int>(items.size()); }
    const Text& List(int index) const { return items.at(static_cast<size_t>(index)); }

    int ListIndex() const { return listIndex; } // -1: nothing is selected
    // Raises Click, also when the entry was selected before. An index outside the list selects nothing.
    virtual void SetListIndex(int index);

    bool Enabled() const { return isEnabled; }
    virtual void SetEnabled(bool enabled) { isEnabled = enabled; }

    Event<> Click; // the selection was changed or chosen again, by the program or by the user

protected:
    std::vector<Text> items;
    int listIndex = -1;
    bool isEnabled = true;
};

namespace modGeneric {

// The first entry that equals the text exactly, or -1.
int FindComboIndex(const ComboBox& comboBox, TextView text);

} // namespace modGeneric

} // namespace dax
