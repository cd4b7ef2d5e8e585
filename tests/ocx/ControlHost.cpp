#include "ControlHost.h"

#include <commctrl.h>

#include <ostream>

namespace dax::test {

namespace {

constexpr long Abort = 3, Retry = 4, Ignore = 5;
constexpr const wchar_t* Connection = L"ConnectionString";

Action Calls(const wchar_t* member, std::vector<Variant> arguments = {}) {
    return [=](HostedControl& hosted) { Call(hosted.control, member, arguments, DISPATCH_METHOD); };
}
Action Sets(const wchar_t* property, const Variant& value) {
    return [=](HostedControl& hosted) { Put(hosted.control, property, value); };
}
Action Presses(WPARAM key) {
    return [key](HostedControl& hosted) { hosted.Press(key); };
}

const Variant Nonsense(u"Provider=Nonsense");

// From an editor that has loaded the course, or one without a database.
Action UpdatesFrom(bool isLoaded) {
    return [isLoaded](HostedControl& hosted) {
        const auto editor = Create(L"DAXControls.GroupEditor");
        Put(editor, Connection, isLoaded ? Variant(hosted.data->course.ConnectionString()) : Nonsense);
        if (isLoaded) Call(editor, L"LoadDatabase");
        Call(hosted.control, L"UpdateFrom", {editor});
    };
}

Action LoadsFor(const char16_t* user) {
    return [user](HostedControl& hosted) {
        Call(hosted.control, L"LoadPicker", {hosted.data->connector.ConnectionString(), user, u"other"});
    };
}

void FillEditor(HostedControl& hosted) {
    Put(hosted.control, Connection, hosted.data->course.ConnectionString());
    Call(hosted.control, L"LoadDatabase");
    Put(hosted.control, L"CurrentLessonID", u"d");
}

void FillLocks(HostedControl& hosted) {
    Put(hosted.control, Connection, hosted.data->course.ConnectionString());
    Put(hosted.control, L"Username", u"ann");
    Call(hosted.control, L"Refresh");
}

void SelectAll(HostedControl& hosted) {
    LVITEMW item{};
    item.state = item.stateMask = LVIS_SELECTED;
    SendMessageW(hosted.child, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&item));
}

void SelectAllAndFail(HostedControl& hosted) {
    SelectAll(hosted);
    Put(hosted.control, Connection, Nonsense);
}

// The row before leaves nothing to delete for the next.
void AddsAndSelectsAll(HostedControl& hosted) {
    hosted.data->course.Run({LockRow(u"a", u"ann", u"P1", 1)});
    Call(hosted.control, L"Refresh");
    SelectAll(hosted);
}

void FillMap(HostedControl& hosted) {
    const auto lesson = Create(L"ContentObjects.Lesson");
    Call(lesson, L"Load",
         {Variant(u"lesson\t1\nstoryboard\ta\ttext\tA\tfirst\nstoryboard\tb\ttext\tB\tsecond\nstoryboard\tc\ttext\tC\t"
                  u"third\nmap\tM\tdefault\npage\t1\ta\npage\t1\tb\npage\t1\tc\ncurrent\ta\n")});
    Put(hosted.control, L"Lesson", lesson, DISPATCH_PROPERTYPUTREF);
}

std::vector<ControlCase> MakeCases() {
    const Variant no = false, yes = true;
    ControlCase validator{"DatabaseValidator", L"", {360, 120}, Calls(L"ValidateDataConnection", {u"", u"", true})};
    ControlCase picker{"SQLDBPicker", L"ComboBox", {200, 0}, LoadsFor(u"admin")};
    ControlCase editor{"GroupEditor", L"SysTreeView32", {240, 320}, FillEditor};
    ControlCase locks{"LockManager", L"SysListView32", {760, 240}, FillLocks};
    ControlCase info{"LessonInfo", L"", {220, 150}, UpdatesFrom(true)};
    ControlCase lockInfo{"LockInfo", L"", {220, 80}, UpdatesFrom(true)};
    ControlCase map{"LessonMapEditor", L"SysTreeView32", {240, 320}, FillMap};

    for (ControlCase* each : {&validator, &picker, &info, &lockInfo}) each->isSampleShown = true;
    picker.takesHostColors = false;

    picker.keys = {{VK_UP, 1}, {VK_DOWN, 1}, {VK_HOME, 1}};
    editor.keys = {{VK_UP, 1}, {VK_RIGHT, 0}, {VK_RIGHT, 1}, {VK_LEFT, 1}, {VK_DOWN, 1}, {VK_DELETE, 3}};
    locks.keys = {{VK_DOWN, 0}, {VK_UP, 0}, {VK_END, 0}, {VK_DELETE, 2}, {VK_F5, 1}};
    map.keys = {{VK_DOWN, 2}, {VK_UP, 2}, {VK_END, 2}, {VK_DELETE, 5}};

    editor.kept = {{L"AllowDragDrop", no}, {L"Locked", yes}, {L"SingleExpand", yes}};
    map.kept = {{L"AllowDragDrop", no}, {L"CaptionStyle", 7}, {L"Checkboxes", yes}, {L"Locked", yes}};
    map.kept.push_back({L"ShowDefaultMapOnly", yes});

    picker.events = {{1, LoadsFor(u"admin")}, {1, LoadsFor(u"stranger")}, {1, Presses(VK_UP)}};
    editor.events = {{1, Calls(L"LoadDatabase")},
                     {1, Calls(L"Clear")},
                     {1, Presses(VK_UP)},
                     {1, Sets(L"CurrentLessonID", u"a")},
                     {2, Calls(L"MoveCurrent", {3})},
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
    lockInfo.events = {{1, UpdatesFrom(false)}};
    map.events = {{2, Sets(L"CurrentSBID", u"b")},
                  {2, Presses(VK_DOWN)},
                  {3, Presses(VK_SPACE), Sets(L"Checkboxes", yes)},
                  {4, Calls(L"MoveCurrent", {2})},
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

TestSite::TestSite()
    : window(CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN | WS_VISIBLE, 0, 0, 420, 340,
                             nullptr, nullptr, nullptr, nullptr)) {
    ambients[DISPID_AMBIENT_USERMODE] = Variant(true);
    ambients[DISPID_AMBIENT_DISPLAYNAME] = Variant(u"Control1");
}

TestSite::~TestSite() {
    EXPECT_TRUE(IsReleased()) << "the control still refers to its site";
    if (IsWindow(window)) DestroyWindow(window);
}

HRESULT TestSite::Count(const std::string& call) {
    ++calls[call];
    if (const auto listener = onCall) listener(call);
    return S_OK;
}

HRESULT TestSite::GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document, LPRECT position,
                                   LPRECT visible, LPOLEINPLACEFRAMEINFO) {
    *frame = this;
    AddRef();
    *document = nullptr;
    *position = place;
    *visible = {0, 0, 400, 300};
    return Count("GetWindowContext");
}

HRESULT TestSite::Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) {
    const auto found = ambients.find(dispid);
    if (found == ambients.end()) return DISP_E_MEMBERNOTFOUND;
    return VariantCopy(result, &found->second);
}

HostedControl::HostedControl(const ControlCase& row, std::optional<LONG> verb)
    : what(row), control(Create(row)), object(control.As<IOleObject>(IID_IOleObject)),
      inPlace(control.As<IOleInPlaceObject>(IID_IOleInPlaceObject)) {
    if (!verb) return;
    Place(*verb);
    EXPECT_TRUE(window && child);
    sink.Connect(control);
}

HostedControl::~HostedControl() {
    onEvent = nullptr;
    site.onCall = nullptr;
    Close();
}

void HostedControl::Place(LONG verb) {
    object->SetClientSite(&site);
    if (object) control.As<IPersistStreamInit>(IID_IPersistStreamInit)->InitNew();
    if (object) DoVerb(verb);
}

void HostedControl::Fill() {
    static const SampleData sample; // made once: databases take their time
    data = &sample;
    what.fill(*this);
    received.clear();
}

void HostedControl::DoVerb(LONG verb) {
    const HRESULT result = object->DoVerb(verb, nullptr, &site, 0, site.window, window ? nullptr : &site.place);
    if (!object) return;
    EXPECT_HRESULT_SUCCEEDED(result);
    inPlace->GetWindow(&window);
    child = what.child.empty() ? window : FindWindowExW(window, nullptr, what.child.c_str(), nullptr);
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

void HostedControl::SetAmbient(DISPID dispid, const Variant& value) {
    site.ambients[dispid] = value;
    EXPECT_HRESULT_SUCCEEDED(control.As<IOleControl>(IID_IOleControl)->OnAmbientPropertyChange(dispid));
}

std::vector<DWORD> HostedControl::Picture(int width, int height) const {
    std::vector<DWORD> pixels(static_cast<size_t>(width * height));
    const HDC dc = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateBitmap(width, height, 1, 32, nullptr);
    SelectObject(dc, bitmap);
    const RECT bounds{0, 0, width, height};
    EXPECT_HRESULT_SUCCEEDED(OleDraw(control.Get(), DVASPECT_CONTENT, dc, &bounds));
    GetBitmapBits(bitmap, width * height * 4, pixels.data());
    DeleteDC(dc);
    DeleteObject(bitmap);
    for (DWORD& pixel : pixels) pixel &= 0xFFFFFF;
    return pixels;
}

void HostedControl::Close() {
    sink.Disconnect();
    site.activeObject.Reset();
    if (inPlace && !window) inPlace->GetWindow(&window);
    inPlace.Reset();
    control.Reset();
    const ComPtr<IOleObject> last = std::move(object);
    if (!last) return;
    last->Close(OLECLOSE_NOSAVE);
    last->SetClientSite(nullptr);
}

bool HostedControl::IsGone() const {
    return PumpUntil([this] { return !IsWindow(window) && !IsWindow(child); }) && site.IsReleased() &&
           sink.IsReleased();
}

} // namespace dax::test
