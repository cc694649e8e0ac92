#include "input_file.h"

#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include <sys/stat.h>

#include <brindle/text.h>

namespace brindle::host {

namespace {

std::string system_reason(int error) {
    return std::generic_category().message(error);
}

char ascii_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The same test as the header's own: no dot is asked for.
bool ends_in_mp3_or_mp2(std::string_view name) {
    constexpr std::size_t kLength = 3;
    if (name.size() < kLength) {
        return false;
    }
    const std::string_view end = name.substr(name.size() - kLength);
    return ascii_lower(end[0]) == 'm' && ascii_lower(end[1]) == 'p' &&
           (end[2] == '3' || end[2] == '2');
}

std::optional<std::string> reason_against(const std::string& name) {
    struct stat status {};
    if (stat(name.c_str(), &status) != 0) {
        return system_reason(errno);
    }
    if (S_ISDIR(status.st_mode)) {
        return system_reason(EISDIR);
    }
    // Not opened at all: a FIFO would wait for a writer, and a device may act on being opened.
    if (!S_ISREG(status.st_mode)) {
        return "Not a regular file";
    }
    if (!ends_in_mp3_or_mp2(name)) {
        return "The name does not end in mp3 or mp2";
    }
    const int file = open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file == -1) {
        return system_reason(errno);
    }
    close(file);
    return std::nullopt;
}

}  // namespace

std::optional<std::string> open_file(cMPEGHeader& header, const std::string& name) {
    if (auto reason = reason_against(name)) {
        return reason;
    }
    header.FileName(from_utf8(name));
    // Removed since it was looked at.
    if (header.FileName().empty()) {
        return system_reason(ENOENT);
    }
    return std::nullopt;
}

}  // namespace brindle::host
