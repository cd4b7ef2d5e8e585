// The controls in a host of our own: placing, drawing, keeping, ambient properties, focus, keys, and every way to let
// go.
#include "Connector.h"
#include "TestSite.h"

#include "windows/WindowCounts.h"

namespace dax::test {

namespace {

class ContainerTest : public OcxTest {
protected:
    static void SetUpTestSuite() {
        OcxTest::SetUpTestSuite();
        TestSite site; // the first placing makes what the system keeps
        const auto control = Create(L"DAXControls.SQLDBPicker");
        Place(control.Get(), site, OLEIVERB_UIACTIVATE)->Close(OLECLOSE_NOSAVE);
        Query<IOleObject>(control.Get(), IID_IOleObject)->SetClientSite(nullptr);
    }
};

} // namespace

TEST_F(ContainerTest, StandsWhereTheHostPutsIt) {
    for (const wchar_t* name : Controls) {
        TestSite site;
        const auto control = Create(name);
        const auto object = Place(control.Get(), site);
        const HWND window = WindowOf(control.Get());
        ASSERT_TRUE(IsWindowVisible(window));
        EXPECT_EQ(GetParent(window), site.window);
        const auto inPlace = Query<IOleInPlaceObject>(control.Get(), IID_IOleInPlaceObject);
        const auto expectAt = [&](RECT expected) {
            RECT actual;
            GetWindowRect(window, &actual);
            MapWindowPoints(nullptr, site.window, reinterpret_cast<POINT*>(&actual), 2);
            EXPECT_TRUE(EqualRect(&actual, &expected)) << actual.left << ' ' << actual.top << ' ' << actual.right;
        };
        expectAt(site.place);
        const RECT moved{20, 30, 320, 90}, visible{0, 0, 100, 300};
        EXPECT_HRESULT_SUCCEEDED(inPlace->SetObjectRects(&moved, &visible));
        expectAt(moved);
        RECT region{};
        EXPECT_NE(GetWindowRgnBox(window, &region), 0) << "only a part of it may be seen";
        EXPECT_EQ(region.right, 80);
        EXPECT_HRESULT_SUCCEEDED(inPlace->InPlaceDeactivate());
        EXPECT_EQ(site.deactivations, 1);
        EXPECT_FALSE(IsWindowVisible(window));
        EXPECT_FALSE(IsChild(site.window, window));
        EXPECT_HRESULT_SUCCEEDED(object->DoVerb(OLEIVERB_SHOW, nullptr, &site, 0, site.window, nullptr));
        expectAt(site.place);
        EXPECT_HRESULT_SUCCEEDED(object->Close(OLECLOSE_NOSAVE));
        EXPECT_HRESULT_SUCCEEDED(object->SetClientSite(nullptr));
    }
}

TEST_F(ContainerTest, SizesComeBackAndPlacesMayComeFirst) {
    TestSite site;
    const auto control = Create(L"DAXControls.DatabaseValidator");
    const auto object = Query<IOleObject>(control.Get(), IID_IOleObject);
    const auto inPlace = Query<IOleInPlaceObject>(control.Get(), IID_IOleInPlaceObject);
    EXPECT_HRESULT_SUCCEEDED(inPlace->SetObjectRects(&site.place, nullptr)) << "before there is a window";
    SIZEL natural{}, size{5080, 2540}, read{};
    EXPECT_HRESULT_SUCCEEDED(object->GetExtent(DVASPECT_CONTENT, &natural));
    EXPECT_EQ(natural.cx, MulDiv(360, 2540, 96));
    EXPECT_HRESULT_SUCCEEDED(object->SetExtent(DVASPECT_CONTENT, &size));
    EXPECT_HRESULT_SUCCEEDED(object->GetExtent(DVASPECT_CONTENT, &read));
    EXPECT_TRUE(read.cx == size.cx && read.cy == size.cy);
    EXPECT_EQ(object->SetExtent(DVASPECT_ICON, &size), DV_E_DVASPECT);
    DWORD status = 0;
    EXPECT_HRESULT_SUCCEEDED(object->GetMiscStatus(DVASPECT_CONTENT, &status));
    EXPECT_EQ(status, 131473u);
}

TEST_F(ContainerTest, DrawsWithoutAWindow) {
    TestSite site;
    site.ambients[DISPID_AMBIENT_BACKCOLOR] = Variant(int32_t{0x0000FF}); // red, as the host counts
    site.ambients[DISPID_AMBIENT_USERMODE] = Variant(false);
    const auto control = Create(L"DAXControls.DatabaseValidator");
    const auto object = Query<IOleObject>(control.Get(), IID_IOleObject);
    object->SetClientSite(&site);
    const auto design = Picture(control.Get(), 300, 100);
    EXPECT_EQ(design.back(), 0xFF0000u);
    EXPECT_GT(PixelsUnlike(design, 0xFF0000), 500u) << "the design sample has texts and a picture";
    site.ambients[DISPID_AMBIENT_DISPLAYNAME] = Variant(u"AnotherName");
    const auto ambient = Query<IOleControl>(control.Get(), IID_IOleControl);
    EXPECT_HRESULT_SUCCEEDED(ambient->OnAmbientPropertyChange(DISPID_AMBIENT_DISPLAYNAME));
    EXPECT_NE(Picture(control.Get(), 300, 100), design) << "the new name shows";
    site.ambients[DISPID_AMBIENT_USERMODE] = Variant(true);
    EXPECT_HRESULT_SUCCEEDED(ambient->OnAmbientPropertyChange(DISPID_AMBIENT_USERMODE));
    EXPECT_EQ(PixelsUnlike(Picture(control.Get(), 300, 100), 0xFF0000), 0u) << "nothing validated yet";
    object->SetClientSite(nullptr);
}

TEST_F(ContainerTest, KeepsItsPropertiesInAllThreeForms) {
    for (const wchar_t* name : Controls) {
        ComPtr<IStream> stream;
        ComPtr<ILockBytes> bytes;
        ComPtr<IStorage> storage;
        ASSERT_HRESULT_SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Out()));
        ASSERT_HRESULT_SUCCEEDED(CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Out()));
        ASSERT_HRESULT_SUCCEEDED(StgCreateDocfileOnILockBytes(
            bytes.Get(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, storage.Out()));
        {
            const auto control = Create(name);
            EXPECT_HRESULT_SUCCEEDED(
                Query<IPersistStreamInit>(control.Get(), IID_IPersistStreamInit)->Save(stream.Get(), TRUE));
            const auto persist = Query<IPersistStorage>(control.Get(), IID_IPersistStorage);
            EXPECT_HRESULT_SUCCEEDED(persist->Save(storage.Get(), FALSE));
            EXPECT_HRESULT_SUCCEEDED(persist->SaveCompleted(nullptr));
            EXPECT_EQ(persist->IsDirty(), S_FALSE);
        }
        ASSERT_HRESULT_SUCCEEDED(stream->Write("after", 5, nullptr));
        ASSERT_HRESULT_SUCCEEDED(stream->Seek({}, STREAM_SEEK_SET, nullptr));
        const auto fromStream = Create(name), fromStorage = Create(name), late = Create(name);
        EXPECT_HRESULT_SUCCEEDED(
            Query<IPersistStreamInit>(fromStream.Get(), IID_IPersistStreamInit)->Load(stream.Get()));
        char rest[5] = {};
        EXPECT_HRESULT_SUCCEEDED(stream->Read(rest, 5, nullptr));
        EXPECT_EQ(std::string(rest, 5), "after") << "reads what is its own, and no more";
        EXPECT_HRESULT_SUCCEEDED(Query<IPersistStorage>(fromStorage.Get(), IID_IPersistStorage)->Load(storage.Get()));
        EXPECT_EQ(Query<IPersistStreamInit>(late.Get(), IID_IPersistStreamInit)->Load(nullptr), E_POINTER);
        stream->Seek({}, STREAM_SEEK_SET, nullptr);
        stream->Write("garbage!garbage!", 16, nullptr);
        stream->Seek({}, STREAM_SEEK_SET, nullptr);
        EXPECT_EQ(Query<IPersistStreamInit>(late.Get(), IID_IPersistStreamInit)->Load(stream.Get()), E_INVALIDARG);
    }
}

TEST_F(ContainerTest, FocusOfTheListActivatesAndKeysAreShared) {
    const Connector connector;
    TestSite site;
    const auto control = Create(L"DAXControls.SQLDBPicker");
    const auto object = Place(control.Get(), site);
    const HWND list = FindWindowExW(WindowOf(control.Get()), nullptr, L"COMBOBOX", nullptr);
    ASSERT_TRUE(list);
    EXPECT_EQ(site.uiActivations, 0);
    SetFocus(list);
    EXPECT_EQ(site.uiActivations, 1);
    EXPECT_TRUE(site.hasFocus);
    ASSERT_TRUE(site.activeObject);

    EXPECT_TRUE(IsTrue(Call(control.Get(), L"LoadPicker",
                            {Variant(connector.ConnectionString()), Variant(u"admin"), Variant(u"course")})));
    int events = 0;
    Sink sink([&](DISPID, const std::vector<Text>&) { ++events; });
    sink.Connect(control.Get());
    MSG key{list, WM_KEYDOWN, VK_DOWN, 1, 0, {}};
    EXPECT_EQ(site.activeObject->TranslateAccelerator(&key), S_OK) << "the arrow is the list's";
    EXPECT_EQ(TextOf(Call(control.Get(), L"DBCatalog")), u"other");
    EXPECT_EQ(events, 1);
    key.wParam = VK_TAB;
    EXPECT_EQ(site.activeObject->TranslateAccelerator(&key), S_FALSE) << "Tab is the host's";
    EXPECT_EQ(site.keysOffered, 1);
    sink.Disconnect();

    const HWND other = CreateWindowExW(0, L"BUTTON", L"", WS_CHILD | WS_VISIBLE, 0, 200, 50, 20, site.window, nullptr,
                                       nullptr, nullptr);
    SetFocus(other);
    EXPECT_FALSE(site.hasFocus);
    EXPECT_EQ(site.uiDeactivations, 1);
    EXPECT_FALSE(site.activeObject);
    object->Close(OLECLOSE_NOSAVE);
    object->SetClientSite(nullptr);
}

TEST_F(ContainerTest, FrozenEventsAreSilent) {
    const auto control = Create(L"DAXControls.SQLDBPicker");
    const Connector connector;
    std::vector<std::vector<Text>> heard;
    Sink sink([&](DISPID event, const std::vector<Text>& arguments) {
        EXPECT_EQ(event, 1);
        heard.push_back(arguments);
    });
    sink.Connect(control.Get());
    const auto load = [&](const Text& user) {
        return IsTrue(Call(control.Get(), L"LoadPicker",
                           {Variant(connector.ConnectionString()), Variant(user), Variant(u"other")}));
    };
    const auto freezer = Query<IOleControl>(control.Get(), IID_IOleControl);
    freezer->FreezeEvents(TRUE);
    EXPECT_TRUE(load(u"anna"));
    freezer->FreezeEvents(FALSE);
    EXPECT_TRUE(heard.empty());
    EXPECT_FALSE(load(u"stranger"));
    EXPECT_TRUE(load(u"admin"));
    const std::vector<std::vector<Text>> expected{{u"", u"", u"", u"", u""},
                                                  {u"other", u"login2", u"secret2", u"Ünother", u"the second"}};
    EXPECT_EQ(heard, expected);
    Call(control.Get(), L"UpdateConnectionHistory", {Variant(u"pc"), Variant(u"ip"), Variant(u"os"), Variant(u"1")});
    EXPECT_EQ(connector.Ask(u"SELECT lastCatalog FROM velmoraConnectionHistory WHERE username = 'admin'"), u"other");
    sink.Disconnect();
    EXPECT_EQ(sink.references, 1u);
}

TEST_F(ContainerTest, HostsMayLetGoInAnyOrder) {
    enum Step { Close, NoSite, Deactivate, DestroyHost, Release };
    const std::vector<Step> orders[] = {{Close, NoSite, Release},      {NoSite, Close, Release},
                                        {Deactivate, NoSite, Release}, {Release},
                                        {DestroyHost, Release},        {DestroyHost, Close, NoSite, Release},
                                        {Close, DestroyHost, Release}, {NoSite, DestroyHost, Close, Release}};
    int placed = 0;
    for (const wchar_t* name : Controls)
        for (const auto& order : orders) {
            const LONG verb = ++placed % 3 == 0 ? OLEIVERB_INPLACEACTIVATE : OLEIVERB_UIACTIVATE;
            TestSite site;
            auto control = Create(name);
            auto object = Place(control.Get(), site, verb);
            ASSERT_EQ(site.activations, 1);
            for (const Step step : order) switch (step) {
                case Close:
                    object->Close(OLECLOSE_NOSAVE);
                    break;
                case NoSite:
                    object->SetClientSite(nullptr);
                    break;
                case Deactivate:
                    Query<IOleInPlaceObject>(control.Get(), IID_IOleInPlaceObject)->InPlaceDeactivate();
                    break;
                case DestroyHost:
                    DestroyWindow(site.window);
                    break;
                case Release:
                    site.activeObject.Reset(); // the host's own reference
                    control.Reset();
                    object.Reset();
                    break;
                }
            EXPECT_EQ(site.deactivations, 1) << "once, whatever the order";
            EXPECT_EQ(site.uiActivations, site.uiDeactivations);
            site.activeObject.Reset();
        }
}

TEST_F(ContainerTest, MayBeReleasedInsideItsOwnEvent) {
    const Connector connector;
    for (const bool isByKey : {false, true}) {
        TestSite site;
        auto control = Create(L"DAXControls.SQLDBPicker");
        auto object = Place(control.Get(), site);
        const HWND list = FindWindowExW(WindowOf(control.Get()), nullptr, L"COMBOBOX", nullptr);
        int events = 0;
        Sink sink([&](DISPID, const std::vector<Text>&) {
            ++events;
            if (isByKey && events == 1) return; // the first selection
            sink.Disconnect();
            object->Close(OLECLOSE_NOSAVE);
            object->SetClientSite(nullptr);
            object.Reset();
            control.Reset();
        });
        sink.Connect(control.Get());
        const ComPtr<IDispatch> caller = isByKey ? control : ComPtr<IDispatch>();
        IDispatch* called = control.Get();
        Call(called, L"LoadPicker", {Variant(connector.ConnectionString()), Variant(u"admin"), Variant(u"course")});
        if (isByKey) {
            const_cast<ComPtr<IDispatch>&>(caller).Reset();
            SendMessageW(list, WM_KEYDOWN, VK_DOWN, 1);
        }
        EXPECT_EQ(events, isByKey ? 2 : 1);
        EXPECT_FALSE(control);
        EXPECT_TRUE(PumpUntil([list] { return !IsWindow(list); })) << "the window is gone soon after";
        EXPECT_EQ(sink.references, 1u);
    }
}

TEST_F(ContainerTest, ManyCyclesLeaveNothing) {
    const auto cycle = [&](const wchar_t* name) {
        TestSite site;
        const auto control = Create(name);
        const auto object = Place(control.Get(), site, OLEIVERB_UIACTIVATE);
        const RECT moved{20, 30, 320, 90}, visible{0, 0, 100, 300};
        Query<IOleInPlaceObject>(control.Get(), IID_IOleInPlaceObject)->SetObjectRects(&moved, &visible);
        Picture(control.Get(), 60, 40);
        object->Close(OLECLOSE_NOSAVE);
        object->SetClientSite(nullptr);
        PumpPending();
    };
    // The system keeps some objects of its own, and may take a few more at any time; a leak would be one in each cycle.
    for (const wchar_t* name : Controls) {
        for (int i = 0; i < 3; ++i) cycle(name);
        const int before = GdiObjectCount();
        for (int i = 0; i < 12; ++i) cycle(name);
        EXPECT_LT(GdiObjectCount(), before + 10) << ToUtf8(FromWide(name));
    }
}

} // namespace dax::test
