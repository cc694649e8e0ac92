// The type library inside the DLL.
#pragma once

#include <oaidl.h>

#include <wrl/client.h>

namespace brindle::com {

// Read from the DLL itself, so that nothing need be registered.
[[nodiscard]] Microsoft::WRL::ComPtr<ITypeLib> load_type_library();
// An interface or class of it by its identifier.
[[nodiscard]] Microsoft::WRL::ComPtr<ITypeInfo> load_type_info(REFGUID id);

}  // namespace brindle::com
