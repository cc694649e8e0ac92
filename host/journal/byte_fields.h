// Consecutive numbers and texts, as in the records of a journal: numbers in eight
// bytes, little-endian, texts and bytes after their length.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace brindle::host {

using JournalBytes = std::vector<std::uint8_t>;

class FieldWriter {
public:
    void number(std::int64_t value);
    void bytes(std::span<const std::uint8_t> value);
    void text(std::string_view value);

    [[nodiscard]] JournalBytes take() { return std::move(bytes_); }

private:
    JournalBytes bytes_;
};

// The fields are not as a writer wrote them.
class FieldFault : public std::runtime_error {
public:
    FieldFault() : std::runtime_error("Damaged") {}
};

// Takes fields in the order of their writing. Every member raises FieldFault.
class FieldReader {
public:
    explicit FieldReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    [[nodiscard]] std::int64_t number();
    // A length or a count: neither negative nor beyond `most`.
    [[nodiscard]] std::int64_t number_up_to(std::int64_t most);
    [[nodiscard]] JournalBytes bytes();
    [[nodiscard]] std::string text();
    [[nodiscard]] bool is_at_end() const { return rest_.empty(); }
    void require_end() const;

private:
    [[nodiscard]] std::span<const std::uint8_t> take(std::size_t count);

    std::span<const std::uint8_t> rest_;
};

}  // namespace brindle::host
