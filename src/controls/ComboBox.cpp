#include "controls/ComboBox.h"

namespace dax {

void ComboBox::Clear() {
    items.clear();
    listIndex = -1;
}

void ComboBox::SetListIndex(int index) {
    listIndex = index >= 0 && index < ListCount() ? index : -1;
    Click.Raise();
}

int modGeneric::FindComboIndex(const ComboBox& comboBox, TextView text) {
    for (int index = 0; index < comboBox.ListCount(); ++index)
        if (comboBox.List(index) == text) return index;
    return -1;
}

} // namespace dax
