#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <brindle/text.h>

#include "system/process.h"

namespace brindle::host {

// main() gets them in the system's code page, which lacks many characters.
std::vector<std::string> program_arguments(int, char**) {
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int number = 1; words != nullptr && number < count; ++number) {
        const std::wstring word = words[number];
        arguments.push_back(to_utf8(String(word.begin(), word.end())));
    }
    LocalFree(words);
    return arguments;
}

// The heap of Windows keeps what it needs by itself.
void keep_freed_memory() {}

// Texts are UTF-8 with line feeds, as on every other system.
void prepare_standard_streams() {
    SetConsoleOutputCP(CP_UTF8);
    for (std::FILE* stream : {stdout, stderr}) {
        _setmode(_fileno(stream), _O_BINARY);
    }
}

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
