#pragma once

#include "facade/com/com_object.h"

namespace brindle::com {

class ClassFactory final : public ComObject<IClassFactory> {
public:
    HRESULT __stdcall CreateInstance(IUnknown* outer, REFIID iid, void** object) override;
    HRESULT __stdcall LockServer(BOOL lock) override;
};

}  // namespace brindle::com
