// The DLL that this code is in.
#pragma once

#include <string>

namespace brindle::com {

// Keeps the DLL loaded: one in every object that a host can hold.
class ModuleUse {
public:
    ModuleUse() noexcept;
    ~ModuleUse();
    ModuleUse(const ModuleUse&) = delete;
    ModuleUse& operator=(const ModuleUse&) = delete;
};

// What a host asked for with IClassFactory::LockServer.
void lock_module() noexcept;
void unlock_module() noexcept;

[[nodiscard]] bool module_is_unused() noexcept;

// The full name of the DLL's file.
[[nodiscard]] std::wstring module_file();

}  // namespace brindle::com
