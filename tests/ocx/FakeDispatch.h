// An automation object of a host, made of functions.
#pragma once

#include "OcxHost.h"

#include <algorithm>
#include <map>
#include <utility>

namespace dax::test {

// What a member throws (CallFailure) is the failure of the call.
class FakeDispatch final : public DispatchObject<> {
public:
    using Arguments = std::vector<Variant>; // as written; of a put its value
    using Member = std::function<Variant(const Arguments& arguments)>;

    FakeDispatch() { ++living; }
    static inline int living = 0;

    std::map<std::wstring, Member> members; // also "_NewEnum", which has its own number

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* dispids) override {
        const auto found = members.find(names[0]);
        if (found == members.end()) return DISP_E_UNKNOWNNAME;
        *dispids = FirstMember + static_cast<DISPID>(std::distance(members.begin(), found));
        return S_OK;
    }
    STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT*) override {
        const ComPtr<FakeDispatch> kept(this);
        Arguments arguments;
        for (const VARIANT* argument : ReceivedArguments(*parameters)) arguments.push_back(Dereferenced(*argument));
        auto found = members.end();
        if (dispid == DISPID_NEWENUM)
            found = members.find(L"_NewEnum");
        else if (dispid >= FirstMember && dispid < FirstMember + static_cast<DISPID>(members.size()))
            found = std::next(members.begin(), dispid - FirstMember);
        if (found == members.end()) return DISP_E_MEMBERNOTFOUND;
        const Member called = found->second; // which may remove itself
        try {
            called(arguments).MoveTo(result);
            return S_OK;
        } catch (const CallFailure& failure) {
            if (failure.description.empty() || !exception) return failure.code;
            *exception = {};
            exception->scode = failure.code;
            exception->bstrDescription = ToBstr(failure.description);
            return DISP_E_EXCEPTION;
        }
    }

private:
    static constexpr DISPID FirstMember = 100;
    ~FakeDispatch() override { --living; }
};

using FakeRef = ComPtr<FakeDispatch>;

// What _NewEnum returns of a list.
class FakeEnumerator final : public ComObject<Implements<IEnumVARIANT, IID_IEnumVARIANT>> {
public:
    explicit FakeEnumerator(std::vector<Variant> elements) : elements(std::move(elements)) {}
    static Variant Of(std::vector<Variant> elements) {
        Variant result;
        result.punkVal = MakeCom<FakeEnumerator>(std::move(elements)).Detach();
        result.vt = VT_UNKNOWN;
        return result;
    }
    STDMETHODIMP Next(ULONG, VARIANT* element, ULONG*) override {
        return next < elements.size() ? VariantCopy(element, &elements[next++]) : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG) override { return E_NOTIMPL; }
    STDMETHODIMP Reset() override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IEnumVARIANT**) override { return E_NOTIMPL; }

private:
    std::vector<Variant> elements;
    size_t next = 0;
};

} // namespace dax::test
