#include "facade/com/dispatch_table.h"

#include <algorithm>

namespace brindle::com {
namespace {

constexpr int kReadingFlags = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
constexpr int kReadingKinds = INVOKE_FUNC | INVOKE_PROPERTYGET;

// All names are ASCII.
wchar_t lower(wchar_t unit) noexcept {
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit - L'A' + L'a') : unit;
}

bool is_same_name(const wchar_t* first, const wchar_t* second) noexcept {
    while (lower(*first) == lower(*second)) {
        if (*first == 0) {
            return true;
        }
        ++first;
        ++second;
    }
    return false;
}

DISPID parameter_number(const Member& member, const wchar_t* name) noexcept {
    const auto found = std::find_if(
        member.parameters.begin(), member.parameters.end(),
        [name](const Parameter& parameter) { return is_same_name(parameter.name, name); });
    return found == member.parameters.end()
               ? DISPID_UNKNOWN
               : static_cast<DISPID>(found - member.parameters.begin());
}

}  // namespace

const Member* find_member(Members members, DISPID id, WORD flags) noexcept {
    // Scripting languages differ in whether reading a property and calling a function are one
    // thing; no name here is both.
    const int kinds = (flags & kReadingFlags) != 0 ? kReadingKinds : flags & INVOKE_PROPERTYPUT;
    const auto found = std::find_if(members.begin(), members.end(), [&](const Member& member) {
        return member.id == id && (member.kind & kinds) != 0;
    });
    return found == members.end() ? nullptr : &*found;
}

HRESULT find_names(Members members, std::span<const LPOLESTR> names, DISPID* ids) noexcept {
    std::fill_n(ids, names.size(), DISPID_UNKNOWN);
    // A property has two members of one name, and either may have the parameter.
    for (const Member& member : members) {
        if (names.empty() || names[0] == nullptr || !is_same_name(member.name, names[0])) {
            continue;
        }
        ids[0] = member.id;
        for (std::size_t i = 1; i < names.size(); ++i) {
            if (ids[i] == DISPID_UNKNOWN && names[i] != nullptr) {
                ids[i] = parameter_number(member, names[i]);
            }
        }
    }
    return std::find(ids, ids + names.size(), DISPID_UNKNOWN) == ids + names.size()
               ? S_OK
               : DISP_E_UNKNOWNNAME;
}

}  // namespace brindle::com
