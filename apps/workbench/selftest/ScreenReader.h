// What a screen reader gets of a window through the system's accessibility interface.
#pragma once

#include "com/Variant.h"

#include <oleacc.h>

#include <string>
#include <vector>

namespace dax::workbench::selftest {

class ScreenReader {
public:
    explicit ScreenReader(HWND window)
        : opened(AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT), IID_IAccessible,
                                            object.OutVoid())) {}

    // Whether the window has an accessible object; if not, no other member may be called.
    HRESULT Opened() const { return opened; }
    IAccessible* operator->() const { return object.Get(); }

    static Variant Child(LONG id) { return id; }
    // The numbers of all elements.
    std::vector<LONG> Elements() const {
        LONG count = 0, found = 0;
        object->get_accChildCount(&count);
        std::vector<Variant> children(static_cast<size_t>(count) + 1);
        AccessibleChildren(object.Get(), 0, count, children.data(), &found);
        std::vector<LONG> numbers;
        for (LONG i = 0; i < found; ++i)
            if (const Variant& child = children[static_cast<size_t>(i)]; child.vt == VT_I4)
                numbers.push_back(child.lVal);
        return numbers;
    }
    std::wstring Name(LONG id) const { return TextOf(&IAccessible::get_accName, id); }
    std::wstring Value(LONG id) const { return TextOf(&IAccessible::get_accValue, id); }
    std::wstring Description(LONG id) const { return TextOf(&IAccessible::get_accDescription, id); }
    std::wstring Action(LONG id) const { return TextOf(&IAccessible::get_accDefaultAction, id); }
    // -1 when the window does not say.
    LONG Role(LONG id) const { return Number(&IAccessible::get_accRole, id); }
    LONG State(LONG id) const { return Number(&IAccessible::get_accState, id); }

private:
    template <typename Method>
    std::wstring TextOf(Method method, LONG id) const {
        Bstr text;
        (object.Get()->*method)(Child(id), text.Out());
        return std::wstring(text.Wide());
    }
    template <typename Method>
    LONG Number(Method method, LONG id) const {
        Variant number;
        (object.Get()->*method)(Child(id), &number);
        return number.vt == VT_I4 ? number.lVal : -1;
    }

    ComPtr<IAccessible> object;
    const HRESULT opened;
};

} // namespace dax::workbench::selftest
