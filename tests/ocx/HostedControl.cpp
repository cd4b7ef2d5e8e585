#include "HostedControl.h"

#include "ControlCases.h"

namespace dax::test {

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

HRESULT TestSite::Count(const char* call) {
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
    heard.clear();
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
