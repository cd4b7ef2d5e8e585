// Failures crossing into COM: the one place where an exception becomes an HRESULT with error information.
#pragma once

#include "base/Error.h"

#include <ole2.h>

#include <exception>

namespace dax {

// A failed COM call of ours.
class ComError : public std::exception {
public:
    explicit ComError(HRESULT code) : code(code) {}
    HRESULT Code() const { return code; }
    const char* what() const noexcept override { return "a COM call has failed"; }

private:
    HRESULT code;
};

inline void Check(HRESULT result) {
    if (FAILED(result)) throw ComError(result);
}

// Visual Basic's own numbers (75) reach hosts unchanged: as 800A004B.
HRESULT HResultOf(int32_t errorNumber);

// Sets the error information of this thread, beside the code that a call returns.
void SetErrorText(const Text& description, const Text& source, const GUID& interfaceId = IID_NULL);

// Inside a catch block: the code of the current exception, after setting the error information of this thread.
HRESULT ReportCurrentException(const GUID& interfaceId, const wchar_t* source) noexcept;

} // namespace dax
