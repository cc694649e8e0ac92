#include "facade/com/module.h"

#include <atomic>
#include <windows.h>

#include "facade/com/result_error.h"

// The linker's name for the first byte of the DLL, which is also its handle.
extern "C" IMAGE_DOS_HEADER __ImageBase;  // NOLINT(bugprone-reserved-identifier)

namespace brindle::com {
namespace {

std::atomic<long> uses = 0;

}  // namespace

ModuleUse::ModuleUse() noexcept {
    ++uses;
}

ModuleUse::~ModuleUse() {
    --uses;
}

void lock_module() noexcept {
    ++uses;
}

void unlock_module() noexcept {
    --uses;
}

bool module_is_unused() noexcept {
    return uses == 0;
}

void pin_module() noexcept {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<const wchar_t*>(&__ImageBase), &module);
}

std::wstring module_file() {
    constexpr std::size_t kLongest = 32768;
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD size = ::GetModuleFileNameW(reinterpret_cast<HMODULE>(&__ImageBase),
                                                name.data(), static_cast<DWORD>(name.size()));
        if (size == 0 || name.size() > kLongest) {
            throw ResultError(E_UNEXPECTED);
        }
        if (size < name.size()) {
            name.resize(size);
            return name;
        }
        name.resize(name.size() * 2);
    }
}

}  // namespace brindle::com

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, void* /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        brindle::com::pin_module();
    }
    return TRUE;
}
