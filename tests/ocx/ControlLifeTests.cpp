// The lifetime of each control: what a host keeps of it, every way to release it, inside events and calls too.
#include "ControlCases.h"

namespace dax::test {

namespace {

class ControlLife : public OcxTest, public testing::WithParamInterface<ControlCase> {};

INSTANTIATE_TEST_SUITE_P(All, ControlLife, testing::ValuesIn(ControlCases()), testing::PrintToStringParamName());

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

// Hears which property has changed.
class ChangeListener final : public StackObject<Implements<IPropertyNotifySink, IID_IPropertyNotifySink>> {
public:
    STDMETHODIMP OnChanged(DISPID dispid) override { return last = dispid, S_OK; }
    STDMETHODIMP OnRequestEdit(DISPID) override { return S_OK; }
    DISPID last = DISPID_UNKNOWN;
};

} // namespace

TEST_P(ControlLife, IsKeptInBagStreamAndStorage) {
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
        ChangeListener changes;
        ComPtr<IConnectionPoint> point;
        DWORD cookie = 0;
        first.control.As<IConnectionPointContainer>(IID_IConnectionPointContainer)
            ->FindConnectionPoint(IID_IPropertyNotifySink, point.Out());
        EXPECT_HRESULT_SUCCEEDED(point->Advise(static_cast<IDispatch*>(&changes), &cookie));
        for (const auto& property : kept) {
            EXPECT_FALSE(Has(first.control, property)) << "is the default";
            Put(first.control, property.first, property.second);
            DISPID dispid = DISPID_UNKNOWN;
            EXPECT_HRESULT_SUCCEEDED(FindMember(first.control.Get(), property.first, dispid));
            EXPECT_EQ(changes.last, dispid);
        }
        EXPECT_HRESULT_SUCCEEDED(point->Unadvise(cookie));
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
            EXPECT_HRESULT_SUCCEEDED(inStream(first.control)->GetSizeMax(&size));
            EXPECT_HRESULT_SUCCEEDED(stream->Seek({}, STREAM_SEEK_CUR, &written));
            EXPECT_HRESULT_SUCCEEDED(stream->Write("after", 5, nullptr));
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
TEST_P(ControlLife, AHostMayDoAnythingInsideEachEvent) {
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
                EXPECT_EQ(hosted.site.calls["OnInPlaceDeactivate"], 1);
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

TEST_P(ControlLife, HostsMayCloseInAnyOrder) {
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
