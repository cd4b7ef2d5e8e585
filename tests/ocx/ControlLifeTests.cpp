// The lifetime of each control: what a host keeps of it, every way to release it, inside events and calls too.
#include "ControlCases.h"

#include <algorithm>

namespace dax::test {

namespace {

class ControlLife : public OcxTest, public testing::WithParamInterface<ControlCase> {};

INSTANTIATE_TEST_SUITE_P(All, ControlLife, testing::ValuesIn(ControlCases()), testing::PrintToStringParamName());

// Where a host keeps a control: its own bag, a stream with something after it, a storage.
class Keeping {
public:
    enum Form { Bag, Stream, Storage };
    explicit Keeping(Form form) : form(form) {
        EXPECT_HRESULT_SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Out()));
        EXPECT_HRESULT_SUCCEEDED(CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Out()));
        EXPECT_HRESULT_SUCCEEDED(StgCreateDocfileOnILockBytes(
            bytes.Get(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, storage.Out()));
    }
    void Save(ObjectRef control) {
        if (form == Bag) {
            EXPECT_EQ(control.As<IPersistPropertyBag>(IID_IPersistPropertyBag)->Save(&bag, TRUE, TRUE), S_OK);
        } else if (form == Storage) {
            const auto persist = control.As<IPersistStorage>(IID_IPersistStorage);
            EXPECT_HRESULT_SUCCEEDED(persist->Save(storage.Get(), FALSE));
            EXPECT_HRESULT_SUCCEEDED(persist->SaveCompleted(nullptr));
        } else {
            ULARGE_INTEGER size{};
            STATSTG state{};
            const auto persist = control.As<IPersistStreamInit>(IID_IPersistStreamInit);
            EXPECT_HRESULT_SUCCEEDED(persist->GetSizeMax(&size));
            EXPECT_HRESULT_SUCCEEDED(persist->Save(stream.Get(), TRUE));
            EXPECT_HRESULT_SUCCEEDED(stream->Stat(&state, STATFLAG_NONAME));
            EXPECT_EQ(size.QuadPart, state.cbSize.QuadPart);
            EXPECT_HRESULT_SUCCEEDED(stream->Write("after", 5, nullptr));
        }
    }
    HRESULT Load(ObjectRef control) {
        if (form == Bag) return control.As<IPersistPropertyBag>(IID_IPersistPropertyBag)->Load(&bag, nullptr);
        if (form == Storage) return control.As<IPersistStorage>(IID_IPersistStorage)->Load(storage.Get());
        char rest[5] = {};
        EXPECT_HRESULT_SUCCEEDED(stream->Seek({}, STREAM_SEEK_SET, nullptr));
        const HRESULT result = control.As<IPersistStreamInit>(IID_IPersistStreamInit)->Load(stream.Get());
        EXPECT_HRESULT_SUCCEEDED(stream->Read(rest, FAILED(result) ? 0 : 5, nullptr));
        EXPECT_TRUE(FAILED(result) || std::string(rest, 5) == "after") << "reads what is its own, and no more";
        return result;
    }

    TestBag bag;

private:
    const Form form;
    ComPtr<IStream> stream;
    ComPtr<ILockBytes> bytes;
    ComPtr<IStorage> storage;
};

bool IsDirty(const ComPtr<IDispatch>& control) {
    return control.As<IPersistStreamInit>(IID_IPersistStreamInit)->IsDirty() == S_OK;
}

bool Has(ObjectRef control, const std::pair<const wchar_t*, Variant>& property) {
    const Variant value = Call(control, property.first);
    return value.vt == property.second.vt && value.Long() == property.second.Long();
}

// Hears which property has changed.
class ChangeListener final : public StackObject<Implements<IPropertyNotifySink, IID_IPropertyNotifySink>> {
public:
    explicit ChangeListener(ObjectRef control) {
        const auto container = Query<IConnectionPointContainer>(control.Get(), IID_IConnectionPointContainer);
        EXPECT_HRESULT_SUCCEEDED(container->FindConnectionPoint(IID_IPropertyNotifySink, point.Out()));
        StackObject<> without;
        EXPECT_EQ(point->Advise(&without, &cookie), CONNECT_E_CANNOTCONNECT);
        EXPECT_HRESULT_SUCCEEDED(point->Advise(static_cast<IDispatch*>(this), &cookie));
    }
    ~ChangeListener() { point->Unadvise(cookie); }
    STDMETHODIMP OnChanged(DISPID dispid) override { return last = dispid, S_OK; }
    STDMETHODIMP OnRequestEdit(DISPID) override { return S_OK; }
    DISPID last = DISPID_UNKNOWN;

private:
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
};

} // namespace

TEST_P(ControlLife, IsKeptInBagStreamAndStorage) {
    const auto& kept = GetParam().kept;
    for (const auto form : {Keeping::Bag, Keeping::Stream, Keeping::Storage}) {
        SCOPED_TRACE(form);
        Keeping keeping(form);
        HostedControl first(GetParam(), OLEIVERB_INPLACEACTIVATE);
        EXPECT_FALSE(IsDirty(first.control));
        first.object->Close(OLECLOSE_SAVEIFDIRTY);
        EXPECT_EQ(first.site.saves, 0);
        ChangeListener changes(first.control);
        for (const auto& property : kept) {
            EXPECT_FALSE(Has(first.control, property)) << "is the default";
            Put(first.control, property.first, property.second);
            DISPID dispid = DISPID_UNKNOWN;
            EXPECT_HRESULT_SUCCEEDED(FindMember(first.control.Get(), property.first, dispid));
            EXPECT_EQ(changes.last, dispid);
        }
        EXPECT_EQ(IsDirty(first.control), !kept.empty());
        first.object->Close(OLECLOSE_SAVEIFDIRTY);
        EXPECT_EQ(first.site.saves, kept.empty() ? 0 : 1);
        keeping.Save(first.control);
        EXPECT_FALSE(IsDirty(first.control));
        std::vector<std::wstring> names;
        for (const auto& [name, value] : kept) names.emplace_back(name);
        if (form == Keeping::Bag) {
            EXPECT_EQ(keeping.bag.names, names) << "in this order, no data, no connection";
        }

        TestSite site;
        const auto other = Create(GetParam());
        const auto object = other.As<IOleObject>(IID_IOleObject);
        object->SetClientSite(&site);
        EXPECT_HRESULT_SUCCEEDED(keeping.Load(other));
        EXPECT_FALSE(IsDirty(other));
        EXPECT_EQ(keeping.Load(other), CO_E_ALREADYINITIALIZED);
        for (const auto& property : kept) EXPECT_TRUE(Has(other, property)) << ToUtf8(FromWide(property.first));
        first.DoVerb(OLEIVERB_SHOW);
        object->DoVerb(OLEIVERB_SHOW, nullptr, &site, 0, site.window, nullptr);
        const HWND window = WindowOf(other.Get());
        const HWND child = !GetParam().child.empty() ? GetWindow(window, GW_CHILD) : window;
        EXPECT_EQ(GetWindowLongW(child, GWL_STYLE), GetWindowLongW(first.child, GWL_STYLE)) << "the window follows";
        object->Close(OLECLOSE_NOSAVE);
        object->SetClientSite(nullptr);
    }
    const auto control = Create(GetParam());
    const auto persist = control.As<IPersistStreamInit>(IID_IPersistStreamInit);
    ComPtr<IStream> garbage;
    ASSERT_HRESULT_SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, garbage.Out()));
    garbage->Write("garbage!garbage!", 16, nullptr);
    garbage->Seek({}, STREAM_SEEK_SET, nullptr);
    EXPECT_EQ(persist->Load(nullptr), E_POINTER);
    EXPECT_EQ(persist->Load(garbage.Get()), E_INVALIDARG);
    for (const auto& property : kept) EXPECT_FALSE(Has(control, property)) << "what cannot be read changes nothing";
}

// Events frozen, the control deactivated in the middle, and released in the middle.
TEST_P(ControlLife, AHostMayDoAnythingInsideEachEvent) {
    enum Action { Freezes, Deactivates, Releases };
    constexpr long Leave = 0;
    for (const EventCase& row : GetParam().events)
        for (const auto action : {Freezes, Deactivates, Releases}) {
            SCOPED_TRACE(testing::Message() << "event " << row.event << ", row " << &row - &GetParam().events[0]
                                            << ", answer " << row.answer << ", action " << action);
            HostedControl hosted(GetParam());
            hosted.Fill();
            if (row.arrange) row.arrange(hosted);
            hosted.sink.answer = row.answer;
            int events = 0;
            hosted.onEvent = [&](DISPID event) {
                if (event != row.event) return;
                if (++events > 1) hosted.sink.answer = Leave; // else what failed would be tried for ever
                if (events > 1) return;
                if (action == Deactivates) hosted.inPlace->InPlaceDeactivate();
                if (action == Releases) hosted.Close();
            };
            if (action == Freezes) hosted.control.As<IOleControl>(IID_IOleControl)->FreezeEvents(TRUE);
            row.cause(hosted);
            EXPECT_TRUE(PumpUntil([&] { return action == Freezes || events > 0; }));
            if (action == Freezes) {
                EXPECT_EQ(events, 0);
            } else if (action == Deactivates) {
                EXPECT_TRUE(hosted.site.uiDeactivations == 1 && hosted.site.deactivations == 1);
                hosted.DoVerb(OLEIVERB_UIACTIVATE);
                EXPECT_TRUE(IsWindowVisible(hosted.child));
            } else {
                EXPECT_EQ(events, 1);
                EXPECT_FALSE(hosted.control);
                EXPECT_TRUE(hosted.IsGone());
            }
        }
}

TEST_P(ControlLife, AHostMayCloseInsideEachCallOfItsSite) {
    std::set<std::string> calls;
    const auto run = [&](const std::string& last) {
        TestSite site;
        auto control = Create(GetParam());
        auto object = control.As<IOleObject>(IID_IOleObject);
        HWND window = nullptr;
        const auto close = [&] {
            if (!object) return;
            window = WindowOf(control.Get());
            control.Reset();
            site.activeObject.Reset();
            const ComPtr<IOleObject> final = std::move(object);
            final->Close(OLECLOSE_NOSAVE);
            final->SetClientSite(nullptr);
        };
        site.called = [&](const std::string& call) {
            if (last.empty()) calls.insert(call);
            if (call == last) close();
        };
        const std::function<void()> steps[] = {
            [&] { object->SetClientSite(&site); },
            [&] { object->DoVerb(OLEIVERB_UIACTIVATE, nullptr, &site, 0, site.window, &site.place); },
            [&] {
                MSG key{GetFocus(), WM_KEYDOWN, VK_TAB, 1, 0, {}};
                if (site.activeObject) site.activeObject->TranslateAccelerator(&key);
            },
            [&] { SetFocus(site.window); },
            [&] { control.As<IOleInPlaceObject>(IID_IOleInPlaceObject)->InPlaceDeactivate(); },
        };
        for (const auto& step : steps)
            if (object) step();
        close();
        EXPECT_TRUE(PumpUntil([&] { return !window || !IsWindow(window); }));
        EXPECT_TRUE(site.IsReleased());
        EXPECT_EQ(site.activations, site.deactivations);
        EXPECT_EQ(site.uiActivations, site.uiDeactivations);
    };
    run("");
    EXPECT_EQ(calls.size(), 13u);
    for (const auto& call : calls) {
        SCOPED_TRACE(call);
        run(call);
    }
}

TEST_P(ControlLife, HostsMayCloseInAnyOrder) {
    enum Step { Close, NoSite, Deactivate, DestroyHost, Release };
    const std::vector<Step> orders[] = {{Close, NoSite, Release},      {NoSite, Close, Release},
                                        {Deactivate, NoSite, Release}, {Release},
                                        {DestroyHost, Release},        {DestroyHost, Close, NoSite, Release},
                                        {Close, DestroyHost, Release}, {NoSite, DestroyHost, Close, Release}};
    for (const LONG verb : {OLEIVERB_INPLACEACTIVATE, OLEIVERB_UIACTIVATE})
        for (const auto& order : orders) {
            HostedControl hosted(GetParam(), verb);
            hosted.sink.Disconnect();
            ASSERT_EQ(hosted.site.activations, 1);
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
            EXPECT_EQ(hosted.site.deactivations, 1) << "once, whatever the order";
            EXPECT_EQ(hosted.site.uiActivations, hosted.site.uiDeactivations);
        }
}

} // namespace dax::test
