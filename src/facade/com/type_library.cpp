#include "facade/com/type_library.h"

#include <oaidl.h>
#include <oleauto.h>

#include "facade/com/module.h"
#include "facade/com/result_error.h"

namespace brindle::com {

Microsoft::WRL::ComPtr<ITypeLib> load_type_library() {
    Microsoft::WRL::ComPtr<ITypeLib> library;
    check(::LoadTypeLibEx(module_file().c_str(), REGKIND_NONE, &library));
    return library;
}

Microsoft::WRL::ComPtr<ITypeInfo> load_type_info(REFGUID id) {
    Microsoft::WRL::ComPtr<ITypeInfo> information;
    check(load_type_library()->GetTypeInfoOfGuid(id, &information));
    return information;
}

}  // namespace brindle::com
