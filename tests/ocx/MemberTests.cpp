// Every member of every interface through COM, once: here, or by a behaviour script. What a member computes is tested
// where it is computed.
#include "Course.h"
#include "OcxHost.h"

#include <cstdio>
#include <fstream>
#include <map>
#include <regex>
#include <set>

namespace dax::test {

namespace {

struct MemberCase {
    // A name followed by "=" puts a value, by ":=" a reference.
    std::wstring member;
    std::vector<Variant> arguments = {};
    std::string expected = ""; // the result as text, its beginning before "*", or the code of a failure
    std::string events = "";   // received meanwhile
};

class MemberTest : public OcxTest {
protected:
    // An editor of the hierarchy of the course.
    ComPtr<IDispatch> Loaded() const {
        const auto editor = Create(L"DAXControls.GroupEditor");
        Put(editor, L"ConnectionString", course.ConnectionString());
        EXPECT_TRUE(Call(editor, L"LoadDatabase").Bool());
        return editor;
    }

    void Expect(ObjectRef object, const std::vector<MemberCase>& rows) {
        for (const MemberCase& row : rows) {
            const std::string full = InterfaceName(object) + "." + ToUtf8(FromWide(row.member));
            called.insert(full);
            const size_t sign = row.member.find_first_of(L":=");
            const std::wstring name = row.member.substr(0, sign);
            const WORD kind = sign == std::wstring::npos    ? DISPATCH_METHOD | DISPATCH_PROPERTYGET
                              : row.member.ends_with(L":=") ? DISPATCH_PROPERTYPUTREF
                                                            : DISPATCH_PROPERTYPUT;
            received.clear();
            std::string outcome;
            try {
                outcome = ToUtf8(FromWide(DescribeValue(Call(object, name.c_str(), row.arguments, kind))));
                if (row.expected.ends_with('*')) outcome = outcome.substr(0, row.expected.size() - 1) + '*';
            } catch (const CallFailure& failure) {
                char code[16];
                std::snprintf(code, sizeof code, "%08lX", static_cast<unsigned long>(failure.code));
                outcome = code;
                const bool isDescribed = !failure.description.empty() && failure.source.find(u'.') != Text::npos;
                EXPECT_TRUE(isDescribed || HRESULT_FACILITY(failure.code) != FACILITY_CONTROL) << full;
            }
            EXPECT_EQ(outcome, row.expected) << full;
            EXPECT_EQ(received, row.events) << full;
        }
    }

    // Calls without events, as a script writes them: "Name(argument, argument)=outcome; Name=outcome".
    void ExpectCalls(ObjectRef object, const std::string& calls) {
        const std::regex call("(\\w+)(\\(([^)]*)\\))?=([^;]*)(; )?"), argument("([^,]+)(, )?");
        for (std::sregex_iterator each(calls.begin(), calls.end(), call), end; each != end; ++each) {
            MemberCase row{ToWide(FromUtf8(each->str(1))), {}, each->str(4)};
            const std::string list = each->str(3);
            for (std::sregex_iterator next(list.begin(), list.end(), argument); next != end; ++next) {
                const std::string text = next->str(1);
                const bool isNumber = std::isdigit(static_cast<unsigned char>(text[0])) != 0;
                row.arguments.push_back(isNumber ? Variant(std::stoi(text)) : Variant(FromUtf8(text)));
            }
            Expect(object, {row});
        }
    }

    // Each property that can be set keeps another value than the one that it has. What is current must exist.
    void ExpectKept(ObjectRef object) {
        const std::string type = InterfaceName(object) + ".";
        for (const std::string& full : declared) {
            if (!full.starts_with(type) || !full.ends_with("=") || full.starts_with(type + "Current")) continue;
            const std::wstring name = ToWide(FromUtf8(full.substr(type.size(), full.size() - type.size() - 1)));
            Variant value = name.ends_with(L":") ? Variant() : Call(object, name.c_str());
            value = value.vt == VT_BOOL   ? Variant(!value.Bool())
                    : value.vt == VT_I4   ? Variant(value.lVal + 1)
                    : value.vt == VT_BSTR ? Variant(value.Text() + L"ä")
                                          : Variant();
            if (value.vt == VT_EMPTY) continue;
            Put(object, name.c_str(), value);
            called.insert(full);
            Expect(object, {{name, {}, ToUtf8(FromWide(value.Text()))}});
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
    void AddCallsOfScripts();
    static std::set<std::string> Declared();

    const Course course;
    std::string received;
    const Sink::Listener listener = [this](const RecordedEvent& event) { received += event.text + " "; };
    // "_Interface.Member", with "=" or ":=" when it is put.
    const std::set<std::string> declared = Declared();
    std::set<std::string> called;
};

// By the snapshots of the type libraries, without the events.
std::set<std::string> MemberTest::Declared() {
    const std::regex type("type \\d (\\w+) .*"), member("  member .* kind (\\d) \\S+ (\\w+)\\(.*");
    const std::map<std::string, std::string> kinds{{"1", ""}, {"2", ""}, {"4", "="}, {"8", ":="}};
    std::set<std::string> members;
    for (const wchar_t* snapshot : {L"DAXControls.snapshot.txt", L"ContentObjects.snapshot.txt"}) {
        std::ifstream file(DataFile(snapshot));
        std::string name;
        std::smatch words;
        for (std::string line; std::getline(file, line);) {
            if (std::regex_match(line, words, type)) name = words[1];
            if (name.starts_with("__") || !std::regex_match(line, words, member)) continue;
            members.insert(name + "." + words[2].str() + kinds.at(words[1]));
        }
    }
    EXPECT_GT(members.size(), 200u);
    return members;
}

void MemberTest::CallGroupEditor() {
    const auto editor = Loaded();
    ExpectCalls(editor, "CurrentLessonID=; LockDisplay=; UnlockDisplay=; ExpandAll=; CollapseAll=");
    ExpectKept(editor);
    const auto ids = Get(editor, L"GetChildLessonIDCollection", {u"g"}); // the group itself comes last
    Expect(ids, {{L"Item", {ids}, "800A000D"}});
    ExpectCalls(ids, "Item(3)=g; Item(a)=a; Item(4)=800A0009; Item(c)=800A0005; Add(c)=; Add(c)=800A01C9; "
                     "Add(x, y)=800A0005; Remove(1)=; Remove(g)=; Remove(n)=800A0005; Count=2; _NewEnum=[object]");
    Text all;
    for (const Variant& each : Enumerated(ids)) all += FromWide(each.Text());
    EXPECT_EQ(all, u"bc");
}

void MemberTest::CallLocksAndPanels() {
    const auto editor = Loaded(), locks = Create(L"DAXControls.LockManager");
    Expect(locks, {{L"GroupIDCollection=", {Variant::Nothing()}},
                   {L"GroupIDCollection:=", {Get(editor, L"GetChildLessonIDCollection", {u"h"})}}});
    ExpectCalls(locks, "GroupIDCollection=[object]; ValidLockCount=0; SelectedLockCount=0; "
                       "SelectedDeletableLockCount=0; SelectedInvalidLockCount=0; "
                       "SelectedValidLockCount=0; AutosizeColumns=");
    ExpectKept(locks);
    const auto info = Create(L"DAXControls.LessonInfo"), lockInfo = Create(L"DAXControls.LockInfo");
    for (const auto& panel : {info, lockInfo})
        Expect(panel, {{L"UpdateFrom", {editor}}, {L"UpdateFrom", {lockInfo}, "80004002"}});
    ExpectKept(info);
    Expect(lockInfo, {{L"LockCount", {}, "5"}, {L"ConnectionString", {}, ToUtf8(course.ConnectionString())}});
}

void MemberTest::CallValidatorAndPicker() {
    const Connector connector;
    const auto validator = Create(L"DAXControls.DatabaseValidator"), picker = Create(L"DAXControls.SQLDBPicker");
    Sink sink(listener);
    sink.Connect(picker);
    Call(validator, L"ValidateCommonConnection", {u"x", u"", u"catalog", u"user"});
    Expect(validator, {{L"CommonConnectionString", {}, "x"}});
    Expect(picker, {{L"LoadPicker",
                     {connector.ConnectionString(), u"anna", u"course"},
                     "True",
                     "CatalogChanged(course, login1, secret1, A course, the first) "},
                    {L"ConnectionString", {}, ToUtf8(connector.ConnectionString())}});
    ExpectCalls(picker, "DBUsername=login1; DBPassword=secret1; Title=A course; DefaultCatalog=course; "
                        "IsReadOnly=False; IsSuperuser=False");
    EXPECT_EQ(CodeOf([&] { Put(picker, L"DBCatalog", u"x"); }), DISP_E_MEMBERNOTFOUND) << "read-only";
    ExpectKept(picker);
    const std::string folder = ToUtf8(FromWide(BinFolder()));
    Expect(Create(L"DAXControls.Constants"), {{L"OCXPath", {}, folder.substr(0, folder.size() - 1)},
                                              {L"OCXFilename", {}, folder + "daxControls33.ocx"},
                                              {L"OCXVersion", {}, "3.3 (Build 0001)  Visual*"}});
}

void MemberTest::CallLesson() {
    const std::string sample = "lesson\t1\nstoryboard\ts1\ttext\tINTRO\tWelcome\n"
                               "storyboard\ts2\tquestion\tQ1\tWhat did\\nyou learn?\nstoryboard\ts3\t\t\tÜber 𝄞\n"
                               "map\tMain\tdefault\npage\t1\ts1\npage\t2\ts2\nmap\tExtra\npage\t1\ts3\n"
                               "current\ts2\n";
    const auto lesson = Create(L"ContentObjects.Lesson"), map = Create(L"ContentObjects.StoryboardMap"),
               page = Create(L"ContentObjects.Storyboard");
    EXPECT_FALSE(GetText(page, L"SBID").empty()) << "a new page has an identity";
    Expect(lesson, {{L"Load", {FromUtf8(sample)}},
                    {L"Load", {u"lesson\t1\nstoryboard\ta\n"}, "800A0141"}, // changes nothing
                    {L"Save", {}, sample},
                    {L"CurrentSBID=", {u"s1"}}});
    ExpectCalls(lesson, "CurrentSBID=s1; Storyboards=[object]; Maps=[object]");
    const auto pages = Get(lesson, L"Storyboards"), maps = Get(lesson, L"Maps");
    for (const auto& each : {page, map, Create(L"ContentObjects.PropertyCollection")}) ExpectKept(each);
    Put(page, L"SBID", u"s4");
    Put(map, L"Name", u"Third");
    ExpectCalls(pages, "Count=3; Item(s2)=[object]; Item(none)=[nothing]; Remove(none)=; Remove(s3)=; "
                       "_NewEnum=[object]");
    ExpectCalls(maps, "Count=2; Item(0)=[object]; Item(none)=[nothing]; _NewEnum=[object]");
    Expect(map, {{L"FillTree", {Variant::Nothing(), Variant::Nothing()}, "800A0005"},
                 {L"ReadLayout", {Variant::Nothing()}, "800A0005"}});
    for (const auto& [list, added] : {std::pair{pages, page}, std::pair{maps, map}})
        Expect(list, {{L"Add", {added}}, {L"Add", {added}, "800A01C9"}, {L"Add", {Variant::Nothing()}, "800A0005"}});
    EXPECT_EQ(Get(pages, L"Item", {u"s4"}).Get(), page.Get()) << "not a copy";
    Expect(maps, {{L"DefaultMap:=", {map}},
                  {L"DefaultMap=", {Variant::Nothing()}, "800A0005"},
                  {L"DefaultMap", {}, "[object]"}});
    std::string order;
    for (const Variant& each : Enumerated(pages)) order += ToUtf8(GetText(each.Object(), L"SBID")) + " ";
    for (const Variant& each : Enumerated(maps)) order += ToUtf8(GetText(each.Object(), L"Name")) + " ";
    EXPECT_EQ(order, "s1 s2 s4 Main Extra Third ");
    Call(lesson, L"Load", {u"lesson\t1\n"});
    Expect(pages, {{L"Count", {}, "0"}}); // a collection follows its lesson
    const auto utility = Create(L"ContentObjects.Utility");
    Expect(utility, {{L"NewIdentifier", {}, "*"}});
    const Text identifier = GetText(utility, L"NewIdentifier");
    EXPECT_TRUE(identifier.size() == 32 && identifier.find_first_not_of(u"0123456789abcdef") == Text::npos)
        << ToUtf8(identifier);
}

void MemberTest::CallLessonMap() {
    const auto lesson = Create(L"ContentObjects.Lesson"), editor = Create(L"DAXControls.LessonMapEditor");
    Sink sink(listener);
    sink.Connect(editor);
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
                    {L"CurrentStoryboard=", {page(u"b")}, "", "AfterSelectionChange(b) "}});
    ExpectCalls(editor, "CurrentSBID=b; GetChildStoryboardCount(a)=1; FindNextSBID(TITLE, 4, 0, 0)=c; "
                        "CheckAllStoryboards=; CheckedStoryboardCount=3; Lesson=[object]; "
                        "CurrentStoryboard=[object]; OrphanedStoryboards=[object]; CheckedStoryboards=[object]; "
                        "GetCheckedLesson=[object]; tvwObject=[object]; LockDisplay=; UnlockDisplay=; ExpandAll=");
    const auto checked = Get(editor, L"CheckedStoryboards");
    ExpectCalls(checked, "Count=3; Item(2)=[object]; Item(0)=800A0009; Item(x)=800A0005; _NewEnum=[object]");
    EXPECT_EQ(Get(checked, L"Item", {u"c"}).Get(), page(u"c").Get());
    Expect(editor, {{L"UncheckAllStoryboards"},
                    {L"CollapseAll", {}, "", "AfterSelectionChange() "},
                    {L"CurrentSBID=", {u"b"}, "", "AfterSelectionChange(b) "},
                    {L"AddStoryboard", {page(u"lost")}, "", "MapChanged(1) AfterSelectionChange(lost) "},
                    {L"UpdateStoryboard", {page(u"lost")}},
                    {L"UpdateSBID", {u"lost"}},
                    {L"CanMoveCurrent", {4}, "True"},
                    {L"MoveCurrent", {4}, "", "MapChanged(2) "},
                    {L"RemoveStoryboard", {page(u"lost"), false}, "", "MapChanged(3) AfterSelectionChange(a) "},
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
    ExpectCalls(a, "Children=1; Index=2; FullPath=M (2)\\title a; Next=[nothing]; Previous=[nothing]");
    ExpectCalls(a, "Parent=[object]; Child=[object]; Root=[object]; FirstSibling=[object]; LastSibling=[object]");
    EXPECT_EQ(GetText(Get(a, L"Root"), L"Key") + GetText(Get(a, L"Child"), L"Key"), u"Mb");
    ExpectCalls(nodes, "Count=5; Contains(b)=True; Item(6)=800A8B10; Item(none)=800A8B11; _NewEnum=[object]");
    Expect(nodes, {{L"Add", {a, 4, u"child", u"1"}, "[object]"},
                   {L"Add", {u"child", 3, u"before", u"2"}, "[object]"},
                   {L"Add", {a, 4, u"b"}, "800A8B12"}, // not a unique key
                   {L"Add", {a, 7, u"new"}, "800A0005"},
                   {L"Add", {tree, 4, u"new"}, "800A000D"}});
    EXPECT_EQ(Get(nodes, L"Item", {2}).Get(), a.Get()) << "one object for a node";
    EXPECT_EQ(Enumerated(nodes).size(), 7u);
    Expect(nodes, {{L"Remove", {u"a"}, "", "AfterSelectionChange() "}});
    Expect(a, {{L"Text", {}, "800A8B11"}}); // it is no longer in the tree
    Expect(nodes, {{L"Clear", {}, "", "AfterSelectionChange() "}, {L"Count", {}, "0"}});
}

void MemberTest::CallProperties() {
    const auto made = Create(L"ContentObjects.PropertyCollection"), read = Create(L"ContentObjects.PropertyCollection");
    Variant date;
    date.vt = VT_DATE;
    date.date = 46082.25; // 1 March 2026, 6 o'clock
    Expect(made, {{L"SetValue", {u"Classification", u"sécret\r\n"}},
                  {L"SetValue", {u"IsDone", true}},
                  {L"SetValue", {u"ModifiedDate", date}},
                  {L"SetValue", {u"Object", made}, "800A000D"}});
    ExpectCalls(made, "SetValue(StoryboardCount, 7)=");
    const Text text = GetText(made, L"Save");
    Expect(read, {{L"Load", {text}}, {L"Save", {}, ToUtf8(text)}, {L"GetValue", {u"Absent", made}, "[object]"}});
    ExpectCalls(read, "GetValue(storyboardcount, default)=7; GetValue(Classification)=sécret\r\n; "
                      "GetValue(IsDone)=True; GetValue(Absent, default)=default; GetValue(Absent)=");
    EXPECT_EQ(Call(read, L"GetValue", {u"ModifiedDate"}).date, date.date);
}

// Of the behaviour scripts, whose lines compare what a member does with its description.
void MemberTest::AddCallsOfScripts() {
    const std::map<std::string, std::string> types{{"editor", "_GroupEditor"},
                                                   {"locks", "_LockManager"},
                                                   {"validator", "_DatabaseValidator"},
                                                   {"picker", "_SQLDBPicker"}};
    const std::regex call("^[^']*\\b(editor|locks|validator|picker)\\.(\\w+)( = )?.*");
    for (const wchar_t* script : {L"behaviour-hierarchy.vbs", L"behaviour-locks.vbs", L"behaviour-databases.vbs"}) {
        std::ifstream file(DataFile(script));
        std::smatch words;
        for (std::string line; std::getline(file, line);)
            if (std::regex_match(line, words, call))
                called.insert(types.at(words[1]) + "." + words.str(2) + (words[3].matched ? "=" : ""));
    }
}

} // namespace

TEST_F(MemberTest, EachReturnsAndRaisesWhatItShould) {
    CallProperties();
    CallGroupEditor();
    CallLocksAndPanels();
    CallValidatorAndPicker();
    CallLesson();
    CallLessonMap();
    AddCallsOfScripts();
    for (const std::string& member : declared)
        EXPECT_TRUE(called.contains(member)) << member << " is called by no row and no script";
}

} // namespace dax::test
