#include "com/Dispatch.h"

namespace dax {

PackedArguments::PackedArguments(std::span<const Variant> arguments, WORD kind)
    : reversed(arguments.rbegin(), arguments.rend()) {
    parameters.rgvarg = reversed.data();
    parameters.cArgs = static_cast<UINT>(reversed.size());
    if (!IsPut(kind)) return;
    parameters.rgdispidNamedArgs = &put;
    parameters.cNamedArgs = 1;
}

std::vector<VARIANT*> ReceivedArguments(const DISPPARAMS& parameters) {
    std::vector<VARIANT*> arguments;
    arguments.reserve(parameters.cArgs);
    for (UINT i = parameters.cArgs; i-- > 0;) arguments.push_back(&parameters.rgvarg[i]);
    return arguments;
}

HRESULT FindMember(IDispatch* object, std::wstring name, DISPID& dispid) {
    LPOLESTR names[] = {name.data()};
    return object ? object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &dispid) : E_POINTER;
}

DispatchResult TakeException(EXCEPINFO& info) {
    if (info.pfnDeferredFillIn) info.pfnDeferredFillIn(&info);
    DispatchResult result;
    result.code = info.wCode ? MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, info.wCode) : info.scode;
    if (SUCCEEDED(result.code)) result.code = DISP_E_EXCEPTION;
    result.description = FromBstr(info.bstrDescription);
    result.source = FromBstr(info.bstrSource);
    for (const BSTR text : {info.bstrDescription, info.bstrSource, info.bstrHelpFile}) SysFreeString(text);
    info = {};
    return result;
}

DispatchResult InvokeMember(IDispatch* object, DISPID dispid, WORD kind, std::span<const Variant> arguments) {
    const ComPtr<IDispatch> kept(object);
    PackedArguments packed(arguments, kind);
    DispatchResult result;
    EXCEPINFO info{};
    SetErrorInfo(0, nullptr); // of a call before this one
    result.code = kept->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, kind, packed.Parameters(),
                               IsPut(kind) ? nullptr : &result.value, &info, nullptr);
    if (SUCCEEDED(result.code)) return result;
    if (result.code == DISP_E_EXCEPTION) result = TakeException(info);
    // Some objects describe the failure in this way only.
    ComPtr<IErrorInfo> error;
    if (result.description.empty() && GetErrorInfo(0, error.Out()) == S_OK) {
        Bstr description;
        error->GetDescription(description.Out());
        result.description = FromBstr(description.Get());
    }
    return result;
}

std::wstring SystemMessage(HRESULT code) {
    wchar_t* text = nullptr;
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                           FORMAT_MESSAGE_MAX_WIDTH_MASK,
                       nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<LPWSTR>(&text), 0, nullptr);
    std::wstring message(text ? text : L"", length);
    LocalFree(text);
    while (!message.empty() && message.back() == L' ') message.pop_back();
    return message;
}

} // namespace dax
