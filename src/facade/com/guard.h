// The one barrier between exceptions and hosts.
#pragma once

#include <utility>
#include <windows.h>

namespace brindle::com {

// The exception being handled as a result code. Number, description and source of an Error are left
// in the thread's error object, as raised by a member of the interface.
[[nodiscard]] HRESULT report_exception(REFIID interface_id) noexcept;

// Runs what a member of the interface does; nothing is ever thrown.
template <typename Call>
[[nodiscard]] HRESULT guarded(REFIID interface_id, Call&& call) noexcept {
    try {
        std::forward<Call>(call)();
        return S_OK;
    } catch (...) {
        return report_exception(interface_id);
    }
}

}  // namespace brindle::com
