// The controls in the system's own container, as many programs use it.
#include "Connector.h"
#include "OcxHost.h"

namespace dax::test {

namespace {

// The system's container library, which has no import library everywhere.
struct Container {
    HMODULE library = LoadLibraryW(L"atl.dll");
    template <typename Function>
    Function Find(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    }
};

class AtlContainerTest : public OcxTest {
protected:
    static void SetUpTestSuite() {
        OcxTest::SetUpTestSuite();
        static const Container container;
        ASSERT_TRUE(container.library);
        const auto init = container.Find<BOOL(WINAPI*)()>("AtlAxWinInit");
        getControl = container.Find<HRESULT(WINAPI*)(HWND, IUnknown**)>("AtlAxGetControl");
        ASSERT_TRUE(init && getControl && init());
        for (const wchar_t* name : Controls) DestroyWindow(Host(name));
        PumpPending();
    }
    static HWND Host(const wchar_t* name) {
        return CreateWindowExW(0, L"AtlAxWin", name, WS_POPUP | WS_VISIBLE, 0, 0, 300, 120, nullptr, nullptr,
                               GetModuleHandleW(nullptr), nullptr);
    }
    static ComPtr<IDispatch> ControlIn(HWND host) {
        ComPtr<IUnknown> control;
        if (FAILED(getControl(host, control.Out()))) return {};
        return Query<IDispatch>(control.Get(), IID_IDispatch);
    }
    static inline HRESULT(WINAPI* getControl)(HWND, IUnknown**) = nullptr;
};

} // namespace

TEST_F(AtlContainerTest, HoldsResizesAndDropsEachControl) {
    for (const wchar_t* name : Controls) {
        const HWND host = Host(name);
        ASSERT_TRUE(host);
        const HWND inner = GetWindow(host, GW_CHILD);
        ASSERT_TRUE(inner);
        RECT place{};
        GetClientRect(inner, &place);
        EXPECT_EQ(place.right, 300);
        MoveWindow(host, 0, 0, 200, 80, TRUE);
        GetClientRect(inner, &place);
        EXPECT_TRUE(place.right == 200 && place.bottom == 80);
        EXPECT_TRUE(ControlIn(host));
        DestroyWindow(host);
        EXPECT_TRUE(PumpUntil([inner] { return !IsWindow(inner); }));
    }
}

TEST_F(AtlContainerTest, TheValidatorShowsItsOutcome) {
    const HWND host = Host(Controls[0]);
    {
        const auto validator = ControlIn(host);
        ASSERT_TRUE(validator);
        Call(validator.Get(), L"ValidateDataConnection", {Variant(u""), Variant(u""), Variant(true)});
        wchar_t text[200] = {};
        GetWindowTextW(GetWindow(host, GW_CHILD), text, 200);
        EXPECT_EQ(FromWide(std::wstring_view(text)),
                  u"no file selected\nYou must select a valid velmora database before using the program.");
    }
    DestroyWindow(host);
}

TEST_F(AtlContainerTest, ThePickerTellsOfAChoiceByTheUser) {
    const Connector connector;
    const HWND host = Host(Controls[1]);
    {
        const auto picker = ControlIn(host);
        ASSERT_TRUE(picker);
        Call(picker.Get(), L"LoadPicker",
             {Variant(connector.ConnectionString()), Variant(u"admin"), Variant(u"course")});
        std::vector<Text> heard;
        Sink sink([&](DISPID, const std::vector<Text>& arguments) { heard = arguments; });
        sink.Connect(picker.Get());
        const HWND list = FindWindowExW(GetWindow(host, GW_CHILD), nullptr, L"COMBOBOX", nullptr);
        SendMessageW(list, WM_KEYDOWN, VK_DOWN, 1);
        const std::vector<Text> expected{u"other", u"login2", u"secret2", u"Ünother", u"the second"};
        EXPECT_EQ(heard, expected);
        sink.Disconnect();
    }
    DestroyWindow(host);
}

} // namespace dax::test
