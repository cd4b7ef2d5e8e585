// What a screen reader gets of a window through the system's accessibility interface.
#pragma once

#include <windows.h>

#include <oleacc.h>

#include <string>
#include <utility>
#include <vector>

namespace dax::workbench::selftest {

class ScreenReader {
public:
    explicit ScreenReader(HWND window)
        : opened(AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT), IID_IAccessible,
                                            reinterpret_cast<void**>(&object))) {}
    ~ScreenReader() {
        if (object) object->Release();
    }
    ScreenReader(const ScreenReader&) = delete;
    ScreenReader& operator=(const ScreenReader&) = delete;

    // Whether the window has an accessible object; if not, no other member may be called.
    HRESULT Opened() const { return opened; }
    IAccessible* operator->() const { return object; }

    static VARIANT Child(LONG id) {
        VARIANT child{};
        child.vt = VT_I4;
        child.lVal = id;
        return child;
    }
    // The numbers of all elements.
    std::vector<LONG> Elements() const {
        LONG count = 0, found = 0;
        object->get_accChildCount(&count);
        std::vector<VARIANT> children(static_cast<size_t>(count) + 1);
        AccessibleChildren(object, 0, count, children.data(), &found);
        std::vector<LONG> numbers;
        for (LONG i = 0; i < found; ++i) {
            VARIANT& child = children[static_cast<size_t>(i)];
            if (child.vt == VT_I4) numbers.push_back(child.lVal);
            VariantClear(&child);
        }
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
        BSTR text = nullptr;
        (object->*method)(Child(id), &text);
        const std::wstring all = text ? std::wstring(text, SysStringLen(text)) : std::wstring();
        SysFreeString(text);
        return all;
    }
    template <typename Method>
    LONG Number(Method method, LONG id) const {
        VARIANT number{};
        (object->*method)(Child(id), &number);
        return number.vt == VT_I4 ? number.lVal : -1;
    }

    IAccessible* object = nullptr;
    const HRESULT opened;
};

} // namespace dax::workbench::selftest
