#include "com/ComError.h"

#include "base/Error.h"
#include "base/Secrets.h"
#include "com/ComPtr.h"
#include "com/Variant.h"

#include <new>

namespace dax {

HRESULT HResultOf(int32_t errorNumber) {
    if (errorNumber < 0) return errorNumber;
    if (errorNumber == 0 || errorNumber > 0xFFFF) return E_FAIL;
    return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, errorNumber);
}

void SetErrorText(const Text& description, const Text& source, const GUID& interfaceId) {
    ComPtr<ICreateErrorInfo> info;
    if (FAILED(CreateErrorInfo(info.Out()))) return;
    info->SetGUID(interfaceId);
    info->SetSource(ToWide(source).data());
    info->SetDescription(ToWide(description).data());
    if (const auto error = info.As<IErrorInfo>(IID_IErrorInfo)) SetErrorInfo(0, error.Get());
}

namespace {

HRESULT Report(HRESULT code, const Text& description, const GUID& interfaceId, const wchar_t* source) {
    SetErrorText(description, FromWide(source), interfaceId);
    return code;
}

} // namespace

HRESULT ReportCurrentException(const GUID& interfaceId, const wchar_t* source) noexcept {
    try {
        try {
            throw;
        } catch (const Error& error) {
            return Report(HResultOf(error.Number()), error.Description(), interfaceId, source);
        } catch (const ComError& error) {
            SetErrorInfo(0, nullptr);
            return error.Code();
        } catch (const std::bad_alloc&) {
            SetErrorInfo(0, nullptr);
            return E_OUTOFMEMORY;
        } catch (const std::exception& error) {
            return Report(E_FAIL, MaskPasswords(FromUtf8(error.what())), interfaceId, source);
        } catch (...) {
            return Report(E_UNEXPECTED, u"An unknown error occurred in the control library.", interfaceId, source);
        }
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

} // namespace dax
