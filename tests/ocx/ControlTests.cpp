// Each control in a host of our own: its place, focus, keys and pictures, what the host keeps of it, and every way to
// release it, inside events and calls too.
#include "ControlHost.h"

#include <algorithm>
#include <cmath>

namespace dax::test {

namespace {

class ControlTest : public OcxTest, public testing::WithParamInterface<ControlCase> {};

INSTANTIATE_TEST_SUITE_P(All, ControlTest, testing::ValuesIn(ControlCases()), testing::PrintToStringParamName());

LONG FontHeight(HWND window) {
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)), sizeof font, &font);
    return font.lfHeight;
}

int CALLBACK CountText(HDC, HANDLETABLE*, const ENHMETARECORD* record, int, LPARAM count) {
    if (record->iType == EMR_EXTTEXTOUTW) ++*reinterpret_cast<int*>(count);
    return 1;
}

// A host's bag, which keeps what is written.
class TestBag final : public StackObject<Implements<IPropertyBag, IID_IPropertyBag>> {
public:
    std::map<std::wstring, Variant> values;

    STDMETHODIMP Read(LPCOLESTR name, VARIANT* value, IErrorLog*) override {
        return values.contains(name) ? VariantCopy(value, &values[name]) : E_INVALIDARG;
    }
    STDMETHODIMP Write(LPCOLESTR name, VARIANT* value) override { return VariantCopy(&values[name], value); }
};

bool Has(ObjectRef control, const std::pair<const wchar_t*, Variant>& property) {
    const Variant value = Call(control, property.first);
    return value.vt == property.second.vt && value.Long() == property.second.Long();
}

} // namespace

TEST_P(ControlTest, IsPlacedHiddenAndShownAgain) {
    HostedControl hosted(GetParam());
    hosted.Fill();
    const RECT moved{20, 30, 320, 90}, visible{0, 0, 100, 300}, whole{0, 0, 400, 300};
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
    EXPECT_HRESULT_SUCCEEDED(hosted.inPlace->SetObjectRects(&moved, &whole));
    EXPECT_EQ(expectAt(moved), 0);

    EXPECT_EQ(GetFocus(), hosted.child);
    hosted.DoVerb(OLEIVERB_HIDE);
    EXPECT_FALSE(IsWindowVisible(hosted.window));
    EXPECT_NE(GetFocus(), hosted.child) << "a hidden control receives no keys";
    hosted.DoVerb(OLEIVERB_SHOW);
    expectAt(moved);
    hosted.DoVerb(OLEIVERB_UIACTIVATE);
    EXPECT_EQ(GetFocus(), hosted.child);
    EXPECT_HRESULT_SUCCEEDED(hosted.inPlace->InPlaceDeactivate());
    EXPECT_EQ(hosted.site.calls["OnInPlaceDeactivate"], 1);
    EXPECT_EQ(hosted.site.calls["OnUIDeactivate"], 2);
    EXPECT_FALSE(IsWindowVisible(hosted.window) || IsChild(hosted.site.window, hosted.window));
    hosted.DoVerb(OLEIVERB_SHOW);
    expectAt(hosted.site.place);
}

TEST_P(ControlTest, GivesTextsAndPicturesThatArePrintedInAnyResolution) {
    HostedControl hosted(GetParam());
    hosted.Fill();
    const auto view = hosted.control.As<IViewObject2>(IID_IViewObject2);
    const auto draw = [&view](HDC dc, const RECTL& bounds, const RECTL* whole) {
        EXPECT_HRESULT_SUCCEEDED(
            view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, whole, nullptr, 0));
    };
    const auto expectTexts = [](HENHMETAFILE file) {
        int texts = 0;
        EnumEnhMetaFile(nullptr, file, CountText, &texts, nullptr);
        EXPECT_GT(texts, 0);
        EXPECT_LT(GetEnhMetaFileBits(file, 0, nullptr), 100000u);
    };
    const HDC recording = CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr), older = CreateMetaFileW(nullptr);
    draw(recording, {0, 0, 1250, 938}, nullptr); // of 600 dots per inch
    const HENHMETAFILE file = CloseEnhMetaFile(recording);
    expectTexts(file);
    DeleteEnhMetaFile(file);
    SetMapMode(older, MM_ANISOTROPIC);
    const RECTL whole{0, 0, 5292, 3969};
    draw(older, whole, &whole);
    const HMETAFILE olderFile = CloseMetaFile(older);
    EXPECT_GT(GetMetaFileBitsEx(olderFile, 0, nullptr), 100u);
    DeleteMetaFile(olderFile);

    ComPtr<IDataObject> data;
    ASSERT_HRESULT_SUCCEEDED(hosted.object->GetClipboardData(0, data.Out()));
    hosted.Close(); // the data object still exists
    const auto get = [&](CLIPFORMAT kind, DWORD medium) {
        FORMATETC format{kind, nullptr, DVASPECT_CONTENT, -1, medium};
        STGMEDIUM given{};
        EXPECT_EQ(data->GetData(&format, &given), data->QueryGetData(&format));
        return given;
    };
    STGMEDIUM picture = get(CF_ENHMETAFILE, TYMED_ENHMF), olderPicture = get(CF_METAFILEPICT, TYMED_MFPICT),
              text = get(CF_UNICODETEXT, TYMED_HGLOBAL);
    expectTexts(picture.hEnhMetaFile);
    EXPECT_TRUE(olderPicture.hMetaFilePict);
    const std::string name = GetParam().name;
    const std::wstring words = text.hGlobal ? static_cast<const wchar_t*>(GlobalLock(text.hGlobal)) : L"";
    const wchar_t* const expected = name == "LessonInfo" ? L"4 lessons" : name == "LockInfo" ? L"reading guide" : L"";
    EXPECT_NE(words.find(expected), std::wstring::npos) << ToUtf8(FromWide(words));
    for (STGMEDIUM* given : {&picture, &olderPicture, &text}) ReleaseStgMedium(given);
}

TEST_P(ControlTest, IsActivatedByAClickAndLeavesOthersKeysToTheHost) {
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
        hosted.received.clear();
        EXPECT_TRUE(hosted.Press(key)) << key;
        EXPECT_EQ(hosted.received, event ? std::vector<DISPID>{event} : std::vector<DISPID>()) << key;
    }
    hosted.received.clear();
    int& offered = hosted.site.calls["TranslateAccelerator"];
    for (const WPARAM key : {VK_TAB, VK_RETURN, VK_ESCAPE, VK_F1, VK_F5, VK_DELETE, VK_INSERT}) {
        const auto isIt = [key](const auto& row) { return row.first == key; };
        if (std::ranges::any_of(GetParam().keys, isIt)) continue;
        const int before = offered;
        EXPECT_FALSE(hosted.Press(key)) << key;
        EXPECT_GT(offered, before) << key;
    }
    EXPECT_TRUE(hosted.received.empty()) << "keys of the host's mean nothing to the control";
    EXPECT_EQ(GetFocus(), hosted.child);
    SetFocus(hosted.site.window);
    EXPECT_FALSE(hosted.site.activeObject || hosted.site.hasFocus);
    EXPECT_EQ(hosted.site.calls["OnUIDeactivate"], 1);
}

TEST_P(ControlTest, FollowsTheHostsColoursAndFont) {
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

TEST_P(ControlTest, ShowsASampleInDesignModeAndNothingOfItAfterwards) {
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

TEST_P(ControlTest, IsKeptInBagStreamAndStorage) {
    enum Form { Bag, Stream, Storage };
    const auto& kept = GetParam().kept;
    TestBag bag;
    ComPtr<IStream> stream;
    ComPtr<IStorage> storage;
    ASSERT_HRESULT_SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Out()));
    ASSERT_HRESULT_SUCCEEDED(StgCreateDocfile(
        nullptr, STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_DELETEONRELEASE, 0, storage.Out()));
    const auto inBag = [](ObjectRef control) { return control.As<IPersistPropertyBag>(IID_IPersistPropertyBag); };
    const auto inStream = [](ObjectRef control) { return control.As<IPersistStreamInit>(IID_IPersistStreamInit); };
    const auto inStorage = [](ObjectRef control) { return control.As<IPersistStorage>(IID_IPersistStorage); };
    const auto load = [&](Form form, ObjectRef control) {
        EXPECT_HRESULT_SUCCEEDED(stream->Seek({}, STREAM_SEEK_SET, nullptr));
        return form == Bag      ? inBag(control)->Load(&bag, nullptr)
               : form == Stream ? inStream(control)->Load(stream.Get())
                                : inStorage(control)->Load(storage.Get());
    };
    for (const Form form : {Bag, Stream, Storage}) {
        SCOPED_TRACE(form);
        HostedControl first(GetParam(), OLEIVERB_INPLACEACTIVATE), second(GetParam(), {});
        first.object->Close(OLECLOSE_SAVEIFDIRTY);
        EXPECT_EQ(first.site.calls["SaveObject"], 0);
        ComPtr<IConnectionPoint> changes;
        DWORD cookie = 0;
        first.control.As<IConnectionPointContainer>(IID_IConnectionPointContainer)
            ->FindConnectionPoint(IID_IPropertyNotifySink, changes.Out());
        EXPECT_HRESULT_SUCCEEDED(changes->Advise(static_cast<IDispatch*>(&first.site), &cookie));
        for (const auto& property : kept) {
            EXPECT_FALSE(Has(first.control, property)) << "is the default";
            Put(first.control, property.first, property.second);
            DISPID dispid = DISPID_UNKNOWN;
            EXPECT_HRESULT_SUCCEEDED(FindMember(first.control.Get(), property.first, dispid));
            EXPECT_EQ(first.site.calls["OnChanged " + std::to_string(dispid)], 1);
        }
        EXPECT_EQ(inStream(first.control)->IsDirty(), kept.empty() ? S_FALSE : S_OK);
        first.object->Close(OLECLOSE_SAVEIFDIRTY);
        EXPECT_EQ(first.site.calls["SaveObject"], kept.empty() ? 0 : 1);
        EXPECT_HRESULT_SUCCEEDED(form == Bag      ? inBag(first.control)->Save(&bag, TRUE, TRUE)
                                 : form == Stream ? inStream(first.control)->Save(stream.Get(), TRUE)
                                                  : inStorage(first.control)->Save(storage.Get(), FALSE));
        if (form == Storage) inStorage(first.control)->SaveCompleted(nullptr);
        EXPECT_EQ(inStream(first.control)->IsDirty(), S_FALSE);
        if (form == Stream) {
            ULARGE_INTEGER size{}, written{};
            inStream(first.control)->GetSizeMax(&size);
            stream->Seek({}, STREAM_SEEK_CUR, &written);
            stream->Write("after", 5, nullptr);
            EXPECT_EQ(size.QuadPart, written.QuadPart);
        }

        second.object->SetClientSite(&second.site);
        EXPECT_HRESULT_SUCCEEDED(load(form, second.control));
        if (form == Stream) {
            char rest[6] = {};
            EXPECT_HRESULT_SUCCEEDED(stream->Read(rest, 5, nullptr));
            EXPECT_STREQ(rest, "after") << "reads what is its own, and no more";
        }
        EXPECT_EQ(load(form, second.control), CO_E_ALREADYINITIALIZED);
        EXPECT_EQ(inStream(second.control)->IsDirty(), S_FALSE);
        for (const auto& property : kept) EXPECT_TRUE(Has(second.control, property)) << &property - kept.data();
        first.DoVerb(OLEIVERB_SHOW);
        second.DoVerb(OLEIVERB_SHOW);
        EXPECT_EQ(GetWindowLongW(second.child, GWL_STYLE), GetWindowLongW(first.child, GWL_STYLE)) << "follows";
    }
    EXPECT_EQ(bag.values.size(), kept.size()) << "no data, no connection";

    const auto control = Create(GetParam());
    EXPECT_HRESULT_SUCCEEDED(stream->Seek({}, STREAM_SEEK_SET, nullptr));
    EXPECT_HRESULT_SUCCEEDED(stream->Write("garbage!garbage!", 16, nullptr));
    EXPECT_EQ(load(Stream, control), E_INVALIDARG);
    for (const auto& property : kept) EXPECT_FALSE(Has(control, property)) << "what cannot be read changes nothing";
}

// Events frozen, the control deactivated in the middle, and released in the middle.
TEST_P(ControlTest, AHostMayDoAnythingInsideEachEvent) {
    enum Action { Freezes, Deactivates, Releases };
    constexpr long Leave = 0;
    for (const EventCase& row : GetParam().events)
        for (const auto action : {Freezes, Deactivates, Releases}) {
            SCOPED_TRACE(testing::Message()
                         << "event " << row.event << ", row " << &row - &GetParam().events[0] << ", action " << action);
            HostedControl hosted(GetParam());
            hosted.Fill();
            if (row.arrange) row.arrange(hosted);
            hosted.sink.answer = row.answer;
            int events = 0;
            hosted.onEvent = [&](DISPID event) {
                if (event != row.event) return;
                if (++events > 1) hosted.sink.answer = Leave; // else what failed would be retried for ever
                if (events > 1) return;
                if (action == Deactivates) hosted.inPlace->InPlaceDeactivate();
                if (action == Releases) hosted.Close();
            };
            if (action == Freezes) hosted.control.As<IOleControl>(IID_IOleControl)->FreezeEvents(TRUE);
            row.cause(hosted);
            EXPECT_TRUE(PumpUntil([&] { return (action == Freezes) == (events == 0); }));
            if (action == Deactivates) {
                EXPECT_EQ(hosted.site.calls["OnInPlaceDeactivate"], 1);
                hosted.DoVerb(OLEIVERB_UIACTIVATE);
                EXPECT_TRUE(IsWindowVisible(hosted.child));
            }
            EXPECT_TRUE(action != Releases || (events == 1 && hosted.IsGone()));
        }
}

TEST_P(ControlTest, AHostMayCloseInsideEachCallOfItsSite) {
    const auto run = [](const std::string& last) {
        HostedControl hosted(GetParam(), {});
        hosted.site.onCall = [&](const std::string& call) {
            if (call == last) hosted.Close();
        };
        const std::function<void()> steps[] = {
            [&] { hosted.Place(OLEIVERB_UIACTIVATE); },
            [&] { hosted.Press(VK_TAB); },
            [&] { SetFocus(hosted.site.window); },
            [&] { hosted.inPlace->InPlaceDeactivate(); },
        };
        for (const auto& step : steps)
            if (hosted.object) step();
        hosted.Close();
        EXPECT_TRUE(hosted.IsGone());
        auto& calls = hosted.site.calls;
        EXPECT_EQ(calls["OnInPlaceActivate"], calls["OnInPlaceDeactivate"]);
        EXPECT_EQ(calls["OnUIActivate"], calls["OnUIDeactivate"]);
        return calls;
    };
    const auto calls = run("");
    EXPECT_EQ(calls.size(), 13u);
    for (const auto& [call, count] : calls) {
        SCOPED_TRACE(call);
        run(call);
    }
}

TEST_P(ControlTest, HostsMayCloseInAnyOrder) {
    enum Step { Close, NoSite, Deactivate, DestroyHost };
    const std::vector<Step> orders[] = {{Close, NoSite},      {NoSite, Close},
                                        {Deactivate, NoSite}, {},
                                        {DestroyHost},        {DestroyHost, Close, NoSite},
                                        {Close, DestroyHost}, {NoSite, DestroyHost, Close}};
    for (const LONG verb : {OLEIVERB_INPLACEACTIVATE, OLEIVERB_UIACTIVATE})
        for (const auto& order : orders) {
            HostedControl hosted(GetParam(), verb);
            hosted.sink.Disconnect();
            ASSERT_EQ(hosted.site.calls["OnInPlaceActivate"], 1);
            for (const Step step : order) {
                if (step == Close) hosted.object->Close(OLECLOSE_NOSAVE);
                if (step == NoSite) hosted.object->SetClientSite(nullptr);
                if (step == Deactivate) hosted.inPlace->InPlaceDeactivate();
                if (step == DestroyHost) DestroyWindow(hosted.site.window);
            }
            hosted.site.activeObject.Reset(); // the host's own references
            hosted.inPlace.Reset();
            hosted.object.Reset();
            hosted.control.Reset();
            EXPECT_TRUE(hosted.IsGone());
            EXPECT_EQ(hosted.site.calls["OnInPlaceDeactivate"], 1) << "once, whatever the order";
            EXPECT_EQ(hosted.site.calls["OnUIActivate"], hosted.site.calls["OnUIDeactivate"]);
        }
}

} // namespace dax::test
