#include "Engine.h"

#include "Diagnosis.h"
#include "Output.h"
#include "com/Variant.h"

#include <map>
#include <stdexcept>
#include <vector>

namespace dax {

namespace {

constexpr HRESULT cannotCreate = static_cast<HRESULT>(0x800A01AD); // 429 in scripts

std::wstring Hexadecimal(unsigned long number) {
    wchar_t text[16];
    return std::wstring(text, static_cast<size_t>(wsprintfW(text, L"%08lX", number)));
}

std::wstring Take(BSTR text) {
    const std::wstring result = ToWide(FromBstr(text));
    SysFreeString(text);
    return result;
}

// "file(line, column): source: description (number)"
std::wstring Message(const std::wstring& place, EXCEPINFO& info) {
    if (info.pfnDeferredFillIn) info.pfnDeferredFillIn(&info);
    std::wstring source = Take(info.bstrSource), description = Take(info.bstrDescription);
    SysFreeString(info.bstrHelpFile);
    if (description.empty()) description = L"the call has failed";
    if (!source.empty()) source += L": ";
    return place + L": " + source + description + L" (" +
           Hexadecimal(static_cast<unsigned long>(info.scode ? info.scode : info.wCode)) + L")";
}

} // namespace

class Engine::Site final : public IActiveScriptSite, public IActiveScriptSiteWindow {
public:
    explicit Site(std::wstring path) : path(std::move(path)) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (iid == IID_IUnknown || iid == IID_IActiveScriptSite)
            *object = static_cast<IActiveScriptSite*>(this);
        else if (iid == IID_IActiveScriptSiteWindow)
            *object = static_cast<IActiveScriptSiteWindow*>(this);
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references;
        if (left == 0) delete this;
        return left;
    }

    STDMETHODIMP GetLCID(LCID* locale) override {
        *locale = LOCALE_USER_DEFAULT;
        return S_OK;
    }
    STDMETHODIMP GetItemInfo(LPCOLESTR name, DWORD wanted, IUnknown** object, ITypeInfo** info) override {
        if (info) *info = nullptr;
        if (object) *object = nullptr;
        const auto found = objects.find(name);
        if (found == objects.end()) return TYPE_E_ELEMENTNOTFOUND;
        if ((wanted & SCRIPTINFO_IUNKNOWN) && object) {
            *object = found->second.Get();
            (*object)->AddRef();
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
        if (info.pfnDeferredFillIn) info.pfnDeferredFillIn(&info);
        TellCaller(info);
        const HRESULT code = CodeOf(info);
        // The engines do not say which class they could not make an object of.
        const std::wstring name = code == cannotCreate ? text.ClassNameIn(line) : std::wstring();
        if (!name.empty()) {
            SysFreeString(info.bstrDescription);
            info.bstrDescription = SysAllocString(DescribeMissingClass(name, code).c_str());
        }
        const std::wstring message = MessageAt(line, column + 1, info);
        // The call of an object that has failed because the script's own member did, below the place of that one.
        pending = !pending.empty() && code == pendingCode ? pending + L"\n" + message : message;
        pendingCode = code;
        // Not handled here: the caller, who may be an object that hands the error on to the script, gets its number.
        return E_FAIL;
    }
    // With the line itself; the first line is 0, the first column 1.
    std::wstring MessageAt(size_t line, LONG column, EXCEPINFO& info) const {
        const std::wstring place = path + L"(" + std::to_wstring(line + 1) + L", " + std::to_wstring(column) + L")";
        const std::wstring shown = text.Line(line);
        return Message(place, info) + (shown.empty() ? L"" : L"\n    " + shown);
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
    void Settle(bool hasCallFailed, const std::wstring& otherwise) {
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
    ~Site() = default;

    static HRESULT CodeOf(const EXCEPINFO& info) {
        return info.scode ? info.scode : MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, info.wCode);
    }

    // Beside the number, which is all that an engine answers.
    static void TellCaller(const EXCEPINFO& info) {
        ComPtr<ICreateErrorInfo> told;
        if (FAILED(CreateErrorInfo(told.Out()))) return;
        told->SetDescription(info.bstrDescription);
        told->SetSource(info.bstrSource);
        if (const auto error = Query<IErrorInfo>(told.Get(), IID_IErrorInfo)) SetErrorInfo(0, error.Get());
    }

    std::wstring pending;
    HRESULT pendingCode = S_OK;
    ULONG references = 1;
};

Engine::Engine(const std::wstring& language, std::wstring path)
    : site(new Site(std::move(path))), isVBScript(language == L"VBScript") {
    CLSID clsid{};
    HRESULT result = CLSIDFromProgID(language.c_str(), &clsid);
    if (SUCCEEDED(result))
        result = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IActiveScript, script.OutVoid());
    if (FAILED(result)) {
        site->Release();
        throw std::runtime_error("this system has no script engine for that language");
    }
    script->SetScriptSite(site);
    if (const auto parse = Query<IActiveScriptParse>(script.Get(), IID_IActiveScriptParse)) parse->InitNew();
}

Engine::~Engine() {
    script->Close();
    script.Reset();
    site->objects.clear();
    site->Release();
}

bool Engine::HasFailed() const { return site->hasFailed; }

void Engine::AddObject(const wchar_t* name, IDispatch* object) {
    site->objects[name] = ComPtr<IDispatch>(object);
    script->AddNamedItem(name, SCRIPTITEM_ISVISIBLE);
}

bool Engine::Run(const std::wstring& text) {
    const auto parse = Query<IActiveScriptParse>(script.Get(), IID_IActiveScriptParse);
    if (!parse) throw std::runtime_error("the script engine takes no text");
    site->text = ScriptText(text);
    // In this order the text runs at once, and its failure is the result.
    HRESULT result = script->SetScriptState(SCRIPTSTATE_CONNECTED);
    if (SUCCEEDED(result))
        result = parse->ParseScriptText(text.c_str(), nullptr, nullptr, nullptr, 0, 0, SCRIPTTEXT_ISVISIBLE, nullptr,
                                        nullptr);
    site->Settle(FAILED(result),
                 site->path + L": the script has failed (" + Hexadecimal(static_cast<unsigned long>(result)) + L")");
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
    EXCEPINFO info{};
    info.scode = DISP_E_BADPARAMCOUNT;
    info.bstrDescription =
        SysAllocString((procedure + L" takes " + count(declared->parameters) + L", but the event has " +
                        count(parameters.size()) + names + (names.empty() ? L"." : L")."))
                           .c_str());
    site->Settle(true, site->MessageAt(declared->line, 1, info));
    return false;
}

void Engine::Call(const std::wstring& procedure, std::span<const std::wstring> parameterNames, DISPPARAMS& parameters) {
    ComPtr<IDispatch> dispatch;
    if (FAILED(script->GetScriptDispatch(nullptr, dispatch.Out())) || !dispatch) return;
    std::wstring name = procedure;
    LPOLESTR names[] = {name.data()};
    DISPID dispid = 0;
    if (FAILED(dispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &dispid))) return;
    if (!Takes(procedure, parameterNames)) return;

    std::vector<Variant> arguments(parameters.cArgs);
    std::vector<VARIANT> passed(parameters.cArgs);
    for (UINT i = 0; i < parameters.cArgs; ++i) {
        VARIANT& given = parameters.rgvarg[i];
        VariantCopyInd(&arguments[i], &given);
        passed[i] = arguments[i];
        if (!(given.vt & VT_BYREF)) continue;
        // Engines change only whole variants; see below for the way back.
        passed[i].vt = VT_BYREF | VT_VARIANT;
        passed[i].pvarVal = &arguments[i];
    }
    DISPPARAMS call{passed.data(), nullptr, parameters.cArgs, 0};
    EXCEPINFO info{};
    Variant answer;
    const HRESULT result =
        dispatch->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &call, &answer, &info, nullptr);
    if (result != DISP_E_EXCEPTION) info.scode = result;
    site->Settle(FAILED(result), Message(site->path + L", in " + procedure, info));

    for (UINT i = 0; i < parameters.cArgs; ++i) {
        VARIANT& given = parameters.rgvarg[i];
        if (!(given.vt & VT_BYREF)) continue;
        const VARTYPE kind = given.vt & ~VT_BYREF;
        if (kind == VT_VARIANT) {
            VariantCopy(given.pvarVal, &arguments[i]);
            continue;
        }
        Variant changed;
        if (FAILED(VariantChangeType(&changed, &arguments[i], 0, kind))) continue;
        switch (kind) {
        case VT_BOOL:
            *given.pboolVal = changed.boolVal;
            break;
        case VT_I2:
            *given.piVal = changed.iVal;
            break;
        case VT_I4:
            *given.plVal = changed.lVal;
            break;
        case VT_R8:
            *given.pdblVal = changed.dblVal;
            break;
        case VT_BSTR:
            SysFreeString(*given.pbstrVal);
            *given.pbstrVal = std::exchange(changed.bstrVal, nullptr);
            break;
        default:
            break;
        }
    }
}

} // namespace dax
