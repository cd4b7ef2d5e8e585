// Each control in a host of our own: its place, focus and keys, colours, font and DPI, design mode.
#include "ControlCases.h"

#include <cmath>

namespace dax::test {

namespace {

class ControlInHost : public OcxTest, public testing::WithParamInterface<ControlCase> {};

INSTANTIATE_TEST_SUITE_P(All, ControlInHost, testing::ValuesIn(ControlCases()), testing::PrintToStringParamName());

bool IsWithin(HWND window, HWND inner) { return window == inner || IsChild(window, inner); }

LONG FontHeight(HWND window) {
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)), sizeof font, &font);
    return font.lfHeight;
}

} // namespace

TEST_P(ControlInHost, StandsWhereTheHostPutsItHidesAndComesBack) {
    HostedControl hosted(GetParam());
    hosted.Fill();
    const RECT moved{20, 30, 320, 90}, visible{0, 0, 100, 300}, whole{0, 0, 400, 300}, none{5, 5, 5, 5};
    const auto expectAt = [&](const RECT& expected) {
        RECT actual{}, inner{}, region{};
        GetWindowRect(hosted.child, &inner);
        GetWindowRect(hosted.window, &actual);
        MapWindowPoints(nullptr, hosted.site.window, reinterpret_cast<POINT*>(&actual), 2);
        EXPECT_TRUE(EqualRect(&actual, &expected)) << actual.left << ' ' << actual.top << ' ' << actual.right;
        EXPECT_TRUE(IsWindowVisible(hosted.window) && IsWindowVisible(hosted.child));
        EXPECT_EQ(inner.right - inner.left, expected.right - expected.left) << "the child is as wide as the control";
        return GetWindowRgnBox(hosted.window, &region) ? region.right : 0;
    };
    EXPECT_EQ(expectAt(hosted.site.place), 0);
    EXPECT_HRESULT_SUCCEEDED(hosted.inPlace->SetObjectRects(&moved, &visible));
    EXPECT_EQ(expectAt(moved), 80) << "only a part of it may be seen";
    EXPECT_HRESULT_SUCCEEDED(hosted.inPlace->SetObjectRects(&none, &whole));
    EXPECT_HRESULT_SUCCEEDED(hosted.inPlace->SetObjectRects(&moved, &whole));
    EXPECT_EQ(expectAt(moved), 0);

    EXPECT_TRUE(IsWithin(hosted.window, GetFocus()));
    hosted.DoVerb(OLEIVERB_HIDE);
    EXPECT_FALSE(IsWindowVisible(hosted.window));
    EXPECT_FALSE(IsWithin(hosted.window, GetFocus())) << "what is hidden hears no keys";
    hosted.DoVerb(OLEIVERB_SHOW);
    expectAt(moved);
    hosted.DoVerb(OLEIVERB_UIACTIVATE);
    EXPECT_TRUE(IsWithin(hosted.window, GetFocus()));
    EXPECT_HRESULT_SUCCEEDED(hosted.inPlace->InPlaceDeactivate());
    EXPECT_EQ(hosted.site.calls["OnInPlaceDeactivate"], 1);
    EXPECT_EQ(hosted.site.calls["OnUIDeactivate"], 2);
    EXPECT_FALSE(IsWindowVisible(hosted.window) || IsChild(hosted.site.window, hosted.window));
    hosted.DoVerb(OLEIVERB_SHOW);
    expectAt(hosted.site.place);
}

int CALLBACK CountText(HDC, HANDLETABLE*, const ENHMETARECORD* record, int, LPARAM count) {
    if (record->iType == EMR_EXTTEXTOUTW) ++*reinterpret_cast<int*>(count);
    return 1;
}

TEST_P(ControlInHost, PrintsTextsAsTextsInAnyResolution) {
    HostedControl hosted(GetParam());
    hosted.Fill();
    const auto view = hosted.control.As<IViewObject2>(IID_IViewObject2);
    const auto draw = [&view](HDC dc, const RECTL& bounds, const RECTL* whole = nullptr) {
        EXPECT_HRESULT_SUCCEEDED(
            view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, whole, nullptr, 0));
    };
    for (const RECTL& bounds : {RECTL{0, 0, 200, 150}, RECTL{0, 0, 1250, 938}}) { // of 96 and of 600 dots per inch
        const HDC recording = CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
        draw(recording, bounds);
        const HENHMETAFILE file = CloseEnhMetaFile(recording);
        int texts = 0;
        EnumEnhMetaFile(nullptr, file, CountText, &texts, nullptr);
        EXPECT_GT(texts, 0);
        EXPECT_LT(GetEnhMetaFileBits(file, 0, nullptr), 100000u);
        DeleteEnhMetaFile(file);
    }
    const RECTL older{0, 0, 5292, 3969};
    const HDC recording = CreateMetaFileW(nullptr), memory = CreateCompatibleDC(nullptr);
    SetMapMode(recording, MM_ANISOTROPIC);
    draw(recording, older, &older);
    const HMETAFILE file = CloseMetaFile(recording);
    EXPECT_GT(GetMetaFileBitsEx(file, 0, nullptr), 100u);
    DeleteMetaFile(file);
    draw(memory, {INT_MIN, INT_MIN, INT_MAX, INT_MAX});
    draw(memory, {INT_MAX - 5, INT_MIN, INT_MAX, INT_MAX});
    DeleteDC(memory);
}

TEST_P(ControlInHost, GivesAPictureAndText) {
    HostedControl hosted(GetParam());
    hosted.Fill();
    ComPtr<IDataObject> data;
    ASSERT_HRESULT_SUCCEEDED(hosted.object->GetClipboardData(0, data.Out()));
    hosted.Close(); // the data lives on
    STGMEDIUM medium{};
    FORMATETC format{CF_ENHMETAFILE, nullptr, DVASPECT_CONTENT, -1, TYMED_ENHMF};
    ASSERT_HRESULT_SUCCEEDED(data->GetData(&format, &medium));
    EXPECT_GT(GetEnhMetaFileBits(medium.hEnhMetaFile, 0, nullptr), 100u);
    ReleaseStgMedium(&medium);
    format.cfFormat = CF_METAFILEPICT;
    format.tymed = TYMED_MFPICT;
    EXPECT_HRESULT_SUCCEEDED(data->GetData(&format, &medium));
    ReleaseStgMedium(&medium);
    format.cfFormat = CF_UNICODETEXT;
    format.tymed = TYMED_HGLOBAL;
    const std::string name = GetParam().name;
    EXPECT_EQ(data->GetData(&format, &medium), name.ends_with("Info") ? S_OK : DV_E_FORMATETC);
    if (!medium.hGlobal) return;
    const std::wstring words = static_cast<const wchar_t*>(GlobalLock(medium.hGlobal));
    EXPECT_NE(words.find(name == "LessonInfo" ? L"4 lessons" : L"reading guide"), std::wstring::npos);
    ReleaseStgMedium(&medium);
}

TEST_P(ControlInHost, IsActivatedByAClickAndLeavesOthersKeysToTheHost) {
    HostedControl hosted(GetParam(), OLEIVERB_INPLACEACTIVATE);
    hosted.Fill();
    EXPECT_FALSE(hosted.site.activeObject || hosted.site.hasFocus);
    RECT inner{};
    GetClientRect(hosted.child, &inner);
    for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP})
        PostMessageW(hosted.child, message, 0, MAKELPARAM(100, inner.bottom / 2));
    PumpPending();
    EXPECT_EQ(GetFocus(), hosted.child);
    EXPECT_TRUE(hosted.site.activeObject && hosted.site.hasFocus);
    hosted.Press(VK_ESCAPE); // a list that the click has opened

    hosted.Fill();
    for (const auto& [key, event] : GetParam().keys) {
        hosted.heard.clear();
        EXPECT_TRUE(hosted.Press(key)) << key;
        EXPECT_EQ(hosted.heard, event ? std::vector<DISPID>{event} : std::vector<DISPID>()) << key;
    }
    hosted.heard.clear();
    int& offered = hosted.site.calls["TranslateAccelerator"];
    for (const WPARAM key : {VK_TAB, VK_RETURN, VK_ESCAPE, VK_F1, VK_F5, VK_DELETE, VK_INSERT}) {
        const auto isIt = [key](const auto& row) { return row.first == key; };
        if (std::ranges::any_of(GetParam().keys, isIt)) continue;
        const int before = offered;
        EXPECT_FALSE(hosted.Press(key)) << key;
        EXPECT_GT(offered, before) << key;
    }
    EXPECT_TRUE(hosted.heard.empty()) << "keys of the host's mean nothing to the control";
    EXPECT_EQ(GetFocus(), hosted.child);
    SetFocus(hosted.site.window);
    EXPECT_FALSE(hosted.site.activeObject || hosted.site.hasFocus);
    EXPECT_EQ(hosted.site.calls["OnUIDeactivate"], 1);
}

TEST_P(ControlInHost, FollowsTheHostsColoursAndFont) {
    HostedControl hosted(GetParam());
    hosted.Fill();
    hosted.SetAmbient(DISPID_AMBIENT_BACKCOLOR, 0x0000FF); // red, as the host counts
    if (GetParam().takesHostColors) {
        const auto picture = hosted.Picture(300, 200);
        EXPECT_GT(std::ranges::count(picture, 0xFF0000u), std::ssize(picture) * 2 / 3);
    }
    FONTDESC description{sizeof description, const_cast<LPWSTR>(L"Tahoma"), {}, FW_NORMAL, 0, TRUE, FALSE, FALSE};
    description.cySize.int64 = 18 * 10000; // points
    ComPtr<IDispatch> font;
    ASSERT_HRESULT_SUCCEEDED(OleCreateFontIndirect(&description, IID_IDispatch, font.OutVoid()));
    hosted.SetAmbient(DISPID_AMBIENT_FONT, font);
    const HDC dc = GetDC(hosted.window);
    EXPECT_EQ(FontHeight(hosted.window), -std::lround(18.0 * GetDeviceCaps(dc, LOGPIXELSX) / 72));
    EXPECT_EQ(FontHeight(hosted.child), FontHeight(hosted.window));
    ReleaseDC(hosted.window, dc);
}

TEST_P(ControlInHost, ShowsASampleInDesignModeAndNothingOfItAfterwards) {
    HostedControl hosted(GetParam(), {});
    SIZEL natural{};
    EXPECT_HRESULT_SUCCEEDED(hosted.object->GetExtent(DVASPECT_CONTENT, &natural));
    EXPECT_EQ(natural.cx, MulDiv(GetParam().natural.cx, 2540, 96));
    EXPECT_HRESULT_SUCCEEDED(hosted.inPlace->SetObjectRects(&hosted.site.place, nullptr)) << "before there is a window";
    hosted.site.ambients[DISPID_AMBIENT_USERMODE] = false;
    hosted.Place(OLEIVERB_INPLACEACTIVATE);
    const auto sample = hosted.Picture(300, 150);
    hosted.SetAmbient(DISPID_AMBIENT_USERMODE, true);
    EXPECT_EQ(hosted.Picture(300, 150) != sample, GetParam().isSampleShown);
}

} // namespace dax::test
