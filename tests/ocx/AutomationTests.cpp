// The classes as scripts and programs without a container use them, registered or not.
#include "ControlCases.h"

#include <array>
#include <future>
#include <thread>
#include <tuple>

namespace dax::test {

namespace {

class AutomationTest : public OcxTest {};

// How many keys there are below HKEY_CLASSES_ROOT's parts that registration touches.
std::array<DWORD, 4> ClassKeys() {
    std::array<DWORD, 4> counts{};
    constexpr const wchar_t* parts[] = {L"", L"\\CLSID", L"\\TypeLib", L"\\Interface"};
    for (size_t i = 0; i < counts.size(); ++i) {
        HKEY key = nullptr;
        const std::wstring place = std::wstring(L"Software\\Classes") + parts[i];
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, place.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) continue;
        RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &counts[i], nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr);
        RegCloseKey(key);
    }
    return counts;
}

} // namespace

TEST_F(AutomationTest, EveryControlHasTheInterfacesOfItsKind) {
    for (const ControlCase& row : ControlCases()) {
        const auto object = Create(row);
        const auto identity = object.As<IUnknown>(IID_IUnknown);
        for (const IID* iid : {&IID_IOleObject, &IID_IOleControl, &IID_IOleInPlaceObject, &IID_IOleInPlaceActiveObject,
                               &IID_IViewObject2, &IID_IDataObject, &IID_IPersistStream, &IID_IPersistStreamInit,
                               &IID_IPersistStorage, &IID_IPersistPropertyBag, &IID_IConnectionPointContainer,
                               &IID_IProvideClassInfo2, &IID_ISupportErrorInfo}) {
            const auto found = object.As<IUnknown>(*iid);
            ASSERT_TRUE(found);
            EXPECT_EQ(found.As<IUnknown>(IID_IUnknown).Get(), identity.Get()) << "one identity";
        }
        // The registry has the same name and verbs for containers that ask it first.
        const auto control = object.As<IOleObject>(IID_IOleObject);
        CLSID clsid{};
        LPOLESTR own = nullptr, registered = nullptr;
        ComPtr<IEnumOLEVERB> verbs;
        OLEVERB verb{};
        EXPECT_HRESULT_SUCCEEDED(control->GetUserClassID(&clsid));
        EXPECT_HRESULT_SUCCEEDED(control->GetUserType(USERCLASSTYPE_FULL, &own));
        EXPECT_HRESULT_SUCCEEDED(OleRegGetUserType(clsid, USERCLASSTYPE_FULL, &registered));
        EXPECT_STREQ(own, registered);
        EXPECT_HRESULT_SUCCEEDED(control->EnumVerbs(verbs.Out()));
        EXPECT_EQ(verbs->Next(1, &verb, nullptr), S_OK);
        EXPECT_STREQ(verb.lpszVerbName, L"&Activate");
        for (LPOLESTR text : {own, registered, verb.lpszVerbName}) CoTaskMemFree(text);

        // What there is nothing for is emptied, so that no host releases what was never there.
        auto* none = reinterpret_cast<IUnknown*>(1);
        auto* point = reinterpret_cast<IConnectionPoint*>(1);
        auto* client = reinterpret_cast<IOleClientSite*>(1);
        EXPECT_EQ(object->QueryInterface(IID_IStream, reinterpret_cast<void**>(&none)), E_NOINTERFACE);
        const auto points = object.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
        EXPECT_EQ(points->FindConnectionPoint(IID_IStream, &point), CONNECT_E_NOCONNECTION);
        EXPECT_HRESULT_SUCCEEDED(control->GetClientSite(&client));
        EXPECT_TRUE(!none && !point && !client);
        ComPtr<IUnknown> inner;
        EXPECT_EQ(CoCreateInstance(clsid, object.Get(), CLSCTX_INPROC_SERVER, IID_IUnknown, inner.OutVoid()),
                  CLASS_E_NOAGGREGATION);
    }
}

TEST_F(AutomationTest, AnEnumeratorAloneKeepsItsLibrary) {
    using Take = std::function<ComPtr<IUnknown>(ObjectRef)>;
    const auto newEnum = [](const wchar_t* collection) -> Take {
        return [=](ObjectRef object) { return ComPtr<IUnknown>(Call(Get(object, collection), L"_NewEnum").punkVal); };
    };
    const Take connections = [](ObjectRef object) {
        ComPtr<IEnumConnectionPoints> points;
        ComPtr<IConnectionPoint> point;
        ComPtr<IEnumConnections> all, clone;
        const auto container = object.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
        EXPECT_HRESULT_SUCCEEDED(container->EnumConnectionPoints(points.Out()));
        EXPECT_EQ(points->Next(1, point.Out(), nullptr), S_OK);
        EXPECT_HRESULT_SUCCEEDED(point->EnumConnections(all.Out()));
        EXPECT_HRESULT_SUCCEEDED(all->Clone(clone.Out()));
        return clone;
    };
    const std::tuple<const wchar_t*, const wchar_t*, Take> rows[] = {
        {L"daxControls33.ocx", L"DAXControls.LessonMapEditor", newEnum(L"CheckedStoryboards")},
        {L"daxControls33.ocx", L"DAXControls.LessonMapEditor", connections},
        {L"contentObjects.dll", L"ContentObjects.Lesson", newEnum(L"Maps")},
    };
    for (const auto& [library, className, take] : rows) {
        ComPtr<IUnknown> left = take(Create(className));
        ASSERT_TRUE(left);
        PumpPending();
        EXPECT_EQ(CallLibrary(library, "DllCanUnloadNow"), S_FALSE);
        left.Reset();
        EXPECT_TRUE(PumpUntil([name = library] { return CallLibrary(name, "DllCanUnloadNow") == S_OK; }));
    }
}

// A host's form: an object with an interface for the events of each of its controls.
class Form final : public StackObject<> {
public:
    class Listener final : public StackObject<> {
    public:
        STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
            return heard = event, S_OK;
        }
        DISPID heard = 0;
    };
    Listener listener;
    GUID events{};

private:
    void* Find(REFIID iid) override {
        return iid == events ? static_cast<IDispatch*>(&listener) : StackObject::Find(iid);
    }
};

TEST_F(AutomationTest, EventsComeToTheInterfaceThatIsMeantForThem) {
    Form form;
    const auto editor = Create(L"DAXControls.GroupEditor");
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
    EXPECT_HRESULT_SUCCEEDED(
        editor.As<IProvideClassInfo2>(IID_IProvideClassInfo2)->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &form.events));
    EXPECT_HRESULT_SUCCEEDED(editor.As<IConnectionPointContainer>(IID_IConnectionPointContainer)
                                 ->FindConnectionPoint(form.events, point.Out()));
    EXPECT_HRESULT_SUCCEEDED(point->Advise(&form, &cookie));
    Call(editor, L"Clear");
    EXPECT_EQ(form.listener.heard, 1);
    EXPECT_HRESULT_SUCCEEDED(point->Unadvise(cookie));
}

TEST_F(AutomationTest, PanelsReportThatAnEditorIsOneOfAnotherThread) {
    ComPtr<IStream> stream;
    std::promise<DWORD> isMarshaled;
    std::thread owner([&] {
        OleInitialize(nullptr);
        {
            const auto editor = Create(L"DAXControls.GroupEditor");
            EXPECT_HRESULT_SUCCEEDED(CoMarshalInterThreadInterfaceInStream(IID_IDispatch, editor.Get(), stream.Out()));
            isMarshaled.set_value(GetCurrentThreadId());
            for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0;) DispatchMessageW(&message);
        }
        OleUninitialize();
    });
    const DWORD threadId = isMarshaled.get_future().get();
    {
        ComPtr<IDispatch> editor;
        EXPECT_HRESULT_SUCCEEDED(CoUnmarshalInterface(stream.Get(), IID_IDispatch, editor.OutVoid()));
        EXPECT_EQ(NumberOf(Call(editor, L"NodeCount")), 0) << "itself it can be used";
        for (const wchar_t* name : {L"DAXControls.LessonInfo", L"DAXControls.LockInfo"}) {
            try {
                Call(Create(name), L"UpdateFrom", {editor});
                ADD_FAILURE() << "no error";
            } catch (const CallFailure& failure) {
                EXPECT_NE(failure.description.find(u"another thread"), Text::npos) << ToUtf8(failure.description);
            }
        }
    }
    PostThreadMessageW(threadId, WM_QUIT, 0, 0);
    owner.join();
}

TEST_F(AutomationTest, UnregistrationLeavesNothing) {
    Register(false);
    const auto without = ClassKeys();
    EXPECT_FALSE(Create(L"DAXControls.Constants"));
    Register(true);
    const auto with = ClassKeys();
    for (size_t i = 0; i < with.size(); ++i) EXPECT_GT(with[i], without[i]);
    Register(false);
    EXPECT_EQ(ClassKeys(), without);
    Register(true);
}

TEST_F(AutomationTest, WorksWithoutRegistrationThroughTheShippedManifests) {
    Register(false);
    for (const std::wstring name : {L"DAXControls.Constants", L"DAXControls.SQLDBPicker", L"DAXControls.GroupEditor",
                                    L"DAXControls.LessonMapEditor", L"DAXControls.LockManager", L"DAXControls.LockInfo",
                                    L"ContentObjects.Lesson", L"ContentObjects.PropertyCollection"}) {
        const std::wstring source =
            BinFolder() + (name.starts_with(L"DAX") ? L"daxControls33" : L"contentObjects") + L".manifest";
        ACTCTXW context{};
        context.cbSize = sizeof context;
        context.lpSource = source.c_str();
        const HANDLE handle = CreateActCtxW(&context);
        ULONG_PTR cookie = 0;
        ASSERT_TRUE(ActivateActCtx(handle, &cookie)) << GetLastError();
        {
            const auto object = Create(name);
            ComPtr<ITypeInfo> type;
            ASSERT_TRUE(object) << ToUtf8(FromWide(name));
            EXPECT_HRESULT_SUCCEEDED(object->GetTypeInfo(0, LOCALE_NEUTRAL, type.Out())) << ToUtf8(FromWide(name));
        }
        CoFreeUnusedLibraries();
        DeactivateActCtx(0, cookie);
        ReleaseActCtx(handle);
    }
    Register(true);
}

TEST_F(AutomationTest, TheEditorFindsTheContentObjectsBesideItWithoutTheirRegistration) {
    const auto lesson = Create(L"ContentObjects.Lesson"), editor = Create(L"DAXControls.LessonMapEditor");
    Call(lesson, L"Load", {u"lesson\t1\nstoryboard\ta\t\t\t\nmap\tM\tdefault\npage\t1\ta\n"});
    Put(editor, L"Lesson", lesson);
    Call(editor, L"CheckAllStoryboards");
    Register(false);
    EXPECT_FALSE(Create(L"ContentObjects.Lesson"));
    EXPECT_EQ(GetText(Get(editor, L"GetCheckedLesson"), L"Save"), GetText(lesson, L"Save"));
    Register(true);
}

} // namespace dax::test
