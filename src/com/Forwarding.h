// COM members that only forward to a member of the core, in one line each: values and texts are converted by the
// types of the core's member.
#pragma once

#include "com/ClassObject.h"

#include <type_traits>

namespace dax {

// An argument as COM passes it, as a core's member takes it. For pointers to interfaces an overload of
// FromInterface(std::type_identity<To>, Pointer) does it.
template <typename To, typename From>
auto FromAutomation(const From& value) {
    if constexpr (std::is_same_v<From, BSTR>)
        return FromBstr(value); // also where the member takes a view, which must not be one of a temporary
    else if constexpr (std::is_same_v<To, bool>)
        return value != VARIANT_FALSE;
    else if constexpr (std::is_pointer_v<From>)
        return FromInterface(std::type_identity<To>(), value);
    else
        return static_cast<To>(value);
}

// `Parent`: a ClassObject; `CoreType`: the class whose members are called.
template <typename Parent, typename CoreType>
class Forwarding : public Parent {
protected:
    using Core = CoreType;
    using Parent::Call;
    using Parent::Get;
    using Parent::Parent;

    // The object whose members are called. May throw.
    virtual Core& Target() const = 0;

    // Returns what a member function of the core returns, or the value of a data member.
    template <typename Result, typename Member, typename... Arguments>
    requires std::is_member_pointer_v<Member> HRESULT Get(Result* result, Member member, const Arguments&... arguments)
    noexcept {
        return Parent::Get(result, [&] { return Invoke(member, arguments...); });
    }
    template <typename Member, typename... Arguments>
    requires std::is_member_pointer_v<Member> HRESULT Call(Member member, const Arguments&... arguments)
    noexcept {
        return Parent::Call([&] { Invoke(member, arguments...); });
    }
    // Calls the core's function that sets a value, or sets its data member.
    template <typename Member, typename Argument>
    HRESULT Put(Member member, const Argument& value) noexcept {
        return Parent::Call([&] {
            if constexpr (std::is_member_function_pointer_v<Member>)
                Invoke(member, value);
            else
                Assign(member, value);
        });
    }

    template <typename Class, typename Result, typename... Parameters, typename... Arguments>
    Result Invoke(Result (Class::*member)(Parameters...), const Arguments&... arguments) const {
        return (Target().*member)(FromAutomation<std::remove_cvref_t<Parameters>>(arguments)...);
    }
    template <typename Class, typename Result, typename... Parameters, typename... Arguments>
    Result Invoke(Result (Class::*member)(Parameters...) const, const Arguments&... arguments) const {
        return (Target().*member)(FromAutomation<std::remove_cvref_t<Parameters>>(arguments)...);
    }
    template <typename Class, typename Type>
    requires std::is_object_v<Type> Type Invoke(Type Class::*member)
    const { return Target().*member; }

private:
    template <typename Class, typename Type, typename Argument>
    void Assign(Type Class::*member, const Argument& value) const {
        Target().*member = FromAutomation<Type>(value);
    }
};

} // namespace dax
