// The hierarchy editor as a control: its automation, its collections, its properties in a bag, its keys, its events.
#include "Course.h"
#include "TestSite.h"

#include <thread>

namespace dax::test {

namespace {

constexpr HRESULT HostError(int number) { return static_cast<HRESULT>(0x800A0000u | static_cast<unsigned>(number)); }

const char* const EventNames[] = {"?", "Selected", "Changed", "Delete", "Error", "Open"};

class HierarchyControlTest : public OcxTest {
protected:
    void TearDown() override {
        sink.Disconnect();
        EXPECT_EQ(sink.references, 1u) << "nobody else holds the host's sink";
        editor.Reset();
        OcxTest::TearDown();
    }

    void Open() {
        sink.Connect(editor.Get());
        Put(editor.Get(), L"ConnectionString", Variant(course.ConnectionString()));
        EXPECT_TRUE(IsTrue(Ask(L"LoadDatabase")));
        heard.clear();
    }
    Variant Ask(const wchar_t* member, std::initializer_list<Variant> arguments = {}) {
        return Call(editor.Get(), member, arguments);
    }
    std::string Take() { return std::exchange(heard, {}); }
    Text Children(const Text& id) {
        const auto ids = ObjectOf(Ask(L"GetChildLessonIDCollection", {Variant(id)}));
        Text all;
        for (int32_t i = 1; i <= NumberOf(Call(ids.Get(), L"Count")); ++i)
            all += TextOf(Call(ids.Get(), L"Item", {Variant(i)})) + u" ";
        return all;
    }

    const Course course;
    std::string heard;
    ComPtr<IDispatch> editor = Create(L"DAXControls.GroupEditor");
    Sink sink{[this](DISPID event, const std::vector<Text>& arguments) {
        heard += EventNames[event];
        for (const Text& argument : arguments) heard += " " + ToUtf8(argument);
        heard += "; ";
    }};
};

} // namespace

TEST_F(HierarchyControlTest, EditsAndSavesWhatAHostSays) {
    Open();
    EXPECT_EQ(NumberOf(Ask(L"NodeCount")), 7);
    EXPECT_EQ(Children(u""), u"g a b h c d ");
    Put(editor.Get(), L"CurrentLessonID", Variant(u"b"));
    Ask(L"AddLesson", {Variant(u"n"), Variant(u"Néw"), Variant(u"#n"), Variant(int32_t{1})});
    EXPECT_EQ(Take(), "Selected b; Changed; Selected n; ");
    EXPECT_TRUE(IsTrue(Ask(L"CanMoveCurrent", {Variant(int32_t{2})})));
    Ask(L"MoveCurrent", {Variant(int32_t{2})}); // down: to the head of the next group
    Ask(L"UpdateLesson", {Variant(u"d"), Variant(u"Last"), Variant(u"#z"), Variant(int32_t{0})});
    Ask(L"RemoveLesson", {Variant(u"g"), Variant(false)});
    EXPECT_EQ(Children(u""), u"b a h n c d ");
    EXPECT_TRUE(IsTrue(Ask(L"SaveDatabase")));
    EXPECT_EQ(course.Below(u""), u"b a h d");
    EXPECT_EQ(course.Below(u"h"), u"n c");
    EXPECT_EQ(course.Ask(u"SELECT lessonTitle || lessonIdentifier || lessonType FROM velmoraLessons WHERE lessonID = "
                         u"'d'"),
              u"Last#z0");
    Put(editor.Get(), L"DatabaseTitle", Variant(u"The course"));
    EXPECT_EQ(TextOf(Ask(L"GetLessonTitle", {Variant(u"")})), u"The course");
    EXPECT_EQ(NumberOf(Ask(L"GetLessonType", {Variant(u"nobody")})), -1);
    EXPECT_EQ(NumberOf(Ask(L"GetChildLessonCount", {Variant(u"h")})), 2);
    Take();
    EXPECT_FALSE(IsTrue(Ask(L"Clear")));
    EXPECT_FALSE(IsTrue(Ask(L"SaveDatabase")));
    EXPECT_EQ(Take(), "Selected ; Error -2147221504 No database open. SaveDatabase; ");
}

TEST_F(HierarchyControlTest, IdentifiersAreACollectionForHosts) {
    Open();
    const auto ids = ObjectOf(Ask(L"GetChildLessonIDCollection", {Variant(u"g")}));
    const auto item = [&](const Variant& index) { return Call(ids.Get(), L"Item", {index}); };
    EXPECT_EQ(NumberOf(Call(ids.Get(), L"Count")), 3);
    EXPECT_EQ(TextOf(item(Variant(int32_t{3}))), u"g") << "the group itself comes last";
    EXPECT_EQ(TextOf(item(Variant(u"b"))), u"b");
    EXPECT_EQ(CodeOf([&] { item(Variant(int32_t{0})); }), HostError(9));
    EXPECT_EQ(CodeOf([&] { item(Variant(int32_t{4})); }), HostError(9));
    EXPECT_EQ(CodeOf([&] { item(Variant(u"c")); }), HostError(5));
    EXPECT_EQ(CodeOf([&] { item(Variant(ids.Get())); }), HostError(13));

    const Variant answer = Call(ids.Get(), L"_NewEnum");
    const auto elements = Query<IEnumVARIANT>(answer.punkVal, IID_IEnumVARIANT);
    ASSERT_TRUE(elements);
    Variant first, more[3];
    ULONG fetched = 0;
    EXPECT_EQ(elements->Next(1, &first, nullptr), S_OK);
    EXPECT_EQ(elements->Next(3, more, &fetched), S_FALSE);
    EXPECT_EQ(fetched, 2u);
    EXPECT_EQ(TextOf(first) + TextOf(more[0]) + TextOf(more[1]), u"abg");
}

TEST_F(HierarchyControlTest, PanelsSayWhyAnEditorOfAnotherThreadIsNotForThem) {
    ComPtr<IStream> parcel;
    const HANDLE isMade = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD threadId = 0;
    std::thread owner([&] {
        OleInitialize(nullptr);
        {
            const auto editor = Create(L"DAXControls.GroupEditor");
            EXPECT_HRESULT_SUCCEEDED(CoMarshalInterThreadInterfaceInStream(IID_IDispatch, editor.Get(), parcel.Out()));
            threadId = GetCurrentThreadId();
            SetEvent(isMade);
            for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0;) DispatchMessageW(&message);
        }
        OleUninitialize();
    });
    WaitForSingleObject(isMade, INFINITE);
    {
        ComPtr<IDispatch> editor;
        EXPECT_HRESULT_SUCCEEDED(CoUnmarshalInterface(parcel.Get(), IID_IDispatch, editor.OutVoid()));
        EXPECT_EQ(NumberOf(Call(editor.Get(), L"NodeCount")), 0) << "itself it can be used";
        for (const wchar_t* name : {L"DAXControls.LessonInfo", L"DAXControls.LockInfo"}) {
            const auto panel = Create(name);
            Text said;
            try {
                Call(panel.Get(), L"UpdateFrom", {Variant(editor.Get())});
            } catch (const CallFailure& failure) {
                said = failure.description;
            }
            EXPECT_NE(said.find(u"another thread"), Text::npos) << ToUtf8(said);
        }
    }
    PostThreadMessageW(threadId, WM_QUIT, 0, 0);
    owner.join();
    CloseHandle(isMade);
}

TEST_F(HierarchyControlTest, PropertiesGoToAutomationAndBack) {
    const auto made = Create(L"ContentObjects.PropertyCollection");
    const auto set = [&](const char16_t* name, const Variant& value) {
        return CodeOf([&] { Call(made.Get(), L"SetValue", {Variant(name), value}); });
    };
    Variant date;
    date.vt = VT_DATE;
    date.date = 46082.25; // 1 March 2026, 6 o'clock
    Variant small, money;
    small.vt = VT_UI1;
    small.bVal = 200;
    money.vt = VT_CY;
    money.cyVal.int64 = 15000;
    for (const auto& [name, value] :
         {std::pair{u"StoryboardCount", Variant(int32_t{7})}, std::pair{u"Classification", Variant(u"s\u00e9cret\r\n")},
          std::pair{u"IsDone", Variant(true)}, std::pair{u"ModifiedDate", date}, std::pair{u"Small", small},
          std::pair{u"Price", money}})
        EXPECT_EQ(set(name, value), S_OK);
    EXPECT_EQ(set(u"Object", Variant(made.Get())), HostError(13));
    Put(made.Get(), L"Name", Variant(u"mine"));
    const Text text = TextOf(Call(made.Get(), L"Save"));

    const auto read = Create(L"ContentObjects.PropertyCollection");
    Call(read.Get(), L"Load", {Variant(text)});
    const auto get = [&](IDispatch* from, const char16_t* name) {
        return Call(from, L"GetValue", {Variant(name), Variant(u"default")});
    };
    EXPECT_EQ(TextOf(Call(read.Get(), L"Name")), u"mine");
    EXPECT_EQ(NumberOf(get(read.Get(), u"storyboardcount")), 7);
    EXPECT_EQ(TextOf(get(read.Get(), u"Classification")), u"s\u00e9cret\r\n");
    EXPECT_TRUE(IsTrue(get(read.Get(), u"IsDone")));
    EXPECT_EQ(get(read.Get(), u"ModifiedDate").date, date.date);
    EXPECT_EQ(NumberOf(get(read.Get(), u"Small")), 200);
    EXPECT_EQ(get(read.Get(), u"Price").dblVal, 1.5);
    EXPECT_EQ(TextOf(get(read.Get(), u"Absent")), u"default");
    EXPECT_EQ(Call(read.Get(), L"GetValue", {Variant(u"Absent")}).vt, VT_EMPTY);
    EXPECT_EQ(ObjectOf(Call(read.Get(), L"GetValue", {Variant(u"Absent"), Variant(made.Get())})).Get(), made.Get());

    course.Run({u"UPDATE velmoraLessons SET lessonProperties = '" + text + u"' WHERE lessonID = 'a'"});
    Open();
    const auto loaded = ObjectOf(Ask(L"GetLessonProperties", {Variant(u"a")}));
    EXPECT_EQ(TextOf(get(loaded.Get(), u"Title")), u"Title a");
    const auto figures = ObjectOf(Ask(L"GetAggregateProperties", {Variant(u"g")}));
    EXPECT_EQ(TextOf(Call(figures.Get(), L"Name")), u"AggregateProperties");
    EXPECT_EQ(NumberOf(get(figures.Get(), u"StoryboardCount")), 7);
    Call(loaded.Get(), L"SetValue", {Variant(u"StoryboardCount"), Variant(int32_t{9})});
    const auto again = ObjectOf(Ask(L"GetAggregateProperties", {Variant(u"")}));
    EXPECT_EQ(NumberOf(get(again.Get(), u"StoryboardCount")), 9) << "the editor's own values were changed";
    const auto tokens = ObjectOf(Ask(L"GetLessonTokens", {Variant(u"a")}));
    EXPECT_EQ(TextOf(get(tokens.Get(), u"LessonTitlePath")), u"Title g\\Title a");
    const Variant nothing = Ask(L"GetLessonProperties", {Variant(u"nobody")});
    EXPECT_TRUE(nothing.vt == VT_DISPATCH && !nothing.pdispVal);
}

} // namespace dax::test
