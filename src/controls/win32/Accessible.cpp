#include "controls/win32/Accessible.h"

#include "com/ComObject.h"

#include <oleacc.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

namespace dax {

namespace {

std::atomic<long> liveObjects = 0;

HRESULT ReturnText(const Text& text, BSTR* out) {
    if (text.empty()) return S_FALSE;
    *out = SysAllocStringLen(Wide(text), static_cast<UINT>(text.size()));
    return *out ? S_OK : E_OUTOFMEMORY;
}

HRESULT ReturnNumber(LONG number, VARIANT* out) {
    out->vt = VT_I4;
    out->lVal = number;
    return S_OK;
}

// A snapshot of elements; the object rejects one that was removed since. The toolkit's Enumerator keeps a COM library
// loaded, but programs contain this code, too.
class ElementList final : public ComObject<Implements<IEnumVARIANT, IID_IEnumVARIANT>> {
public:
    ElementList(std::vector<LONG> elements, ComPtr<IUnknown> owner, size_t next = 0)
        : elements(std::move(elements)), owner(std::move(owner)), next(next) {
        ++liveObjects;
    }

    // Of a window's object it is one of the interfaces.
    STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
        return owner && iid != IID_IEnumVARIANT ? owner->QueryInterface(iid, out) : ComObject::QueryInterface(iid, out);
    }
    STDMETHODIMP Next(ULONG count, VARIANT* out, ULONG* fetched) override {
        ULONG given = 0;
        for (; given < count && next < elements.size(); ++given) ReturnNumber(elements[next++], &out[given]);
        if (fetched) *fetched = given;
        return given == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) override {
        const size_t skipped = std::min<size_t>(count, elements.size() - next);
        next += skipped;
        return skipped == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override {
        next = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(IEnumVARIANT** out) override {
        *out = new (std::nothrow) ElementList(elements, owner, next);
        return *out ? S_OK : E_OUTOFMEMORY;
    }

private:
    ~ElementList() override { --liveObjects; }

    const std::vector<LONG> elements;
    const ComPtr<IUnknown> owner;
    size_t next;
};

} // namespace

class AccessibleObject final : public ComObject<Implements<IAccessible, IID_IAccessible, IID_IDispatch>> {
public:
    AccessibleObject(Accessible& shown, HWND window) : model(&shown), handle(window) {
        CreateStdAccessibleObject(handle, OBJID_CLIENT, IID_IAccessible, standard.OutVoid());
        ++liveObjects;
    }
    void Disconnect() {
        model = nullptr;
        standard.Reset();
    }

    // A separate enumeration for each caller.
    STDMETHODIMP QueryInterface(REFIID id, void** out) override {
        if (id != IID_IEnumVARIANT) return ComObject::QueryInterface(id, out);
        *out = nullptr;
        return On(Self(), [&](LONG) { return ReturnList(model->Elements(), this, out); });
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** out) override {
        *out = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        ComPtr<ITypeLib> library;
        const HRESULT result = LoadTypeLib(L"oleacc.dll", library.Out());
        return FAILED(result) ? result : library->GetTypeInfoOfGuid(IID_IAccessible, out);
    }
    STDMETHODIMP GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID, DISPID* out) override {
        if (id != IID_NULL) return DISP_E_UNKNOWNINTERFACE; // reserved
        return WithType([=](ITypeInfo& type) { return type.GetIDsOfNames(names, count, out); });
    }
    STDMETHODIMP Invoke(DISPID member, REFIID id, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* out,
                        EXCEPINFO* exception, UINT* wrong) override {
        if (id != IID_NULL) return DISP_E_UNKNOWNINTERFACE; // reserved
        return WithType([=, this](ITypeInfo& type) {
            return type.Invoke(static_cast<IAccessible*>(this), member, flags, parameters, out, exception, wrong);
        });
    }

    STDMETHODIMP get_accParent(IDispatch** out) override {
        *out = nullptr;
        if (!model) return CO_E_OBJNOTCONNECTED;
        return standard ? standard->get_accParent(out) : S_FALSE;
    }
    STDMETHODIMP get_accChildCount(LONG* out) override {
        *out = model ? model->Count() : 0;
        return model ? S_OK : CO_E_OBJNOTCONNECTED;
    }
    STDMETHODIMP get_accChild(VARIANT child, IDispatch** out) override {
        *out = nullptr;
        return On(child, [&](LONG element) {
            if (element != CHILDID_SELF) return S_FALSE; // elements are no objects
            *out = this;
            AddRef();
            return S_OK;
        });
    }
    STDMETHODIMP get_accName(VARIANT child, BSTR* out) override {
        *out = nullptr;
        return On(child, [&](LONG element) {
            if (element == CHILDID_SELF && standard) return standard->get_accName(child, out);
            return ReturnText(model->Name(element), out);
        });
    }
    STDMETHODIMP get_accValue(VARIANT child, BSTR* out) override {
        *out = nullptr;
        return On(child, [&](LONG element) { return ReturnText(model->Value(element), out); });
    }
    STDMETHODIMP get_accDescription(VARIANT child, BSTR* out) override {
        *out = nullptr;
        return On(child, [&](LONG element) { return ReturnText(model->Description(element), out); });
    }
    STDMETHODIMP get_accRole(VARIANT child, VARIANT* out) override {
        out->vt = VT_EMPTY;
        return On(child, [&](LONG element) { return ReturnNumber(model->Role(element), out); });
    }
    STDMETHODIMP get_accState(VARIANT child, VARIANT* out) override {
        out->vt = VT_EMPTY;
        return On(child, [&](LONG element) {
            LONG state = model->State(element);
            VARIANT ofWindow{};
            if (element == CHILDID_SELF && standard && standard->get_accState(child, &ofWindow) == S_OK)
                state |= ofWindow.lVal;
            return ReturnNumber(state, out);
        });
    }
    STDMETHODIMP get_accHelp(VARIANT child, BSTR* out) override { return NoText(child, out); }
    STDMETHODIMP get_accHelpTopic(BSTR* file, VARIANT child, LONG* topic) override {
        *topic = 0;
        return NoText(child, file);
    }
    STDMETHODIMP get_accKeyboardShortcut(VARIANT child, BSTR* out) override { return NoText(child, out); }
    STDMETHODIMP get_accFocus(VARIANT* out) override {
        out->vt = VT_EMPTY;
        if (!model) return CO_E_OBJNOTCONNECTED;
        return GetFocus() == handle ? ReturnNumber(model->Focused(), out) : S_FALSE;
    }
    STDMETHODIMP get_accSelection(VARIANT* out) override {
        out->vt = VT_EMPTY;
        return On(Self(), [&](LONG) {
            std::vector<LONG> selected = model->Selected();
            if (selected.empty()) return S_FALSE;
            if (selected.size() == 1) return ReturnNumber(selected[0], out);
            void* list = nullptr;
            const HRESULT result = ReturnList(std::move(selected), nullptr, &list);
            if (FAILED(result)) return result;
            out->vt = VT_UNKNOWN;
            out->punkVal = static_cast<IEnumVARIANT*>(list);
            return S_OK;
        });
    }
    STDMETHODIMP get_accDefaultAction(VARIANT child, BSTR* out) override {
        *out = nullptr;
        return On(child, [&](LONG element) { return ReturnText(model->Action(element), out); });
    }
    STDMETHODIMP accSelect(LONG flags, VARIANT child) override {
        return On(child, [&](LONG element) {
            if (flags & SELFLAG_TAKEFOCUS) SetFocus(handle);
            if (!model || element == CHILDID_SELF || !model->Has(element))
                return S_OK; // the host's handler of the focus may have changed the model
            return model->Select(element, flags) ? S_OK : E_INVALIDARG;
        });
    }
    STDMETHODIMP accLocation(LONG* left, LONG* top, LONG* width, LONG* height, VARIANT child) override {
        *left = *top = *width = *height = 0;
        return On(child, [&](LONG element) {
            if (element == CHILDID_SELF && standard) return standard->accLocation(left, top, width, height, child);
            RECT place = model->Place(element);
            if (IsRectEmpty(&place)) return S_FALSE;
            MapWindowPoints(handle, nullptr, reinterpret_cast<POINT*>(&place), 2);
            *left = place.left;
            *top = place.top;
            *width = place.right - place.left;
            *height = place.bottom - place.top;
            return S_OK;
        });
    }
    STDMETHODIMP accNavigate(LONG direction, VARIANT start, VARIANT* out) override {
        out->vt = VT_EMPTY;
        return On(start, [&](LONG element) {
            const bool isDown = direction == NAVDIR_FIRSTCHILD || direction == NAVDIR_LASTCHILD;
            if (isDown && element != CHILDID_SELF) return E_INVALIDARG;
            if (!isDown && element == CHILDID_SELF)
                return standard ? standard->accNavigate(direction, start, out) : S_FALSE;
            const LONG found = model->Navigate(element, direction);
            return found == CHILDID_SELF ? S_FALSE : ReturnNumber(found, out);
        });
    }
    STDMETHODIMP accHitTest(LONG x, LONG y, VARIANT* out) override {
        out->vt = VT_EMPTY;
        return On(Self(), [&](LONG) {
            POINT point{x, y};
            ScreenToClient(handle, &point);
            RECT client;
            GetClientRect(handle, &client);
            return PtInRect(&client, point) ? ReturnNumber(model->ElementAt(point), out) : S_FALSE;
        });
    }
    STDMETHODIMP accDoDefaultAction(VARIANT child) override {
        return On(child, [&](LONG element) {
            if (model->Action(element).empty()) return DISP_E_MEMBERNOTFOUND;
            model->DoDefaultAction(element);
            return S_OK;
        });
    }
    STDMETHODIMP put_accName(VARIANT, BSTR) override { return E_NOTIMPL; }
    STDMETHODIMP put_accValue(VARIANT, BSTR) override { return E_NOTIMPL; }

private:
    ~AccessibleObject() override { --liveObjects; }

    static VARIANT Self() {
        VARIANT self{};
        ReturnNumber(CHILDID_SELF, &self);
        return self;
    }
    static HRESULT ReturnList(std::vector<LONG> elements, IUnknown* owner, void** out) {
        *out = static_cast<IEnumVARIANT*>(new (std::nothrow) ElementList(std::move(elements), owner));
        return *out ? S_OK : E_OUTOFMEMORY;
    }
    template <typename Action>
    HRESULT WithType(const Action& action) {
        ComPtr<ITypeInfo> type;
        const HRESULT result = GetTypeInfo(0, LOCALE_NEUTRAL, type.Out());
        return FAILED(result) ? result : action(*type.Get());
    }
    HRESULT NoText(const VARIANT& child, BSTR* out) const {
        *out = nullptr;
        return On(child, [](LONG) { return S_FALSE; });
    }
    template <typename Action>
    HRESULT On(const VARIANT& child, const Action& action) const {
        if (!model) return CO_E_OBJNOTCONNECTED;
        if (child.vt != VT_I4 || (child.lVal != CHILDID_SELF && !model->Has(child.lVal))) return E_INVALIDARG;
        try {
            return action(child.lVal);
        } catch (...) {
            return E_FAIL; // no exception may cross the system's frames; no memory, or a listener of the host
        }
    }

    Accessible* model;
    HWND handle;
    ComPtr<IAccessible> standard; // the system's object for the window
};

Accessible::Accessible() = default;

Accessible::~Accessible() { Disconnect(); }

long Accessible::LiveCount() { return liveObjects; }

void Accessible::Connect(HWND newWindow) {
    Disconnect();
    window = newWindow;
}

void Accessible::Disconnect() {
    window = nullptr;
    if (!object) return;
    object->Disconnect();
    object.Reset();
}

bool Accessible::IsRequested(LPARAM lParam) { return static_cast<LONG>(lParam) == static_cast<LONG>(OBJID_CLIENT); }

LRESULT Accessible::AnswerGetObject(WPARAM wParam) {
    if (!window) return 0;
    if (!object) object = ComPtr<AccessibleObject>::Adopt(new (std::nothrow) AccessibleObject(*this, window));
    if (!object) return 0;
    return LresultFromObject(IID_IAccessible, wParam, object.Get());
}

Accessible::Element Accessible::Navigate(Element from, LONG direction) {
    const std::vector<Element> all = Elements();
    if (all.empty()) return Self;
    if (direction == NAVDIR_FIRSTCHILD) return all.front();
    if (direction == NAVDIR_LASTCHILD) return all.back();
    const bool isForward = direction == NAVDIR_NEXT || direction == NAVDIR_DOWN;
    if (!isForward && direction != NAVDIR_PREVIOUS && direction != NAVDIR_UP) return Self;
    const auto at = std::find(all.begin(), all.end(), from);
    if (isForward) return at == all.end() || at + 1 == all.end() ? Self : *(at + 1);
    return at == all.begin() ? Self : *(at - 1);
}

bool Accessible::HasListener(DWORD event) const { return window && IsWinEventHookInstalled(event); }

void Accessible::RaiseEvent(DWORD event, Element element) const {
    if (HasListener(event)) NotifyWinEvent(event, window, OBJID_CLIENT, element);
}

} // namespace dax
