#include "id3v1/id3v1_record.h"

#include <algorithm>
#include <string_view>

namespace brindle {
namespace {

constexpr std::string_view kIdentifier = "TAG";
constexpr std::string_view kLowerCaseIdentifier = "tag";

bool begins_with(std::span<const std::uint8_t> bytes, std::string_view identifier) noexcept {
    return bytes.size() >= identifier.size() &&
           std::equal(identifier.begin(), identifier.end(), bytes.begin());
}

constexpr std::array<std::uint8_t, kId3v1Length> kEmptyRecord = [] {
    std::array<std::uint8_t, kId3v1Length> bytes{};
    std::copy(kIdentifier.begin(), kIdentifier.end(), bytes.begin());
    for (const Id3v1Field field :
         {kId3v1Title, kId3v1Artist, kId3v1Album, kId3v1Year, kId3v1Comment}) {
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(field.offset), field.width,
                    std::uint8_t{' '});
    }
    bytes[kId3v1Genre.offset] = kNoGenre;
    return bytes;
}();

}  // namespace

Id3v1Record::Id3v1Record() noexcept : bytes_(kEmptyRecord) {}

std::optional<Id3v1Record> Id3v1Record::parse(std::span<const std::uint8_t> bytes) {
    if (bytes.size() != kId3v1Length || !is_id3v1_identifier(bytes)) {
        return std::nullopt;
    }
    Id3v1Record record;
    std::copy(bytes.begin(), bytes.end(), record.bytes_.begin());
    record.bytes_[kId3v1Zero.offset] = 0;
    return record;
}

std::span<const std::uint8_t> Id3v1Record::text(Id3v1Field field) const noexcept {
    return std::span(bytes_).subspan(field.offset, field.width);
}

void Id3v1Record::set_text(Id3v1Field field, std::span<const std::uint8_t> text) noexcept {
    const std::span<std::uint8_t> into = std::span(bytes_).subspan(field.offset, field.width);
    const std::size_t used = std::min(text.size(), field.width);
    std::copy_n(text.begin(), used, into.begin());
    std::fill(into.begin() + static_cast<std::ptrdiff_t>(used), into.end(), std::uint8_t{' '});
}

bool is_id3v1_identifier(std::span<const std::uint8_t> bytes) noexcept {
    return begins_with(bytes, kIdentifier);
}

bool is_lower_case_id3v1_identifier(std::span<const std::uint8_t> bytes) noexcept {
    return begins_with(bytes, kLowerCaseIdentifier);
}

}  // namespace brindle
