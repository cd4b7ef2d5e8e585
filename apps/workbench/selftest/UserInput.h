// A user's mouse and keyboard: real input of the system, given from a second thread while the first one pumps its
// messages, because windows track a press in message loops of their own. Each step waits until the thread has got the
// input and has come back for more, so that nothing depends on speed. Times of clicks are our own as well.
#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <thread>

namespace dax::workbench::selftest {

class UserInput {
public:
    // `topLevel` is brought to the foreground. Points are screen coordinates. `pump` dispatches what waits.
    UserInput(HWND topLevel, std::function<void()> pump) : host(topLevel), processPending(std::move(pump)) {
        SetForegroundWindow(host);
        processPending();
        received = 0;
        hook = SetWindowsHookExW(WH_GETMESSAGE, Listen, nullptr, GetCurrentThreadId());
    }
    ~UserInput() { UnhookWindowsHookEx(hook); }
    UserInput(const UserInput&) = delete;
    UserInput& operator=(const UserInput&) = delete;

    // Plays the script and answers when it and all that it caused is done: how many of its inputs never came.
    int Play(const std::function<void(UserInput&)>& script) {
        std::atomic<bool> isDone = false;
        const DWORD caller = GetCurrentThreadId();
        std::thread player([&] {
            script(*this);
            isDone = true;
            PostThreadMessageW(caller, WM_NULL, 0, 0);
        });
        while (!isDone) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 100, QS_ALLINPUT);
            processPending();
        }
        player.join();
        processPending();
        return lost.exchange(0);
    }

    // In scripts only.
    void Move(POINT to) {
        POINT now;
        GetCursorPos(&now);
        if (now.x == to.x && now.y == to.y) return;
        const int before = received;
        SetCursorPos(to.x, to.y);
        Wait(before);
    }
    void Button(DWORD flag) {
        INPUT input{};
        input.type = INPUT_MOUSE;
        input.mi.dwFlags = flag;
        Send(input);
    }
    void Press(POINT at) {
        Move(at);
        time += 10'000; // never the second half of a double click
        Button(MOUSEEVENTF_LEFTDOWN);
    }
    void Release() { Button(MOUSEEVENTF_LEFTUP); }
    void Click(POINT at) {
        Press(at);
        Release();
    }
    void RightClick(POINT at) {
        Move(at);
        time += 10'000;
        Button(MOUSEEVENTF_RIGHTDOWN);
        Button(MOUSEEVENTF_RIGHTUP);
    }
    void DoubleClick(POINT at) {
        Click(at);
        Button(MOUSEEVENTF_LEFTDOWN);
        Release();
    }
    void KeyDown(WORD key) { Key(key, 0); }
    void KeyUp(WORD key) { Key(key, KEYEVENTF_KEYUP); }
    void Type(WORD key) {
        KeyDown(key);
        KeyUp(key);
    }
    bool Until(const std::function<bool()>& condition) {
        const ULONGLONG end = GetTickCount64() + timeLimit;
        while (!condition()) {
            if (GetTickCount64() > end) {
                ++lost;
                return false;
            }
            Sleep(1);
        }
        return true;
    }

private:
    static constexpr unsigned timeLimit = 30'000; // milliseconds

    static LRESULT CALLBACK Listen(int code, WPARAM wParam, LPARAM lParam) {
        if (code == HC_ACTION && wParam == PM_REMOVE) {
            const UINT message = reinterpret_cast<const MSG*>(lParam)->message;
            if ((message >= WM_MOUSEFIRST && message <= WM_MOUSELAST) ||
                (message >= WM_NCMOUSEMOVE && message <= WM_NCXBUTTONDBLCLK) ||
                (message >= WM_KEYDOWN && message <= WM_KEYUP) || message == WM_SYSKEYDOWN)
                ++received;
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }
    void Key(WORD key, DWORD flag) {
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = key;
        input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
        const bool isExtended = key >= VK_PRIOR && key <= VK_DELETE;
        input.ki.dwFlags = flag | (isExtended ? KEYEVENTF_EXTENDEDKEY : 0);
        Send(input);
    }
    void Send(INPUT& input) {
        const int before = received;
        time += 10;
        (input.type == INPUT_MOUSE ? input.mi.time : input.ki.time) = time;
        SendInput(1, &input, sizeof input);
        // The focused window may be destroyed when a key comes up, and then no window receives it.
        if (input.type == INPUT_MOUSE || !(input.ki.dwFlags & KEYEVENTF_KEYUP))
            Wait(before);
        else
            Flush();
    }
    void Wait(int before) {
        if (Until([before] { return received > before; })) Flush();
    }
    void Flush() {
        DWORD_PTR result;
        SendMessageTimeoutW(host, WM_NULL, 0, 0, SMTO_NORMAL, timeLimit, &result);
    }

    HWND host;
    const std::function<void()> processPending;
    HHOOK hook = nullptr;
    static inline DWORD time = GetTickCount(); // continues from one to the next, so that no two clicks are too near
    std::atomic<int> lost = 0;
    static inline std::atomic<int> received = 0;
};

} // namespace dax::workbench::selftest
