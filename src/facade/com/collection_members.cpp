// The members of IKeyedCollection, as Brindle.idl declares them.
#include "facade/com/collection_object.h"

namespace brindle::com {
namespace {

constexpr Parameter kKey[] = {{L"Key", VT_BSTR}};
constexpr Parameter kItemAndKey[] = {{L"Item", VT_VARIANT}, {L"Key", VT_BSTR}};
constexpr Parameter kPlaceOrKey[] = {{L"Position", VT_VARIANT, true}, {L"Key", VT_VARIANT, true}};

// In the order of the interface's functions.
constexpr Member kMembers[] = {
    method(1, L"Remove", VT_EMPTY, kKey),
    method(2, L"Add", VT_EMPTY, kItemAndKey),
    reserved(3, L"Reserved3"),
    method(0, L"Item", VT_VARIANT, kPlaceOrKey),
    method(5, L"Exists", VT_BOOL, kKey),
    reserved(6, L"Reserved6"),
    get(7, L"Count", VT_I4),
    get(-4, L"_NewEnum", VT_UNKNOWN),
};

}  // namespace

template <>
Members members_of<::IKeyedCollection>() noexcept {
    return kMembers;
}

}  // namespace brindle::com
