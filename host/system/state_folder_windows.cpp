#include <algorithm>
#include <windows.h>

#include <brindle/text.h>

#include "system/state_folder.h"

namespace brindle::host {

namespace {

// In the form that recorded names have. getenv() has it in the system's code page, which lacks
// many characters.
std::string variable(const std::wstring& name) {
    std::wstring value(GetEnvironmentVariableW(name.c_str(), nullptr, 0), L'\0');
    if (!value.empty()) {
        value.resize(
            GetEnvironmentVariableW(name.c_str(), value.data(), static_cast<DWORD>(value.size())));
    }
    std::replace(value.begin(), value.end(), L'\\', L'/');
    return to_utf8(String(value.begin(), value.end()));
}

bool is_absolute(const std::string& path) {
    constexpr std::size_t kAfterDrive = 1;
    return path.starts_with("//") || path.find(":/") == kAfterDrive;
}

}  // namespace

const char* const kStateVariable = "LOCALAPPDATA";

std::optional<std::string> state_folder() {
    const std::string place = variable(L"LOCALAPPDATA");
    return is_absolute(place) ? std::optional(place + "/brindle") : std::nullopt;
}

}  // namespace brindle::host
