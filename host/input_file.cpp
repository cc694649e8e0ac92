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

// What the header says of a file with neither tag.
constexpr auto kUntagged = static_cast<eTagType>(-1);

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

// Not opened at all: a FIFO would wait for a writer, and a device may act on being opened.
std::optional<std::string> reason_against(const std::string& name, std::int64_t& size) {
    struct stat status {};
    if (stat(name.c_str(), &status) != 0) {
        return system_reason(errno);
    }
    if (S_ISDIR(status.st_mode)) {
        return system_reason(EISDIR);
    }
    if (!S_ISREG(status.st_mode)) {
        return "Not a regular file";
    }
    size = status.st_size;
    if (!ends_in_mp3_or_mp2(name)) {
        return "The name does not end in mp3 or mp2";
    }
    return std::nullopt;
}

int open_to_read(const std::string& name) {
    return open(name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

std::optional<std::string> reason_against_reading(const std::string& name) {
    const int file = open_to_read(name);
    if (file == -1) {
        return system_reason(errno);
    }
    close(file);
    return std::nullopt;
}

}  // namespace

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
    // Removed since it was looked at.
    if (header.FileName().empty()) {
        return system_reason(ENOENT);
    }
    // Where anything was found the file was read, and need not be opened once more.
    const bool has_nothing = header.Frequency() == 0 && header.TagType() == kUntagged;
    return has_nothing ? reason_against_reading(name) : std::nullopt;
}

std::string read_bytes(const std::string& name, std::int64_t offset, std::size_t count) {
    const int file = open_to_read(name);
    if (file == -1) {
        return {};
    }
    std::string bytes(count, '\0');
    const ssize_t done = pread(file, bytes.data(), bytes.size(), offset);
    close(file);
    bytes.resize(done > 0 ? static_cast<std::size_t>(done) : 0);
    return bytes;
}

}  // namespace brindle::host
