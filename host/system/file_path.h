// Names of files as std::filesystem has them. Everywhere else they are bytes: UTF-8 on Windows,
// what the system gives elsewhere.
#pragma once

#include <filesystem>
#include <string>
#include <type_traits>

namespace brindle::host {

inline constexpr bool kPathsAreBytes = std::is_same_v<std::filesystem::path::value_type, char>;

[[nodiscard]] inline std::filesystem::path path_of(const std::string& name) {
    if constexpr (kPathsAreBytes) {
        return name;
    } else {
        return std::u8string(name.begin(), name.end());
    }
}

[[nodiscard]] inline std::string name_of(const std::filesystem::path& path) {
    if constexpr (kPathsAreBytes) {
        return path.string();
    } else {
        const std::u8string name = path.generic_u8string();
        return {name.begin(), name.end()};
    }
}

}  // namespace brindle::host
