#include <cstdlib>
#include <string_view>
#include <windows.h>

#include "system/terminal.h"

namespace brindle::host {

namespace {

HANDLE handle_of(Stream stream) {
    return GetStdHandle(stream == Stream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

}  // namespace

// A console with the escape sequences enabled that the progress bar uses.
bool is_terminal(Stream stream) {
    DWORD mode = 0;
    void* const handle = handle_of(stream);
    return GetConsoleMode(handle, &mode) != 0 &&
           SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

bool can_ask() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0 &&
           GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

bool wants_colours(Stream stream) {
    const char* forbidden = std::getenv("NO_COLOR");
    return is_terminal(stream) && (forbidden == nullptr || *forbidden == '\0');
}

int terminal_columns() {
    constexpr int kUsual = 80;
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    if (GetConsoleScreenBufferInfo(handle_of(Stream::Error), &screen) == 0) {
        return kUsual;
    }
    return screen.srWindow.Right - screen.srWindow.Left + 1;
}

}  // namespace brindle::host
