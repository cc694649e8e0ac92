#include "util/code_page_windows.h"

#include <windows.h>

namespace brindle {
namespace {

std::optional<char16_t> unit_of(unsigned code_page, char byte) {
    wchar_t unit = 0;
    if (::MultiByteToWideChar(code_page, MB_ERR_INVALID_CHARS, &byte, 1, &unit, 1) != 1) {
        return std::nullopt;
    }
    return static_cast<char16_t>(unit);
}

bool maps_back(unsigned code_page, char16_t unit, char byte) {
    const auto wide = static_cast<wchar_t>(unit);
    char back = 0;
    BOOL replaced = FALSE;
    return ::WideCharToMultiByte(code_page, WC_NO_BEST_FIT_CHARS, &wide, 1, &back, 1, nullptr,
                                 &replaced) == 1 &&
           replaced == FALSE && back == byte;
}

}  // namespace

std::optional<CodePageTable::Units> single_byte_code_page(unsigned number) {
    CPINFO information{};
    if (::GetCPInfo(number, &information) == 0 || information.MaxCharSize != 1) {
        return std::nullopt;
    }
    CodePageTable::Units units{};
    for (std::size_t i = 0; i < units.size(); ++i) {
        const auto byte = static_cast<char>(i);
        const std::optional<char16_t> unit = unit_of(number, byte);
        if (!unit || !maps_back(number, *unit, byte) || (i < CodePageTable::kAscii && *unit != i)) {
            return std::nullopt;
        }
        units[i] = *unit;
    }
    return units;
}

std::optional<CodePageTable::Units> system_code_page() {
    return single_byte_code_page(::GetACP());
}

}  // namespace brindle
