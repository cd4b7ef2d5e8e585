// The classes as scripts and programs without a container use them, registered or not.
#include "OcxHost.h"

#include <future>
#include <thread>

namespace dax::test {

namespace {

class AutomationTest : public OcxTest {};

} // namespace

TEST_F(AutomationTest, AnEnumeratorAloneKeepsItsLibrary) {
    const Variant checked = Call(Get(Create(L"DAXControls.LessonMapEditor"), L"CheckedStoryboards"), L"_NewEnum"),
                  maps = Call(Get(Create(L"ContentObjects.Lesson"), L"Maps"), L"_NewEnum");
    PumpPending();
    EXPECT_EQ(CallLibrary(L"daxControls33.ocx", "DllCanUnloadNow"), S_FALSE);
    EXPECT_EQ(CallLibrary(L"contentObjects.dll", "DllCanUnloadNow"), S_FALSE);
}

// Of a host's form: an object with other interfaces for the events of its controls.
class Listener final : public StackObject<> {
public:
    STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return received = event, S_OK;
    }
    GUID events{};
    Listener* forEvents = nullptr;
    DISPID received = 0;

private:
    void* Find(REFIID iid) override {
        return forEvents && iid == events ? forEvents->Find(IID_IDispatch) : StackObject::Find(iid);
    }
};

TEST_F(AutomationTest, EventsComeToTheInterfaceThatIsMeantForThem) {
    Listener form, forEvents;
    form.forEvents = &forEvents;
    const auto editor = Create(L"DAXControls.GroupEditor");
    const auto points = editor.As<IConnectionPointContainer>(IID_IConnectionPointContainer);
    ComPtr<IConnectionPoint> point;
    DWORD cookie = 0;
    editor.As<IProvideClassInfo2>(IID_IProvideClassInfo2)->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &form.events);
    ASSERT_HRESULT_SUCCEEDED(points->FindConnectionPoint(form.events, point.Out()));
    EXPECT_HRESULT_SUCCEEDED(point->Advise(&form, &cookie));
    Call(editor, L"Clear");
    EXPECT_EQ(forEvents.received, 1);
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
        EXPECT_EQ(Call(editor, L"NodeCount").Long(), 0) << "itself it can be used";
        for (const wchar_t* name : {L"DAXControls.LessonInfo", L"DAXControls.LockInfo"})
            EXPECT_EQ(CodeOf([&] { Call(Create(name), L"UpdateFrom", {editor}); }), HRESULT(0x800A000D));
    }
    PostThreadMessageW(threadId, WM_QUIT, 0, 0);
    owner.join();
}

TEST_F(AutomationTest, WorksWithoutRegistrationThroughTheShippedManifests) {
    const auto lesson = Create(L"ContentObjects.Lesson"), editor = Create(L"DAXControls.LessonMapEditor");
    Call(lesson, L"Load", {u"lesson\t1\nstoryboard\ta\t\t\t\nmap\tM\tdefault\npage\t1\ta\n"});
    Put(editor, L"Lesson", lesson);
    Call(editor, L"CheckAllStoryboards");
    Register(false);
    EXPECT_FALSE(Create(L"DAXControls.Constants") || Create(L"ContentObjects.Lesson"));
    EXPECT_EQ(GetText(Get(editor, L"GetCheckedLesson"), L"Save"), GetText(lesson, L"Save")) << "from beside it";

    for (const std::wstring name : {L"DAXControls.Constants", L"DAXControls.SQLDBPicker", L"DAXControls.GroupEditor",
                                    L"DAXControls.LessonMapEditor", L"DAXControls.LockManager", L"DAXControls.LockInfo",
                                    L"ContentObjects.Lesson", L"ContentObjects.PropertyCollection"}) {
        const std::wstring manifest =
            BinFolder() + (name.starts_with(L"DAX") ? L"daxControls33" : L"contentObjects") + L".manifest";
        ACTCTXW context{};
        context.cbSize = sizeof context;
        context.lpSource = manifest.c_str();
        const HANDLE handle = CreateActCtxW(&context);
        ULONG_PTR cookie = 0;
        ASSERT_TRUE(ActivateActCtx(handle, &cookie)) << GetLastError();
        ComPtr<ITypeInfo> type;
        const auto object = Create(name);
        EXPECT_TRUE(object && object->GetTypeInfo(0, LOCALE_NEUTRAL, type.Out()) == S_OK) << ToUtf8(FromWide(name));
        DeactivateActCtx(0, cookie);
        ReleaseActCtx(handle);
    }
    Register(true);
}

} // namespace dax::test
