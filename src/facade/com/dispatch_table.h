// What a host that binds late can know and call of an interface, as plain data: the system's type
// information takes many times as long to look a member up.
#pragma once

#include <oaidl.h>
#include <span>

namespace brindle::com {

struct Parameter {
    const wchar_t* name = nullptr;
    VARTYPE type = VT_EMPTY;  // with VT_BYREF for a pointer
    bool is_optional = false;
};

struct Member {
    DISPID id;
    INVOKEKIND kind;  // 0: reserved
    const wchar_t* name;
    VARTYPE result;  // VT_EMPTY: none
    std::span<const Parameter> parameters;
};

// All members of an interface, in the order of its functions.
using Members = std::span<const Member>;

// No member has more parameters.
constexpr std::size_t kMaxParameters = 4;

[[nodiscard]] constexpr Member get(DISPID id, const wchar_t* name, VARTYPE result,
                                   std::span<const Parameter> parameters = {}) {
    return {id, INVOKE_PROPERTYGET, name, result, parameters};
}
[[nodiscard]] constexpr Member put(DISPID id, const wchar_t* name,
                                   std::span<const Parameter> parameters) {
    return {id, INVOKE_PROPERTYPUT, name, VT_EMPTY, parameters};
}
[[nodiscard]] constexpr Member method(DISPID id, const wchar_t* name, VARTYPE result = VT_EMPTY,
                                      std::span<const Parameter> parameters = {}) {
    return {id, INVOKE_FUNC, name, result, parameters};
}

// One that keeps its place in the interface and cannot be called.
[[nodiscard]] constexpr Member reserved(DISPID id, const wchar_t* name) {
    return {id, INVOKEKIND{}, name, VT_EMPTY, {}};
}

// The members of a dual interface but those that it inherits.
template <typename Dual>
[[nodiscard]] Members members_of() noexcept;

// The member that a call with these DISPATCH_ flags means; null when there is none.
[[nodiscard]] const Member* find_member(Members members, DISPID id, WORD flags) noexcept;

// Numbers of a member and of its parameters by their names, in any case. Those of unknown names are
// DISPID_UNKNOWN, and the result DISP_E_UNKNOWNNAME.
[[nodiscard]] HRESULT find_names(Members members, std::span<const LPOLESTR> names,
                                 DISPID* ids) noexcept;

}  // namespace brindle::com
