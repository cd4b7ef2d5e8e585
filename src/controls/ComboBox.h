// A drop-down list: what a component needs of it, and the list itself, which is complete without a window.
#pragma once

#include "base/Text.h"
#include "controls/Event.h"

#include <vector>

namespace dax {

class ComboBox {
public:
    virtual ~ComboBox() = default;

    virtual void Clear() = 0; // raises no event
    virtual void AddItem(const Text& text) = 0;
    virtual int ListCount() const = 0;
    virtual const Text& List(int index) const = 0;

    virtual int ListIndex() const = 0; // -1: nothing is selected
    // Raises Click, also when the entry was selected before. An index outside the list selects nothing.
    virtual void SetListIndex(int index) = 0;

    virtual bool Enabled() const = 0;
    virtual void SetEnabled(bool isEnabled) = 0;

    Event<> Click; // the selection was changed or chosen again, by the program or by the user
};

// The list without a window; a window that mirrors it derives from it.
class MemoryComboBox : public ComboBox {
public:
    void Clear() override;
    void AddItem(const Text& text) override { items.push_back(text); }
    int ListCount() const override { return static_cast<int>(items.size()); }
    const Text& List(int index) const override { return items.at(static_cast<size_t>(index)); }
    int ListIndex() const override { return listIndex; }
    void SetListIndex(int index) override;
    bool Enabled() const override { return isEnabled; }
    void SetEnabled(bool enabled) override { isEnabled = enabled; }

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
