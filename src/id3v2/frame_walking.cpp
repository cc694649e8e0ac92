// The members of cMP3ID3v2 that look at the audio of the file as it stands.
#include <array>
#include <span>

#include "id3v1/id3v1_record.h"
#include "id3v2/cMP3ID3v2.h"
#include "id3v2/error_sources.h"
#include "id3v2/stream_finder.h"
#include "mpeg/frame_walker.h"

namespace brindle {

namespace {

// Where the ID3v1 record begins, or the file ends.
std::int64_t audio_end(FileWindow& file) {
    constexpr auto kRecord = static_cast<std::int64_t>(kId3v1Length);
    std::array<std::uint8_t, kId3v1Identifier.width> identifier{};
    const std::int64_t record = file.length() - kRecord;
    const bool has_record = record >= 0 && file.copy(record, identifier) == identifier.size() &&
                            is_id3v1_identifier(identifier);
    return has_record ? record : file.length();
}

}  // namespace

FrameWalk cMP3ID3v2::walk_frames(const FrameVisitor& visit) const {
    if (file_name_.empty()) {
        return {};
    }
    if (fault_) {
        // No stream was found because the file could not be read, not because there is none.
        throw fault_->from(kReaderSource);
    }
    try {
        const auto file = environment_.files.open(file_name_, OpenMode::Read);
        FileWindow window(*file);
        const std::optional<AcceptedFrame> first = accepted_in(window);
        return first ? FrameWalker(window, audio_end(window), visit).run(first->position)
                     : FrameWalk{};
    } catch (const Error& error) {
        throw error.from(kReaderSource);
    }
}

std::optional<AcceptedFrame> cMP3ID3v2::accepted_in(FileWindow& file) const {
    const bool is_known =
        file.length() == known_length_ &&
        (!accepted_ || frame_kind_at(file, accepted_->position) == accepted_->kinds.first_frame);
    return is_known ? accepted_ : find_stream(environment_, file_name_, file);
}

}  // namespace brindle
