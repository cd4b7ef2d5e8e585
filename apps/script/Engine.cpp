#include "Engine.h"

#include "Output.h"
#include "ScriptText.h"
#include "com/ComError.h"
#include "com/ComObject.h"
#include "com/Dispatch.h"

#include <map>
#include <stdexcept>
#include <vector>

namespace dax {

namespace {

constexpr HRESULT cannotCreate = static_cast<HRESULT>(0x800A01AD); // 429 in scripts

// "file(line, column): source: description (number)"
std::wstring Message(const std::wstring& place, const DispatchResult& error) {
    const std::wstring source = ToWide(error.source), description = ToWide(error.description);
    return place + L": " + (source.empty() ? L"" : source + L": ") +
           (description.empty() ? L"the call has failed" : description) + L" (" +
           ToWide(Hexadecimal(static_cast<uint32_t>(error.code))) + L")";
}

// Stores a value where the by-reference argument `target` points; a value of another type is left out.
void WriteBack(Variant& value, VARIANT& target) {
    const VARTYPE type = target.vt & ~VT_BYREF;
    if (type == VT_VARIANT) {
        VariantCopy(target.pvarVal, &value);
        return;
    }
    Variant changed;
    if (FAILED(VariantChangeType(&changed, &value, 0, type))) return;
    switch (type) {
    case VT_BOOL:
        *target.pboolVal = changed.boolVal;
        break;
    case VT_I2:
        *target.piVal = changed.iVal;
        break;
    case VT_I4:
        *target.plVal = changed.lVal;
        break;
    case VT_R8:
        *target.pdblVal = changed.dblVal;
        break;
    case VT_BSTR:
        SysFreeString(*target.pbstrVal);
        *target.pbstrVal = std::exchange(changed.bstrVal, nullptr);
        break;
    default:
        break;
    }
}

} // namespace

class Engine::Site final : public ComObject<Implements<IActiveScriptSite, IID_IActiveScriptSite>,
                                            Implements<IActiveScriptSiteWindow, IID_IActiveScriptSiteWindow>> {
public:
    explicit Site(std::wstring path) : path(std::move(path)) {}

    STDMETHODIMP GetLCID(LCID* locale) override {
        *locale = LOCALE_USER_DEFAULT;
        return S_OK;
    }
    STDMETHODIMP GetItemInfo(LPCOLESTR name, DWORD requested, IUnknown** object, ITypeInfo** info) override {
        if (info) *info = nullptr;
        if (object) *object = nullptr;
        const auto found = objects.find(name);
        if (found == objects.end()) return TYPE_E_ELEMENTNOTFOUND;
        if ((requested & SCRIPTINFO_IUNKNOWN) && object) {
            *object = ComPtr<IUnknown>(found->second).Detach();
        }
        return S_OK;
    }
    STDMETHODIMP GetDocVersionString(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP OnScriptTerminate(const VARIANT*, const EXCEPINFO*) override { return S_OK; }
    STDMETHODIMP OnStateChange(SCRIPTSTATE) override { return S_OK; }
    STDMETHODIMP OnScriptError(IActiveScriptError* error) override {
        EXCEPINFO info{};
        DWORD context = 0;
        ULONG line = 0;
        LONG column = 0;
        error->GetSourcePosition(&context, &line, &column);
        error->GetExceptionInfo(&info);
        DispatchResult raised = TakeException(info);
        // Beside the number, which is all that an engine returns.
        SetErrorText(raised.description, raised.source);
        // The engines do not say which class they could not make an object of.
        const std::wstring name = raised.code == cannotCreate ? text.ClassNameIn(line) : std::wstring();
        if (!name.empty()) raised.description = FromWide(DescribeMissingClass(name, raised.code));
        const std::wstring message = MessageAt(line, column + 1, raised);
        // The call of an object that has failed because the script's own member did, below the place of that one.
        pending = !pending.empty() && raised.code == pendingCode ? pending + L"\n" + message : message;
        pendingCode = raised.code;
        // Not handled here: the caller, who may be an object that passes the error on to the script, gets its number.
        return E_FAIL;
    }
    // With the line itself; the first line is 0, the first column 1.
    std::wstring MessageAt(size_t line, LONG column, const DispatchResult& error) const {
        const std::wstring place = path + L"(" + std::to_wstring(line + 1) + L", " + std::to_wstring(column) + L")";
        const std::wstring shown = text.Line(line);
        return Message(place, error) + (shown.empty() ? L"" : L"\n    " + shown);
    }
    STDMETHODIMP OnEnterScript() override { return S_OK; }
    STDMETHODIMP OnLeaveScript() override { return S_OK; }
    STDMETHODIMP GetWindow(HWND* window) override {
        *window = GetDesktopWindow();
        return S_OK;
    }
    STDMETHODIMP EnableModeless(BOOL) override { return S_OK; }

    std::map<std::wstring, ComPtr<IDispatch>> objects;
    // What the caller of the engine got: the errors on the way to it are those of the script.
    void HandleResult(bool hasCallFailed, const std::wstring& otherwise) {
        if (hasCallFailed) {
            hasFailed = true;
            PrintErrorLine(pending.empty() ? otherwise : pending);
        }
        pending.clear();
    }

    const std::wstring path;
    ScriptText text;
    bool hasFailed = false;

private:
    ~Site() override = default;

    std::wstring pending;
    HRESULT pendingCode = S_OK;
};

Engine::Engine(const std::wstring& language, std::wstring path)
    : site(MakeCom<Site>(std::move(path))), isVBScript(language == L"VBScript") {
    CLSID clsid{};
    HRESULT result = CLSIDFromProgID(language.c_str(), &clsid);
    if (SUCCEEDED(result))
        result = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IActiveScript, script.OutVoid());
    if (FAILED(result)) throw std::runtime_error("this system has no script engine for that language");
    script->SetScriptSite(site.Get());
    if (const auto parse = script.As<IActiveScriptParse>(IID_IActiveScriptParse)) parse->InitNew();
}

Engine::~Engine() {
    script->Close();
    script.Reset();
    site->objects.clear();
}

bool Engine::HasFailed() const { return site->hasFailed; }

void Engine::AddObject(const wchar_t* name, IDispatch* object) {
    site->objects[name] = ComPtr<IDispatch>(object);
    script->AddNamedItem(name, SCRIPTITEM_ISVISIBLE);
}

bool Engine::Run(const std::wstring& text) {
    const auto parse = script.As<IActiveScriptParse>(IID_IActiveScriptParse);
    if (!parse) throw std::runtime_error("the script engine takes no text");
    site->text = ScriptText(text);
    // In this order the text runs at once, and its failure is the result.
    HRESULT result = script->SetScriptState(SCRIPTSTATE_CONNECTED);
    if (SUCCEEDED(result))
        result = parse->ParseScriptText(text.c_str(), nullptr, nullptr, nullptr, 0, 0, SCRIPTTEXT_ISVISIBLE, nullptr,
                                        nullptr);
    site->HandleResult(FAILED(result), site->path + L": the script has failed (" +
                                           ToWide(Hexadecimal(static_cast<uint32_t>(result))) + L")");
    return !site->hasFailed;
}

// A procedure with another number of parameters than the event has cannot be called; engines say no more than that.
bool Engine::Takes(const std::wstring& procedure, std::span<const std::wstring> parameters) {
    const auto declared = isVBScript ? site->text.FindProcedure(procedure) : std::nullopt;
    if (!declared || declared->parameters == parameters.size()) return true;
    std::wstring names;
    for (const std::wstring& name : parameters) names += (names.empty() ? L" (" : L", ") + name;
    const auto count = [](size_t number) {
        return std::to_wstring(number) + (number == 1 ? L" argument" : L" arguments");
    };
    const std::wstring description = procedure + L" takes " + count(declared->parameters) + L", but the event has " +
                                     count(parameters.size()) + names + (names.empty() ? L"." : L").");
    site->HandleResult(true, site->MessageAt(declared->line, 1, {DISP_E_BADPARAMCOUNT, {}, FromWide(description), {}}));
    return false;
}

void Engine::Call(const std::wstring& procedure, std::span<const std::wstring> parameterNames, DISPPARAMS& parameters) {
    ComPtr<IDispatch> dispatch;
    if (FAILED(script->GetScriptDispatch(nullptr, dispatch.Out())) || !dispatch) return;
    DISPID dispid = 0;
    if (FAILED(FindMember(dispatch.Get(), procedure, dispid))) return;
    if (!Takes(procedure, parameterNames)) return;

    const std::vector<VARIANT*> given = ReceivedArguments(parameters);
    std::vector<Variant> arguments(given.size()), passed(given.size());
    for (size_t i = 0; i < given.size(); ++i) {
        VariantCopyInd(&arguments[i], given[i]);
        if (!(given[i]->vt & VT_BYREF)) {
            passed[i] = arguments[i];
            continue;
        }
        // Engines change only whole variants; see below for the way back.
        passed[i].vt = VT_BYREF | VT_VARIANT;
        passed[i].pvarVal = &arguments[i];
    }
    const DispatchResult result = InvokeMember(dispatch.Get(), dispid, DISPATCH_METHOD, passed);
    site->HandleResult(FAILED(result.code), Message(site->path + L", in " + procedure, result));

    for (size_t i = 0; i < given.size(); ++i) {
        if (given[i]->vt & VT_BYREF) WriteBack(arguments[i], *given[i]);
    }
}

} // namespace dax
