// What the registry says of the component.
#pragma once

namespace brindle::com {

// Both raise ResultError. Registering again is harmless; unregistering leaves nothing behind but
// what the DLL of the other width has registered.
void register_server();
void unregister_server();

}  // namespace brindle::com
