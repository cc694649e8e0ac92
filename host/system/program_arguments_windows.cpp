#include <windows.h>

#include <brindle/text.h>

#include "system/program_arguments.h"

namespace brindle::host {

// main() has them in the system's code page, which lacks most names.
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

}  // namespace brindle::host
