// The four functions by which the system reaches the component.
#include <olectl.h>
#include <windows.h>

#include "Brindle_h.h"
#include "facade/com/class_factory.h"
#include "facade/com/guard.h"
#include "facade/com/module.h"
#include "facade/com/registration.h"

STDAPI DllGetClassObject(REFCLSID class_id, REFIID iid, void** object) {
    using namespace brindle::com;
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (class_id != __uuidof(cMPEGHeader)) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    return guarded(__uuidof(IClassFactory), [&] { make<ClassFactory>(iid, object); });
}

STDAPI DllCanUnloadNow() {
    return brindle::com::module_is_unused() ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
    using namespace brindle::com;
    const HRESULT result = guarded(GUID_NULL, register_server);
    if (FAILED(result)) {
        // Half an entry would be worse than none.
        static_cast<void>(guarded(GUID_NULL, unregister_server));
    }
    return result;
}

STDAPI DllUnregisterServer() {
    return brindle::com::guarded(GUID_NULL, brindle::com::unregister_server);
}
