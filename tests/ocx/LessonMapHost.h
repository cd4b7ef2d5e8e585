// What a host hands in: objects made of functions, and a lesson built of them.
#pragma once

#include "OcxHost.h"

#include <algorithm>
#include <map>
#include <utility>

namespace dax::test {

// An automation object whose members are functions. What a function throws (CallFailure) is the failure of the call.
class FakeDispatch final : public IDispatch {
public:
    using Arguments = std::vector<Variant>; // as written; the value of a put is the last one
    using Member = std::function<Variant(const Arguments& arguments, WORD kind)>;

    static ComPtr<FakeDispatch> New() {
        ComPtr<FakeDispatch> thing;
        *thing.Out() = new FakeDispatch;
        return thing;
    }
    static inline int living = 0;

    std::map<std::wstring, Member> members;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == IID_IDispatch ? static_cast<IDispatch*>(this) : nullptr;
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
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* dispids) override {
        const auto found = members.find(names[0]);
        if (found == members.end()) return DISP_E_UNKNOWNNAME;
        *dispids = 100 + static_cast<DISPID>(std::distance(members.begin(), found));
        return S_OK;
    }
    STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD kind, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT*) override {
        const ComPtr<FakeDispatch> kept(this);
        Arguments arguments;
        for (UINT i = parameters->cArgs; i-- > 0;) {
            arguments.emplace_back();
            VariantCopyInd(&arguments.back(), &parameters->rgvarg[i]);
        }
        if (dispid < 100 || dispid >= 100 + static_cast<DISPID>(members.size())) return DISP_E_MEMBERNOTFOUND;
        const Member called = std::next(members.begin(), dispid - 100)->second;
        try {
            Variant answer = called(arguments, kind);
            if (result) std::swap(static_cast<VARIANT&>(answer), *result);
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
    FakeDispatch() { ++living; }
    ~FakeDispatch() { --living; }
    ULONG references = 1;
};

inline bool IsPut(WORD kind) { return (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0; }
inline Variant ObjectVariant(IDispatch* object) { return Variant(object); }
// A call that answers an object.
inline ComPtr<IDispatch> Get(IDispatch* object, const wchar_t* member, std::initializer_list<Variant> arguments = {}) {
    return ObjectOf(Call(object, member, arguments));
}
inline Text GetText(IDispatch* object, const wchar_t* member) { return TextOf(Call(object, member)); }
inline void Let(IDispatch* object, const wchar_t* member, const Variant& value) {
    Call(object, member, {value}, DISPATCH_PROPERTYPUT);
}

// A lesson of a host's own: pages, and maps whose pages lie side by side. Every call of every object goes through
// `before`, which may throw.
struct HostLessonParts {
    std::function<void(const std::string& call)> before = [](const std::string&) {};
    std::vector<std::pair<Text, ComPtr<FakeDispatch>>> pages, maps;
    std::map<Text, std::vector<Text>> layouts; // by map
    Text current;
    size_t defaultMap = 0;
    ComPtr<FakeDispatch> lesson, pageList, mapList;

    HostLessonParts();
    ~HostLessonParts();
    HostLessonParts(const HostLessonParts&) = delete;
    HostLessonParts& operator=(const HostLessonParts&) = delete;
    void AddPage(const Text& sbid);
    void AddMap(const Text& name, std::vector<Text> sbids);
};

} // namespace dax::test
