// A panel's window as a screen reader finds it: its texts, one below the other.
#pragma once

#include "controls/win32/Accessible.h"

#include <functional>

namespace dax {

class TextAccessible : public Accessible {
public:
    explicit TextAccessible(std::function<std::vector<Text>()> source) : texts(std::move(source)) {}

    void Changed() const { RaiseEvent(EVENT_OBJECT_REORDER, Self); }

    std::vector<Element> Elements() override;
    LONG Count() const override { return static_cast<LONG>(texts().size()); }
    bool Has(Element element) const override { return element > 0 && element <= Count(); }
    LONG Role(Element element) const override;
    LONG State(Element) const override;
    Text Name(Element element) const override { return texts()[static_cast<size_t>(element - 1)]; }
    RECT Place(Element) const override; // of the panel: each text has a part of it
    Element ElementAt(POINT) override { return Self; }

private:
    std::function<std::vector<Text>()> texts; // the empty ones left out
};

} // namespace dax
