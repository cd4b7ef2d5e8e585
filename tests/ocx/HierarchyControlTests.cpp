// The hierarchy editor as a control: its automation, its collections, its properties in a bag, its keys, its events.
#include "Course.h"
#include "TestSite.h"

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

// A host's bag, which keeps what is written.
class TestBag final : public IPropertyBag {
public:
    std::map<std::wstring, Variant> values;

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; } // lives on the stack
    STDMETHODIMP Read(LPCOLESTR name, VARIANT* value, IErrorLog*) override {
        const auto found = values.find(name);
        return found == values.end() ? E_INVALIDARG : VariantCopy(value, &found->second);
    }
    STDMETHODIMP Write(LPCOLESTR name, VARIANT* value) override { return VariantCopy(&values[name], value); }
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

    DISPPARAMS none{};
    Variant answer;
    ASSERT_HRESULT_SUCCEEDED(ids->Invoke(DISPID_NEWENUM, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                         &answer, nullptr, nullptr));
    const auto elements = Query<IEnumVARIANT>(answer.punkVal, IID_IEnumVARIANT);
    ASSERT_TRUE(elements);
    Variant first, more[3];
    ULONG fetched = 0;
    EXPECT_EQ(elements->Next(1, &first, nullptr), S_OK);
    EXPECT_EQ(elements->Next(3, more, &fetched), S_FALSE);
    EXPECT_EQ(fetched, 2u);
    EXPECT_EQ(TextOf(first) + TextOf(more[0]) + TextOf(more[1]), u"abg");
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

TEST_F(HierarchyControlTest, DesignPropertiesStayInTheHostsBag) {
    const auto persist = Query<IPersistPropertyBag>(editor.Get(), IID_IPersistPropertyBag);
    TestBag bag;
    EXPECT_HRESULT_SUCCEEDED(persist->InitNew());
    EXPECT_EQ(Query<IPersistStreamInit>(editor.Get(), IID_IPersistStreamInit)->IsDirty(), S_FALSE);
    for (const wchar_t* name : {L"AllowDragDrop", L"Locked", L"SingleExpand"}) {
        const bool isSet = IsTrue(Ask(name));
        EXPECT_EQ(isSet, name[0] == L'A') << ToUtf8(FromWide(name));
        Put(editor.Get(), name, Variant(!isSet));
    }
    Put(editor.Get(), L"ConnectionString", Variant(u"secret"));
    EXPECT_EQ(Query<IPersistStreamInit>(editor.Get(), IID_IPersistStreamInit)->IsDirty(), S_OK);
    EXPECT_HRESULT_SUCCEEDED(persist->Save(&bag, TRUE, FALSE));
    EXPECT_EQ(bag.values.size(), 3u) << "no data, and no connection string";

    const auto other = Create(L"DAXControls.GroupEditor");
    EXPECT_HRESULT_SUCCEEDED(Query<IPersistPropertyBag>(other.Get(), IID_IPersistPropertyBag)->Load(&bag, nullptr));
    TestSite site;
    site.ambients[DISPID_AMBIENT_USERMODE] = Variant(true);
    const auto object = Query<IOleObject>(other.Get(), IID_IOleObject);
    object->SetClientSite(&site);
    EXPECT_HRESULT_SUCCEEDED(object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, &site, 0, site.window, &site.place));
    for (const wchar_t* name : {L"AllowDragDrop", L"Locked", L"SingleExpand"})
        EXPECT_EQ(IsTrue(Call(other.Get(), name)), name[0] != L'A') << ToUtf8(FromWide(name));
    const HWND tree = GetWindow(WindowOf(other.Get()), GW_CHILD);
    EXPECT_TRUE(GetWindowLongW(tree, GWL_STYLE) & 0x0400) << "single expand is a style of the tree";
    object->Close(OLECLOSE_NOSAVE);
    object->SetClientSite(nullptr);
}

TEST_F(HierarchyControlTest, KeysReachTheTreeAndTabTheHost) {
    Open();
    TestSite site;
    const auto object = Place(editor.Get(), site, OLEIVERB_UIACTIVATE);
    const HWND tree = GetFocus();
    ASSERT_TRUE(site.activeObject && IsChild(WindowOf(editor.Get()), tree));
    Put(editor.Get(), L"CurrentLessonID", Variant(u"g"));
    Take();
    const auto press = [&](WPARAM key) {
        MSG down{tree, WM_KEYDOWN, key, 1, 0, {}}, up{tree, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001u), 0, {}};
        const bool isUsed = site.activeObject->TranslateAccelerator(&down) == S_OK;
        if (isUsed && site.activeObject) site.activeObject->TranslateAccelerator(&up);
        PumpPending();
        return isUsed;
    };
    EXPECT_TRUE(press(VK_DOWN));
    EXPECT_EQ(Take(), "Selected h; ") << "the group is closed";
    EXPECT_TRUE(press(VK_RIGHT));
    EXPECT_TRUE(press(VK_RIGHT));
    EXPECT_EQ(Take(), "Selected c; ");
    EXPECT_TRUE(press(VK_DELETE));
    EXPECT_EQ(Take(), "Delete; ");
    for (const WPARAM key : {WPARAM{VK_TAB}, WPARAM{VK_ESCAPE}, WPARAM{VK_RETURN}, WPARAM{VK_F1}})
        EXPECT_FALSE(press(key)) << key;
    Put(editor.Get(), L"Locked", Variant(true));
    EXPECT_TRUE(press(VK_RETURN));
    EXPECT_EQ(Take(), "Open; ");
    object->Close(OLECLOSE_NOSAVE);
    object->SetClientSite(nullptr);
}

TEST_F(HierarchyControlTest, ThePictureOfAnInactiveControlShowsItsTree) {
    TestSite site;
    const auto object = Query<IOleObject>(editor.Get(), IID_IOleObject);
    object->SetClientSite(&site);
    const auto empty = Picture(editor.Get(), 200, 150);
    Open();
    const auto loaded = Picture(editor.Get(), 200, 150);
    EXPECT_NE(loaded, empty);
    Ask(L"ExpandAll");
    EXPECT_NE(Picture(editor.Get(), 200, 150), loaded);
    object->SetClientSite(nullptr);
}

TEST_F(HierarchyControlTest, MayBeReleasedInsideEachOfItsEvents) {
    const struct {
        DISPID event;
        const wchar_t* member;
        UINT message;
        WPARAM key;
    } cases[] = {{1, L"LoadDatabase", 0, 0},          {1, L"Clear", 0, 0},
                 {1, nullptr, WM_KEYDOWN, VK_UP},     {2, L"MoveCurrent", 0, 0},
                 {3, nullptr, WM_KEYDOWN, VK_DELETE}, {4, L"SaveDatabase", 0, 0},
                 {5, nullptr, WM_CHAR, VK_RETURN}};
    for (const auto& row : cases) {
        SCOPED_TRACE(row.event);
        TestSite site;
        auto control = Create(L"DAXControls.GroupEditor");
        auto object = Place(control.Get(), site, OLEIVERB_UIACTIVATE);
        const HWND window = WindowOf(control.Get()), tree = GetWindow(window, GW_CHILD);
        Put(control.Get(), L"ConnectionString", Variant(course.ConnectionString()));
        Call(control.Get(), L"LoadDatabase");
        Put(control.Get(), L"CurrentLessonID", Variant(u"d"));
        Put(control.Get(), L"Locked", Variant(row.key == VK_RETURN));
        if (row.event == 4) Put(control.Get(), L"ConnectionString", Variant(u"Provider=Nonsense"));
        int events = 0;
        Sink releasing([&](DISPID event, const std::vector<Text>&) {
            if (event != row.event) return;
            ++events;
            releasing.Disconnect();
            object->Close(OLECLOSE_NOSAVE);
            object->SetClientSite(nullptr);
            site.activeObject.Reset();
            object.Reset();
            control.Reset();
        });
        releasing.Connect(control.Get());
        if (!row.member)
            SendMessageW(tree, row.message, row.key, 1);
        else if (row.event == 2)
            Call(control.Get(), row.member, {Variant(int32_t{3})});
        else
            Call(control.Get(), row.member);
        EXPECT_EQ(events, 1);
        EXPECT_FALSE(control);
        EXPECT_TRUE(PumpUntil([&] { return !IsWindow(window) && !IsWindow(tree); })) << "gone soon after";
        EXPECT_EQ(releasing.references, 1u);
        EXPECT_EQ(site.references, 1u);
    }
}

} // namespace dax::test
