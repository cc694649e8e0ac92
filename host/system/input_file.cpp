#include "system/input_file.h"

#include <cerrno>
#include <string_view>
#include <system_error>

#include <brindle/text.h>

#include "system/file_access.h"

namespace brindle::host {

namespace {

// The value for a file with neither tag.
constexpr auto kUntagged = static_cast<eTagType>(-1);

char ascii_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::optional<std::string> reason_against(const std::string& name, std::int64_t& size) {
    if (auto reason = reason_against_file(name, size)) {
        return reason;
    }
    if (!ends_in_mp3_or_mp2(name)) {
        return "The name does not end in mp3 or mp2";
    }
    return std::nullopt;
}

}  // namespace

bool ends_in_mp3_or_mp2(std::string_view name) {
    constexpr std::size_t kLength = 3;
    if (name.size() < kLength) {
        return false;
    }
    const std::string_view end = name.substr(name.size() - kLength);
    return ascii_lower(end[0]) == 'm' && ascii_lower(end[1]) == 'p' &&
           (end[2] == '3' || end[2] == '2');
}

std::optional<std::string> open_file(cMPEGHeader& header, const std::string& name) {
    std::int64_t size = 0;
    return open_file(header, name, size);
}

std::optional<std::string> open_file(cMPEGHeader& header, const std::string& name,
                                     std::int64_t& size) {
    if (auto reason = reason_against(name, size)) {
        return reason;
    }
    header.FileName(from_utf8(name));
    // Removed since it was checked.
    if (header.FileName().empty()) {
        return std::generic_category().message(ENOENT);
    }
    // If anything was found, the file was read and need not be opened again.
    const bool has_nothing = header.Frequency() == 0 && header.TagType() == kUntagged;
    return has_nothing ? reason_against_reading(name) : std::nullopt;
}

}  // namespace brindle::host
