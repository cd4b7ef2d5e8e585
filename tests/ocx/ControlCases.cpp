#include "ControlCases.h"

#include <commctrl.h>

#include <ostream>

namespace dax::test {

namespace {

constexpr long Abort = 3, Retry = 4, Ignore = 5;
constexpr const wchar_t* Connection = L"ConnectionString";

Action Calls(const wchar_t* member) {
    return [member](HostedControl& hosted) { hosted.Do(member); };
}
Action Sets(const wchar_t* property, const Variant& value) {
    return [=](HostedControl& hosted) { hosted.Set(property, value); };
}
Action Presses(WPARAM key) {
    return [key](HostedControl& hosted) { hosted.Press(key); };
}

const Variant Nonsense(u"Provider=Nonsense");

void Validate(HostedControl& hosted) { hosted.Do(L"ValidateDataConnection", {u"", u"", true}); }

void FillPanel(HostedControl& hosted) {
    const auto editor = Create(L"DAXControls.GroupEditor");
    Put(editor, Connection, hosted.data->course.ConnectionString());
    Call(editor, L"LoadDatabase");
    hosted.Do(L"UpdateFrom", {editor});
}

void FillPicker(HostedControl& hosted) {
    hosted.Do(L"LoadPicker", {hosted.data->connector.ConnectionString(), u"admin", u"course"});
}

void FillEditor(HostedControl& hosted) {
    hosted.Set(Connection, hosted.data->course.ConnectionString());
    hosted.Do(L"LoadDatabase");
    hosted.Set(L"CurrentLessonID", Variant(u"d"));
}

void FillLocks(HostedControl& hosted) {
    hosted.Set(Connection, hosted.data->course.ConnectionString());
    hosted.Set(L"Username", Variant(u"ann"));
    hosted.Do(L"Refresh");
}

void SelectAll(HostedControl& hosted) {
    LVITEMW item{};
    item.state = item.stateMask = LVIS_SELECTED;
    SendMessageW(hosted.child, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&item));
}

void SelectAllAndFail(HostedControl& hosted) {
    SelectAll(hosted);
    hosted.Set(Connection, Nonsense);
}

void FillMap(HostedControl& hosted) {
    const auto lesson = Create(L"ContentObjects.Lesson");
    Call(lesson, L"Load",
         {Variant(u"lesson\t1\nstoryboard\ta\ttext\tA\tfirst\nstoryboard\tb\ttext\tB\tsecond\nstoryboard\tc\ttext\tC\t"
                  u"third\nmap\tM\tdefault\npage\t1\ta\npage\t1\tb\npage\t1\tc\ncurrent\ta\n")});
    Put(hosted.control, L"Lesson", lesson, DISPATCH_PROPERTYPUTREF);
}

// What a host that has the focus elsewhere asks for: the panel reads a database that is not there.
void UpdatesFromNothing(HostedControl& hosted) {
    const auto editor = Create(L"DAXControls.GroupEditor");
    Put(editor, Connection, Nonsense);
    hosted.Do(L"UpdateFrom", {editor});
}

// As the row before leaves nothing to delete for the next.
void AddsAndSelectsAll(HostedControl& hosted) {
    hosted.data->course.Run({LockRow(u"a", u"ann", u"P1", 1)});
    hosted.Do(L"Refresh");
    SelectAll(hosted);
}

Action LoadsFor(const char16_t* user) {
    return [user](HostedControl& hosted) {
        const Variant source(hosted.data->connector.ConnectionString());
        hosted.Do(L"LoadPicker", {source, Variant(user), u"other"});
    };
}

Action Moves(int32_t movement) {
    return [movement](HostedControl& hosted) { hosted.Do(L"MoveCurrent", {Variant(movement)}); };
}

std::vector<ControlCase> MakeCases() {
    const Variant no = false, yes = true;
    ControlCase validator{"DatabaseValidator", L"", {360, 120}, Validate};
    ControlCase picker{"SQLDBPicker", L"ComboBox", {200, 0}, FillPicker};
    ControlCase editor{"GroupEditor", L"SysTreeView32", {240, 320}, FillEditor};
    ControlCase locks{"LockManager", L"SysListView32", {760, 240}, FillLocks};
    ControlCase info{"LessonInfo", L"", {220, 150}, FillPanel};
    ControlCase lockInfo{"LockInfo", L"", {220, 80}, FillPanel};
    ControlCase map{"LessonMapEditor", L"SysTreeView32", {240, 320}, FillMap};

    for (ControlCase* each : {&validator, &picker, &info, &lockInfo}) each->isSampleShown = true;
    picker.takesHostColors = false;

    picker.keys = {{VK_DOWN, 1}, {VK_UP, 1}, {VK_END, 1}};
    editor.keys = {{VK_UP, 1}, {VK_RIGHT, 0}, {VK_RIGHT, 1}, {VK_LEFT, 1}, {VK_DOWN, 1}, {VK_DELETE, 3}};
    locks.keys = {{VK_DOWN, 0}, {VK_UP, 0}, {VK_END, 0}, {VK_DELETE, 2}, {VK_F5, 1}};
    map.keys = {{VK_DOWN, 2}, {VK_UP, 2}, {VK_END, 2}, {VK_DELETE, 5}};

    editor.kept = {{L"AllowDragDrop", no}, {L"Locked", yes}, {L"SingleExpand", yes}};
    map.kept = {{L"AllowDragDrop", no}, {L"CaptionStyle", 7}, {L"Checkboxes", yes}, {L"Locked", yes}};
    map.kept.push_back({L"ShowDefaultMapOnly", yes});

    picker.events = {{1, LoadsFor(u"admin")}, {1, LoadsFor(u"stranger")}, {1, Presses(VK_DOWN)}};
    editor.events = {{1, Calls(L"LoadDatabase")},
                     {1, Calls(L"Clear")},
                     {1, Presses(VK_UP)},
                     {1, Sets(L"CurrentLessonID", Variant(u"a"))},
                     {2, Moves(3)},
                     {3, Presses(VK_DELETE)},
                     {4, Calls(L"LoadDatabase"), Sets(Connection, Nonsense)},
                     {4, Calls(L"SaveDatabase"), Sets(Connection, Nonsense)},
                     {5, Presses(VK_RETURN), Sets(L"Locked", yes)}};
    locks.events = {{1, Calls(L"Refresh")},
                    {1, Calls(L"RebuildDisplay")},
                    {1, Calls(L"DeleteSelected"), AddsAndSelectsAll},
                    {1, Presses(VK_F5)},
                    {2, Presses(VK_DELETE), SelectAll},
                    {3, Calls(L"Refresh"), SelectAllAndFail, Abort},
                    {3, Calls(L"Refresh"), SelectAllAndFail, Retry},
                    {3, Presses(VK_F5), SelectAllAndFail, Ignore},
                    {3, Calls(L"DeleteSelected"), SelectAllAndFail, Ignore},
                    {3, Calls(L"DeleteSelected"), SelectAllAndFail, Retry}};
    lockInfo.events = {{1, UpdatesFromNothing}};
    map.events = {{2, Sets(L"CurrentSBID", Variant(u"b"))},
                  {2, Presses(VK_DOWN)},
                  {3, Presses(VK_SPACE), Sets(L"Checkboxes", yes)},
                  {4, Moves(2)},
                  {5, Presses(VK_DELETE)},
                  {6, [](HostedControl& hosted) { SendMessageW(hosted.child, WM_RBUTTONUP, 0, 0); }}};
    return {validator, picker, editor, locks, info, lockInfo, map};
}

} // namespace

const std::vector<ControlCase>& ControlCases() {
    static const std::vector<ControlCase> cases = MakeCases();
    return cases;
}

void PrintTo(const ControlCase& row, std::ostream* out) { *out << row.name; }

ComPtr<IDispatch> Create(const ControlCase& row) { return Create(L"DAXControls." + ToWide(FromUtf8(row.name))); }

HostedControl::HostedControl(const ControlCase& row, LONG verb, const TestSite* beside)
    : what(row), site(beside), control(Create(row)) {
    if (beside) OffsetRect(&site.place, 0, 120);
    object = test::Place(control.Get(), site, verb);
    inPlace = control.As<IOleInPlaceObject>(IID_IOleInPlaceObject);
    child = window = WindowOf(control.Get());
    if (!row.child.empty()) child = FindWindowExW(window, nullptr, row.child.c_str(), nullptr);
    EXPECT_TRUE(window && child);
    sink.Connect(control);
}

HostedControl::~HostedControl() {
    onEvent = nullptr;
    site.called = nullptr;
    Close();
}

void HostedControl::Fill() {
    static const SampleData sample; // made once: databases take their time
    data = &sample;
    what.fill(*this);
    heard.clear();
}

void HostedControl::DoVerb(LONG verb) {
    EXPECT_HRESULT_SUCCEEDED(object->DoVerb(verb, nullptr, &site, 0, site.window, nullptr));
}

bool HostedControl::Press(WPARAM key) {
    // Nothing of this object but the site is touched once the control has had the key: it may have been released.
    MSG down{child, WM_KEYDOWN, key, 1, 0, {}}, up{child, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001u), 0, {}};
    const bool isUsed = site.activeObject && site.activeObject->TranslateAccelerator(&down) == S_OK;
    if (!isUsed) {
        TranslateMessage(&down);
        DispatchMessageW(&down);
    }
    DispatchMessageW(&up);
    PumpPending();
    return isUsed;
}

void HostedControl::Do(const wchar_t* member, std::initializer_list<Variant> arguments) const {
    Call(control, member, arguments); // as a host does, which has no reference but its own
}

void HostedControl::Set(const wchar_t* property, const Variant& value) const { Put(control, property, value); }

void HostedControl::AmbientChanged(DISPID dispid, const Variant& value) {
    site.ambients[dispid] = value;
    const auto ole = control.As<IOleControl>(IID_IOleControl);
    EXPECT_HRESULT_SUCCEEDED(ole->OnAmbientPropertyChange(dispid));
}

RECT HostedControl::Place() const {
    RECT place{};
    GetWindowRect(window, &place);
    MapWindowPoints(nullptr, site.window, reinterpret_cast<POINT*>(&place), 2);
    return place;
}

void HostedControl::Close() {
    sink.Disconnect();
    if (object) {
        object->Close(OLECLOSE_NOSAVE);
        object->SetClientSite(nullptr);
    }
    site.activeObject.Reset();
    inPlace.Reset();
    object.Reset();
    control.Reset();
}

bool HostedControl::IsGone() const {
    return PumpUntil([this] { return !IsWindow(window) && !IsWindow(child); }) && site.IsReleased() &&
           sink.IsReleased();
}

} // namespace dax::test
