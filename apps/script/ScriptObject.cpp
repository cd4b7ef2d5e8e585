#include "ScriptObject.h"

#include "Diagnosis.h"
#include "Output.h"
#include "com/Fault.h"
#include "com/Variant.h"

#include <algorithm>

namespace dax {

namespace {

enum Members : DISPID {
    EchoMember = 1,
    QuitMember,
    SleepMember,
    CreateObjectMember,
    ConnectObjectMember,
    DisconnectObjectMember,
    ArgumentsMember,
    ArgumentCountMember,
    ScriptFullNameMember,
    ShowControlMember,
    PressMember,
};

constexpr struct {
    const wchar_t* name;
    Members member;
} Names[] = {
    {L"Echo", EchoMember},
    {L"Quit", QuitMember},
    {L"Sleep", SleepMember},
    {L"CreateObject", CreateObjectMember},
    {L"ConnectObject", ConnectObjectMember},
    {L"DisconnectObject", DisconnectObjectMember},
    {L"Arguments", ArgumentsMember},
    {L"ArgumentCount", ArgumentCountMember},
    {L"ScriptFullName", ScriptFullNameMember},
    {L"ShowControl", ShowControlMember},
    {L"Press", PressMember},
};

std::wstring TextOf(const VARIANT& value) {
    Variant text;
    Check(VariantCopyInd(&text, const_cast<VARIANT*>(&value)));
    if (text.vt == VT_NULL) return L"Null";
    // True and False as scripts write them, whatever the locale.
    if (text.vt == VT_BOOL) return text.boolVal ? L"True" : L"False";
    Check(VariantChangeType(&text, &text, 0, VT_BSTR));
    return ToWide(FromBstr(text.bstrVal));
}

long NumberOf(const VARIANT& value) {
    Variant number;
    Check(VariantCopyInd(&number, const_cast<VARIANT*>(&value)));
    Check(VariantChangeType(&number, &number, 0, VT_I4));
    return number.lVal;
}

// What a script did wrong, in a sentence.
class ScriptFault : public ComError {
public:
    ScriptFault(HRESULT code, std::wstring sentence) : ComError(code), text(std::move(sentence)) {}
    const std::wstring& Sentence() const { return text; }

private:
    std::wstring text;
};

ComPtr<IUnknown> ObjectOf(const VARIANT& value) {
    Variant plain;
    Check(VariantCopyInd(&plain, const_cast<VARIANT*>(&value)));
    const bool isObject = plain.vt == VT_DISPATCH || plain.vt == VT_UNKNOWN;
    auto identity = isObject ? Query<IUnknown>(plain.punkVal, IID_IUnknown) : ComPtr<IUnknown>();
    if (!identity) throw ScriptFault(DISP_E_TYPEMISMATCH, L"The first argument is not an object.");
    return identity;
}

// Hands a value to the caller, who may want none.
void Give(Variant value, VARIANT* result) {
    if (result) std::swap(*result, static_cast<VARIANT&>(value));
}

void Expect(const wchar_t* member, size_t count, size_t least, size_t most) {
    if (count >= least && count <= most) return;
    throw ScriptFault(DISP_E_BADPARAMCOUNT, std::wstring(member) + L" takes " + std::to_wstring(least) +
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
    for (const Connection& connection : former) connection.sink->Disconnect();
    windows.clear();
}

HRESULT ScriptObject::QueryInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = iid == IID_IUnknown || iid == IID_IDispatch ? static_cast<IDispatch*>(this) : nullptr;
    if (!*object) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

ULONG ScriptObject::Release() {
    const ULONG left = --references;
    if (left == 0) delete this;
    return left;
}

HRESULT ScriptObject::GetTypeInfoCount(UINT* count) {
    if (!count) return E_POINTER;
    *count = 0;
    return S_OK;
}

HRESULT ScriptObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* dispids) {
    if (!names || !dispids || count == 0) return E_INVALIDARG;
    std::fill(dispids, dispids + count, DISPID_UNKNOWN);
    for (const auto& [name, member] : Names)
        if (lstrcmpiW(names[0], name) == 0) dispids[0] = member;
    return dispids[0] == DISPID_UNKNOWN || count > 1 ? DISP_E_UNKNOWNNAME : S_OK;
}

HRESULT ScriptObject::Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                             EXCEPINFO* exception, UINT*) {
    try {
        const Arguments arguments(std::make_reverse_iterator(parameters->rgvarg + parameters->cArgs),
                                  std::make_reverse_iterator(parameters->rgvarg));
        if (result) VariantInit(result);
        switch (dispid) {
        case EchoMember:
            Echo(arguments);
            return S_OK;
        case QuitMember:
            Quit(arguments);
            return S_OK;
        case SleepMember:
            Sleep(arguments);
            return S_OK;
        case CreateObjectMember:
            CreateObject(arguments, result);
            return S_OK;
        case ConnectObjectMember:
            ConnectObject(arguments);
            return S_OK;
        case DisconnectObjectMember:
            DisconnectObject(arguments);
            return S_OK;
        case ShowControlMember:
            ShowControl(arguments);
            return S_OK;
        case PressMember:
            Press(arguments);
            return S_OK;
        case ArgumentsMember:
            Argument(arguments, result);
            return S_OK;
        case ArgumentCountMember:
            Give(Variant(static_cast<int32_t>(scriptArguments.size())), result);
            return S_OK;
        case ScriptFullNameMember:
            Give(Variant(TextView(FromWide(path))), result);
            return S_OK;
        default:
            return DISP_E_MEMBERNOTFOUND;
        }
    } catch (const ComError& error) {
        if (exception) {
            *exception = {};
            exception->scode = error.Code();
            exception->bstrSource = SysAllocString(L"WScript");
            if (const auto* fault = dynamic_cast<const ScriptFault*>(&error)) {
                exception->bstrDescription = SysAllocString(fault->Sentence().c_str());
                return DISP_E_EXCEPTION;
            }
            wchar_t* text = nullptr;
            FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                           nullptr, static_cast<DWORD>(error.Code()), 0, reinterpret_cast<LPWSTR>(&text), 0, nullptr);
            exception->bstrDescription = SysAllocString(text ? text : L"the call has failed");
            LocalFree(text);
        }
        return DISP_E_EXCEPTION;
    } catch (...) {
        return E_FAIL;
    }
}

void ScriptObject::Echo(const Arguments& arguments) {
    std::wstring line;
    for (const VARIANT& argument : arguments) {
        if (&argument != arguments.data()) line += L' ';
        line += TextOf(argument);
    }
    PrintLine(line);
}

// At once: a script that goes on after errors must not go on after this.
void ScriptObject::Quit(const Arguments& arguments) {
    Expect(L"Quit", arguments.size(), 0, 1);
    const long code = arguments.empty() ? 0 : NumberOf(arguments[0]);
    Close();
    ExitProcess(static_cast<UINT>(code == 0 && engine.HasFailed() ? 1 : code));
}

void ScriptObject::Sleep(const Arguments& arguments) {
    Expect(L"Sleep", arguments.size(), 1, 1);
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(std::max(0L, NumberOf(arguments[0])));
    for (;;) {
        PumpMessages();
        const ULONGLONG now = GetTickCount64();
        if (now >= end) return;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
    }
}

void ScriptObject::CreateObject(const Arguments& arguments, VARIANT* result) {
    Expect(L"CreateObject", arguments.size(), 1, 2);
    const std::wstring name = TextOf(arguments[0]);
    CLSID clsid{};
    ComPtr<IDispatch> object;
    HRESULT made = CLSIDFromProgID(name.c_str(), &clsid);
    if (SUCCEEDED(made))
        made = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IDispatch,
                                object.OutVoid());
    if (FAILED(made)) throw ScriptFault(made, DescribeMissingClass(name, made));
    Variant created(object.Get());
    if (arguments.size() == 2) ConnectObject({created, arguments[1]});
    Give(std::move(created), result);
}

void ScriptObject::ConnectObject(const Arguments& arguments) {
    Expect(L"ConnectObject", arguments.size(), 2, 2);
    ComPtr<IUnknown> object = ObjectOf(arguments[0]);
    EventSink* sink = EventSink::Connect(engine, object.Get(), TextOf(arguments[1]));
    if (!sink) throw ScriptFault(DISP_E_TYPEMISMATCH, L"The object raises no events that a script can hear.");
    connections.push_back({std::move(object), ComPtr<EventSink>(sink)});
    sink->Release();
}

void ScriptObject::DisconnectObject(const Arguments& arguments) {
    Expect(L"DisconnectObject", arguments.size(), 1, 1);
    const ComPtr<IUnknown> object = ObjectOf(arguments[0]);
    std::vector<Connection> former;
    for (const Connection& connection : connections)
        if (connection.object.Get() == object.Get()) former.push_back(connection);
    std::erase_if(connections,
                  [&object](const Connection& connection) { return connection.object.Get() == object.Get(); });
    for (const Connection& connection : former) connection.sink->Disconnect();
}

void ScriptObject::ShowControl(const Arguments& arguments) {
    Expect(L"ShowControl", arguments.size(), 2, 2);
    const ComPtr<IUnknown> object = ObjectOf(arguments[0]);
    windows.push_back(std::make_unique<ControlWindow>(object.Get(), TextOf(arguments[1])));
}

void ScriptObject::Press(const Arguments& arguments) {
    Expect(L"Press", arguments.size(), 2, 2);
    const ComPtr<IUnknown> object = ObjectOf(arguments[0]);
    const auto shown = std::find_if(windows.begin(), windows.end(),
                                    [&object](const auto& window) { return window->Control() == object.Get(); });
    if (shown == windows.end()) throw ScriptFault(E_UNEXPECTED, L"ShowControl has given the object no window.");
    (*shown)->Press(TextOf(arguments[1]));
}

void ScriptObject::Argument(const Arguments& arguments, VARIANT* result) {
    Expect(L"Arguments", arguments.size(), 1, 1);
    const long index = NumberOf(arguments[0]);
    if (index < 0 || static_cast<size_t>(index) >= scriptArguments.size())
        throw ScriptFault(DISP_E_BADINDEX, L"There is no argument " + std::to_wstring(index) +
                                               L"; the script was given " + std::to_wstring(scriptArguments.size()) +
                                               L".");
    Give(Variant(TextView(FromWide(scriptArguments[static_cast<size_t>(index)]))), result);
}

} // namespace dax
