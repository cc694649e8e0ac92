// Layout of a journal file:
//
//     "brindle journal"  1     the format's name and version, 16 bytes
//     records, each of:
//         stored length        8 bytes, the lowest first
//         length               8 bytes: of the record as it is
//         check                the first 16 digits of SHA-256 of the two lengths
//         checksum             64 digits: SHA-256 of the stored bytes
//         stored bytes         the record, compressed by zlib
//
// The first record is the run (JournalRun), each following one a change (JournalEntry).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "journal/byte_fields.h"
#include "system/private_file.h"

namespace brindle::host {

// Of a record, before it is compressed.
inline constexpr std::int64_t kMaxRecord = std::int64_t{256} * 1024 * 1024;

[[nodiscard]] JournalBytes journal_beginning();
// The record with all that precedes it.
[[nodiscard]] JournalBytes packed_record(std::span<const std::uint8_t> record);

// Goes from record to record.
class RecordReader {
public:
    // The file must stay where it is.
    explicit RecordReader(const PrivateFile& file) : file_(file) {}
    // From a record on.
    RecordReader(const PrivateFile& file, std::int64_t position)
        : file_(file), position_(position) {}
    [[nodiscard]] bool is_journal() const;
    // Of the next record.
    [[nodiscard]] std::int64_t position() const { return position_; }

    // None at the end of what can be read.
    [[nodiscard]] std::optional<JournalBytes> next();
    // Passes over a record without looking at its content; false at the end.
    [[nodiscard]] bool skip();

    enum class End {
        Whole,    // the last record ends with the file
        Torn,     // the file ends within a record
        Damaged,  // the bytes are not those that were written
    };
    [[nodiscard]] End end() const { return end_; }

private:
    struct Heading {
        std::int64_t stored = 0;
        std::int64_t length = 0;
        std::string checksum;
    };
    [[nodiscard]] std::optional<Heading> heading();

    const PrivateFile& file_;
    std::int64_t position_ = static_cast<std::int64_t>(journal_beginning().size());
    End end_ = End::Whole;
};

}  // namespace brindle::host
