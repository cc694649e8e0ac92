#include "facade/com/host_hooks.h"

#include <string>
#include <windows.h>

namespace brindle::com {

void pump_messages() {
    MSG message{};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        if (message.message == WM_QUIT) {
            // Meant for the host's own loop, which has to end by it.
            ::PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}

void show_message(const String& text) {
    const std::wstring wide(text.begin(), text.end());
    ::MessageBoxW(::GetActiveWindow(), wide.c_str(), L"Brindle", MB_OK | MB_TASKMODAL);
}

}  // namespace brindle::com
