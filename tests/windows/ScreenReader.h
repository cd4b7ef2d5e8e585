// What a screen reader gets of a window through the system's accessibility interface.
#pragma once

#include "controls/win32/Windows.h"

#include "../../apps/workbench/selftest/ScreenReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace dax::test {

// COM as long as it lives.
struct ComApartment {
    ComApartment() { CoInitialize(nullptr); }
    ~ComApartment() { CoUninitialize(); }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
};

class ScreenReader : ComApartment, public workbench::selftest::ScreenReader {
public:
    explicit ScreenReader(HWND window) : workbench::selftest::ScreenReader(window) { EXPECT_EQ(Opened(), S_OK); }

    // Asked twice: as a list, and one step after the other.
    std::vector<LONG> Elements() const {
        const std::vector<LONG> listed = workbench::selftest::ScreenReader::Elements();
        std::vector<LONG> walked;
        VARIANT at = Child(CHILDID_SELF), next{};
        for (LONG way = NAVDIR_FIRSTCHILD; (*this)->accNavigate(way, at, &next) == S_OK; way = NAVDIR_NEXT)
            walked.push_back((at = next).lVal);
        EXPECT_EQ(listed, walked);
        return listed;
    }
    // The first element of that name; 0 for none.
    LONG Find(TextView name) const {
        for (const LONG each : Elements())
            if (Name(each) == ToUtf8(name)) return each;
        return 0;
    }

    std::string Name(LONG id) const { return Utf8(workbench::selftest::ScreenReader::Name(id)); }
    std::string Value(LONG id) const { return Utf8(workbench::selftest::ScreenReader::Value(id)); }
    std::string Description(LONG id) const { return Utf8(workbench::selftest::ScreenReader::Description(id)); }
    std::string Action(LONG id) const { return Utf8(workbench::selftest::ScreenReader::Action(id)); }
    HRESULT Act(LONG id) const { return (*this)->accDoDefaultAction(Child(id)); }
    HRESULT Select(LONG id, LONG flags = SELFLAG_TAKESELECTION) const { return (*this)->accSelect(flags, Child(id)); }
    LONG Step(LONG from, LONG direction) const {
        VARIANT found{};
        return (*this)->accNavigate(direction, Child(from), &found) == S_OK ? found.lVal : 0;
    }
    // Where the system says that the element is, and what it says is there.
    RECT Place(LONG id) const {
        LONG left, top, width, height;
        (*this)->accLocation(&left, &top, &width, &height, Child(id));
        return {left, top, left + width, top + height};
    }
    LONG At(POINT point) const {
        VARIANT found{};
        return (*this)->accHitTest(point.x, point.y, &found) == S_OK ? found.lVal : -1;
    }
    std::string StateWords(LONG id) const {
        static constexpr std::pair<LONG, const char*> words[] = {
            {STATE_SYSTEM_EXPANDED, " open"},     {STATE_SYSTEM_COLLAPSED, " closed"},
            {STATE_SYSTEM_SELECTED, " selected"}, {STATE_SYSTEM_FOCUSED, " focused"},
            {STATE_SYSTEM_CHECKED, " checked"},   {STATE_SYSTEM_INVISIBLE, " hidden"},
            {STATE_SYSTEM_OFFSCREEN, " beyond"},  {STATE_SYSTEM_READONLY, " fixed"}};
        std::string text;
        for (const auto& [bit, word] : words)
            if (State(id) & bit) text += word;
        return text;
    }

private:
    static std::string Utf8(const std::wstring& text) { return ToUtf8(FromWide(text.c_str())); }
};

// What this process tells screen readers while it lives: the event, and the name of what it is about.
class HeardEvents {
public:
    explicit HeardEvents(const ScreenReader& reader) : asked(reader) {
        current = this;
        hook = SetWinEventHook(EVENT_OBJECT_CREATE, EVENT_OBJECT_NAMECHANGE, nullptr, Hear, GetCurrentProcessId(),
                               GetCurrentThreadId(), WINEVENT_OUTOFCONTEXT);
        EXPECT_NE(hook, nullptr);
    }
    ~HeardEvents() {
        UnhookWinEvent(hook);
        current = nullptr;
    }
    HeardEvents(const HeardEvents&) = delete;
    HeardEvents& operator=(const HeardEvents&) = delete;

    std::string heard;

private:
    static void CALLBACK Hear(HWINEVENTHOOK, DWORD event, HWND, LONG object, LONG child, DWORD, DWORD) {
        static constexpr std::pair<DWORD, const char*> words[] = {{EVENT_OBJECT_DESTROY, "gone"},
                                                                  {EVENT_OBJECT_REORDER, "order"},
                                                                  {EVENT_OBJECT_FOCUS, "focus"},
                                                                  {EVENT_OBJECT_SELECTION, "select"},
                                                                  {EVENT_OBJECT_SELECTIONADD, "add"},
                                                                  {EVENT_OBJECT_SELECTIONREMOVE, "remove"},
                                                                  {EVENT_OBJECT_SELECTIONWITHIN, "within"},
                                                                  {EVENT_OBJECT_STATECHANGE, "state"},
                                                                  {EVENT_OBJECT_NAMECHANGE, "name"}};
        if (!current || object != static_cast<LONG>(OBJID_CLIENT)) return;
        for (const auto& [number, word] : words)
            if (number == event && (child || event == EVENT_OBJECT_REORDER || event == EVENT_OBJECT_SELECTIONWITHIN))
                current->heard += std::string(word) + (child ? " " + current->asked.Name(child) : "") + ", ";
    }

    const ScreenReader& asked;
    HWINEVENTHOOK hook;
    static inline HeardEvents* current = nullptr;
};

} // namespace dax::test
