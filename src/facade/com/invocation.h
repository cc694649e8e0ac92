#pragma once

#include <oaidl.h>

#include "facade/com/dispatch_table.h"

namespace brindle::com {

// What a host that binds late asks for.
struct Invocation {
    DISPID member;
    WORD flags;
    const DISPPARAMS& arguments;
    VARIANT* result;
    EXCEPINFO* exception;
    UINT* wrong_argument;
};

// Calls a member of `object`, a pointer to the dual interface whose members are given. Arguments
// are matched by place and by name and converted as automation does, the same in every country.
// What the member changed by reference goes back to where the host keeps it, whatever type it has
// there.
[[nodiscard]] HRESULT invoke(Members members, void* object, const Invocation& invocation);

}  // namespace brindle::com
