// The minimum that the machine needs for a job: its system calls, without processing the bytes.
#pragma once

#include <cstddef>
#include <string>

namespace brindle::bench {

// The parts of a tagged file that opening or saving requires.
struct FileParts {
    std::size_t head = 0;            // the tag and the first 101 frames
    std::size_t tag_area = 0;        // what a save in place writes
    std::size_t accepted_frame = 0;  // where the audio begins
};
// Of a file with a tag of version 3 or 4 at its front.
[[nodiscard]] FileParts parts_of(const std::string& path);

// Open, length, head, the last 128 bytes, close.
void open_limit(const std::string& path, const FileParts& parts);
// Open, the whole file in reads of 1 MiB, close.
void walk_limit(const std::string& path);
// Open, length, read 3, write 125 at the tail, read 10, read 3 KB before the audio, write the tag
// area, close. Writes the bytes that are already there.
class SaveLimit {
public:
    SaveLimit(std::string path, const FileParts& parts);
    void operator()(bool flush) const;

private:
    std::string path_;
    FileParts parts_;
    std::string tag_;
    std::string tail_;
};
// A copy of the whole file beside it by the kernel, if asked for flushed to the device; then a
// rename.
void rebuild_limit(const std::string& path, bool flush);

}  // namespace brindle::bench
