#pragma once

#include <oaidl.h>

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

// Calls a member of `object`, whose dual interface `type` describes. Arguments are matched by place
// and by name and converted as automation does, the same in every country; a variable of a script
// takes a value handed back by reference, whatever it held.
[[nodiscard]] HRESULT invoke(ITypeInfo& type, void* object, const Invocation& invocation);

}  // namespace brindle::com
