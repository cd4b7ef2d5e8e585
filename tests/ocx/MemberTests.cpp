// Every member of every interface through COM, once. What a member computes is tested where it is computed.
#include "Course.h"
#include "OcxHost.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <sstream>

namespace dax::test {

namespace {

struct MemberCase {
    // A name followed by "=" puts a value, by ":=" a reference.
    std::wstring member;
    std::vector<Variant> arguments = {};
    std::string expected = ""; // the result as text, its beginning before "*", or the code of a failure
    std::string events = "";   // heard meanwhile
};

class MemberTest : public OcxTest {
protected:
    void TearDown() override {
        for (auto& sink : sinks) {
            sink->Disconnect();
            EXPECT_TRUE(sink->IsReleased()) << "nobody else refers to the host's sink";
        }
        OcxTest::TearDown();
    }

    ComPtr<IDispatch> CreateHeard(const wchar_t* progID) {
        auto object = Create(progID);
        sinks.push_back(std::make_unique<Sink>([this](const HeardEvent& event) { heard += event.Described() + " "; }));
        sinks.back()->Connect(object);
        return object;
    }

    void Expect(ObjectRef object, const std::vector<MemberCase>& rows) {
        for (const MemberCase& row : rows) {
            const std::string full = InterfaceName(object) + "." + ToUtf8(FromWide(row.member));
            const bool isReference = row.member.ends_with(L":="), isPut = row.member.ends_with(L"=");
            called.insert(full);
            const std::wstring name = row.member.substr(0, row.member.size() - (isReference ? 2 : isPut ? 1 : 0));
            const WORD kind = isReference ? DISPATCH_PROPERTYPUTREF
                              : isPut     ? DISPATCH_PROPERTYPUT
                                          : DISPATCH_METHOD | DISPATCH_PROPERTYGET;
            heard.clear();
            std::string outcome = Outcome([&] { return Call(object, name.c_str(), row.arguments, kind); });
            if (row.expected.ends_with('*')) outcome = outcome.substr(0, row.expected.size() - 1) + '*';
            EXPECT_EQ(outcome, row.expected) << full;
            EXPECT_EQ(heard, row.events) << full;
        }
    }

    // Members without arguments that raise no event: "Name=result; Name=result".
    void ExpectAnswers(ObjectRef object, const std::string& rows) {
        const std::regex row("(\\w+)=([^;]*)(; )?");
        for (std::sregex_iterator each(rows.begin(), rows.end(), row), end; each != end; ++each)
            Expect(object, {{ToWide(FromUtf8(each->str(1))), {}, each->str(2)}});
    }

    // Each property that can be set keeps another value than the one that it has. What is current must exist.
    void ExpectKept(ObjectRef object) {
        ComPtr<ITypeInfo> type;
        ASSERT_HRESULT_SUCCEEDED(object->GetTypeInfo(0, LOCALE_NEUTRAL, type.Out()));
        FUNCDESC* function = nullptr;
        for (UINT i = 0; SUCCEEDED(type->GetFuncDesc(i, &function)); ++i) {
            Bstr text;
            type->GetDocumentation(function->memid, text.Out(), nullptr, nullptr, nullptr);
            const std::wstring name(text.Wide());
            const bool isPut = function->invkind == INVOKE_PROPERTYPUT && !name.starts_with(L"Current");
            type->ReleaseFuncDesc(function);
            Variant value = isPut ? Call(object, name.c_str()) : Variant();
            if (value.vt == VT_BOOL)
                value = Variant(!value.Bool());
            else if (value.vt == VT_I4)
                value = Variant(value.lVal + 1);
            else if (value.vt == VT_BSTR)
                value = Variant(value.Text() + L"ä");
            else
                continue;
            Put(object, name.c_str(), value);
            called.insert(InterfaceName(object) + "." + ToUtf8(FromWide(name)) + "=");
            Expect(object, {{name, {}, ToUtf8(FromWide(value.Text()))}});
        }
    }

    static std::string Outcome(const std::function<Variant()>& call) {
        try {
            return ToUtf8(FromWide(DescribeValue(call())));
        } catch (const CallFailure& failure) {
            char code[16];
            std::snprintf(code, sizeof code, "%08lX", static_cast<unsigned long>(failure.code));
            return code;
        }
    }

    static std::string InterfaceName(ObjectRef object) {
        ComPtr<ITypeInfo> type;
        Bstr name;
        EXPECT_HRESULT_SUCCEEDED(object->GetTypeInfo(0, LOCALE_NEUTRAL, type.Out()));
        type->GetDocumentation(MEMBERID_NIL, name.Out(), nullptr, nullptr, nullptr);
        return ToUtf8(FromBstr(name.Get()));
    }

    void CallGroupEditor();
    void CallLocksAndPanels();
    void CallValidatorAndPicker();
    void CallLesson();
    void CallLessonMap();
    void CallTree(ObjectRef tree);
    void CallProperties();
    void ExpectAllCalled(const wchar_t* snapshot) const;

    const Course course;
    const Variant connection{course.ConnectionString()}, no{false}, yes{true};
    std::string heard;
    std::vector<std::unique_ptr<Sink>> sinks;
    std::set<std::string> called; // "_Interface.Member", with "=" or ":=" when it was put
};

void MemberTest::CallGroupEditor() {
    const auto editor = CreateHeard(L"DAXControls.GroupEditor");
    Expect(editor, {{L"ConnectionString=", {connection}},
                    {L"LoadDatabase", {}, "True", "AfterSelectionChange() "},
                    {L"CurrentLessonID=", {u"b"}, "", "AfterSelectionChange(b) "},
                    {L"AddLesson", {u"n", u"Néw", u"#n", 1}, "", "DataChanged() AfterSelectionChange(n) "},
                    {L"CanMoveCurrent", {2}, "True"},
                    {L"MoveCurrent", {2}, "", "DataChanged() "},
                    {L"Undo", {}, "", "DataChanged() "},
                    {L"Redo", {}, "", "DataChanged() "},
                    {L"UpdateLesson", {u"d", u"Last", u"#z", 0}, "", "DataChanged() "},
                    {L"RemoveLesson", {u"g", no}, "", "DataChanged() "},
                    {L"GetLessonTitle", {u"n"}, "Néw"},
                    {L"GetLessonIdentifier", {u"d"}, "#z"},
                    {L"GetLessonType", {u"nobody"}, "-1"},
                    {L"GetChildLessonCount", {u"h"}, "2"},
                    {L"FindLesson", {u"title b", 1, yes}, "b", "AfterSelectionChange(b) "},
                    {L"GetChildLessonIDCollection", {u"h"}, "[object]"},
                    {L"GetLessonProperties", {u"nobody"}, "[nothing]"},
                    {L"GetAggregateProperties", {u"h"}, "[object]"},
                    {L"GetLessonTokens", {u"a"}, "[object]"}});
    ExpectAnswers(editor, "SaveDatabase=True; CurrentLessonID=b; NodeCount=7; CanUndo=True; CanRedo=False; "
                          "LockDisplay=; UnlockDisplay=; ExpandAll=; CollapseAll=");
    EXPECT_EQ(course.Below(u"h"), u"n c");
    const auto ids = Get(editor, L"GetChildLessonIDCollection", {u"h"});
    Expect(ids, {{L"Item", {3}, "h"}, // the group itself comes last
                 {L"Item", {u"c"}, "c"},
                 {L"Item", {4}, "800A0009"},
                 {L"Item", {u"a"}, "800A0005"},
                 {L"Item", {ids}, "800A000D"},
                 {L"Add", {u"a"}},
                 {L"Add", {u"a"}, "800A01C9"},
                 {L"Add", {u"x", u"y"}, "800A0005"},
                 {L"Remove", {1}},
                 {L"Remove", {u"h"}},
                 {L"Remove", {u"n"}, "800A0005"},
                 {L"Count", {}, "2"},
                 {L"_NewEnum", {}, "[object]"}});
    Text all;
    for (const Variant& each : Enumerated(ids)) all += TextOf(each);
    EXPECT_EQ(all, u"ca");
    Expect(editor, {{L"Clear", {}, "False", "AfterSelectionChange() "},
                    {L"SaveDatabase", {}, "False", "Error(-2147221504, No database open., SaveDatabase) "}});
    ExpectKept(editor);
}

void MemberTest::CallLocksAndPanels() {
    const auto editor = Create(L"DAXControls.GroupEditor"), locks = CreateHeard(L"DAXControls.LockManager");
    for (const auto& each : {editor, locks}) Put(each, L"ConnectionString", connection);
    Call(editor, L"LoadDatabase");
    Put(locks, L"Username", u"ann");
    Expect(locks, {{L"GroupIDCollection=", {Variant::Nothing()}},
                   {L"GroupIDCollection:=", {Get(editor, L"GetChildLessonIDCollection", {u"h"})}},
                   {L"RebuildDisplay", {yes}, "", "SelectionChanged(1) "}});
    ExpectAnswers(locks, "GroupIDCollection=[object]; LockCount=6; DeletableLockCount=3; InvalidLockCount=2; "
                         "ValidLockCount=4; SelectedLockDeleteType=1; SelectedLockCount=0; "
                         "SelectedDeletableLockCount=0; SelectedInvalidLockCount=0; SelectedValidLockCount=0; "
                         "AutosizeColumns=; DeleteSelected=");
    Put(locks, L"LockDisplayType", 3);
    Expect(locks, {{L"Refresh", {}, "", "SelectionChanged(1) "}, {L"LockCount", {}, "2"}});
    ExpectKept(locks);
    const auto info = Create(L"DAXControls.LessonInfo"), lockInfo = CreateHeard(L"DAXControls.LockInfo");
    for (const auto& panel : {info, lockInfo})
        Expect(panel, {{L"UpdateFrom", {editor}}, {L"UpdateFrom", {lockInfo}, "8*"}});
    ExpectKept(info);
    Expect(lockInfo, {{L"LockCount", {}, "5"}, {L"ConnectionString", {}, ToUtf8(course.ConnectionString())}});
}

void MemberTest::CallValidatorAndPicker() {
    const Connector connector;
    const auto validator = Create(L"DAXControls.DatabaseValidator");
    Expect(validator, {{L"ValidateDataConnection", {u"conn", u"C:\\no\\file", yes}, "False"}});
    ExpectAnswers(validator, "DataConnectionString=conn; CatalogName=C:\\no\\file; MDBMode=True; ErrorType=2; "
                             "ErrorNumber=75; ErrorDescription=file not found.");
    Expect(validator, {{L"ValidateSupportsTalk", {u""}, "False"},
                       {L"ValidateCommonConnection", {u"x", u"", u"catalog", u"user"}, "False"},
                       {L"CommonConnectionString", {}, "x"}});
    const auto picker = CreateHeard(L"DAXControls.SQLDBPicker");
    Expect(picker, {{L"LoadPicker",
                     {connector.ConnectionString(), u"anna", u"course"},
                     "True",
                     "CatalogChanged(course, login1, secret1, A course, the first) "},
                    {L"UpdateConnectionHistory", {u"PC", u"10.0.0.1", u"os", u"app"}},
                    {L"ConnectionString", {}, ToUtf8(connector.ConnectionString())}});
    ExpectAnswers(picker, "DBCatalog=course; DBUsername=login1; DBPassword=secret1; Title=A course; "
                          "DefaultCatalog=course; Username=anna; IsAdmin=False; IsReadOnly=False; IsSuperuser=False; "
                          "Clear=");
    EXPECT_EQ(CodeOf([&] { Put(picker, L"DBCatalog", u"x"); }), DISP_E_MEMBERNOTFOUND) << "read-only";
    ExpectKept(picker);
    EXPECT_EQ(connector.Ask(u"SELECT machineName FROM velmoraConnectionHistory"), u"PC");
    const std::wstring folder = BinFolder();
    Expect(Create(L"DAXControls.Constants"), {{L"OCXPath", {}, ToUtf8(FromWide(folder.substr(0, folder.size() - 1)))},
                                              {L"OCXFilename", {}, ToUtf8(FromWide(folder + L"daxControls33.ocx"))},
                                              {L"OCXVersion", {}, "3.3 (Build 0001)  Visual*"}});
}

void MemberTest::CallLesson() {
    const std::string sample = "lesson\t1\n"
                               "storyboard\ts1\ttext\tINTRO\tWelcome\n"
                               "storyboard\ts2\tquestion\tQ1\tWhat did\\nyou learn?\n"
                               "storyboard\ts3\t\t\tÜber 𝄞\n"
                               "map\tMain\tdefault\n"
                               "page\t1\ts1\n"
                               "page\t2\ts2\n"
                               "map\tExtra\n"
                               "page\t1\ts3\n"
                               "current\ts2\n";
    const auto lesson = Create(L"ContentObjects.Lesson"), map = Create(L"ContentObjects.StoryboardMap"),
               page = Create(L"ContentObjects.Storyboard"), other = Create(L"ContentObjects.Storyboard");
    EXPECT_NE(GetText(page, L"SBID"), GetText(other, L"SBID")) << "a new page has an identity of its own";
    Expect(lesson, {{L"Load", {FromUtf8(sample)}},
                    {L"Load", {u"lesson\t1\nstoryboard\ta\n"}, "800A0141"}, // changes nothing
                    {L"Save", {}, sample},
                    {L"CurrentSBID", {}, "s2"},
                    {L"CurrentSBID=", {u"s1"}},
                    {L"Storyboards", {}, "[object]"},
                    {L"Maps", {}, "[object]"}});
    const auto pages = Get(lesson, L"Storyboards"), maps = Get(lesson, L"Maps");
    for (const auto& each : {page, map, Create(L"ContentObjects.PropertyCollection")}) ExpectKept(each);
    Put(page, L"SBID", u"s4");
    Expect(pages, {{L"Count", {}, "3"},
                   {L"Item", {u"s2"}, "[object]"},
                   {L"Item", {u"none"}, "[nothing]"},
                   {L"Add", {page}},
                   {L"Add", {page}, "800A01C9"},
                   {L"Add", {Variant::Nothing()}, "800A0005"},
                   {L"Remove", {u"none"}},
                   {L"Remove", {u"s3"}},
                   {L"_NewEnum", {}, "[object]"}});
    EXPECT_EQ(Get(pages, L"Item", {u"s4"}).Get(), page.Get()) << "not a copy";
    Put(map, L"Name", u"Third");
    Expect(map, {{L"FillTree", {Variant::Nothing(), Variant::Nothing()}, "800A0005"},
                 {L"ReadLayout", {Variant::Nothing()}, "800A0005"}});
    Expect(maps, {{L"Count", {}, "2"},
                  {L"Item", {0}, "[object]"},
                  {L"Item", {u""}, "[nothing]"},
                  {L"Add", {map}},
                  {L"Add", {map}, "800A01C9"},
                  {L"DefaultMap:=", {map}},
                  {L"DefaultMap=", {Variant::Nothing()}, "800A0005"},
                  {L"DefaultMap", {}, "[object]"},
                  {L"_NewEnum", {}, "[object]"}});
    std::string order;
    for (const Variant& each : Enumerated(pages)) order += ToUtf8(GetText(each.Object(), L"SBID")) + " ";
    for (const Variant& each : Enumerated(maps)) order += ToUtf8(GetText(each.Object(), L"Name")) + " ";
    EXPECT_EQ(order, "s1 s2 s4 Main Extra Third ");
    Call(lesson, L"Load", {u"lesson\t1\n"});
    Expect(pages, {{L"Count", {}, "0"}}); // a collection follows its lesson
    Expect(Create(L"ContentObjects.Utility"), {{L"NewIdentifier", {}, "*"}});
}

void MemberTest::CallLessonMap() {
    const auto lesson = Create(L"ContentObjects.Lesson"), editor = CreateHeard(L"DAXControls.LessonMapEditor");
    Call(lesson, L"Load",
         {u"lesson\t1\nstoryboard\ta\ttext\tid a\ttitle a\nstoryboard\tb\ttext\tid b\ttitle b\n"
          u"storyboard\tc\ttext\tid c\ttitle c\nstoryboard\tlost\t\tID\tÜber\n"
          u"map\tM\tdefault\npage\t1\ta\npage\t2\tb\nmap\tM\npage\t1\tc\ncurrent\tb\n"});
    const auto page = [&](const char16_t* sbid) { return Get(Get(lesson, L"Storyboards"), L"Item", {sbid}); };
    // A map has got a name of its own.
    Expect(editor, {{L"Lesson:=", {lesson}, "", "MapChanged(0) AfterSelectionChange(b) "},
                    {L"Lesson=", {lesson}, "", "AfterSelectionChange(b) "}, // not another one
                    {L"CurrentSBID=", {u"a"}, "", "AfterSelectionChange(a) "},
                    {L"CurrentStoryboard:=", {page(u"c")}, "", "AfterSelectionChange(c) "},
                    {L"CurrentStoryboard=", {page(u"b")}, "", "AfterSelectionChange(b) "},
                    {L"GetChildStoryboardCount", {u"a"}, "1"},
                    {L"FindNextSBID", {u"TITLE", 4, no, no}, "c"}});
    ExpectAnswers(editor, "CurrentSBID=b; CheckAllStoryboards=; CheckedStoryboardCount=3; Lesson=[object]; "
                          "CurrentStoryboard=[object]; OrphanedStoryboards=[object]; CheckedStoryboards=[object]; "
                          "GetCheckedLesson=[object]; tvwObject=[object]; LockDisplay=; UnlockDisplay=; ExpandAll=");
    const auto checked = Get(editor, L"CheckedStoryboards");
    Expect(checked, {{L"Count", {}, "3"},
                     {L"Item", {2}, "[object]"},
                     {L"Item", {0}, "800A0009"},
                     {L"Item", {u"x"}, "800A0005"},
                     {L"_NewEnum", {}, "[object]"}});
    EXPECT_EQ(Get(checked, L"Item", {u"c"}).Get(), page(u"c").Get());
    EXPECT_EQ(Enumerated(checked).size(), 3u);
    Expect(editor, {{L"UncheckAllStoryboards"},
                    {L"CollapseAll", {}, "", "AfterSelectionChange() "},
                    {L"CurrentSBID=", {u"b"}, "", "AfterSelectionChange(b) "},
                    {L"AddStoryboard", {page(u"lost")}, "", "MapChanged(1) AfterSelectionChange(lost) "},
                    {L"UpdateStoryboard", {page(u"lost")}},
                    {L"UpdateSBID", {u"lost"}},
                    {L"CanMoveCurrent", {4}, "True"},
                    {L"MoveCurrent", {4}, "", "MapChanged(2) "},
                    {L"RemoveStoryboard", {page(u"lost"), no}, "", "MapChanged(3) AfterSelectionChange(a) "},
                    {L"Refresh"},
                    {L"SetImageList", {0, u"text"}},
                    {L"SetImageList", {u"none"}, "800A000D"}});
    EXPECT_EQ(Get(editor, L"CurrentStoryboard").Get(), page(u"a").Get());
    CallTree(Get(editor, L"tvwObject"));
    Expect(editor, {{L"Lesson=", {Variant::Nothing()}}, {L"GetCheckedLesson", {}, "[nothing]"}});
    ExpectKept(editor);
}

void MemberTest::CallTree(ObjectRef tree) {
    Expect(tree, {{L"Nodes", {}, "[object]"},
                  {L"ImageList=", {Variant::Nothing()}},
                  {L"ImageList:=", {Variant::Nothing()}},
                  {L"ImageList", {}, "[nothing]"},
                  {L"hWnd", {}, "*"},
                  {L"HitTest", {30, -30}, "[nothing]"}});
    const auto nodes = Get(tree, L"Nodes"), a = Get(nodes, L"Item", {u"a"});
    ExpectKept(Get(nodes, L"Item", {u"c"}));
    Expect(tree, {{L"SelectedItem=", {Get(nodes, L"Item", {u"b"})}, "", "AfterSelectionChange(b) "},
                  {L"SelectedItem:=", {a}, "", "AfterSelectionChange(a) "},
                  {L"SelectedItem", {}, "[object]"}});
    Expect(a, {{L"Image=", {u"video"}}, {L"EnsureVisible", {}, "*"}, {L"Image", {}, "7"}});
    ExpectAnswers(a, "Children=1; Index=2; FullPath=M (2)\\title a; Next=[nothing]; Previous=[nothing]");
    for (const auto& [relation, key] : {std::pair{L"Parent", u"M"}, std::pair{L"Child", u"b"}, std::pair{L"Root", u"M"},
                                        std::pair{L"FirstSibling", u"a"}, std::pair{L"LastSibling", u"a"}}) {
        Expect(a, {{relation, {}, "[object]"}});
        EXPECT_EQ(GetText(Get(a, relation), L"Key"), key);
    }
    Expect(nodes, {{L"Count", {}, "5"},
                   {L"Contains", {u"b"}, "True"},
                   {L"Item", {6}, "800A8B10"},
                   {L"Item", {u"none"}, "800A8B11"},
                   {L"Add", {a, 4, u"child", u"1"}, "[object]"},
                   {L"Add", {u"child", 3, u"before", u"2"}, "[object]"},
                   {L"Add", {a, 4, u"b"}, "800A8B12"}, // not a unique key
                   {L"Add", {a, 7, u"new"}, "800A0005"},
                   {L"Add", {tree, 4, u"new"}, "800A000D"},
                   {L"_NewEnum", {}, "[object]"}});
    EXPECT_EQ(Get(nodes, L"Item", {2}).Get(), a.Get()) << "one object for a node";
    EXPECT_EQ(Enumerated(nodes).size(), 7u);
    Expect(nodes, {{L"Remove", {u"a"}, "", "AfterSelectionChange() "}});
    Expect(a, {{L"Text", {}, "800A8B11"}}); // it is not in the tree any more
    Expect(nodes, {{L"Clear", {}, "", "AfterSelectionChange() "}, {L"Count", {}, "0"}});
}

void MemberTest::CallProperties() {
    const auto made = Create(L"ContentObjects.PropertyCollection"), read = Create(L"ContentObjects.PropertyCollection");
    Variant date, money;
    date.vt = VT_DATE;
    date.date = 46082.25; // 1 March 2026, 6 o'clock
    money.vt = VT_CY;
    money.cyVal.int64 = 15000;
    Expect(made, {{L"SetValue", {u"StoryboardCount", 7}},
                  {L"SetValue", {u"Classification", u"sécret\r\n"}},
                  {L"SetValue", {u"IsDone", yes}},
                  {L"SetValue", {u"ModifiedDate", date}},
                  {L"SetValue", {u"Price", money}},
                  {L"SetValue", {u"Object", made}, "800A000D"}});
    const Text text = GetText(made, L"Save");
    Expect(read, {{L"Load", {text}},
                  {L"Save", {}, ToUtf8(text)},
                  {L"GetValue", {u"storyboardcount", u"default"}, "7"},
                  {L"GetValue", {u"Classification"}, "sécret\r\n"},
                  {L"GetValue", {u"IsDone"}, "True"},
                  {L"GetValue", {u"Absent", u"default"}, "default"},
                  {L"GetValue", {u"Absent", made}, "[object]"},
                  {L"GetValue", {u"Absent"}, ""}});
    EXPECT_EQ(Call(read, L"GetValue", {u"ModifiedDate"}).date, date.date);
    EXPECT_EQ(Call(read, L"GetValue", {u"Price"}).dblVal, 1.5);

    // Those of an editor are live.
    const auto editor = Create(L"DAXControls.GroupEditor");
    Put(editor, L"ConnectionString", connection);
    Call(editor, L"LoadDatabase");
    const auto loaded = Get(editor, L"GetLessonProperties", {u"a"});
    Expect(loaded, {{L"GetValue", {u"Title"}, "Title a"}, {L"SetValue", {u"StoryboardCount", 9}}});
    Expect(Get(editor, L"GetAggregateProperties", {u"g"}), {{L"GetValue", {u"StoryboardCount"}, "9"}});
    Expect(Get(editor, L"GetLessonTokens", {u"a"}), {{L"GetValue", {u"LessonTitlePath"}, "Title g\\Title a"}});
}

// The snapshots of the type libraries tell what there is.
void MemberTest::ExpectAllCalled(const wchar_t* snapshot) const {
    std::ifstream file(std::filesystem::path(BinFolder() + L"ocx_data\\" + snapshot));
    const std::regex type("type \\d (\\w+) .*"), member("  member .* kind (\\d) \\S+ (\\w+)\\(.*");
    const std::map<std::string, std::string> kinds{{"1", ""}, {"2", ""}, {"4", "="}, {"8", ":="}};
    std::string name;
    size_t members = 0;
    std::smatch words;
    for (std::string line; std::getline(file, line);) {
        if (std::regex_match(line, words, type)) name = words[1];
        if (name.starts_with("__") || !std::regex_match(line, words, member)) continue; // events
        const std::string full = name + "." + words[2].str() + kinds.at(words[1]);
        EXPECT_TRUE(called.contains(full)) << full << " is called by no row";
        ++members;
    }
    EXPECT_GT(members, 10u);
}

} // namespace

TEST_F(MemberTest, EachReturnsAndRaisesWhatItShould) {
    CallProperties();
    CallGroupEditor();
    CallLocksAndPanels();
    CallValidatorAndPicker();
    CallLesson();
    CallLessonMap();
    ExpectAllCalled(L"DAXControls.snapshot.txt");
    ExpectAllCalled(L"ContentObjects.snapshot.txt");
}

TEST_F(MemberTest, FailuresCarryDescriptionAndSource) {
    const auto picker = Create(L"DAXControls.SQLDBPicker");
    try {
        Call(picker, L"LoadPicker", {u"Provider=Nonsense", u"a", u""});
        ADD_FAILURE() << "no provider of that name can be there";
    } catch (const CallFailure& failure) {
        EXPECT_EQ(failure.code, E_FAIL);
        EXPECT_EQ(failure.source, u"DAXControls.SQLDBPicker");
        EXPECT_NE(failure.description.find(u"Nonsense"), Text::npos);
    }
}

} // namespace dax::test
