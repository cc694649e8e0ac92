// The content of a journal: its command, and for each file the data to restore it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "journal/byte_fields.h"
#include "system/file_state.h"

namespace brindle::host {

struct JournalRun {
    std::string command;
    std::int64_t started = 0;  // seconds since 1970
    std::string undone;        // the journal that the run takes back; "" for other commands
};

// Bytes described by their length and SHA-256, in hexadecimal digits.
struct PartMark {
    std::int64_t length = 0;
    std::string hash;

    friend bool operator==(const PartMark&, const PartMark&) = default;
};

// A file beside that holds a picture of the file. Its name follows from that of the file, so that
// an entry can name no other one (extracted_name).
struct PictureFile {
    std::int64_t number = 0;
    std::string extension;
    bool is_made = false;  // by the change; otherwise the change removes it
    PartMark content;
    // Of a file that the change removes.
    JournalBytes bytes;
    FileState state;  // of which mode and times are kept
};

// One change of one file. Before it the file is `front`, the range that is kept, `back`; after it
// `new_front`, the same range, `new_back`.
struct JournalEntry {
    std::string name;    // absolute; its folders are no symbolic links
    std::string target;  // the file that the name referred to
    FileState before;    // of which mode, times and user attributes are kept
    JournalBytes front;
    JournalBytes back;
    PartMark kept;
    PartMark new_front;
    PartMark new_back;
    std::vector<PictureFile> pictures;

    [[nodiscard]] std::int64_t length_before() const;
    [[nodiscard]] std::int64_t length_after() const;
};

[[nodiscard]] JournalBytes bytes_of(const JournalRun& run);
[[nodiscard]] JournalBytes bytes_of(const JournalEntry& entry);
// Both raise FieldFault.
[[nodiscard]] JournalRun read_run(std::span<const std::uint8_t> bytes);
[[nodiscard]] JournalEntry read_entry(std::span<const std::uint8_t> bytes);

}  // namespace brindle::host
