// Calling the host's handlers.
#pragma once

#include <functional>
#include <utility>

namespace brindle {

// Calls a handler if there is one. It may clear or replace itself while it runs, so a copy of it is
// called.
template <typename... Parameters, typename... Arguments>
void call_handler(const std::function<void(Parameters...)>& handler, Arguments&&... arguments) {
    if (handler) {
        const auto running = handler;
        running(std::forward<Arguments>(arguments)...);
    }
}

// The same for an event: what its handler throws is the handler's own affair, and the step that
// raised the event continues.
template <typename... Parameters, typename... Arguments>
void raise_event(const std::function<void(Parameters...)>& handler,
                 Arguments&&... arguments) noexcept {
    try {
        call_handler(handler, std::forward<Arguments>(arguments)...);
    } catch (...) {
        return;
    }
}

}  // namespace brindle
