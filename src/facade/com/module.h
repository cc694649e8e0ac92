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

// Keeps the DLL in the process to the end. The C++ runtime that is linked into it allocates TLS
// indexes, handles and memory that it never frees: a host that loads and unloads the DLL for each
// job would run out of TLS indexes at about the thousandth. DllCanUnloadNow answers by the count
// nevertheless.
void pin_module() noexcept;

// The full name of the DLL's file.
[[nodiscard]] std::wstring module_file();

}  // namespace brindle::com
