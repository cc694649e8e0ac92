#include "id3v2/tag_layout.h"

#include <algorithm>
#include <iterator>

#include "util/code_page.h"

namespace brindle {

namespace {

struct Version2Id {
    std::string_view version2;
    std::string_view kept_as;
};

constexpr Version2Id kVersion2Ids[] = {
    {"TP1", "TPE1"},  // lead artist
    {"TT2", "TIT2"},  // title
    {"TAL", "TALB"},  // album
    {"COM", "COMM"},  // comment
    {"TRK", "TRCK"},  // track
    {"TEN", "TENC"},  // encoded by
    {"TYE", "TYER"},  // year
    {"TCO", "TCON"},  // content type
    {"PIC", "APIC"},  // picture
};

constexpr unsigned digit_bits(int shift) noexcept {
    return static_cast<unsigned>(8 + shift);
}

}  // namespace

String text_of(FrameId id) {
    String text;
    if (id != kNoFrameId) {
        for (const unsigned shift : {24U, 16U, 8U, 0U}) {
            text.push_back(
                widen(static_cast<std::uint8_t>(static_cast<std::uint32_t>(id) >> shift)));
        }
    }
    return text;
}

String text_of_id(std::string_view id) {
    String text;
    std::transform(id.begin(), id.end(), std::back_inserter(text),
                   [](char character) { return widen(static_cast<std::uint8_t>(character)); });
    return text;
}

std::string id_of_text(std::u16string_view text) {
    std::string id;
    std::transform(text.begin(), text.end(), std::back_inserter(id),
                   [](char16_t unit) { return static_cast<char>(narrow(unit)); });
    return id;
}

std::vector<std::uint8_t> frame_header(std::string_view id, std::uint64_t body_size,
                                       const std::array<std::uint8_t, 2>& flags) {
    std::vector<std::uint8_t> header(kFrameLayout.header_size);
    std::copy_n(id.begin(), std::min(id.size(), kFrameLayout.id_width), header.begin());
    encode_number(body_size, kPlainShift,
                  std::span(header).subspan(kFrameLayout.id_width, kFrameLayout.size_width));
    std::copy(flags.begin(), flags.end(), header.end() - 2);
    return header;
}

void encode_number(std::uint64_t value, int shift, std::span<std::uint8_t> into) noexcept {
    const std::uint64_t mask = (std::uint64_t{1} << digit_bits(shift)) - 1;
    for (std::size_t i = into.size(); i > 0; --i) {
        into[i - 1] = static_cast<std::uint8_t>(value & mask);
        value >>= digit_bits(shift);
    }
}

std::string_view from_version2_id(std::string_view id) noexcept {
    for (const Version2Id& row : kVersion2Ids) {
        if (row.version2 == id) {
            return row.kept_as;
        }
    }
    return {};
}

FrameId from_version2_id(FrameId id) noexcept {
    for (const Version2Id& row : kVersion2Ids) {
        if (frame_id(row.version2) == id) {
            return frame_id(row.kept_as);
        }
    }
    return kNoFrameId;
}

}  // namespace brindle
