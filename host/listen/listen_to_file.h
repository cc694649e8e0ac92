// Decodes and measures a file.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <brindle/cMPEGHeader.h>
#include <brindle/frame_walk.h>

#include "listening.h"

namespace brindle::host {

// Why this program can't listen, or nothing.
[[nodiscard]] std::optional<std::string> reason_against_listening();

// Measures the frames of a walk that the caller makes, so that the file is read once.
class FileListening {
public:
    // Of a file of `bytes` bytes.
    FileListening(std::int64_t bytes, const ListenOptions& options);
    FileListening(const FileListening&) = delete;
    FileListening& operator=(const FileListening&) = delete;
    ~FileListening();

    // Every frame of the walk, in its order. Raises std::bad_alloc.
    void visit(const WalkedFrame& frame);
    // Once, after the walk over the file that is open in `header`. Nothing when it had no frames.
    [[nodiscard]] std::optional<Listening> conclude(const cMPEGHeader& header,
                                                    const FrameWalk& walk);

private:
    class State;
    std::unique_ptr<State> state_;
};

// The file that is open in `header`, of `bytes` bytes. Nothing when no MPEG audio is found in it.
// Raises Error when the file can't be read, std::bad_alloc.
[[nodiscard]] std::optional<Listening> listen_to_file(const cMPEGHeader& header, std::int64_t bytes,
                                                      const ListenOptions& options);

}  // namespace brindle::host
