// The user's mouse and keyboard, in tests.
#pragma once

#include "controls/win32/MessagePump.h"
#include "controls/win32/Windows.h"

#include "../../apps/workbench/selftest/UserInput.h"

#include <gtest/gtest.h>

namespace dax::test {

class UserInput : public workbench::selftest::UserInput {
public:
    explicit UserInput(HWND topLevel) : workbench::selftest::UserInput(topLevel, ProcessPendingMessages) {}

    void Do(const std::function<void(UserInput&)>& script) {
        EXPECT_EQ(Play([&](workbench::selftest::UserInput&) { script(*this); }), 0) << "input that never came";
    }

    // Without any input: pumps until the condition holds.
    static bool Await(const std::function<bool()>& condition) {
        constexpr unsigned patience = 30'000; // milliseconds
        const ULONGLONG end = GetTickCount64() + patience;
        while (!condition()) {
            if (GetTickCount64() > end) return false;
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 100, QS_ALLINPUT);
            ProcessPendingMessages();
        }
        return true;
    }
};

} // namespace dax::test
