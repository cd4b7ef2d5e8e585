// Calls through IDispatch: how arguments are packed, and how results and failures are read.
#pragma once

#include "com/Variant.h"

#include <span>
#include <vector>

namespace dax {

// Arguments as IDispatch::Invoke takes them: in reverse order, the value of a property put by name. The values remain
// the caller's and must exist as long as this object.
class PackedArguments {
public:
    // `arguments` in their written order; `kind`: DISPATCH_...
    PackedArguments(std::span<const Variant> arguments, WORD kind);
    PackedArguments(const PackedArguments&) = delete;
    PackedArguments& operator=(const PackedArguments&) = delete;
    DISPPARAMS* Parameters() { return &parameters; }

private:
    std::vector<VARIANT> reversed; // flat copies
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{};
};

inline bool IsPut(WORD kind) { return (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0; }

// The arguments of a call that was received, in their written order.
std::vector<VARIANT*> ReceivedArguments(const DISPPARAMS& parameters);

// The outcome of a call. `code` is 800Annnn where the object has raised an error with a number of its own.
struct DispatchResult {
    HRESULT code = S_OK;
    Variant value;
    Text description, source; // of a failure, as the object reports it; may be empty
};

// The result of IDispatch::GetIDsOfNames.
HRESULT FindMember(IDispatch* object, std::wstring name, DISPID& dispid);
// Arguments in their written order. The object is kept alive during the call.
DispatchResult InvokeMember(IDispatch* object, DISPID dispid, WORD kind, std::span<const Variant> arguments = {});

// The content of a filled EXCEPINFO, which is freed; the code as in DispatchResult.
DispatchResult TakeException(EXCEPINFO& info);

// What the system says about the code, or nothing.
std::wstring SystemMessage(HRESULT code);

} // namespace dax
