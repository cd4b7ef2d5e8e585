#include "controls/win32/TextAccess.h"

#include <oleacc.h>

#include <numeric>

namespace dax {

std::vector<TextAccess::Element> TextAccess::Elements() {
    std::vector<Element> all(static_cast<size_t>(Count()));
    std::iota(all.begin(), all.end(), 1);
    return all;
}

LONG TextAccess::Role(Element element) const {
    return element == TheWhole ? ROLE_SYSTEM_GROUPING : ROLE_SYSTEM_STATICTEXT;
}

LONG TextAccess::State(Element) const { return STATE_SYSTEM_READONLY; }

RECT TextAccess::Place(Element) const {
    RECT client{};
    GetClientRect(Window(), &client);
    return client;
}

} // namespace dax
