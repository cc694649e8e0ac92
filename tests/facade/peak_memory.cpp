// Opens the largest file that is searched for audio, and prints how much memory this process had
// at most. A program of its own, since a test framework takes as much as is allowed here.
//
//   brindle_peak_memory <folder>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/text.h>

#include "support/attack_files.h"
#include "support/frames.h"

namespace {

using brindle::test::Bytes;

constexpr std::int64_t kLength = (std::int64_t{1} << 31) - 1;
constexpr long kMaxKibibytes = 8 * 1024;

// Its name; the bytes after `start` are a hole and take no disk space.
std::string make_file(const std::string& folder, const Bytes& start) {
    const std::string name = folder + "/brindle-peak-memory-" + std::to_string(::getpid()) + ".mp3";
    const int file = ::open(name.c_str(), O_CREAT | O_EXCL | O_WRONLY, 0600);
    const bool made =
        file >= 0 &&
        ::write(file, start.data(), start.size()) == static_cast<ssize_t>(start.size()) &&
        ::ftruncate(file, kLength) == 0;
    if (!made || ::close(file) != 0) {
        std::perror(name.c_str());
        std::exit(2);
    }
    return name;
}

// The most memory that was resident at any moment, in KiB, as the system has counted it.
long peak() {
    char line[256];
    long kibibytes = -1;
    std::FILE* const status = std::fopen("/proc/self/status", "re");
    while (status != nullptr && std::fgets(line, sizeof line, status) != nullptr) {
        if (std::strncmp(line, "VmHWM:", 6) == 0) {
            kibibytes = std::strtol(line + 6, nullptr, 10);
        }
    }
    if (status != nullptr) {
        std::fclose(status);
    }
    return kibibytes;
}

bool opens_in_bounds(const char* title, const std::string& folder, const Bytes& start,
                     std::int32_t frequency) {
    const std::string name = make_file(folder, start);
    brindle::cMPEGHeader header;
    header.FileName(brindle::from_utf8(name));
    const bool is_read = header.Frequency() == frequency && header.FileName().size() == name.size();
    ::unlink(name.c_str());
    const long kibibytes = peak();
    std::printf("%s: %ld KiB%s\n", title, kibibytes, is_read ? "" : ", but not read");
    return is_read && kibibytes > 0 && kibibytes < kMaxKibibytes;
}

}  // namespace

int main(int count, char** arguments) {
    using brindle::test::Frame;
    using brindle::test::Tag;
    if (count != 2) {
        std::fprintf(stderr, "usage: brindle_peak_memory <folder>\n");
        return 2;
    }
    const std::string folder = arguments[1];
    const Bytes tag = Tag(3).text("TIT2", "Song").padding(2'000).bytes();
    const Bytes constant = stream(Frame{}, 200);
    bool good = opens_in_bounds("tag and constant rate", folder, tag + constant, 44'100);
    // Goes over all of the file to its end, and back.
    good =
        opens_in_bounds("rejected stream", folder, brindle::test::rejected_stream(100), 24'000) &&
        good;
    good = opens_in_bounds("nothing", folder, {}, 0) && good;
    return good ? 0 : 1;
}
