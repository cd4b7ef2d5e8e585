#include "ScriptObject.h"

#include "Output.h"
#include "ScriptText.h"
#include "com/ComError.h"

#include <algorithm>
#include <iterator>

namespace dax {

namespace {

std::wstring TextOf(const Variant& value) {
    if (value.vt == VT_NULL) return L"Null";
    // True and False as scripts write them, whatever the locale.
    if (value.vt == VT_BOOL) return value.boolVal ? L"True" : L"False";
    Variant text;
    Check(VariantChangeType(&text, const_cast<Variant*>(&value), 0, VT_BSTR));
    return text.Text();
}

long NumberOf(const Variant& value) {
    Variant number;
    Check(VariantChangeType(&number, const_cast<Variant*>(&value), 0, VT_I4));
    return number.lVal;
}

// A mistake of the script, described by a sentence.
class ScriptError : public ComError {
public:
    ScriptError(HRESULT code, std::wstring sentence) : ComError(code), text(std::move(sentence)) {}
    const std::wstring& Sentence() const { return text; }

private:
    std::wstring text;
};

ComPtr<IUnknown> ObjectOf(const Variant& value) {
    const bool isObject = value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
    auto identity = isObject ? Query<IUnknown>(value.punkVal, IID_IUnknown) : ComPtr<IUnknown>();
    if (!identity) throw ScriptError(DISP_E_TYPEMISMATCH, L"The first argument is not an object.");
    return identity;
}

void Expect(const wchar_t* member, size_t count, size_t least, size_t most) {
    if (count >= least && count <= most) return;
    throw ScriptError(DISP_E_BADPARAMCOUNT, std::wstring(member) + L" takes " + std::to_wstring(least) +
                                                (least == most ? L"" : L" to " + std::to_wstring(most)) +
                                                (most == 1 ? L" argument, not " : L" arguments, not ") +
                                                std::to_wstring(count) + L".");
}

} // namespace

ScriptObject::ScriptObject(Engine& engine, std::wstring path, std::vector<std::wstring> arguments)
    : engine(engine), path(std::move(path)), scriptArguments(std::move(arguments)) {}

void ScriptObject::Close() {
    std::vector<Connection> former;
    former.swap(connections);
    former.clear();
    windows.clear();
}

const ScriptObject::Member ScriptObject::Members[] = {
    {L"Echo", &ScriptObject::Echo},
    {L"Quit", &ScriptObject::Quit},
    {L"Sleep", &ScriptObject::Sleep},
    {L"CreateObject", &ScriptObject::CreateObject},
    {L"ConnectObject", &ScriptObject::ConnectObject},
    {L"DisconnectObject", &ScriptObject::DisconnectObject},
    {L"Arguments", &ScriptObject::Argument},
    {L"ArgumentCount", &ScriptObject::ArgumentCount},
    {L"ScriptFullName", &ScriptObject::ScriptFullName},
    {L"ShowControl", &ScriptObject::ShowControl},
    {L"Press", &ScriptObject::Press},
};

HRESULT ScriptObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* dispids) {
    if (!names || !dispids || count == 0) return E_INVALIDARG;
    std::fill(dispids, dispids + count, DISPID_UNKNOWN);
    for (const Member& member : Members)
        if (lstrcmpiW(names[0], member.name) == 0) dispids[0] = static_cast<DISPID>(&member - Members) + 1;
    return dispids[0] == DISPID_UNKNOWN || count > 1 ? DISP_E_UNKNOWNNAME : S_OK;
}

HRESULT ScriptObject::Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                             EXCEPINFO* exception, UINT*) {
    if (dispid < 1 || static_cast<size_t>(dispid) > std::size(Members)) return DISP_E_MEMBERNOTFOUND;
    try {
        Arguments arguments;
        for (const VARIANT* argument : ReceivedArguments(*parameters)) arguments.push_back(Dereferenced(*argument));
        if (result) VariantInit(result);
        (this->*Members[dispid - 1].call)(arguments).MoveTo(result);
        return S_OK;
    } catch (const ComError& error) {
        if (!exception) return DISP_E_EXCEPTION;
        const auto* const described = dynamic_cast<const ScriptError*>(&error);
        std::wstring text = described ? described->Sentence() : SystemMessage(error.Code());
        if (text.empty()) text = L"the call has failed";
        *exception = {};
        exception->scode = error.Code();
        exception->bstrSource = ToBstr(u"WScript");
        exception->bstrDescription = ToBstr(FromWide(text));
        return DISP_E_EXCEPTION;
    } catch (...) {
        return E_FAIL;
    }
}

Variant ScriptObject::Echo(const Arguments& arguments) {
    std::wstring line;
    for (const Variant& argument : arguments) {
        if (&argument != arguments.data()) line += L' ';
        line += TextOf(argument);
    }
    PrintLine(line);
    return {};
}

// At once: a script that continues after errors must not continue after this.
Variant ScriptObject::Quit(const Arguments& arguments) {
    Expect(L"Quit", arguments.size(), 0, 1);
    const long code = arguments.empty() ? 0 : NumberOf(arguments[0]);
    Close();
    ExitProcess(static_cast<UINT>(code == 0 && engine.HasFailed() ? 1 : code));
}

Variant ScriptObject::Sleep(const Arguments& arguments) {
    Expect(L"Sleep", arguments.size(), 1, 1);
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(std::max(0L, NumberOf(arguments[0])));
    for (;;) {
        PumpMessages();
        const ULONGLONG now = GetTickCount64();
        if (now >= end) return {};
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
    }
}

Variant ScriptObject::CreateObject(const Arguments& arguments) {
    Expect(L"CreateObject", arguments.size(), 1, 2);
    const std::wstring name = TextOf(arguments[0]);
    CLSID clsid{};
    ComPtr<IDispatch> object;
    HRESULT made = CLSIDFromProgID(name.c_str(), &clsid);
    if (SUCCEEDED(made))
        made = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IDispatch,
                                object.OutVoid());
    if (FAILED(made)) throw ScriptError(made, DescribeMissingClass(name, made));
    if (arguments.size() == 2) ConnectObject({object, arguments[1]});
    return object;
}

Variant ScriptObject::ConnectObject(const Arguments& arguments) {
    Expect(L"ConnectObject", arguments.size(), 2, 2);
    ComPtr<IUnknown> object = ObjectOf(arguments[0]);
    EventConnection events;
    try {
        events = EventConnection(object.Get(), [&engine = engine, prefix = TextOf(arguments[1])](const auto& event) {
            engine.Call(prefix + event.name, event.parameters, event.call);
        });
    } catch (const ComError&) { // reported below, as an object without events is
    }
    if (!events) throw ScriptError(DISP_E_TYPEMISMATCH, L"The object raises no events that a script can handle.");
    connections.push_back({std::move(object), std::move(events)});
    return {};
}

Variant ScriptObject::DisconnectObject(const Arguments& arguments) {
    Expect(L"DisconnectObject", arguments.size(), 1, 1);
    const ComPtr<IUnknown> object = ObjectOf(arguments[0]);
    const auto first = std::partition(connections.begin(), connections.end(),
                                      [&](const Connection& each) { return each.object.Get() != object.Get(); });
    const std::vector<Connection> former(std::make_move_iterator(first), std::make_move_iterator(connections.end()));
    connections.erase(first, connections.end());
    return {};
}

Variant ScriptObject::ShowControl(const Arguments& arguments) {
    Expect(L"ShowControl", arguments.size(), 2, 2);
    const ComPtr<IUnknown> object = ObjectOf(arguments[0]);
    windows.push_back(std::make_unique<ControlWindow>(object.Get(), TextOf(arguments[1])));
    return {};
}

Variant ScriptObject::Press(const Arguments& arguments) {
    Expect(L"Press", arguments.size(), 2, 2);
    const ComPtr<IUnknown> object = ObjectOf(arguments[0]);
    const auto shown = std::find_if(windows.begin(), windows.end(),
                                    [&object](const auto& window) { return window->Control() == object.Get(); });
    if (shown == windows.end()) throw ScriptError(E_UNEXPECTED, L"ShowControl has given the object no window.");
    (*shown)->Press(TextOf(arguments[1]));
    return {};
}

Variant ScriptObject::Argument(const Arguments& arguments) {
    Expect(L"Arguments", arguments.size(), 1, 1);
    const long index = NumberOf(arguments[0]);
    if (index < 0 || static_cast<size_t>(index) >= scriptArguments.size())
        throw ScriptError(DISP_E_BADINDEX, L"There is no argument " + std::to_wstring(index) +
                                               L"; the script was given " + std::to_wstring(scriptArguments.size()) +
                                               L".");
    return scriptArguments[static_cast<size_t>(index)];
}

Variant ScriptObject::ArgumentCount(const Arguments&) { return static_cast<int>(scriptArguments.size()); }

Variant ScriptObject::ScriptFullName(const Arguments&) { return path; }

} // namespace dax
