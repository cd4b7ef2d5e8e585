// Automation objects of a host: each passes its calls on to an object of the library, unless the test intervenes.
#pragma once

#include "OcxHost.h"

#include <map>
#include <optional>

namespace dax::test {

// The objects that one test passes to the library. Objects that their calls return are such objects, too.
class HostObjects {
public:
    using Arguments = std::vector<Variant>; // as written; of a put its value

    // What a call does instead: its result, or the CallFailure that it throws. Empty: the real object does it.
    std::function<std::optional<Variant>(const std::string& member, const Arguments& arguments)> instead;
    std::string missing; // a member that no object has

    HostObjects() = default;
    HostObjects(const HostObjects&) = delete;
    ~HostObjects() { EXPECT_TRUE(living.empty()) << "the library still refers to a host's object"; }

    // The same object for the same real one, and for itself. Null: an object that has every member, all of them done by
    // `instead`.
    ComPtr<IDispatch> Of(const ComPtr<IDispatch>& real) {
        for (Object* each : living)
            if (real && (each == real.Get() || each->real.Get() == real.Get())) return ComPtr<IDispatch>(each);
        return MakeCom<Object>(*this, real);
    }

private:
    class Object final : public DispatchObject<> {
    public:
        Object(HostObjects& all, ComPtr<IDispatch> real) : real(std::move(real)), all(all) {
            all.living.push_back(this);
        }
        STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* dispids) override {
            const std::string name = ToUtf8(FromWide(names[0]));
            *dispids = static_cast<DISPID>(members.size()) + 1;
            const HRESULT result = name == all.missing ? DISP_E_UNKNOWNNAME
                                   : real              ? FindMember(real.Get(), names[0], *dispids)
                                                       : S_OK;
            if (SUCCEEDED(result)) members[*dispids] = name;
            return result;
        }
        STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD kind, DISPPARAMS* parameters, VARIANT* result,
                            EXCEPINFO* exception, UINT*) override {
            const ComPtr<Object> kept(this);
            const auto member = members.find(dispid);
            if (member == members.end() || member->second == all.missing) return DISP_E_MEMBERNOTFOUND;
            Arguments arguments;
            for (const VARIANT* argument : ReceivedArguments(*parameters)) arguments.push_back(Dereferenced(*argument));
            DispatchResult done;
            try {
                if (auto other = all.instead ? all.instead(member->second, arguments) : std::nullopt)
                    done.value = *other;
                else
                    done = CallReal(dispid, kind, std::move(arguments));
            } catch (const CallFailure& failure) {
                done = {failure.code, {}, failure.description, u""};
            }
            if (SUCCEEDED(done.code)) done.value.MoveTo(result);
            if (SUCCEEDED(done.code) || done.description.empty() || !exception) return done.code;
            *exception = {};
            exception->scode = done.code;
            exception->bstrDescription = ToBstr(done.description);
            return DISP_E_EXCEPTION;
        }
        const ComPtr<IDispatch> real;

    private:
        ~Object() override { std::erase(all.living, this); }

        DispatchResult CallReal(DISPID dispid, WORD kind, Arguments arguments) {
            for (Variant& argument : arguments)
                for (const Object* each : all.living)
                    if (argument.vt == VT_DISPATCH && argument.pdispVal == each) argument = Variant(each->real);
            DispatchResult done = InvokeMember(real.Get(), dispid, kind, arguments);
            if (done.value.vt == VT_DISPATCH && done.value.pdispVal) done.value = Variant(all.Of(done.value.pdispVal));
            return done;
        }

        HostObjects& all;
        std::map<DISPID, std::string> members{{DISPID_NEWENUM, "_NewEnum"}};
    };

    std::vector<Object*> living;
};

} // namespace dax::test
