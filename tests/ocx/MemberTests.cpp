// Every member of every interface through COM, once with each kind of argument. What a member computes is tested where
// it is computed.
#include "Connector.h"
#include "Course.h"
#include "TestSite.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <set>

namespace dax::test {

namespace {

struct MemberCase {
    // A name followed by "=" puts a value, by ":=" a reference.
    const wchar_t* member;
    std::vector<Variant> arguments = {};
    std::string expected = ""; // the result as text, its beginning before "*", or the code of a failure
    std::string events = "";   // heard meanwhile
};

using Property = std::pair<const wchar_t*, Variant>;
using Names = std::vector<const wchar_t*>;

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
            std::wstring name = row.member;
            const std::string full = InterfaceName(object) + "." + ToUtf8(FromWide(name));
            const bool isReference = name.ends_with(L":="), isPut = name.ends_with(L"=");
            called.insert(full);
            name.resize(name.size() - (isReference ? 2 : isPut ? 1 : 0));
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

    // Each reads as its value.
    void ExpectValues(ObjectRef object, const std::vector<Property>& rows) {
        for (const auto& [name, value] : rows) Expect(object, {{name, {}, ToUtf8(FromWide(DescribeValue(value)))}});
    }
    // Each takes its value and reads as it afterwards.
    void ExpectKept(ObjectRef object, const std::vector<Property>& rows) {
        for (const auto& [name, value] : rows) Expect(object, {{(std::wstring(name) + L"=").c_str(), {value}}});
        ExpectValues(object, rows);
    }
    // Each returns an object.
    void ExpectObjects(ObjectRef object, const Names& names) {
        for (const wchar_t* name : names) Expect(object, {{name, {}, "[object]"}});
    }
    // Each does its work without a result and an event.
    void ExpectDone(ObjectRef object, const Names& names) {
        for (const wchar_t* name : names) Expect(object, {{name}});
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
    void CallIdentifiers(ObjectRef ids);
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
    ExpectKept(editor, {{L"ConnectionString", connection}, {L"ConflictCheck", no}});
    Expect(editor, {{L"LoadDatabase", {}, "True", "AfterSelectionChange() "},
                    {L"CurrentLessonID=", {u"b"}, "", "AfterSelectionChange(b) "},
                    {L"AddLesson", {u"n", u"Néw", u"#n", 1}, "", "DataChanged() AfterSelectionChange(n) "},
                    {L"CanMoveCurrent", {2}, "True"},
                    {L"MoveCurrent", {2}, "", "DataChanged() "}});
    ExpectValues(editor, {{L"CurrentLessonID", u"n"}, {L"NodeCount", 8}, {L"CanUndo", yes}});
    Expect(editor, {{L"Undo", {}, "", "DataChanged() "},
                    {L"CanRedo", {}, "True"},
                    {L"Redo", {}, "", "DataChanged() "},
                    {L"UpdateLesson", {u"d", u"Last", u"#z", 0}, "", "DataChanged() "},
                    {L"RemoveLesson", {u"g", no}, "", "DataChanged() "},
                    {L"SaveDatabase", {}, "True"},
                    {L"GetLessonTitle", {u"n"}, "Néw"},
                    {L"GetLessonIdentifier", {u"d"}, "#z"},
                    {L"GetLessonType", {u"nobody"}, "-1"},
                    {L"GetChildLessonCount", {u"h"}, "2"},
                    {L"FindLesson", {u"title b", 1, yes}, "b", "AfterSelectionChange(b) "},
                    {L"GetChildLessonIDCollection", {u"h"}, "[object]"},
                    {L"GetLessonProperties", {u"nobody"}, "[nothing]"},
                    {L"GetAggregateProperties", {u"h"}, "[object]"},
                    {L"GetLessonTokens", {u"a"}, "[object]"}});
    ExpectKept(editor,
               {{L"DatabaseTitle", u"The course"}, {L"AllowDragDrop", no}, {L"Locked", yes}, {L"SingleExpand", yes}});
    ExpectDone(editor, {L"LockDisplay", L"UnlockDisplay", L"ExpandAll", L"CollapseAll"});
    EXPECT_EQ(course.Below(u"h"), u"n c");
    CallIdentifiers(Get(editor, L"GetChildLessonIDCollection", {u"h"}));
    Expect(editor, {{L"Clear", {}, "False", "AfterSelectionChange() "},
                    {L"SaveDatabase", {}, "False", "Error(-2147221504, No database open., SaveDatabase) "}});
}

void MemberTest::CallIdentifiers(ObjectRef ids) {
    Expect(ids, {{L"Item", {3}, "h"}, // the group itself comes last
                 {L"Item", {u"c"}, "c"},
                 {L"Item", {0}, "800A0009"},
                 {L"Item", {4}, "800A0009"},
                 {L"Item", {u"a"}, "800A0005"},
                 {L"Item", {ids}, "800A000D"},
                 {L"Add", {u"a"}},
                 {L"Add", {u"a"}, "800A01C9"},
                 {L"Add", {u"x", u"y"}, "800A0005"},
                 {L"Remove", {1}},
                 {L"Remove", {u"h"}},
                 {L"Remove", {u"n"}, "800A0005"},
                 {L"Remove", {9}, "800A0009"},
                 {L"Count", {}, "2"},
                 {L"_NewEnum", {}, "[object]"}});
    Text all;
    for (const Variant& each : Enumerated(ids)) all += TextOf(each);
    EXPECT_EQ(all, u"ca");
}

void MemberTest::CallLocksAndPanels() {
    const auto editor = Create(L"DAXControls.GroupEditor");
    Put(editor, L"ConnectionString", connection);
    Call(editor, L"LoadDatabase");
    const auto group = Get(editor, L"GetChildLessonIDCollection", {u"h"});
    const auto locks = CreateHeard(L"DAXControls.LockManager");
    ExpectKept(locks, {{L"ConnectionString", connection},
                       {L"Username", u"ann"},
                       {L"SessionID", u"another"},
                       {L"LessonID", u"a"},
                       {L"MDBMode", no},
                       {L"ShowIdentifier", no},
                       {L"ExpectNoSessionIDRecords", no}});
    Expect(locks, {{L"GroupIDCollection=", {Variant::Nothing()}},
                   {L"GroupIDCollection:=", {group}},
                   {L"GroupIDCollection", {}, "[object]"},
                   {L"RebuildDisplay", {yes}, "", "SelectionChanged(1) "}});
    ExpectValues(locks, {{L"LockCount", 6}, {L"DeletableLockCount", 3}, {L"InvalidLockCount", 2}});
    ExpectValues(locks, {{L"ValidLockCount", 4}, {L"SelectedLockDeleteType", 1}, {L"SelectedLockCount", 0}});
    ExpectValues(locks, {{L"SelectedDeletableLockCount", 0}, {L"SelectedInvalidLockCount", 0}});
    ExpectValues(locks, {{L"SelectedValidLockCount", 0}});
    ExpectKept(locks, {{L"IsAdministrator", yes}, {L"LockDisplayType", 3}});
    Expect(locks, {{L"Refresh", {}, "", "SelectionChanged(1) "}});
    ExpectValues(locks, {{L"LockCount", 3}, {L"DeletableLockCount", 3}}); // of c in the group, and of the lesson a
    ExpectDone(locks, {L"AutosizeColumns", L"DeleteSelected"});
    const auto info = Create(L"DAXControls.LessonInfo"), lockInfo = CreateHeard(L"DAXControls.LockInfo");
    Expect(info, {{L"UpdateFrom", {editor}}, {L"UpdateFrom", {Variant::Nothing()}}, {L"UpdateFrom", {lockInfo}, "8*"}});
    ExpectKept(info, {{L"ShowIdentifier", no}});
    Expect(lockInfo, {{L"UpdateFrom", {editor}}, {L"UpdateFrom", {lockInfo}, "8*"}});
    ExpectValues(lockInfo, {{L"LockCount", 5}, {L"ConnectionString", connection}});
}

void MemberTest::CallValidatorAndPicker() {
    const Connector connector;
    const auto validator = Create(L"DAXControls.DatabaseValidator");
    Expect(validator, {{L"ValidateDataConnection", {u"conn", u"C:\\no\\file", yes}, "False"}});
    ExpectValues(validator, {{L"DataConnectionString", u"conn"},
                             {L"CatalogName", u"C:\\no\\file"},
                             {L"MDBMode", yes},
                             {L"ErrorType", 2},
                             {L"ErrorNumber", 75},
                             {L"ErrorDescription", u"file not found."}});
    Expect(validator, {{L"ValidateSupportsTalk", {u""}, "False"},
                       {L"ValidateCommonConnection", {u"x", u"", u"catalog", u"user"}, "False"}});
    ExpectValues(validator, {{L"CommonConnectionString", u"x"}, {L"ErrorType", 9}});
    const auto picker = CreateHeard(L"DAXControls.SQLDBPicker");
    Expect(picker, {{L"LoadPicker",
                     {connector.ConnectionString(), u"anna", u"course"},
                     "True",
                     "CatalogChanged(course, login1, secret1, A course, the first) "},
                    {L"UpdateConnectionHistory", {u"PC", u"10.0.0.1", u"os", u"app"}},
                    {L"DBCatalog=", {u"x"}, "80020003"}}); // read-only
    ExpectValues(picker, {{L"ConnectionString", connector.ConnectionString()},
                          {L"DBCatalog", u"course"},
                          {L"DBUsername", u"login1"},
                          {L"DBPassword", u"secret1"},
                          {L"Title", u"A course"},
                          {L"DefaultCatalog", u"course"},
                          {L"Username", u"anna"}});
    ExpectValues(picker, {{L"IsAdmin", no}, {L"IsReadOnly", no}, {L"IsSuperuser", no}});
    ExpectKept(picker, {{L"Enabled", no}});
    ExpectDone(picker, {L"Clear"});
    called.erase("_SQLDBPicker.DBCatalog=");
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
                    {L"Save", {}, sample},
                    {L"CurrentSBID", {}, "s2"},
                    {L"Load", {u"lesson\t1\nstoryboard\ta\n"}, "800A0141"}, // changes nothing
                    {L"Save", {}, sample}});
    ExpectObjects(lesson, {L"Storyboards", L"Maps"});
    const auto pages = Get(lesson, L"Storyboards"), maps = Get(lesson, L"Maps");
    ExpectKept(page, {{L"SBID", u"s4"}, {L"Title", u"Néw"}, {L"Identifier", u"#4"}, {L"StoryboardType", u"video"}});
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
    ExpectKept(map, {{L"Name", u"Third"}});
    Expect(map, {{L"FillTree", {Variant::Nothing(), Variant::Nothing()}, "800A0005"},
                 {L"ReadLayout", {Variant::Nothing()}, "800A0005"}});
    Expect(maps, {{L"Count", {}, "2"},
                  {L"Item", {0}, "[object]"},
                  {L"Item", {u"Extra"}, "[object]"},
                  {L"Item", {u""}, "[nothing]"},
                  {L"Add", {map}},
                  {L"Add", {map}, "800A01C9"},
                  {L"Add", {Variant::Nothing()}, "800A0005"},
                  {L"DefaultMap:=", {map}},
                  {L"DefaultMap=", {Variant::Nothing()}, "800A0005"},
                  {L"DefaultMap", {}, "[object]"},
                  {L"_NewEnum", {}, "[object]"}});
    std::string order;
    for (const Variant& each : Enumerated(pages)) order += ToUtf8(GetText(each.Object(), L"SBID")) + " ";
    for (const Variant& each : Enumerated(maps)) order += ToUtf8(GetText(each.Object(), L"Name")) + " ";
    EXPECT_EQ(order, "s1 s2 s4 Main Extra Third ");
    Expect(lesson, {{L"CurrentSBID=", {u"s4"}},
                    {L"Save", {}, "lesson\t1\nstoryboard\ts1\ttext\tINTRO\tWelcome\n*"},
                    {L"Load", {u"lesson\t1\n"}}});
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
    ExpectDone(editor, {L"CheckAllStoryboards"});
    ExpectValues(editor, {{L"CurrentSBID", u"b"}, {L"CheckedStoryboardCount", 3}});
    ExpectObjects(editor, {L"Lesson", L"CurrentStoryboard", L"OrphanedStoryboards", L"CheckedStoryboards",
                           L"GetCheckedLesson", L"tvwObject"});
    ExpectKept(editor, {{L"AllowDragDrop", no}, {L"CaptionStyle", 1}, {L"Checkboxes", yes}, {L"Locked", no}});
    ExpectKept(editor, {{L"ShowDefaultMapOnly", yes}});
    ExpectKept(editor, {{L"ShowDefaultMapOnly", no}});
    ExpectDone(editor, {L"UncheckAllStoryboards", L"LockDisplay", L"UnlockDisplay", L"ExpandAll"});
    Expect(editor, {{L"CollapseAll", {}, "", "AfterSelectionChange() "},
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
    Call(editor, L"CheckAllStoryboards");
    const auto checked = Get(editor, L"CheckedStoryboards");
    Expect(checked, {{L"Count", {}, "3"},
                     {L"Item", {2}, "[object]"},
                     {L"Item", {u"c"}, "[object]"},
                     {L"Item", {0}, "800A0009"},
                     {L"Item", {u"x"}, "800A0005"},
                     {L"_NewEnum", {}, "[object]"}});
    EXPECT_EQ(Get(checked, L"Item", {u"c"}).Get(), page(u"c").Get());
    EXPECT_EQ(Enumerated(checked).size(), 3u);
    CallTree(Get(editor, L"tvwObject"));
    Expect(editor, {{L"Lesson=", {Variant::Nothing()}}, {L"GetCheckedLesson", {}, "[nothing]"}});
}

void MemberTest::CallTree(ObjectRef tree) {
    Expect(tree, {{L"Nodes", {}, "[object]"},
                  {L"ImageList=", {Variant::Nothing()}},
                  {L"ImageList:=", {Variant::Nothing()}},
                  {L"ImageList", {}, "[nothing]"},
                  {L"hWnd", {}, "*"},
                  {L"HitTest", {30, -30}, "[nothing]"}});
    const auto nodes = Get(tree, L"Nodes"), a = Get(nodes, L"Item", {u"a"});
    Expect(tree, {{L"SelectedItem=", {Get(nodes, L"Item", {u"b"})}, "", "AfterSelectionChange(b) "},
                  {L"SelectedItem:=", {a}, "", "AfterSelectionChange(a) "},
                  {L"SelectedItem", {}, "[object]"}});
    ExpectKept(a, {{L"Text", u"ä"}, {L"Tag", u"kept"}, {L"Key", u"A"}, {L"Selected", yes}, {L"Expanded", no}});
    ExpectKept(a, {{L"Key", u"a"}, {L"Checked", no}, {L"Image", 5}});
    Expect(a, {{L"Image=", {u"video"}}, {L"EnsureVisible", {}, "*"}});
    ExpectValues(a, {{L"Image", 7}, {L"Children", 1}, {L"Index", 2}, {L"FullPath", u"M (2)\\ä"}});
    ExpectValues(a, {{L"Next", Variant::Nothing()}, {L"Previous", Variant::Nothing()}});
    ExpectObjects(a, {L"Parent", L"Child", L"FirstSibling", L"LastSibling", L"Root"});
    for (const auto& [relation, key] : {std::pair{L"Parent", u"M"}, std::pair{L"Child", u"b"}, std::pair{L"Root", u"M"},
                                        std::pair{L"FirstSibling", u"a"}, std::pair{L"LastSibling", u"a"}})
        EXPECT_EQ(GetText(Get(a, relation), L"Key"), key);
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
    Expect(nodes, {{L"Remove", {u"a"}, "", "AfterSelectionChange() "}, {L"Remove", {u"a"}, "800A8B11"}});
    Expect(a, {{L"Text", {}, "800A8B11"}}); // it is not in the tree any more
    Expect(nodes, {{L"Clear", {}, "", "AfterSelectionChange() "}, {L"Count", {}, "0"}});
}

void MemberTest::CallProperties() {
    const auto made = Create(L"ContentObjects.PropertyCollection"), read = Create(L"ContentObjects.PropertyCollection");
    Variant date, small, money;
    date.vt = VT_DATE;
    date.date = 46082.25; // 1 March 2026, 6 o'clock
    small.vt = VT_UI1;
    small.bVal = 200;
    money.vt = VT_CY;
    money.cyVal.int64 = 15000;
    Expect(made, {{L"Name=", {u"mine"}},
                  {L"SetValue", {u"StoryboardCount", 7}},
                  {L"SetValue", {u"Classification", u"sécret\r\n"}},
                  {L"SetValue", {u"IsDone", yes}},
                  {L"SetValue", {u"ModifiedDate", date}},
                  {L"SetValue", {u"Small", small}},
                  {L"SetValue", {u"Price", money}},
                  {L"SetValue", {u"Object", made}, "800A000D"}});
    const Text text = GetText(made, L"Save");
    Expect(read, {{L"Load", {text}},
                  {L"Save", {}, ToUtf8(text)},
                  {L"Name", {}, "mine"},
                  {L"GetValue", {u"storyboardcount", u"default"}, "7"},
                  {L"GetValue", {u"Classification"}, "sécret\r\n"},
                  {L"GetValue", {u"IsDone"}, "True"},
                  {L"GetValue", {u"Small"}, "200"},
                  {L"GetValue", {u"Absent", u"default"}, "default"},
                  {L"GetValue", {u"Absent", made}, "[object]"},
                  {L"GetValue", {u"Absent"}, ""}});
    EXPECT_EQ(Call(read, L"GetValue", {u"ModifiedDate"}).date, date.date);
    EXPECT_EQ(Call(read, L"GetValue", {u"Price"}).dblVal, 1.5);

    // Those of an editor are live.
    course.Run({u"UPDATE velmoraLessons SET lessonProperties = '" + text + u"' WHERE lessonID = 'a'"});
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
