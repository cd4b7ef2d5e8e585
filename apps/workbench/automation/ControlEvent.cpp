#include "automation/ControlEvent.h"

#include "automation/Automation.h"

namespace dax::workbench {

namespace {

long NumberOf(const VARIANT& value) { return value.vt == VT_I4 ? value.lVal : -1; }

// Arguments that are members of an enumeration are shown by name, too.
void NameMembers(const ReceivedEvent& received, ControlEvent& event) {
    FUNCDESC* function = nullptr;
    for (UINT i = 0; SUCCEEDED(received.description.GetFuncDesc(i, &function)); ++i) {
        const bool isIt = function->memid == received.dispid;
        for (size_t k = 0; isIt && k < event.arguments.size() && k < static_cast<size_t>(function->cParams); ++k) {
            const TYPEDESC& type = function->lprgelemdescParam[k].tdesc;
            ComPtr<ITypeInfo> enumeration;
            if (type.vt == VT_USERDEFINED &&
                SUCCEEDED(received.description.GetRefTypeInfo(type.hreftype, enumeration.Out())))
                event.arguments[k].meaning = EnumMember(enumeration.Get(), NumberOf(*event.arguments[k].value));
        }
        received.description.ReleaseFuncDesc(function);
        if (isIt) return;
    }
}

ControlEvent Described(const ReceivedEvent& received) {
    ControlEvent event{received.name, {}};
    for (VARIANT* value : ReceivedArguments(received.call)) {
        const size_t place = event.arguments.size();
        event.arguments.push_back(
            {place < received.parameters.size() ? received.parameters[place] : std::to_wstring(place + 1), value});
    }
    NameMembers(received, event);
    return event;
}

} // namespace

std::wstring ControlEvent::Argument(const wchar_t* requested) const {
    for (const EventArgument& argument : arguments)
        if (argument.name == requested) return DescribeValue(*argument.value);
    return {};
}

void ControlEvent::Answer(const wchar_t* requested, long value) const {
    for (const EventArgument& argument : arguments) {
        if (argument.name != requested) continue;
        if (argument.value->vt == (VT_BYREF | VT_I4))
            *argument.value->plVal = value;
        else if (argument.value->vt == (VT_BYREF | VT_VARIANT))
            Variant(value).MoveTo(argument.value->pvarVal);
    }
}

namespace {

// A title says more than that there is an object.
std::wstring QuotedTitle(const VARIANT& value) {
    if (value.vt != VT_DISPATCH || !value.pdispVal) return {};
    try {
        return L" \"" + Automation(ComPtr<IDispatch>(value.pdispVal)).Get(L"Title").Text() + L"\"";
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
        const std::wstring value = DescribeValue(*argument.value);
        const VARTYPE type = argument.value->vt & VT_TYPEMASK;
        if (argument.name.find(L"assword") != std::wstring::npos)
            text += value.empty() ? L"\"\"" : L"\u2022\u2022\u2022\u2022";
        else
            text += type == VT_BSTR ? L'"' + value + L'"' : value + QuotedTitle(*argument.value);
        if (!argument.meaning.empty()) text += L" (" + argument.meaning + L")";
    }
    return text;
}

EventConnection ConnectEvents(IUnknown* control, ControlEventHandler handler) {
    try {
        return EventConnection(
            control, [handler = std::move(handler)](const ReceivedEvent& received) { handler(Described(received)); });
    } catch (const ComError& error) {
        throw HostError(error.Code(), L"The control refuses the event sink: " + DescribeResult(error.Code()));
    }
}

} // namespace dax::workbench
