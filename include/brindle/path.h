// Files by std::filesystem::path, whatever bytes or characters their names have.
//
//     brindle::open(header, "/music/jingle.mp3");
//     for (const auto& entry : std::filesystem::directory_iterator("/music")) {
//         brindle::open(header, entry.path());
//         ...
//     }
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <type_traits>

#include <brindle/cMPEGHeader.h>
#include <brindle/text.h>
#include <brindle/values.h>

namespace brindle {

// A path as the library takes it, and back. On POSIX systems each byte survives both ways, on
// Windows each UTF-16 unit.
[[nodiscard]] inline String file_name(const std::filesystem::path& path) {
    if constexpr (std::is_same_v<std::filesystem::path::value_type, char>) {
        return from_utf8(path.native());
    } else {
        const auto& name = path.native();
        return {name.begin(), name.end()};
    }
}

[[nodiscard]] inline std::filesystem::path file_path(const String& name) {
    if constexpr (std::is_same_v<std::filesystem::path::value_type, char>) {
        return to_utf8(name);
    } else {
        return name;
    }
}

// Assigns FileName.
inline void open(cMPEGHeader& header, const std::filesystem::path& path) {
    header.FileName(file_name(path));
}

// Of FileName; empty without a file.
[[nodiscard]] inline std::filesystem::path path_of(const cMPEGHeader& header) {
    return file_path(header.FileName());
}

}  // namespace brindle
