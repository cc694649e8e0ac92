#include "physical_limit.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <unistd.h>
#include <utility>
#include <vector>

#include <sys/stat.h>

#include "mpeg/frame_header.h"

namespace brindle::bench {
namespace {

constexpr std::size_t kRecord = 128;
constexpr std::size_t kRecordFields = 125;
constexpr std::size_t kRecordIdentifier = 3;
constexpr std::size_t kTagHeader = 10;
constexpr std::size_t kBlock = std::size_t{1} << 20;

thread_local std::array<char, kBlock> buffer;

// A limit that did less work would make every ratio wrong.
void require(bool done, const char* what) {
    if (!done) {
        std::perror(what);
        std::abort();
    }
}

int open_file(const std::string& path, int flags) {
    const int file = ::open(path.c_str(), flags | O_CLOEXEC, 0666);
    require(file >= 0, "open");
    return file;
}

void read_part(int file, std::size_t offset, char* into, std::size_t count) {
    const auto result = ::pread(file, into, count, static_cast<off_t>(offset));
    require(result == static_cast<ssize_t>(count), "pread");
}

void write_part(int file, std::size_t offset, const char* from, std::size_t count) {
    const auto result = ::pwrite(file, from, count, static_cast<off_t>(offset));
    require(result == static_cast<ssize_t>(count), "pwrite");
}

std::size_t length_of(int file) {
    struct stat status {};
    require(::fstat(file, &status) == 0, "fstat");
    return static_cast<std::size_t>(status.st_size);
}

}  // namespace

FileParts parts_of(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    const std::vector<char> text((std::istreambuf_iterator<char>(stream)), {});
    const auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(text.at(at)); };
    FileParts parts;
    if (byte(0) == 'I') {
        for (std::size_t at = 6; at < kTagHeader; ++at) {
            parts.tag_area = parts.tag_area * 128 + byte(at);
        }
        parts.tag_area += kTagHeader;
    }
    parts.accepted_frame = parts.tag_area;
    std::size_t position = parts.accepted_frame;
    constexpr int kFrames = 101;
    for (int frame = 0; frame < kFrames; ++frame) {
        const std::array<std::uint8_t, kHeaderBytes> header{byte(position), byte(position + 1),
                                                            byte(position + 2), byte(position + 3)};
        const auto parsed = parse_frame_header(header_bits(header.data()));
        require(parsed.has_value(), "frame");
        position += parsed->length;
    }
    parts.head = position;
    return parts;
}

void open_limit(const std::string& path, const FileParts& parts) {
    const int file = open_file(path, O_RDONLY);
    const std::size_t length = length_of(file);
    read_part(file, 0, buffer.data(), parts.head);
    read_part(file, length - kRecord, buffer.data(), kRecord);
    ::close(file);
}

void walk_limit(const std::string& path) {
    const int file = open_file(path, O_RDONLY);
    while (::read(file, buffer.data(), buffer.size()) > 0) {
    }
    ::close(file);
}

SaveLimit::SaveLimit(std::string path, const FileParts& parts)
    : path_(std::move(path)),
      parts_(parts),
      tag_(parts.tag_area, '\0'),
      tail_(kRecordFields, '\0') {
    const int file = open_file(path_, O_RDONLY);
    read_part(file, 0, tag_.data(), tag_.size());
    read_part(file, length_of(file) - kRecordFields, tail_.data(), tail_.size());
    ::close(file);
}

void SaveLimit::operator()(bool flush) const {
    const int file = open_file(path_, O_RDWR);
    const std::size_t length = length_of(file);
    read_part(file, length - kRecord, buffer.data(), kRecordIdentifier);
    write_part(file, length - kRecordFields, tail_.data(), tail_.size());
    // The overwritten bytes must be known, so that they can be restored if a write fails.
    read_part(file, 0, buffer.data(), tag_.size());
    write_part(file, 0, tag_.data(), tag_.size());
    require(!flush || ::fdatasync(file) == 0, "fdatasync");
    ::close(file);
}

void rebuild_limit(const std::string& path, bool flush) {
    const std::string copy = path + ".copy";
    const int from = open_file(path, O_RDONLY);
    const int to = open_file(copy, O_RDWR | O_CREAT | O_TRUNC);
    std::size_t left = length_of(from);
    while (left != 0) {
        const auto copied = ::copy_file_range(from, nullptr, to, nullptr, left, 0);
        require(copied > 0, "copy_file_range");
        left -= static_cast<std::size_t>(copied);
    }
    require(!flush || ::fsync(to) == 0, "fsync");
    ::close(from);
    ::close(to);
    require(std::rename(copy.c_str(), path.c_str()) == 0, "rename");
}

}  // namespace brindle::bench
