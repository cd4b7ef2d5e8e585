#include "TestSite.h"

namespace dax::test {

TestSite::TestSite(const TestSite* beside) : hasOwnWindow(!beside) {
    window = beside ? beside->window
                    : CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN | WS_VISIBLE, 0, 0,
                                      420, 340, nullptr, nullptr, nullptr, nullptr);
    ambients[DISPID_AMBIENT_USERMODE] = Variant(true);
    ambients[DISPID_AMBIENT_DISPLAYNAME] = Variant(u"Control1");
}

TestSite::~TestSite() {
    EXPECT_TRUE(IsReleased()) << "the control still refers to its site";
    if (hasOwnWindow && IsWindow(window)) DestroyWindow(window);
}

HRESULT TestSite::Tell(const char* call) {
    if (const auto listener = called) listener(call);
    return S_OK;
}

HRESULT TestSite::GetWindow(HWND* result) {
    *result = window;
    return S_OK;
}

HRESULT TestSite::GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document, LPRECT position,
                                   LPRECT visible, LPOLEINPLACEFRAMEINFO) {
    *frame = this;
    AddRef();
    *document = nullptr;
    *position = place;
    *visible = {0, 0, 400, 300};
    return Tell("GetWindowContext");
}

HRESULT TestSite::TranslateAccelerator(MSG*, DWORD) {
    Count(keysOffered, "TranslateAccelerator");
    return S_FALSE;
}

HRESULT TestSite::OnFocus(BOOL isInside) {
    hasFocus = isInside != FALSE;
    return Tell(isInside ? "OnFocus" : "OnFocus lost");
}

HRESULT TestSite::SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR) {
    activeObject = ComPtr<IOleInPlaceActiveObject>(object);
    return Tell(object ? "SetActiveObject" : "SetActiveObject none");
}

HRESULT TestSite::Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) {
    const auto found = ambients.find(dispid);
    if (found == ambients.end()) return DISP_E_MEMBERNOTFOUND;
    return VariantCopy(result, &found->second);
}

ComPtr<IOleObject> Place(IDispatch* control, TestSite& site, LONG verb) {
    const auto object = Query<IOleObject>(control, IID_IOleObject);
    const auto persist = Query<IPersistStreamInit>(control, IID_IPersistStreamInit);
    if (!object || !persist) return {};
    EXPECT_HRESULT_SUCCEEDED(object->SetClientSite(&site));
    EXPECT_HRESULT_SUCCEEDED(persist->InitNew());
    EXPECT_HRESULT_SUCCEEDED(object->DoVerb(verb, nullptr, &site, 0, site.window, &site.place));
    return object;
}

HWND WindowOf(IUnknown* control) {
    HWND window = nullptr;
    Query<IOleWindow>(control, IID_IOleWindow)->GetWindow(&window);
    return window;
}

std::vector<DWORD> Picture(IUnknown* control, int width, int height) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const HDC dc = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ former = SelectObject(dc, bitmap);
    const RECT bounds{0, 0, width, height};
    EXPECT_HRESULT_SUCCEEDED(OleDraw(control, DVASPECT_CONTENT, dc, &bounds));
    GdiFlush();
    const auto* pixels = static_cast<const DWORD*>(bits);
    std::vector<DWORD> result(pixels, pixels + width * height);
    for (DWORD& pixel : result) pixel &= 0xFFFFFF;
    SelectObject(dc, former);
    DeleteObject(bitmap);
    DeleteDC(dc);
    return result;
}

} // namespace dax::test
