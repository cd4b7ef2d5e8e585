// Each control in a host of our own: its place, focus and keys, colours, font and DPI, design mode.
#include "ControlCases.h"

#include <commctrl.h>

#include <cmath>

namespace dax::test {

namespace {

class ControlInHost : public OcxTest, public testing::WithParamInterface<ControlCase> {};

INSTANTIATE_TEST_SUITE_P(All, ControlInHost, testing::ValuesIn(ControlCases()), testing::PrintToStringParamName());

bool IsWithin(HWND window, HWND inner) { return window == inner || IsChild(window, inner); }

int DpiOf(HWND window) {
    const HDC dc = GetDC(window);
    const int dpi = GetDeviceCaps(dc, LOGPIXELSX);
    ReleaseDC(window, dc);
    return dpi;
}

LONG FontHeight(HWND window) {
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)), sizeof font, &font);
    return font.lfHeight;
}

Variant ItalicFont(int points) {
    FONTDESC description{};
    description.cbSizeofstruct = sizeof description;
    description.lpstrName = const_cast<LPWSTR>(L"Tahoma");
    description.cySize.int64 = points * 10000;
    description.sWeight = FW_NORMAL;
    description.fItalic = TRUE;
    ComPtr<IDispatch> font;
    EXPECT_HRESULT_SUCCEEDED(OleCreateFontIndirect(&description, IID_IDispatch, font.OutVoid()));
    return Variant(font.Get());
}

} // namespace

TEST_P(ControlInHost, StandsWhereTheHostPutsItHidesAndComesBack) {
    HostedControl hosted(GetParam());
    hosted.Fill();
    const RECT moved{20, 30, 320, 90}, visible{0, 0, 100, 300}, whole{0, 0, 400, 300}, none{5, 5, 5, 5};
    const auto expectAt = [&](const RECT& expected) {
        const RECT actual = hosted.Place();
        RECT inner{};
        GetWindowRect(hosted.child, &inner);
        EXPECT_TRUE(EqualRect(&actual, &expected)) << actual.left << ' ' << actual.top << ' ' << actual.right;
        EXPECT_TRUE(IsWindowVisible(hosted.window) && IsWindowVisible(hosted.child));
        EXPECT_EQ(inner.right - inner.left, expected.right - expected.left) << "the child is as wide as the control";
    };
    EXPECT_EQ(GetParent(hosted.window), hosted.site.window);
    expectAt(hosted.site.place);
    EXPECT_HRESULT_SUCCEEDED(hosted.inPlace->SetObjectRects(&moved, &visible));
    expectAt(moved);
    RECT region{};
    EXPECT_NE(GetWindowRgnBox(hosted.window, &region), 0) << "only a part of it may be seen";
    EXPECT_EQ(region.right, 80);
    EXPECT_HRESULT_SUCCEEDED(hosted.inPlace->SetObjectRects(&none, &whole));
    EXPECT_HRESULT_SUCCEEDED(hosted.inPlace->SetObjectRects(&moved, &whole));
    expectAt(moved);
    EXPECT_EQ(GetWindowRgnBox(hosted.window, &region), 0);

    EXPECT_TRUE(IsWithin(hosted.window, GetFocus()));
    hosted.DoVerb(OLEIVERB_HIDE);
    EXPECT_FALSE(IsWindowVisible(hosted.window));
    EXPECT_FALSE(IsWithin(hosted.window, GetFocus())) << "what is hidden hears no keys";
    EXPECT_EQ(hosted.site.uiDeactivations, 1);
    hosted.DoVerb(OLEIVERB_SHOW);
    expectAt(moved);
    hosted.DoVerb(OLEIVERB_UIACTIVATE);
    EXPECT_TRUE(IsWithin(hosted.window, GetFocus()));
    EXPECT_HRESULT_SUCCEEDED(hosted.inPlace->InPlaceDeactivate());
    EXPECT_TRUE(hosted.site.deactivations == 1 && hosted.site.uiDeactivations == 2);
    EXPECT_FALSE(IsWindowVisible(hosted.window) || IsChild(hosted.site.window, hosted.window));
    EXPECT_FALSE(IsWithin(hosted.window, GetFocus()));
    hosted.DoVerb(OLEIVERB_SHOW);
    expectAt(hosted.site.place);
    EXPECT_EQ(WindowOf(hosted.control.Get()), hosted.window);

    TestSite second;
    second.place = {30, 40, 130, 90};
    EXPECT_HRESULT_SUCCEEDED(hosted.object->SetClientSite(&second));
    EXPECT_EQ(hosted.site.deactivations, 2);
    EXPECT_EQ(second.activations, 0) << "not before it is shown there";
    EXPECT_HRESULT_SUCCEEDED(hosted.object->DoVerb(OLEIVERB_UIACTIVATE, nullptr, &second, 0, second.window, nullptr));
    EXPECT_EQ(WindowOf(hosted.control.Get()), hosted.window) << "the same window";
    EXPECT_EQ(GetParent(hosted.window), second.window);
    EXPECT_TRUE(second.activeObject && !hosted.site.activeObject);
    second.activeObject.Reset();
    hosted.Close();
    EXPECT_TRUE(hosted.IsGone());
    EXPECT_TRUE(second.deactivations == 1 && second.IsReleased());
}

int CALLBACK CountText(HDC, HANDLETABLE*, const ENHMETARECORD* record, int, LPARAM count) {
    if (record->iType == EMR_EXTTEXTOUTW) ++*reinterpret_cast<int*>(count);
    return 1;
}

TEST_P(ControlInHost, PrintsTextsAsTextsInAnyResolution) {
    HostedControl hosted(GetParam());
    hosted.Fill();
    const auto view = hosted.control.As<IViewObject2>(IID_IViewObject2);
    const auto draw = [&view](HDC dc, const RECTL& bounds, const RECTL* window) {
        EXPECT_HRESULT_SUCCEEDED(
            view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, window, nullptr, 0));
    };
    for (const RECTL& bounds : {RECTL{0, 0, 200, 150}, RECTL{0, 0, 1250, 938}}) { // of 96 and of 600 dots per inch
        const HDC recording = CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
        draw(recording, bounds, nullptr);
        const HENHMETAFILE file = CloseEnhMetaFile(recording);
        int texts = 0;
        EnumEnhMetaFile(nullptr, file, CountText, &texts, nullptr);
        EXPECT_GT(texts, 0);
        EXPECT_LT(GetEnhMetaFileBits(file, 0, nullptr), 100000u);
        DeleteEnhMetaFile(file);
    }
    const RECTL older{0, 0, 5292, 3969};
    const HDC recording = CreateMetaFileW(nullptr);
    SetMapMode(recording, MM_ANISOTROPIC);
    draw(recording, older, &older);
    const HMETAFILE file = CloseMetaFile(recording);
    EXPECT_GT(GetMetaFileBitsEx(file, 0, nullptr), 100u);
    DeleteMetaFile(file);
    constexpr RECTL plane{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, aside{INT_MAX - 5, INT_MIN, INT_MAX, INT_MAX};
    const HDC memory = CreateCompatibleDC(nullptr);
    for (const RECTL& large : {plane, aside}) draw(memory, large, nullptr);
    DeleteDC(memory);
}

TEST_P(ControlInHost, GivesAPictureAndText) {
    HostedControl hosted(GetParam());
    hosted.Fill();
    ComPtr<IDataObject> data;
    ASSERT_HRESULT_SUCCEEDED(hosted.object->GetClipboardData(0, data.Out()));
    hosted.Close(); // the data lives on
    const bool isPanel = std::string(GetParam().name).ends_with("Info");
    size_t formats = 0;
    std::wstring words;
    ComPtr<IEnumFORMATETC> list;
    ASSERT_HRESULT_SUCCEEDED(data->EnumFormatEtc(DATADIR_GET, list.Out()));
    for (FORMATETC format{}; list->Next(1, &format, nullptr) == S_OK;) {
        ++formats;
        STGMEDIUM medium{};
        EXPECT_HRESULT_SUCCEEDED(data->GetData(&format, &medium));
        EXPECT_EQ(medium.tymed, format.tymed);
        if (format.cfFormat == CF_ENHMETAFILE) {
            EXPECT_GT(GetEnhMetaFileBits(medium.hEnhMetaFile, 0, nullptr), 100u);
        }
        if (format.cfFormat == CF_UNICODETEXT) {
            words = static_cast<const wchar_t*>(GlobalLock(medium.hGlobal));
            GlobalUnlock(medium.hGlobal);
        }
        ReleaseStgMedium(&medium);
    }
    EXPECT_EQ(formats, isPanel ? 3u : 2u);
    const wchar_t* const panelText = GetParam().name == std::string("LessonInfo") ? L"4 lessons" : L"reading guide";
    EXPECT_NE(words.find(isPanel ? panelText : L""), std::wstring::npos) << ToUtf8(FromWide(words));
}

TEST_P(ControlInHost, SizesComeBackAndPlacesMayComeFirst) {
    TestSite site;
    const auto object = Create(GetParam()).As<IOleObject>(IID_IOleObject);
    const auto inPlace = object.As<IOleInPlaceObject>(IID_IOleInPlaceObject);
    EXPECT_HRESULT_SUCCEEDED(inPlace->SetObjectRects(&site.place, nullptr)) << "before there is a window";
    SIZEL natural{}, size{5080, 2540}, read{};
    EXPECT_HRESULT_SUCCEEDED(object->GetExtent(DVASPECT_CONTENT, &natural));
    EXPECT_EQ(natural.cx, MulDiv(GetParam().natural.cx, 2540, 96));
    EXPECT_HRESULT_SUCCEEDED(object->SetExtent(DVASPECT_CONTENT, &size));
    EXPECT_HRESULT_SUCCEEDED(object->GetExtent(DVASPECT_CONTENT, &read));
    EXPECT_TRUE(read.cx == size.cx && read.cy == size.cy);
    EXPECT_EQ(object->SetExtent(DVASPECT_ICON, &size), DV_E_DVASPECT);
    DWORD status = 0;
    EXPECT_HRESULT_SUCCEEDED(object->GetMiscStatus(DVASPECT_CONTENT, &status));
    EXPECT_EQ(status, 131473u);
}

TEST_P(ControlInHost, FocusComesAndGoesByTabAndClick) {
    HostedControl first(GetParam(), OLEIVERB_INPLACEACTIVATE),
        second(GetParam(), OLEIVERB_INPLACEACTIVATE, &first.site);
    first.Fill();
    second.Fill();
    EXPECT_EQ(first.site.uiActivations + second.site.uiActivations, 0);
    int activations = 0;
    const auto expectActive = [&](HostedControl& active, HostedControl& other) {
        ++activations;
        EXPECT_EQ(GetFocus(), active.child);
        EXPECT_TRUE(active.site.hasFocus && active.site.activeObject);
        EXPECT_FALSE(other.site.hasFocus || other.site.activeObject);
        EXPECT_EQ(first.site.uiActivations + second.site.uiActivations, activations);
        EXPECT_EQ(first.site.uiDeactivations + second.site.uiDeactivations, activations - 1);
    };
    first.DoVerb(OLEIVERB_UIACTIVATE);
    expectActive(first, second);
    EXPECT_FALSE(first.Press(VK_TAB)) << "Tab is the host's";
    EXPECT_EQ(first.site.keysOffered, 1);
    second.DoVerb(OLEIVERB_UIACTIVATE);
    expectActive(second, first);
    const auto click = [](HostedControl& hosted) {
        RECT inner{};
        GetClientRect(hosted.child, &inner);
        for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP})
            PostMessageW(hosted.child, message, 0, MAKELPARAM(100, inner.bottom / 2));
        PumpPending();
    };
    click(first);
    expectActive(first, second);
    click(second);
    expectActive(second, first);
    SetFocus(nullptr);
    EXPECT_FALSE(second.site.hasFocus);
    SetFocus(first.site.window);
    EXPECT_FALSE(first.site.activeObject) << "the host itself has the focus";
}

TEST_P(ControlInHost, TakesItsOwnKeysAndLeavesTheOthersToTheHost) {
    HostedControl hosted(GetParam());
    hosted.Fill();
    const auto isOwn = [](WPARAM key) {
        const auto& keys = GetParam().keys;
        return std::any_of(keys.begin(), keys.end(), [key](const auto& row) { return row.first == key; });
    };
    for (const auto& [key, event] : GetParam().keys) {
        hosted.heard.clear();
        EXPECT_TRUE(hosted.Press(key)) << key;
        EXPECT_EQ(hosted.heard, event ? std::vector<DISPID>{event} : std::vector<DISPID>()) << key;
    }
    hosted.heard.clear();
    hosted.site.keysOffered = 0;
    int offered = 0;
    for (const WPARAM key : {VK_TAB, VK_RETURN, VK_ESCAPE, VK_F1, VK_F5, VK_DELETE, VK_INSERT}) {
        if (isOwn(key)) continue;
        EXPECT_FALSE(hosted.Press(key)) << key;
        EXPECT_GE(hosted.site.keysOffered, ++offered) << key;
    }
    EXPECT_TRUE(hosted.heard.empty()) << "keys of the host's mean nothing to the control";
    EXPECT_TRUE(IsWithin(hosted.window, GetFocus()));
}

TEST_P(ControlInHost, FollowsTheHostsColoursAndFont) {
    HostedControl hosted(GetParam());
    hosted.Fill();
    hosted.AmbientChanged(DISPID_AMBIENT_BACKCOLOR, 0x0000FF); // red, as the host counts
    const auto picture = Picture(hosted.control.Get(), 300, 200);
    if (GetParam().takesHostColors) {
        const auto red = std::count(picture.begin(), picture.end(), 0xFF0000u);
        EXPECT_GT(red, std::ssize(picture) * 2 / 3);
    }
    hosted.AmbientChanged(DISPID_AMBIENT_FONT, ItalicFont(18));
    EXPECT_EQ(FontHeight(hosted.window), -std::lround(18.0 * DpiOf(hosted.window) / 72));
    EXPECT_EQ(FontHeight(hosted.child), FontHeight(hosted.window));
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    ASSERT_TRUE(SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0));
    const LONG former = std::exchange(metrics.lfMessageFont.lfHeight, -23);
    ASSERT_TRUE(SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof metrics, &metrics, 0));
    hosted.AmbientChanged(DISPID_AMBIENT_FONT, Variant());
    EXPECT_EQ(FontHeight(hosted.window), -23) << "of the system's messages, as the host names none";
    metrics.lfMessageFont.lfHeight = former;
    EXPECT_TRUE(SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof metrics, &metrics, 0));
}

TEST_P(ControlInHost, ShowsASampleInDesignModeAndNothingOfItAfterwards) {
    TestSite site;
    const auto control = Create(GetParam());
    site.ambients[DISPID_AMBIENT_USERMODE] = false;
    const auto object = Place(control.Get(), site);
    const auto sample = Picture(control.Get(), 300, 150);
    site.ambients[DISPID_AMBIENT_USERMODE] = true;
    control.As<IOleControl>(IID_IOleControl)->OnAmbientPropertyChange(DISPID_AMBIENT_USERMODE);
    EXPECT_EQ(Picture(control.Get(), 300, 150) != sample, GetParam().isSampleShown);
    object->Close(OLECLOSE_NOSAVE);
    object->SetClientSite(nullptr);
}

} // namespace dax::test
