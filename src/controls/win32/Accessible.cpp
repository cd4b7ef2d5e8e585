#include "controls/win32/Accessible.h"

#include <oleacc.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

namespace dax {

namespace {

std::atomic<long> liveCount = 0;

HRESULT GiveText(const Text& text, BSTR* out) {
    if (text.empty()) return S_FALSE;
    *out = SysAllocStringLen(Wide(text), static_cast<UINT>(text.size()));
    return *out ? S_OK : E_OUTOFMEMORY;
}

HRESULT GiveNumber(LONG number, VARIANT* out) {
    out->vt = VT_I4;
    out->lVal = number;
    return S_OK;
}

// Elements as they were when they were asked for; one that has gone since is unknown to the object.
class ElementList : public IEnumVARIANT {
public:
    ElementList(std::vector<LONG> list, IUnknown* listOwner, size_t start = 0)
        : elements(std::move(list)), owner(listOwner), next(start) {
        if (owner) owner->AddRef();
        ++liveCount;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override {
        if (id != IID_IEnumVARIANT && (owner || id != IID_IUnknown)) {
            *out = nullptr;
            return owner ? owner->QueryInterface(id, out) : E_NOINTERFACE;
        }
        *out = static_cast<IEnumVARIANT*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references;
        if (left == 0) delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* out, ULONG* fetched) override {
        ULONG given = 0;
        for (; given < count && next < elements.size(); ++given) GiveNumber(elements[next++], &out[given]);
        if (fetched) *fetched = given;
        return given == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        const size_t skipped = std::min<size_t>(count, elements.size() - next);
        next += skipped;
        return skipped == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        next = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** out) override {
        *out = new (std::nothrow) ElementList(elements, owner, next);
        return *out ? S_OK : E_OUTOFMEMORY;
    }

private:
    virtual ~ElementList() {
        if (owner) owner->Release();
        --liveCount;
    }

    std::vector<LONG> elements;
    IUnknown* owner;
    size_t next;
    std::atomic<ULONG> references = 1;
};

} // namespace

class AccessibleObject : public IAccessible {
public:
    AccessibleObject(Accessible& shown, HWND window) : model(&shown), handle(window) {
        CreateStdAccessibleObject(handle, OBJID_CLIENT, IID_IAccessible, reinterpret_cast<void**>(&standard));
        ++liveCount;
    }
    void Disconnect() {
        model = nullptr;
        if (standard) std::exchange(standard, nullptr)->Release();
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override {
        *out = nullptr;
        if (id == IID_IUnknown || id == IID_IDispatch || id == IID_IAccessible) {
            *out = static_cast<IAccessible*>(this);
            AddRef();
            return S_OK;
        }
        // An enumeration of its own for each who asks.
        if (id != IID_IEnumVARIANT) return E_NOINTERFACE;
        return On(Self(), [&](LONG) { return GiveList(model->Elements(), this, out); });
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** out) override {
        *out = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        ITypeLib* library = nullptr;
        HRESULT result = LoadTypeLib(L"oleacc.dll", &library);
        if (FAILED(result)) return result;
        result = library->GetTypeInfoOfGuid(IID_IAccessible, out);
        library->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID, DISPID* out) override {
        if (id != IID_NULL) return DISP_E_UNKNOWNINTERFACE; // reserved
        return WithType([=](ITypeInfo& type) { return type.GetIDsOfNames(names, count, out); });
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID id, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* out,
                                     EXCEPINFO* exception, UINT* wrong) override {
        if (id != IID_NULL) return DISP_E_UNKNOWNINTERFACE; // reserved
        return WithType([=, this](ITypeInfo& type) {
            return type.Invoke(static_cast<IAccessible*>(this), member, flags, parameters, out, exception, wrong);
        });
    }

    HRESULT STDMETHODCALLTYPE get_accParent(IDispatch** out) override {
        *out = nullptr;
        if (!model) return CO_E_OBJNOTCONNECTED;
        return standard ? standard->get_accParent(out) : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE get_accChildCount(LONG* out) override {
        *out = model ? model->Count() : 0;
        return model ? S_OK : CO_E_OBJNOTCONNECTED;
    }
    HRESULT STDMETHODCALLTYPE get_accChild(VARIANT child, IDispatch** out) override {
        *out = nullptr;
        return On(child, [&](LONG element) {
            if (element != CHILDID_SELF) return S_FALSE; // elements are no objects
            *out = this;
            AddRef();
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE get_accName(VARIANT child, BSTR* out) override {
        *out = nullptr;
        return On(child, [&](LONG element) {
            if (element == CHILDID_SELF && standard) return standard->get_accName(child, out);
            return GiveText(model->Name(element), out);
        });
    }
    HRESULT STDMETHODCALLTYPE get_accValue(VARIANT child, BSTR* out) override {
        *out = nullptr;
        return On(child, [&](LONG element) { return GiveText(model->Value(element), out); });
    }
    HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT child, BSTR* out) override {
        *out = nullptr;
        return On(child, [&](LONG element) { return GiveText(model->Description(element), out); });
    }
    HRESULT STDMETHODCALLTYPE get_accRole(VARIANT child, VARIANT* out) override {
        out->vt = VT_EMPTY;
        return On(child, [&](LONG element) { return GiveNumber(model->Role(element), out); });
    }
    HRESULT STDMETHODCALLTYPE get_accState(VARIANT child, VARIANT* out) override {
        out->vt = VT_EMPTY;
        return On(child, [&](LONG element) {
            LONG state = model->State(element);
            VARIANT ofWindow{};
            if (element == CHILDID_SELF && standard && standard->get_accState(child, &ofWindow) == S_OK)
                state |= ofWindow.lVal;
            return GiveNumber(state, out);
        });
    }
    HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT child, BSTR* out) override { return Nothing(child, out); }
    HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* file, VARIANT child, LONG* topic) override {
        *topic = 0;
        return Nothing(child, file);
    }
    HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT child, BSTR* out) override { return Nothing(child, out); }
    HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* out) override {
        out->vt = VT_EMPTY;
        if (!model) return CO_E_OBJNOTCONNECTED;
        return GetFocus() == handle ? GiveNumber(model->Focused(), out) : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* out) override {
        out->vt = VT_EMPTY;
        return On(Self(), [&](LONG) {
            std::vector<LONG> selected = model->Selected();
            if (selected.empty()) return S_FALSE;
            if (selected.size() == 1) return GiveNumber(selected[0], out);
            void* list = nullptr;
            const HRESULT result = GiveList(std::move(selected), nullptr, &list);
            if (FAILED(result)) return result;
            out->vt = VT_UNKNOWN;
            out->punkVal = static_cast<IEnumVARIANT*>(list);
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT child, BSTR* out) override {
        *out = nullptr;
        return On(child, [&](LONG element) { return GiveText(model->Action(element), out); });
    }
    HRESULT STDMETHODCALLTYPE accSelect(LONG flags, VARIANT child) override {
        return On(child, [&](LONG element) {
            if (flags & SELFLAG_TAKEFOCUS) SetFocus(handle);
            if (!model || element == CHILDID_SELF || !model->Has(element)) return S_OK; // the host heard of the focus
            return model->Select(element, flags) ? S_OK : E_INVALIDARG;
        });
    }
    HRESULT STDMETHODCALLTYPE accLocation(LONG* left, LONG* top, LONG* width, LONG* height, VARIANT child) override {
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
    HRESULT STDMETHODCALLTYPE accNavigate(LONG direction, VARIANT start, VARIANT* out) override {
        out->vt = VT_EMPTY;
        return On(start, [&](LONG element) {
            const bool isDown = direction == NAVDIR_FIRSTCHILD || direction == NAVDIR_LASTCHILD;
            if (isDown && element != CHILDID_SELF) return E_INVALIDARG;
            if (!isDown && element == CHILDID_SELF)
                return standard ? standard->accNavigate(direction, start, out) : S_FALSE;
            const LONG found = model->Neighbour(element, direction);
            return found == CHILDID_SELF ? S_FALSE : GiveNumber(found, out);
        });
    }
    HRESULT STDMETHODCALLTYPE accHitTest(LONG x, LONG y, VARIANT* out) override {
        out->vt = VT_EMPTY;
        return On(Self(), [&](LONG) {
            POINT point{x, y};
            ScreenToClient(handle, &point);
            RECT client;
            GetClientRect(handle, &client);
            return PtInRect(&client, point) ? GiveNumber(model->ElementAt(point), out) : S_FALSE;
        });
    }
    HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT child) override {
        return On(child, [&](LONG element) {
            if (model->Action(element).empty()) return DISP_E_MEMBERNOTFOUND;
            model->Act(element);
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE put_accName(VARIANT, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_accValue(VARIANT, BSTR) override { return E_NOTIMPL; }

private:
    virtual ~AccessibleObject() {
        Disconnect();
        --liveCount;
    }

    static VARIANT Self() {
        VARIANT self{};
        GiveNumber(CHILDID_SELF, &self);
        return self;
    }
    static HRESULT GiveList(std::vector<LONG> elements, IUnknown* owner, void** out) {
        *out = static_cast<IEnumVARIANT*>(new (std::nothrow) ElementList(std::move(elements), owner));
        return *out ? S_OK : E_OUTOFMEMORY;
    }
    template <typename Action>
    HRESULT WithType(const Action& action) {
        ITypeInfo* type = nullptr;
        HRESULT result = GetTypeInfo(0, LOCALE_NEUTRAL, &type);
        if (FAILED(result)) return result;
        result = action(*type);
        type->Release();
        return result;
    }
    HRESULT Nothing(const VARIANT& child, BSTR* out) const {
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
    IAccessible* standard = nullptr; // the system's, which knows the window among others
    std::atomic<ULONG> references = 1;
};

Accessible::~Accessible() { Disconnect(); }

long Accessible::LiveCount() { return liveCount; }

void Accessible::Connect(HWND newWindow) {
    Disconnect();
    window = newWindow;
}

void Accessible::Disconnect() {
    window = nullptr;
    if (!object) return;
    object->Disconnect();
    std::exchange(object, nullptr)->Release();
}

bool Accessible::IsAsked(LPARAM lParam) { return static_cast<LONG>(lParam) == static_cast<LONG>(OBJID_CLIENT); }

LRESULT Accessible::Answer(WPARAM wParam) {
    if (!window) return 0;
    if (!object) object = new (std::nothrow) AccessibleObject(*this, window);
    if (!object) return 0;
    return LresultFromObject(IID_IAccessible, wParam, object);
}

Accessible::Element Accessible::Neighbour(Element from, LONG direction) {
    const std::vector<Element> all = Elements();
    if (all.empty()) return TheWhole;
    if (direction == NAVDIR_FIRSTCHILD) return all.front();
    if (direction == NAVDIR_LASTCHILD) return all.back();
    const bool isForward = direction == NAVDIR_NEXT || direction == NAVDIR_DOWN;
    if (!isForward && direction != NAVDIR_PREVIOUS && direction != NAVDIR_UP) return TheWhole;
    const auto at = std::find(all.begin(), all.end(), from);
    if (isForward) return at == all.end() || at + 1 == all.end() ? TheWhole : *(at + 1);
    return at == all.begin() ? TheWhole : *(at - 1);
}

bool Accessible::IsHeard(DWORD event) const { return window && IsWinEventHookInstalled(event); }

void Accessible::Tell(DWORD event, Element element) const {
    if (IsHeard(event)) NotifyWinEvent(event, window, OBJID_CLIENT, element);
}

} // namespace dax
