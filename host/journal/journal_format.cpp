#include "journal/journal_format.h"

#include <string_view>

#include "journal/compression.h"
#include "system/sha256.h"

namespace brindle::host {

namespace {

constexpr std::string_view kName = "brindle journal";
constexpr std::uint8_t kVersion = 1;
constexpr std::size_t kLengths = 16;
constexpr std::size_t kCheck = 16;
constexpr std::size_t kChecksum = 64;
constexpr std::size_t kHeading = kLengths + kCheck + kChecksum;
// Incompressible data grows slightly.
constexpr std::int64_t kMaxStored = kMaxRecord + kMaxRecord / 1024;

std::string checksum_of(std::span<const std::uint8_t> bytes) {
    Sha256 hash;
    hash.add(bytes);
    return hash.digits();
}

}  // namespace

JournalBytes journal_beginning() {
    JournalBytes bytes(kName.begin(), kName.end());
    bytes.push_back(kVersion);
    return bytes;
}

JournalBytes packed_record(std::span<const std::uint8_t> record) {
    const JournalBytes stored = compressed(record);
    FieldWriter lengths;
    lengths.number(static_cast<std::int64_t>(stored.size()));
    lengths.number(static_cast<std::int64_t>(record.size()));
    JournalBytes packed = lengths.take();
    const std::string check = checksum_of(packed).substr(0, kCheck) + checksum_of(stored);
    packed.insert(packed.end(), check.begin(), check.end());
    packed.insert(packed.end(), stored.begin(), stored.end());
    return packed;
}

bool RecordReader::is_journal() const {
    const JournalBytes beginning = journal_beginning();
    return file_.read(0, beginning.size()) == beginning;
}

std::optional<RecordReader::Heading> RecordReader::heading() {
    const std::int64_t left = file_.size() - position_;
    if (left <= 0 || end_ != End::Whole) {
        return std::nullopt;
    }
    const JournalBytes bytes = file_.read(position_, kHeading);
    if (bytes.size() < kHeading) {
        end_ = End::Torn;
        return std::nullopt;
    }
    const auto lengths = std::span(bytes).first(kLengths);
    const std::string check(bytes.begin() + kLengths, bytes.begin() + kLengths + kCheck);
    Heading heading;
    heading.checksum.assign(bytes.begin() + kLengths + kCheck, bytes.end());
    FieldReader fields(lengths);
    heading.stored = fields.number();
    heading.length = fields.number();
    if (check != checksum_of(lengths).substr(0, kCheck) || heading.stored < 0 ||
        heading.stored > kMaxStored || heading.length < 0 || heading.length > kMaxRecord) {
        end_ = End::Damaged;
        return std::nullopt;
    }
    if (heading.stored > left - static_cast<std::int64_t>(kHeading)) {
        end_ = End::Torn;
        return std::nullopt;
    }
    return heading;
}

std::optional<JournalBytes> RecordReader::next() {
    const std::optional<Heading> found = heading();
    if (!found) {
        return std::nullopt;
    }
    const JournalBytes stored = file_.read(position_ + static_cast<std::int64_t>(kHeading),
                                           static_cast<std::size_t>(found->stored));
    std::optional<JournalBytes> record;
    if (checksum_of(stored) == found->checksum) {
        record = decompressed(stored, static_cast<std::size_t>(found->length));
    }
    if (!record) {
        end_ = End::Damaged;
        return std::nullopt;
    }
    position_ += static_cast<std::int64_t>(kHeading) + found->stored;
    return record;
}

bool RecordReader::skip() {
    const std::optional<Heading> found = heading();
    if (!found) {
        return false;
    }
    position_ += static_cast<std::int64_t>(kHeading) + found->stored;
    return true;
}

}  // namespace brindle::host
