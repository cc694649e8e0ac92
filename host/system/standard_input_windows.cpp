#include <windows.h>

#include "system/standard_input.h"

namespace brindle::host {

std::optional<std::string> read_input(std::string& block, std::size_t count) {
    block.resize(count);
    DWORD done = 0;
    const BOOL read = ReadFile(GetStdHandle(STD_INPUT_HANDLE), block.data(),
                               static_cast<DWORD>(block.size()), &done, nullptr);
    block.resize(read != 0 ? done : 0);
    // A pipe whose writer has gone is at its end.
    if (read == 0 && GetLastError() != ERROR_BROKEN_PIPE) {
        return "Windows error " + std::to_string(GetLastError());
    }
    return std::nullopt;
}

}  // namespace brindle::host
