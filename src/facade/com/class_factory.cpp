#include "facade/com/class_factory.h"

#include "facade/com/guard.h"
#include "facade/com/header_object.h"

namespace brindle::com {

HRESULT ClassFactory::CreateInstance(IUnknown* outer, REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (outer != nullptr) {
        return CLASS_E_NOAGGREGATION;
    }
    return guarded(__uuidof(IClassFactory), [&] { make<HeaderObject>(iid, object); });
}

HRESULT ClassFactory::LockServer(BOOL lock) {
    if (lock != FALSE) {
        lock_module();
    } else {
        unlock_module();
    }
    return S_OK;
}

}  // namespace brindle::com
