// The classes as scripts and programs without a container use them, registered or not.
#include "ControlCases.h"

#include <set>
#include <thread>
#include <tuple>

namespace dax::test {

namespace {

class AutomationTest : public OcxTest {};

// Every key below HKEY_CLASSES_ROOT's parts that registration touches.
std::set<std::wstring> ClassKeys() {
    std::set<std::wstring> result;
    for (const wchar_t* part : {L"", L"CLSID", L"TypeLib", L"Interface"}) {
        HKEY key = nullptr;
        const std::wstring place = std::wstring(L"Software\\Classes\\") + part;
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, place.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) continue;
        wchar_t name[256];
        for (DWORD i = 0;; ++i) {
            DWORD length = 256;
            if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
            result.insert(std::wstring(part) + L"\\" + name);
        }
        RegCloseKey(key);
    }
    return result;
}

} // namespace

TEST_F(AutomationTest, EveryControlHasTheInterfacesAndTheRegistryEntriesOfItsClass) {
    const auto textOf = [](IEnumOLEVERB* list) {
        std::wstring all;
        for (OLEVERB verb{}; list->Next(1, &verb, nullptr) == S_OK; CoTaskMemFree(verb.lpszVerbName))
            all += std::to_wstring(verb.lVerb) + verb.lpszVerbName + std::to_wstring(verb.fuFlags) +
                   std::to_wstring(verb.grfAttribs);
        return all;
    };
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
        CLSID clsid{};
        object.As<IPersist>(IID_IPersist)->GetClassID(&clsid);
        const auto control = object.As<IOleObject>(IID_IOleObject);
        for (const DWORD form : {USERCLASSTYPE_FULL, USERCLASSTYPE_SHORT, USERCLASSTYPE_APPNAME}) {
            LPOLESTR own = nullptr, registered = nullptr;
            EXPECT_HRESULT_SUCCEEDED(control->GetUserType(form, &own));
            EXPECT_HRESULT_SUCCEEDED(OleRegGetUserType(clsid, form, &registered));
            EXPECT_STREQ(own, registered) << form;
            CoTaskMemFree(own);
            CoTaskMemFree(registered);
        }
        ComPtr<IEnumOLEVERB> verbs, registered;
        ComPtr<IUnknown> inner;
        EXPECT_HRESULT_SUCCEEDED(control->EnumVerbs(verbs.Out()));
        ASSERT_HRESULT_SUCCEEDED(OleRegEnumVerbs(clsid, registered.Out()));
        EXPECT_EQ(textOf(verbs.Get()), L"0&Activate02");
        EXPECT_EQ(textOf(registered.Get()), L"0&Activate02");
        EXPECT_EQ(CoCreateInstance(clsid, object.Get(), CLSCTX_INPROC_SERVER, IID_IUnknown, inner.OutVoid()),
                  CLASS_E_NOAGGREGATION);
    }
}

template <typename Result, typename Call>
void ExpectEmptied(const char* member, const Call& call) {
    auto* given = reinterpret_cast<Result*>(1);
    call(&given);
    EXPECT_EQ(given, nullptr) << member;
}

// What a member has nothing for it empties, so that no host releases what was never there.
TEST_F(AutomationTest, EveryPointerThatAMemberGivesBackIsSet) {
    for (const ControlCase& row : ControlCases()) {
        const auto control = Create(row);
        const auto object = control.As<IOleObject>(IID_IOleObject);
        const auto view = control.As<IViewObject2>(IID_IViewObject2);
        const auto points = control.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
        ExpectEmptied<IMoniker>("GetMoniker", [&](auto out) { object->GetMoniker(1, 1, out); });
        ExpectEmptied<IOleClientSite>("GetClientSite", [&](auto out) { object->GetClientSite(out); });
        ExpectEmptied<IEnumSTATDATA>("EnumAdvise", [&](auto out) { object->EnumAdvise(out); });
        ExpectEmptied<LOGPALETTE>("GetColorSet",
                                  [&](auto out) { view->GetColorSet(1, -1, nullptr, nullptr, nullptr, out); });
        ExpectEmptied<IAdviseSink>("GetAdvise", [&](auto out) { view->GetAdvise(nullptr, nullptr, out); });
        ExpectEmptied<IConnectionPoint>("FindConnectionPoint",
                                        [&](auto out) { points->FindConnectionPoint(IID_IStream, out); });
        ExpectEmptied<ITypeInfo>("GetTypeInfo", [&](auto out) { control->GetTypeInfo(1, 0, out); });
        ExpectEmptied<void>("QueryInterface", [&](auto out) { control->QueryInterface(IID_IStream, out); });
        DWORD key = 1, cookie = 1;
        EXPECT_EQ(view->Freeze(1, -1, nullptr, &key), E_NOTIMPL);
        EXPECT_HRESULT_FAILED(object->Advise(nullptr, &cookie));
        EXPECT_EQ(key + cookie, 0u);
        DISPPARAMS none{};
        LPOLESTR names[] = {const_cast<LPOLESTR>(L"None")};
        DISPID dispid = 0;
        EXPECT_EQ(control->Invoke(1, IID_IDispatch, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
                  DISP_E_UNKNOWNINTERFACE);
        EXPECT_EQ(control->GetIDsOfNames(IID_IDispatch, names, 1, 0, &dispid), DISP_E_UNKNOWNINTERFACE);
    }
}

TEST_F(AutomationTest, AnEnumeratorAloneKeepsItsLibrary) {
    using Take = std::function<ComPtr<IUnknown>(ObjectRef)>;
    const auto newEnum = [](const wchar_t* collection) -> Take {
        return [=](ObjectRef object) { return ComPtr<IUnknown>(Call(Get(object, collection), L"_NewEnum").punkVal); };
    };
    const auto points = [](ObjectRef object) {
        ComPtr<IEnumConnectionPoints> result;
        const auto container = object.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
        EXPECT_HRESULT_SUCCEEDED(container->EnumConnectionPoints(result.Out()));
        return result;
    };
    const Take connections = [&](ObjectRef object) {
        ComPtr<IConnectionPoint> point;
        ComPtr<IEnumConnections> all, clone;
        points(object)->Next(1, point.Out(), nullptr);
        EXPECT_HRESULT_SUCCEEDED(point->EnumConnections(all.Out()));
        EXPECT_HRESULT_SUCCEEDED(all->Clone(clone.Out()));
        return clone;
    };
    const std::tuple<const wchar_t*, const wchar_t*, Take> rows[] = {
        {L"daxControls33.ocx", L"DAXControls.LessonMapEditor", newEnum(L"CheckedStoryboards")},
        {L"daxControls33.ocx", L"DAXControls.LessonMapEditor", points},
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

// A host's form: one object with an interface for the events of each of its controls.
class Form final : public StackObject<> {
public:
    class Listener final : public StackObject<> {
    public:
        STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
            heard.push_back(event);
            return S_OK;
        }
        GUID events{};
        std::vector<DISPID> heard;
    };
    Listener listeners[2];

private:
    void* Find(REFIID iid) override {
        for (Listener& each : listeners)
            if (each.events == iid) return static_cast<IDispatch*>(&each);
        return StackObject::Find(iid);
    }
};

TEST_F(AutomationTest, OneObjectHearsEachControlByItsOwnInterface) {
    Form form;
    const ComPtr<IDispatch> controls[] = {Create(L"DAXControls.GroupEditor"), Create(L"DAXControls.LockManager")};
    ComPtr<IConnectionPoint> points[2];
    DWORD cookies[2]{};
    for (size_t i = 0; i < 2; ++i) {
        GUID& events = form.listeners[i].events;
        const auto info = controls[i].As<IProvideClassInfo2>(IID_IProvideClassInfo2);
        const auto container = controls[i].As<IConnectionPointContainer>(IID_IConnectionPointContainer);
        EXPECT_HRESULT_SUCCEEDED(info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events));
        EXPECT_HRESULT_SUCCEEDED(container->FindConnectionPoint(events, points[i].Out()));
        EXPECT_HRESULT_SUCCEEDED(points[i]->Advise(&form, &cookies[i]));
    }
    Call(controls[0], L"Clear");
    Put(controls[1], L"ConnectionString", u"Provider=Nonsense");
    Call(controls[1], L"Refresh");
    EXPECT_EQ(form.listeners[0].heard, std::vector<DISPID>{1});
    EXPECT_EQ(form.listeners[1].heard.front(), 3) << "the failure";
    for (size_t i = 0; i < 2; ++i) EXPECT_HRESULT_SUCCEEDED(points[i]->Unadvise(cookies[i]));
}

TEST_F(AutomationTest, PanelsReportThatAnEditorIsOneOfAnotherThread) {
    ComPtr<IStream> stream;
    const HANDLE isMarshaled = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD threadId = 0;
    std::thread owner([&] {
        threadId = GetCurrentThreadId();
        OleInitialize(nullptr);
        {
            const auto editor = Create(L"DAXControls.GroupEditor");
            EXPECT_HRESULT_SUCCEEDED(CoMarshalInterThreadInterfaceInStream(IID_IDispatch, editor.Get(), stream.Out()));
            SetEvent(isMarshaled);
            for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0;) DispatchMessageW(&message);
        }
        OleUninitialize();
    });
    WaitForSingleObject(isMarshaled, INFINITE);
    {
        ComPtr<IDispatch> editor;
        EXPECT_HRESULT_SUCCEEDED(CoUnmarshalInterface(stream.Get(), IID_IDispatch, editor.OutVoid()));
        EXPECT_EQ(NumberOf(Call(editor, L"NodeCount")), 0) << "itself it can be used";
        for (const wchar_t* name : {L"DAXControls.LessonInfo", L"DAXControls.LockInfo"}) {
            Text description;
            try {
                Call(Create(name), L"UpdateFrom", {editor});
            } catch (const CallFailure& failure) {
                description = failure.description;
            }
            EXPECT_NE(description.find(u"another thread"), Text::npos) << ToUtf8(description);
        }
    }
    PostThreadMessageW(threadId, WM_QUIT, 0, 0);
    owner.join();
    CloseHandle(isMarshaled);
}

TEST_F(AutomationTest, UnregistrationLeavesNothing) {
    Register(false);
    const auto without = ClassKeys();
    EXPECT_FALSE(Create(L"DAXControls.Constants"));
    Register(true);
    const auto with = ClassKeys();
    for (const wchar_t* key :
         {L"\\DAXControls.GroupEditor", L"\\DAXControls.Constants", L"\\ContentObjects.Utility",
          L"CLSID\\{0B88A5EE-D833-44E2-A2A1-00AAD7D928A7}", L"TypeLib\\{8F5DC3A9-0CAF-4686-81C3-214347ED9D6A}"})
        EXPECT_TRUE(with.contains(key) && !without.contains(key)) << ToUtf8(FromWide(key));
    Register(false);
    EXPECT_EQ(ClassKeys(), without);
    Register(true);
}

TEST_F(AutomationTest, WorksWithoutRegistrationThroughTheShippedManifests) {
    Register(false);
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> rows[] = {
        {L"daxControls33", L"DAXControls.Constants", L"OCXVersion"},
        {L"daxControls33", L"DAXControls.SQLDBPicker", L"DBCatalog"},
        {L"daxControls33", L"DAXControls.GroupEditor", L"DatabaseTitle"},
        {L"daxControls33", L"DAXControls.LessonMapEditor", L"CurrentSBID"},
        {L"daxControls33", L"DAXControls.LockManager", L"ConnectionString"},
        {L"daxControls33", L"DAXControls.LockInfo", L"ConnectionString"},
        {L"contentObjects", L"ContentObjects.Lesson", L"Save"},
        {L"contentObjects", L"ContentObjects.Utility", L"NewIdentifier"},
        {L"contentObjects", L"ContentObjects.PropertyCollection", L"Save"},
    };
    for (const auto& [manifest, progID, member] : rows) {
        const std::wstring source = BinFolder() + manifest + L".manifest";
        ACTCTXW context{};
        context.cbSize = sizeof context;
        context.lpSource = source.c_str();
        const HANDLE handle = CreateActCtxW(&context);
        ASSERT_NE(handle, INVALID_HANDLE_VALUE) << GetLastError();
        ULONG_PTR cookie = 0;
        ASSERT_TRUE(ActivateActCtx(handle, &cookie));
        EXPECT_EQ(CodeOf([&] { Call(Create(progID), member); }), S_OK) << ToUtf8(FromWide(progID));
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
    ASSERT_HRESULT_SUCCEEDED(CallLibrary(L"contentObjects.dll", "DllUnregisterServer"));
    EXPECT_FALSE(Create(L"ContentObjects.Lesson"));
    Text part;
    EXPECT_EQ(CodeOf([&] { part = GetText(Get(editor, L"GetCheckedLesson"), L"Save"); }), S_OK);
    ASSERT_HRESULT_SUCCEEDED(CallLibrary(L"contentObjects.dll", "DllRegisterServer"));
    EXPECT_EQ(part, GetText(lesson, L"Save"));
}

} // namespace dax::test
