#include "journal/byte_fields.h"

#include <utility>

namespace brindle::host {

namespace {

constexpr std::size_t kNumberSize = 8;
constexpr unsigned kByteBits = 8;

}  // namespace

void FieldWriter::number(std::int64_t value) {
    auto rest = static_cast<std::uint64_t>(value);
    for (std::size_t i = 0; i < kNumberSize; ++i) {
        bytes_.push_back(static_cast<std::uint8_t>(rest & 0xFFU));
        rest >>= kByteBits;
    }
}

void FieldWriter::bytes(std::span<const std::uint8_t> value) {
    number(static_cast<std::int64_t>(value.size()));
    bytes_.insert(bytes_.end(), value.begin(), value.end());
}

void FieldWriter::text(std::string_view value) {
    number(static_cast<std::int64_t>(value.size()));
    bytes_.insert(bytes_.end(), value.begin(), value.end());
}

std::span<const std::uint8_t> FieldReader::take(std::size_t count) {
    if (count > rest_.size()) {
        throw FieldFault();
    }
    const auto taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
}

std::int64_t FieldReader::number() {
    std::uint64_t value = 0;
    const auto bytes = take(kNumberSize);
    for (std::size_t i = kNumberSize; i > 0; --i) {
        value = value << kByteBits | bytes[i - 1];
    }
    return static_cast<std::int64_t>(value);
}

std::int64_t FieldReader::number_up_to(std::int64_t most) {
    const std::int64_t value = number();
    if (value < 0 || value > most) {
        throw FieldFault();
    }
    return value;
}

JournalBytes FieldReader::bytes() {
    const auto taken =
        take(static_cast<std::size_t>(number_up_to(static_cast<std::int64_t>(rest_.size()))));
    return {taken.begin(), taken.end()};
}

std::string FieldReader::text() {
    const JournalBytes taken = bytes();
    return {taken.begin(), taken.end()};
}

void FieldReader::require_end() const {
    if (!is_at_end()) {
        throw FieldFault();
    }
}

}  // namespace brindle::host
