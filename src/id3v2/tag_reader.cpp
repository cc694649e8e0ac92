#include "id3v2/tag_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <new>

#include "util/big_endian.h"
#include "util/find_byte.h"

namespace brindle {

namespace {

// From this size on a frame goes straight from the file to its place, past the window.
constexpr std::size_t kDirectRead = 16'384;

constexpr std::uint8_t kNul = 0;
// UTF-16 with a little-endian byte order mark, after the byte that names the encoding.
constexpr std::uint8_t kUtf16Start[] = {0x01, 0xFF, 0xFE};

// The limits of what is held in memory; a larger frame's data is taken for the next header.
bool is_held(FrameId id, std::uint64_t size) noexcept {
    return size >= 1 && size <= (id == kPictureFrameId ? kLargestPictureSize : kLargestTextSize);
}

std::span<const std::uint8_t> after_first_nul(std::span<const std::uint8_t> data) {
    const std::size_t nul = find_byte(data, kNul);
    return nul == data.size() ? data : data.subspan(nul + 1);
}

// The text of a frame without its encoding byte. UTF-16 text of the ASCII range becomes 8-bit text
// when its NULs are removed, which filing does.
std::span<const std::uint8_t> text_of(std::span<const std::uint8_t> data) {
    if (!data.empty() && data.front() == kNul) {
        return data.subspan(1);
    }
    if (data.size() >= std::size(kUtf16Start) &&
        std::equal(std::begin(kUtf16Start), std::end(kUtf16Start), data.begin())) {
        return data.subspan(std::size(kUtf16Start));
    }
    return after_first_nul(data);
}

}  // namespace

TagReading TagReader::read(std::int64_t position) {
    facts_ = {};
    position_ = position;
    try {
        std::array<std::uint8_t, kTagHeaderSize> header{};
        const auto seen = file_.view(position, header.size());
        std::copy(seen.begin(), seen.end(), header.begin());
        position_ += static_cast<std::int64_t>(header.size());
        facts_.version = header[kVersionOffset];
        // Four bytes of base 128, top bits and all, stay below 2^30.
        facts_.size = static_cast<std::int32_t>(decode_number(
            std::span(header).subspan(kTagSizeOffset, kTagSizeWidth), kSyncsafeShift));
        tag_end_ = position_ + facts_.size;
        // The first frames of audio after the tag are read next.
        file_.expect_until(tag_end_ + static_cast<std::int64_t>(FileWindow::kHeadBlock));
        if (facts_.version == kOldestVersion) {
            walk_version2();
        } else {
            walk();
        }
    } catch (const Error& error) {
        facts_.fault = error;
    } catch (const std::bad_alloc&) {
        facts_.fault = Error(RuntimeError::OutOfMemory);
    }
    return facts_;
}

template <FrameLayout kLayout>
TagReader::Header TagReader::read_header() {
    auto bytes = file_.view(position_, kLayout.header_size);
    std::array<std::uint8_t, kLayout.header_size> cut{};
    if (bytes.size() < kLayout.header_size) {
        // What the file's end cuts off reads as NULs, which are padding.
        cut.fill(kNul);
        std::copy(bytes.begin(), bytes.end(), cut.begin());
        bytes = cut;
    }
    const auto id = big_endian<kLayout.id_width>(bytes.data());
    const auto size = big_endian<kLayout.size_width>(bytes.data() + kLayout.id_width);
    const Header header{FrameId{id}, size, position_};
    position_ += static_cast<std::int64_t>(kLayout.header_size);
    return header;
}

void TagReader::walk() {
    do {
        const Header header = read_header<kFrameLayout>();
        if (header.id == kNoFrameId) {
            return;
        }
        if (header.size > kLargestFrameSize) {
            facts_.corrupt = true;
            return;
        }
        if (is_held(header.id, header.size)) {
            file(header, read_data(header.size));
        }
    } while (!is_past_end());
}

void TagReader::walk_version2() {
    // Nine for each header of six: shorter tags end earlier, as they always have.
    constexpr std::uint64_t kCountedHeader = 9;
    std::uint64_t counted = 0;
    do {
        const Header header = read_header<kVersion2FrameLayout>();
        counted += kCountedHeader + header.size;
        if (header.id == kNoFrameId || counted > static_cast<std::uint64_t>(facts_.size)) {
            return;
        }
        file_as(from_version2_id(header.id), header, read_data(header.size));
    } while (!is_past_end());
}

// The position counts from the start of the file, not of the tag: for a tag after junk the walk
// ends that much earlier.
bool TagReader::is_past_end() const noexcept {
    return position_ + 1 > facts_.size;
}

// Valid until something else is read.
std::span<const std::uint8_t> TagReader::read_data(std::uint64_t size) {
    if (size >= kDirectRead) {
        return read_large(size);
    }
    large_ = {};
    const auto seen = file_.view(position_, static_cast<std::size_t>(size));
    position_ += static_cast<std::int64_t>(seen.size());
    return seen;
}

std::span<const std::uint8_t> TagReader::read_large(std::uint64_t size) {
    const std::int64_t left = std::max<std::int64_t>(file_.length() - position_, 0);
    const auto held =
        static_cast<std::size_t>(std::min<std::uint64_t>(size, static_cast<std::uint64_t>(left)));
    large_ = allocate([&](ByteArena& arena) { return arena.allocate_for_read(held, position_); });
    // Reading stops after a frame that crosses the end of the tag.
    const bool goes_on = position_ + static_cast<std::int64_t>(held) < tag_end_;
    large_ = large_.first(goes_on ? file_.copy_and_read_on(position_, large_)
                                  : file_.copy(position_, large_));
    position_ += static_cast<std::int64_t>(large_.size());
    return large_;
}

template <typename Allocation>
std::span<std::uint8_t> TagReader::allocate(Allocation allocation) {
    try {
        return allocation(contents_.bytes());
    } catch (const std::bad_alloc&) {
        // Hosts see such a file as corrupt, for any cause.
        facts_.corrupt = facts_.version != kOldestVersion;
        throw;
    }
}

void TagReader::file(const Header& header, std::span<const std::uint8_t> data) {
    if (header.id == kCustomFrameId) {
        if (find_byte(data, kNul) == data.size()) {
            return;
        }
        while (!data.empty() && data.front() == kNul) {
            data = data.subspan(1);
        }
    } else if (header.id != kPictureFrameId) {
        data = text_of(data);
    }
    file_as(header.id, header, data);
}

void TagReader::file_as(FrameId id, const Header& header, std::span<const std::uint8_t> value) {
    std::span<std::uint8_t> kept;
    if (!large_.empty()) {
        kept = large_.last(value.size());  // all that was taken off stood in front
    } else if (!value.empty()) {
        const bool has_room = contents_.bytes().has_room_for(value.size());
        kept = has_room ? contents_.bytes().take(value.size())
                        : allocate([&](ByteArena& arena) { return arena.allocate(value.size()); });
        std::memcpy(kept.data(), value.data(), value.size());
    }
    contents_.file(id, kept);
    if (filed_ != nullptr) {
        const String kept_id = text_of(id);
        filed_->push_back(
            {header.position, header.size, kept_id, contents_.frames.count(kept_id).value_or(0)});
    }
}

}  // namespace brindle
