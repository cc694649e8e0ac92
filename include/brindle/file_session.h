// A file that is looked at several times, opened once.
//
// Each reader of this library opens the file for itself: a header that is told its name, the
// reading of its facts, the walk over its frames. In a session they share one open file, which
// saves time on slow disks and shares, and they all see the same one, even if another program puts
// a new file in its place meanwhile:
//
//   brindle::FileSession session;
//   brindle::cMPEGHeader header(session.environment());
//   header.FileName("song.mp3");                    // opens the file
//   const auto facts = brindle::read_tag_facts(header);
//   const auto walk = brindle::walk_frames(header);
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include <brindle/export.h>

namespace brindle {

struct Environment;

// For one thread at a time, as cMPEGHeader is. It must outlive its headers, which only read: what
// changes files raises error 5 for them.
class BRINDLE_EXPORT FileSession {
public:
    FileSession();
    // Another disk and clock than the machine's own. For tests.
    explicit FileSession(Environment& environment);
    ~FileSession();
    FileSession(const FileSession&) = delete;
    FileSession& operator=(const FileSession&) = delete;

    // For headers of this session. The file that one of them opened last stays open until another
    // is opened or the session ends.
    [[nodiscard]] Environment& environment() noexcept;

    // Fills `into` with the bytes of that file from a 0-based offset on. The number of bytes read:
    // fewer only where the file ends, 0 without a file.
    //
    // Errors: those of reading (57).
    std::size_t read(std::int64_t offset, std::span<std::uint8_t> into);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace brindle
