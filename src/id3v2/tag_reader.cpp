#include "id3v2/tag_reader.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

namespace brindle {

namespace {

// From this size on a frame goes straight from the file to its place, past the window.
constexpr std::size_t kDirectRead = 16'384;

constexpr std::string_view kPictureId = "APIC";
constexpr std::string_view kCustomId = "TXXX";
// UTF-16 with a little-endian byte order mark, behind the byte that names the encoding.
constexpr std::uint8_t kUtf16Start[] = {0x01, 0xFF, 0xFE};

// The limits of what is held in memory; a larger frame's data is taken for the next header.
bool is_held(std::string_view id, std::uint64_t size) noexcept {
    return size >= 1 && size <= (id == kPictureId ? kLargestPictureSize : kLargestTextSize);
}

std::span<std::uint8_t> behind_first_nul(std::span<std::uint8_t> data) {
    const auto nul = std::find(data.begin(), data.end(), 0);
    return nul == data.end() ? data : std::span(std::next(nul), data.end());
}

// The text of a frame without its encoding byte. UTF-16 text of the ASCII range becomes 8-bit text
// when its NULs are removed, which filing does.
std::span<std::uint8_t> text_of(std::span<std::uint8_t> data) {
    if (data.size() >= std::size(kUtf16Start) &&
        std::equal(std::begin(kUtf16Start), std::end(kUtf16Start), data.begin())) {
        return data.subspan(std::size(kUtf16Start));
    }
    return behind_first_nul(data);
}

}  // namespace

TagFacts TagReader::read(std::int64_t position) {
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
        // Behind the tag the first frames of audio will be asked for.
        file_.expect_until(position_ + facts_.size +
                           static_cast<std::int64_t>(FileWindow::kHeadBlock));
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

void TagReader::walk() {
    do {
        const Header header = read_header(kFrameLayout);
        if (header.is_padding()) {
            return;
        }
        if (header.size > kLargestFrameSize) {
            facts_.corrupt = true;
            return;
        }
        if (is_held(header.name(), header.size)) {
            file(header, read_data(header.size));
        }
    } while (!is_past_end());
}

void TagReader::walk_version2() {
    // Nine for each header of six: shorter tags end earlier, as they always have.
    constexpr std::uint64_t kCountedHeader = 9;
    std::uint64_t counted = 0;
    do {
        const Header header = read_header(kVersion2FrameLayout);
        counted += kCountedHeader + header.size;
        if (header.is_padding() || counted > static_cast<std::uint64_t>(facts_.size)) {
            return;
        }
        file_as(from_version2_id(header.name()), header, read_data(header.size));
    } while (!is_past_end());
}

// The position counts from the start of the file, not of the tag: for a tag behind junk the walk
// ends that much earlier.
bool TagReader::is_past_end() const noexcept {
    return position_ + 1 > facts_.size;
}

TagReader::Header TagReader::read_header(const FrameLayout& layout) {
    // What the file's end cuts off reads as NULs, which are padding.
    std::array<std::uint8_t, kFrameLayout.header_size> bytes{};
    const auto seen = file_.view(position_, layout.header_size);
    std::copy(seen.begin(), seen.end(), bytes.begin());

    Header header{{}, layout.id_width, 0, position_};
    position_ += static_cast<std::int64_t>(layout.header_size);
    std::memcpy(header.id.data(), bytes.data(), layout.id_width);
    header.size =
        decode_number(std::span(bytes).subspan(layout.id_width, layout.size_width), kPlainShift);
    return header;
}

bool TagReader::Header::is_padding() const noexcept {
    return std::all_of(id.begin(), id.end(), [](char character) { return character == '\0'; });
}

std::span<std::uint8_t> TagReader::read_data(std::uint64_t size) {
    const std::int64_t left = std::max<std::int64_t>(file_.length() - position_, 0);
    const auto held =
        static_cast<std::size_t>(std::min<std::uint64_t>(size, static_cast<std::uint64_t>(left)));
    std::span<std::uint8_t> data;
    try {
        data = contents_.bytes.allocate(held);
    } catch (const std::bad_alloc&) {
        // Hosts see such a file as corrupt, whoever is to blame.
        facts_.corrupt = facts_.version != kOldestVersion;
        throw;
    }
    std::size_t read = 0;
    if (held >= kDirectRead) {
        read = file_.copy(position_, data);
    } else {
        const auto seen = file_.view(position_, held);
        std::copy(seen.begin(), seen.end(), data.begin());
        read = seen.size();
    }
    position_ += static_cast<std::int64_t>(read);
    return data.first(read);
}

void TagReader::file(const Header& header, std::span<std::uint8_t> data) {
    if (header.name() == kPictureId) {
        file_as(kPictureId, header, data);
    } else if (header.name() == kCustomId) {
        if (std::find(data.begin(), data.end(), 0) != data.end()) {
            const auto text =
                std::find_if(data.begin(), data.end(), [](std::uint8_t byte) { return byte != 0; });
            file_as(kCustomId, header, {text, data.end()});
        }
    } else {
        file_as(header.name(), header, text_of(data));
    }
}

void TagReader::file_as(std::string_view id, const Header& header, std::span<std::uint8_t> value) {
    const String kept_id = contents_.file(id, value);
    if (filed_ != nullptr) {
        filed_->push_back(
            {header.position, header.size, kept_id, contents_.frames.count(kept_id).value_or(0)});
    }
}

}  // namespace brindle
