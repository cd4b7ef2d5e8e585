#include "automation/EventSink.h"

#include "automation/Automation.h"

#include <ocidl.h>

namespace dax::workbench {

namespace {

class Sink final : public IDispatch {
public:
    Sink(REFIID events, Com<ITypeInfo> info, EventHandler listener)
        : iid(events), description(std::move(info)), handler(std::move(listener)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (wanted != IID_IUnknown && wanted != IID_IDispatch && wanted != iid) return E_NOINTERFACE;
        *out = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references;
        if (left == 0) delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        BSTR names[32] = {};
        UINT known = 0;
        if (FAILED(description->GetNames(member, names, 32, &known))) known = 0;
        ControlEvent event;
        event.name = known > 0 ? std::wstring(names[0]) : L"event " + std::to_wstring(member);
        for (UINT i = 0; i < parameters->cArgs; ++i) {
            std::wstring name = i + 1 < known ? std::wstring(names[i + 1]) : std::to_wstring(i + 1);
            event.arguments.push_back({std::move(name), &parameters->rgvarg[parameters->cArgs - 1 - i]});
        }
        for (UINT i = 0; i < known; ++i) SysFreeString(names[i]);
        NameMembers(member, event);
        // The handler may end the connection; an exception must not cross into the control.
        const Com<IDispatch> alive = Com<IDispatch>::Share(this);
        try {
            handler(event);
        } catch (const HostError& error) {
            return error.Code();
        } catch (const std::exception&) {
            return E_FAIL;
        }
        return S_OK;
    }

private:
    ~Sink() = default;

    // Arguments that are members of an enumeration are shown by name, too.
    void NameMembers(DISPID member, ControlEvent& event) const {
        FUNCDESC* function = nullptr;
        for (UINT i = 0; SUCCEEDED(description->GetFuncDesc(i, &function)); ++i) {
            const bool isIt = function->memid == member;
            for (size_t k = 0; isIt && k < event.arguments.size() && k < static_cast<size_t>(function->cParams); ++k) {
                const TYPEDESC& type = function->lprgelemdescParam[k].tdesc;
                Com<ITypeInfo> enumeration;
                if (type.vt == VT_USERDEFINED &&
                    SUCCEEDED(description->GetRefTypeInfo(type.hreftype, enumeration.Out())))
                    event.arguments[k].meaning = EnumMember(enumeration.Get(), NumberOf(*event.arguments[k].value));
            }
            description->ReleaseFuncDesc(function);
            if (isIt) return;
        }
    }
    static long NumberOf(const VARIANT& value) { return value.vt == VT_I4 ? value.lVal : -1; }

    ULONG references = 0;
    IID iid;
    Com<ITypeInfo> description;
    EventHandler handler;
};

// The control's default source interface; empty when it declares none.
Com<ITypeInfo> SourceOf(IUnknown* control) {
    const auto provider = Com<IUnknown>::Share(control).As<IProvideClassInfo>(IID_IProvideClassInfo);
    Com<ITypeInfo> coclass;
    TYPEATTR* attributes = nullptr;
    if (!provider || FAILED(provider->GetClassInfo(coclass.Out())) || FAILED(coclass->GetTypeAttr(&attributes)))
        return {};
    const UINT count = attributes->cImplTypes;
    coclass->ReleaseTypeAttr(attributes);
    constexpr int wanted = IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE;
    for (UINT i = 0; i < count; ++i) {
        int flags = 0;
        HREFTYPE reference = 0;
        Com<ITypeInfo> source;
        if (SUCCEEDED(coclass->GetImplTypeFlags(i, &flags)) && (flags & wanted) == wanted &&
            SUCCEEDED(coclass->GetRefTypeOfImplType(i, &reference)) &&
            SUCCEEDED(coclass->GetRefTypeInfo(reference, source.Out())))
            return source;
    }
    return {};
}

} // namespace

std::wstring ControlEvent::Argument(const wchar_t* wanted) const {
    for (const EventArgument& argument : arguments)
        if (argument.name == wanted) return TextOf(*argument.value);
    return {};
}

void ControlEvent::Answer(const wchar_t* wanted, long value) const {
    for (const EventArgument& argument : arguments) {
        if (argument.name != wanted) continue;
        if (argument.value->vt == (VT_BYREF | VT_I4))
            *argument.value->plVal = value;
        else if (argument.value->vt == (VT_BYREF | VT_VARIANT))
            *argument.value->pvarVal = *Variant(value).Raw();
    }
}

namespace {

// A title says more than that there is an object.
std::wstring TitleOf(const VARIANT& value) {
    if (value.vt != VT_DISPATCH || !value.pdispVal) return {};
    try {
        return L" \"" + Automation(Com<IDispatch>::Share(value.pdispVal)).Get(L"Title").Text() + L"\"";
    } catch (const HostError&) {
        return {};
    }
}

} // namespace

std::wstring DescribeArguments(const ControlEvent& event) {
    std::wstring text;
    for (const EventArgument& argument : event.arguments) {
        if (!text.empty()) text += L", ";
        text += argument.name + L" = ";
        const std::wstring value = TextOf(*argument.value);
        const VARTYPE type = argument.value->vt & VT_TYPEMASK;
        if (argument.name.find(L"assword") != std::wstring::npos)
            text += value.empty() ? L"\"\"" : L"\u2022\u2022\u2022\u2022";
        else
            text += type == VT_BSTR ? L'"' + value + L'"' : value + TitleOf(*argument.value);
        if (!argument.meaning.empty()) text += L" (" + argument.meaning + L")";
    }
    return text;
}

EventConnection::EventConnection(IUnknown* control, EventHandler handler) {
    const Com<ITypeInfo> source = SourceOf(control);
    TYPEATTR* attributes = nullptr;
    if (!source || FAILED(source->GetTypeAttr(&attributes))) return;
    const IID iid = attributes->guid;
    source->ReleaseTypeAttr(attributes);

    const auto container = Com<IUnknown>::Share(control).As<IConnectionPointContainer>(IID_IConnectionPointContainer);
    const auto sink = Com<IDispatch>::Share(new Sink(iid, source, std::move(handler)));
    HRESULT result = container ? container->FindConnectionPoint(iid, point.Out()) : E_NOINTERFACE;
    if (SUCCEEDED(result)) result = point->Advise(sink.Get(), &cookie);
    if (SUCCEEDED(result)) return;
    throw HostError(result, L"The control takes no listener for its events: " + DescribeResult(result));
}

EventConnection::~EventConnection() {
    if (point && cookie) point->Unadvise(cookie);
}

} // namespace dax::workbench
