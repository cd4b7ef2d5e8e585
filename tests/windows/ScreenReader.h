// What a screen reader gets of a window through the system's accessibility interface.
#pragma once

#include "controls/win32/Windows.h"

#include "../../apps/workbench/selftest/ScreenReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dax::test {

class ScreenReader : public workbench::selftest::ScreenReader {
public:
    explicit ScreenReader(HWND window) : workbench::selftest::ScreenReader((CoInitialize(nullptr), window)) {
        EXPECT_EQ(Opened(), S_OK);
    }

    // The first element of that name; 0 for none.
    LONG Find(TextView name) const {
        for (const LONG each : Elements())
            if (Name(each) == ToUtf8(name)) return each;
        return 0;
    }
    std::string Name(LONG id) const { return Utf8(workbench::selftest::ScreenReader::Name(id)); }
    HRESULT Act(LONG id) const { return (*this)->accDoDefaultAction(Child(id)); }
    HRESULT Select(LONG id, LONG flags = SELFLAG_TAKESELECTION) const { return (*this)->accSelect(flags, Child(id)); }
    LONG Step(LONG from, LONG direction) const {
        VARIANT found{};
        return (*this)->accNavigate(direction, Child(from), &found) == S_OK ? found.lVal : 0;
    }
    // The place of an element, and the element at a place, as reported.
    RECT Place(LONG id) const {
        LONG left, top, width, height;
        (*this)->accLocation(&left, &top, &width, &height, Child(id));
        return {left, top, left + width, top + height};
    }
    LONG At(POINT point) const {
        VARIANT found{};
        return (*this)->accHitTest(point.x, point.y, &found) == S_OK ? found.lVal : -1;
    }
    // Its level, if it has one, its name, and its states.
    std::string Describe(LONG id) const {
        static constexpr std::pair<LONG, const char*> words[] = {
            {STATE_SYSTEM_EXPANDED, " open"},     {STATE_SYSTEM_COLLAPSED, " closed"},
            {STATE_SYSTEM_SELECTED, " selected"}, {STATE_SYSTEM_FOCUSED, " focused"},
            {STATE_SYSTEM_CHECKED, " checked"},   {STATE_SYSTEM_INVISIBLE, " hidden"},
            {STATE_SYSTEM_OFFSCREEN, " beyond"}};
        std::string text = Utf8(Value(id)) + " " + Name(id);
        for (const auto& [bit, word] : words)
            if (State(id) & bit) text += word;
        return text;
    }
    std::vector<std::string> DescribeAll() const {
        std::vector<std::string> all;
        for (const LONG each : Elements()) all.push_back(Describe(each));
        return all;
    }

private:
    static std::string Utf8(const std::wstring& text) { return ToUtf8(FromWide(text.c_str())); }
};

// The accessibility events of this process while it exists: the event, and the name of its element.
class WinEvents {
public:
    explicit WinEvents(const ScreenReader& reader) : reader(reader) { current = this; }
    ~WinEvents() { UnhookWinEvent(hook); }
    WinEvents(const WinEvents&) = delete;
    WinEvents& operator=(const WinEvents&) = delete;

    std::string received;

private:
    static void CALLBACK Record(HWINEVENTHOOK, DWORD event, HWND, LONG object, LONG child, DWORD, DWORD) {
        if (object != static_cast<LONG>(OBJID_CLIENT)) return;
        const char* const word = event == EVENT_OBJECT_FOCUS         ? "focus "
                                 : event == EVENT_OBJECT_STATECHANGE ? "state "
                                 : event == EVENT_OBJECT_NAMECHANGE  ? "name "
                                                                     : nullptr;
        if (word && child) current->received += word + current->reader.Name(child) + ", ";
        if (event == EVENT_OBJECT_REORDER) current->received += "order, ";
    }

    const ScreenReader& reader;
    HWINEVENTHOOK hook = SetWinEventHook(EVENT_OBJECT_CREATE, EVENT_OBJECT_NAMECHANGE, nullptr, Record,
                                         GetCurrentProcessId(), GetCurrentThreadId(), WINEVENT_OUTOFCONTEXT);
    static inline WinEvents* current = nullptr;
};

} // namespace dax::test
