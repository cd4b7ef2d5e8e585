#include "controls/win32/TextAccessible.h"

#include <oleacc.h>

#include <numeric>

namespace dax {

std::vector<TextAccessible::Element> TextAccessible::Elements() {
    std::vector<Element> all(static_cast<size_t>(Count()));
    std::iota(all.begin(), all.end(), 1);
    return all;
}

LONG TextAccessible::Role(Element element) const {
    return element == Self ? ROLE_SYSTEM_GROUPING : ROLE_SYSTEM_STATICTEXT;
}

LONG TextAccessible::State(Element) const { return STATE_SYSTEM_READONLY; }

RECT TextAccessible::Place(Element) const {
    RECT client{};
    GetClientRect(Window(), &client);
    return client;
}

} // namespace dax
