// The lock list and both panels as controls: automation, the answers to errors, keys, and every way to let go.
#include "Course.h"
#include "Scripts.h"
#include "TestSite.h"

#include <commctrl.h>

namespace dax::test {

namespace {

class LockControlTest : public OcxTest {
protected:
    void TearDown() override {
        sink.Disconnect();
        EXPECT_EQ(sink.references, 1u) << "nobody else holds the host's sink";
        locks.Reset();
        OcxTest::TearDown();
    }

    int32_t Count(const wchar_t* property) { return NumberOf(Call(locks.Get(), property)); }
    void Set(const wchar_t* property, const Variant& value) { Put(locks.Get(), property, value); }
    void Open() {
        sink.Connect(locks.Get());
        Set(L"ConnectionString", Variant(course.ConnectionString()));
        Set(L"Username", Variant(u"ann"));
        Set(L"SessionID", Variant(u"another"));
        Call(locks.Get(), L"RebuildDisplay");
    }
    int32_t Shown(int32_t display) {
        Set(L"LockDisplayType", Variant(display));
        Take();
        Call(locks.Get(), L"Refresh");
        return Count(L"LockCount");
    }
    std::string Take() { return std::exchange(heard, {}); }
    static void Select(HWND list, WPARAM row) {
        LVITEMW item{};
        item.state = item.stateMask = LVIS_SELECTED;
        SendMessageW(list, LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
    }

    const Course course;
    std::string heard;
    Text number; // of the last error
    std::function<void()> onError;
    ComPtr<IDispatch> locks = Create(L"DAXControls.LockManager");
    Sink sink{[this](DISPID event, const std::vector<Text>& arguments) {
        heard += event == 1 ? "Selection " : event == 2 ? "Delete " : "Error ";
        heard += event == 3 ? ToUtf8(arguments[2] + u"/" + arguments[3] + u"/" + arguments[4]) : ToUtf8(arguments[0]);
        heard += "; ";
        if (event == 3) number = arguments[0];
        if (event == 3 && onError) onError();
    }};
};

// A host's own collection, which enumerates what it has, or has an Item, which says no with a code.
class TestCollection final : public TestDispatch<IEnumVARIANT> {
public:
    std::vector<Variant> elements;
    size_t next = 0;
    std::optional<HRESULT> no;
    int asked = 0;

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* dispid) override {
        ++asked;
        *dispid = 7;
        return no && std::wstring_view(*names) == L"Item" ? S_OK : DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT* result, EXCEPINFO*,
                        UINT*) override {
        ++asked;
        if (dispid == 7) {
            for (Variant& each : elements)
                if (FromBstr(each.bstrVal) == FromBstr(arguments->rgvarg->bstrVal)) return VariantCopy(result, &each);
            return *no;
        }
        if (dispid != DISPID_NEWENUM) return DISP_E_MEMBERNOTFOUND;
        next = 0;
        AddRef();
        result->punkVal = static_cast<IEnumVARIANT*>(this);
        result->vt = VT_UNKNOWN;
        return S_OK;
    }
    STDMETHODIMP Next(ULONG, VARIANT* element, ULONG*) override {
        return next < elements.size() ? VariantCopy(element, &elements[next++]) : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG) override { return E_NOTIMPL; }
    STDMETHODIMP Reset() override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IEnumVARIANT**) override { return E_NOTIMPL; }

private:
    void* Find(REFIID iid) override { return iid == IID_IEnumVARIANT ? static_cast<IEnumVARIANT*>(this) : nullptr; }
};

} // namespace

TEST_F(LockControlTest, ListsCountsAndFilters) {
    Open();
    EXPECT_EQ(Take(), "Selection 1; ") << "nothing is selected";
    EXPECT_EQ(Count(L"LockCount"), 6);
    EXPECT_EQ(Count(L"DeletableLockCount"), 3);
    EXPECT_EQ(Count(L"ValidLockCount"), 6 - Count(L"InvalidLockCount"));
    EXPECT_EQ(Count(L"SelectedLockDeleteType"), 1);
    Set(L"IsAdministrator", Variant(true));
    EXPECT_EQ(Count(L"DeletableLockCount"), 6);
    EXPECT_EQ(Shown(1), 3) << "ann's";
    Set(L"LessonID", Variant(u"c"));
    EXPECT_EQ(Shown(2), 2);
    EXPECT_EQ(Shown(3), 2) << "no group yet: the lesson alone";

    const auto editor = Create(L"DAXControls.GroupEditor");
    Put(editor.Get(), L"ConnectionString", Variant(course.ConnectionString()));
    Call(editor.Get(), L"LoadDatabase");
    Variant group = Call(editor.Get(), L"GetChildLessonIDCollection", {Variant(u"g")});
    Put(locks.Get(), L"GroupIDCollection", group, DISPATCH_PROPERTYPUTREF);
    EXPECT_EQ(ObjectOf(Call(locks.Get(), L"GroupIDCollection")).Get(), group.pdispVal);
    EXPECT_EQ(Shown(3), 4) << "a and b of the group, and the lesson";

    Call(group.pdispVal, L"Remove", {Variant(u"a")});
    Call(group.pdispVal, L"Add", {Variant(u"d"), Variant(u"d")});
    Call(group.pdispVal, L"Add", {Variant(u"a")});
    Call(group.pdispVal, L"Remove", {Variant(1)});
    EXPECT_EQ(Shown(3), 4) << "b was the first";
    EXPECT_EQ(TextOf(Call(group.pdispVal, L"Item", {Variant(2)})), u"d");
    const auto code = [&](const wchar_t* member, std::initializer_list<Variant> arguments) {
        return static_cast<uint32_t>(CodeOf([&] { Call(group.pdispVal, member, arguments); }));
    };
    EXPECT_EQ(code(L"Add", {Variant(u"d")}), 0x800A01C9);
    EXPECT_EQ(code(L"Add", {Variant(u"d"), Variant(u"y")}), 0x800A0005);
    EXPECT_EQ(code(L"Remove", {Variant(u"b")}), 0x800A0005);
    EXPECT_EQ(code(L"Remove", {Variant(9)}), 0x800A0009);
}

TEST_F(LockControlTest, AGroupIsAnyCollectionOfTheHost) {
    Open();
    Set(L"LessonID", Variant(u"c"));
    TestCollection own;
    own.elements = {Variant(u"a"), Variant(u"a"), Variant(u"d")};
    Set(L"GroupIDCollection", Variant(&own));
    EXPECT_EQ(Shown(0), 6);
    EXPECT_EQ(own.asked, 0) << "stored, and of no interest to other lists";
    EXPECT_EQ(Shown(3), 4) << "a, d, and the lesson's two";
    const std::string told = "Selection 1; ", failed = "Error updating the lock display/Refresh/0; ";
    own.elements = {Variant(u"b")};
    const std::tuple<uint32_t, int32_t, std::string, Text> items[] = {
        {0x800A0005, 3, told, u""},    {0x8002000B, 3, told, u""},     {0, 3, told, u""}, // there is no such item
        {0x80020005, 3, told, u""}, // takes places only: enumerated
        {0x8007000E, 0, failed, u"7"}, {0x800A0046, 0, failed, u"70"},
    };
    for (const auto& [no, count, events, error] : items) {
        own.no = static_cast<HRESULT>(no);
        number.clear();
        EXPECT_EQ(Shown(3), count) << no;
        EXPECT_EQ(Take(), events) << no;
        EXPECT_EQ(number, error) << no;
    }
    Set(L"GroupIDCollection", Variant(locks.Get()));
    Shown(3);
    EXPECT_EQ(number, u"438");
    EXPECT_EQ(own.references, 1u);

    const auto dictionary = Create(L"Scripting.Dictionary");
    Put(dictionary.Get(), L"CompareMode", Variant(1));
    Call(dictionary.Get(), L"Add", {Variant(u"D"), Variant(u"")});
    Put(locks.Get(), L"GroupIDCollection", Variant(dictionary.Get()), DISPATCH_PROPERTYPUTREF);
    EXPECT_EQ(Shown(3), 3);
    EXPECT_EQ(NumberOf(Call(dictionary.Get(), L"Count")), 1) << "asking adds nothing";
    Set(L"GroupIDCollection", Variant(static_cast<IDispatch*>(nullptr)));
    EXPECT_EQ(Shown(3), 2);
    EXPECT_EQ(Take(), told);

    const TempFolder folder;
    const Text script = folder.Write(u"groups.js", R"(
var locks = new ActiveXObject('DAXControls.LockManager'), keys = { a: 1, b: 2 };
function show(group) { locks.GroupIDCollection = group; locks.RebuildDisplay(); WScript.Echo(locks.LockCount); }
locks.ConnectionString = WScript.Arguments(0); locks.LockDisplayType = 3; show(['c', 'd']);
show({ Item: function (key) { return keys[key]; } }); keys.d = 3; locks.Refresh(); WScript.Echo(locks.LockCount);
)");
    const auto outcome = RunScript(ToWide(script), Quoted(course.ConnectionString()));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, "3\n2\n3\n");
}

TEST_F(LockControlTest, TheHostAnswersErrors) {
    Open();
    Take();
    Set(L"ConnectionString", Variant(u"Provider=Nonsense"));
    sink.answer = 4; // to try again
    onError = [&] { Set(L"ConnectionString", Variant(course.ConnectionString())); };
    Call(locks.Get(), L"Refresh");
    EXPECT_EQ(Take(), "Error updating the lock display/Refresh/0; Selection 1; ");
    EXPECT_EQ(Count(L"LockCount"), 6);
}

TEST_F(LockControlTest, TheUserSelectsAsksAndTheHostDeletes) {
    Open();
    TestSite site;
    const auto object = Place(locks.Get(), site, OLEIVERB_UIACTIVATE);
    const HWND list = GetWindow(WindowOf(locks.Get()), GW_CHILD);
    ASSERT_TRUE(site.activeObject);
    Call(locks.Get(), L"Refresh");
    Take();
    const auto press = [&](WPARAM key) {
        MSG down{list, WM_KEYDOWN, key, 1, 0, {}};
        return site.activeObject->TranslateAccelerator(&down) == S_OK;
    };
    EXPECT_TRUE(press(VK_DELETE));
    EXPECT_EQ(Take(), "") << "nothing selected, nothing asked";
    for (WPARAM row = 0; row < 6; ++row) Select(list, row);
    EXPECT_EQ(Count(L"SelectedLockCount"), 6);
    EXPECT_EQ(Count(L"SelectedDeletableLockCount"), 3);
    EXPECT_TRUE(press(VK_DELETE));
    EXPECT_EQ(Take(), "Delete 2; ");
    Call(locks.Get(), L"DeleteSelected");
    EXPECT_EQ(Take(), "Selection 1; ");
    EXPECT_EQ(course.LocksLeft(), u"3");
    course.AddLock(u"a", u"ann", 1, 1);
    EXPECT_TRUE(press(VK_F5));
    EXPECT_EQ(Count(L"LockCount"), 4);
    TestCollection group;
    group.elements = {Variant(u"a")};
    Set(L"GroupIDCollection", Variant(&group));
    Set(L"LockDisplayType", Variant(3));
    EXPECT_TRUE(press(VK_F5));
    EXPECT_EQ(Count(L"LockCount"), 1);
    Set(L"GroupIDCollection", Variant(static_cast<IDispatch*>(nullptr)));
    EXPECT_FALSE(press(VK_TAB));
    EXPECT_FALSE(press(VK_ESCAPE));
    object->Close(OLECLOSE_NOSAVE);
    object->SetClientSite(nullptr);
}

TEST_F(LockControlTest, PanelsFollowAnEditor) {
    auto editor = Create(L"DAXControls.GroupEditor");
    Put(editor.Get(), L"ConnectionString", Variant(course.ConnectionString()));
    Call(editor.Get(), L"LoadDatabase");
    const auto info = Create(L"DAXControls.LessonInfo"), lockInfo = Create(L"DAXControls.LockInfo");
    TestSite site;
    for (const auto& panel : {info, lockInfo}) Query<IOleObject>(panel.Get(), IID_IOleObject)->SetClientSite(&site);
    const auto update = [&](const Variant& from) {
        for (const auto& panel : {info, lockInfo}) Call(panel.Get(), L"UpdateFrom", {from});
        return std::pair{Picture(info.Get(), 260, 160), Picture(lockInfo.Get(), 260, 80)};
    };
    const auto& [root, rootLocks] = update(Variant(editor.Get()));
    EXPECT_EQ(NumberOf(Call(lockInfo.Get(), L"LockCount")), 5) << "of every lesson of the course";
    EXPECT_EQ(TextOf(Call(lockInfo.Get(), L"ConnectionString")), course.ConnectionString());
    Put(editor.Get(), L"CurrentLessonID", Variant(u"a"));
    const auto& [lesson, lessonLocks] = update(Variant(editor.Get()));
    EXPECT_EQ(NumberOf(Call(lockInfo.Get(), L"LockCount")), 1);
    EXPECT_TRUE(lesson != root && lessonLocks != rootLocks);
    Put(info.Get(), L"ShowIdentifier", Variant(false));
    EXPECT_NE(Picture(info.Get(), 260, 160), lesson) << "a line less";
    const auto& [nothing, noLocks] = update(Variant(static_cast<IDispatch*>(nullptr)));
    EXPECT_EQ(NumberOf(Call(lockInfo.Get(), L"LockCount")), 0);
    EXPECT_EQ(PixelsUnlike(nothing, nothing.front()), 0u);
    EXPECT_NE(noLocks, lessonLocks);
    for (const auto& panel : {info, lockInfo})
        EXPECT_TRUE(FAILED(CodeOf([&] { Call(panel.Get(), L"UpdateFrom", {Variant(lockInfo.Get())}); })));

    std::vector<Text> told;
    Sink failing([&](DISPID, const std::vector<Text>& arguments) { told = arguments; });
    failing.Connect(lockInfo.Get());
    Put(editor.Get(), L"ConnectionString", Variant(u"Provider=Nonsense"));
    Call(lockInfo.Get(), L"UpdateFrom", {Variant(editor.Get())});
    failing.Disconnect();
    EXPECT_TRUE(told.size() == 2 && told[1].find(u"Nonsense") != Text::npos);
    for (const auto& panel : {info, lockInfo}) Query<IOleObject>(panel.Get(), IID_IOleObject)->SetClientSite(nullptr);
}

} // namespace dax::test
