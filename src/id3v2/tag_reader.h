// Reading an ID3v2 tag: the walk from frame to frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <brindle/error.h>
#include <brindle/values.h>

#include "id3v2/tag_contents.h"
#include "id3v2/tag_layout.h"
#include "util/file_window.h"

namespace brindle {

struct TagReading {
    std::uint8_t version = 0;
    std::int32_t size = 0;  // as the header claims it; the header itself is left out
    bool corrupt = false;   // a frame that can't be held was met
    // The disk failed or memory ran out, so that frames are missing which the file does hold.
    std::optional<Error> fault;
};

// The position of a stored frame in the file, and the id and number under which it is stored.
struct FiledFrame {
    std::int64_t position = 0;  // of its header
    std::uint64_t size = 0;     // as the header claims it
    String id;
    std::int32_t number = 0;
};

// The frames of one tag, stored in the order of the file. Whatever the tag claims, no more is
// taken into memory than the file holds, and the walk ends with the file.
class TagReader {
public:
    // With `filed`, each filed frame is noted there too.
    TagReader(FileWindow& file, TagContents& contents, std::vector<FiledFrame>* filed = nullptr)
        : file_(file), contents_(contents), filed_(filed) {}

    // `position` is that of the tag's "ID3".
    TagReading read(std::int64_t position);

private:
    struct Header {
        FrameId id;
        std::uint64_t size;
        std::int64_t position;
    };

    void walk();
    void walk_version2();
    template <FrameLayout kLayout>
    [[nodiscard]] Header read_header();
    [[nodiscard]] std::span<const std::uint8_t> read_data(std::uint64_t size);
    [[nodiscard]] std::span<const std::uint8_t> read_large(std::uint64_t size);
    template <typename Allocation>
    [[nodiscard]] std::span<std::uint8_t> allocate(Allocation allocation);
    [[nodiscard]] bool is_past_end() const noexcept;
    void file(const Header& header, std::span<const std::uint8_t> data);
    void file_as(FrameId id, const Header& header, std::span<const std::uint8_t> value);

    FileWindow& file_;
    TagContents& contents_;
    std::vector<FiledFrame>* filed_;
    TagReading facts_;
    std::int64_t position_ = 0;      // the next byte to be read
    std::int64_t tag_end_ = 0;       // as its header claims it
    std::span<std::uint8_t> large_;  // the data of a large frame, where it is kept
};

}  // namespace brindle
