#include "id3v1/cMP3ID3v1.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include <brindle/error.h>
#include <brindle/genres.h>

#include "util/code_page.h"
#include "util/copy_bytes.h"
#include "util/file_exists.h"
#include "util/find_byte.h"
#include "util/overwrite_file.h"
#include "util/replace_file.h"
#include "util/skip_errors.h"
#include "util/trim_chars.h"

namespace brindle {
namespace {

// Hosts tell the tagger's errors from others by these.
constexpr char16_t kSource[] = u"BrindleId3v1Tagger";
constexpr char16_t kNotValidMp3FileText[] = u" is not a valid MP3 file.";

constexpr auto kRecordLength = static_cast<std::int64_t>(kId3v1Length);
constexpr auto kIdentifierLength = static_cast<std::int64_t>(kId3v1Identifier.width);

std::vector<std::uint8_t> narrowed(const String& text) {
    std::vector<std::uint8_t> bytes(text.size());
    std::transform(text.begin(), text.end(), bytes.begin(),
                   [](char16_t unit) { return narrow(unit); });
    return bytes;
}

std::span<const std::uint8_t> without_spaces_at_ends(std::span<const std::uint8_t> text) {
    constexpr std::uint8_t kSpace = ' ';
    while (!text.empty() && text.back() == kSpace) {
        text = text.first(text.size() - 1);
    }
    while (!text.empty() && text.front() == kSpace) {
        text = text.subspan(1);
    }
    return text;
}

// A file that became shorter since its length was asked for must not be taken for a whole one.
void read_all(BinaryFile& file, std::int64_t offset, std::span<std::uint8_t> into) {
    if (file.read_at(offset, into) != into.size()) {
        throw Error(RuntimeError::InputPastEnd);
    }
}

}  // namespace

std::span<const std::uint8_t> Id3v1Change::bytes() const noexcept {
    switch (kind) {
        case Kind::Append:
            return record;
        case Kind::Overwrite:
            return std::span(record).subspan(kId3v1Identifier.width);
        case Kind::None:
            break;
    }
    return {};
}

std::span<const std::uint8_t> Id3v1Change::old_bytes() const noexcept {
    return kind == Kind::Overwrite ? std::span(old_record).subspan(kId3v1Identifier.width)
                                   : std::span<const std::uint8_t>();
}

std::int64_t length_without_id3v1_record(BinaryFile& file, std::int64_t length) {
    std::array<std::uint8_t, kId3v1Length> last{};
    if (length < kRecordLength) {
        throw Error(RuntimeError::InputPastEnd);
    }
    read_all(file, length - kRecordLength, last);
    const bool has_record = is_id3v1_identifier(last) || is_lower_case_id3v1_identifier(last);
    return has_record ? length - kRecordLength : length;
}

cMP3ID3v1::cMP3ID3v1(Environment& environment) : environment_(&environment) {}

void cMP3ID3v1::MP3File(const String& NewFile) {
    file_name_ = NewFile;
    reset();
    std::unique_ptr<BinaryFile> file;
    try {
        file = environment_->files.open(file_name_, OpenMode::Read);
    } catch (const Error& error) {
        throw error.from(kSource);
    }
    FileWindow window(*file);
    read(file_name_, window);
}

void cMP3ID3v1::read(const String& name, FileWindow& window) {
    file_name_ = name;
    reset();
    // A record and nothing else is no MP3 file.
    if (window.length() <= kRecordLength) {
        return;
    }
    std::array<std::uint8_t, kId3v1Length> bytes{};
    const std::size_t copied = window.copy(window.length() - kRecordLength, bytes);
    if (const auto found = Id3v1Record::parse(std::span(bytes).first(copied))) {
        record_ = *found;
        has_tag_ = true;
    }
}

String cMP3ID3v1::GenreName(std::uint8_t Genre) const {
    return brindle::GenreName(Genre);
}

void cMP3ID3v1::Update() {
    try {
        const auto file = environment_->files.open(file_name_, OpenMode::ReadWriteOrCreate);
        const FileState state = file->state();
        const Id3v1Change change = plan(*file, state.length);
        const Overwrite piece{change.offset, change.bytes(), change.old_bytes()};
        overwrite_file(*file, state, {&piece, change.kind == Id3v1Change::Kind::None ? 0U : 1U});
    } catch (const Error& error) {
        throw error.from(kSource);
    }
}

Id3v1Change cMP3ID3v1::plan(BinaryFile& file, std::int64_t length) const {
    try {
        if (length <= 0) {
            throw Error(kNotValidMp3File, file_name_ + kNotValidMp3FileText);
        }
        Id3v1Change change;
        if (length <= kRecordLength) {
            return change;
        }
        std::ranges::copy(record_to_write().bytes(), change.record.begin());
        read_all(file, length - kRecordLength, change.old_record);
        if (is_id3v1_identifier(change.old_record)) {
            change.kind = Id3v1Change::Kind::Overwrite;
            change.offset = length - kRecordLength + kIdentifierLength;
        } else {
            change.kind = Id3v1Change::Kind::Append;
            change.offset = length;
        }
        return change;
    } catch (const Error& error) {
        throw error.from(kSource);
    }
}

bool cMP3ID3v1::Stripv1Tag() {
    return FileExists(environment_->files, file_name_) && skip_errors([this] { strip_record(); });
}

bool cMP3ID3v1::is_edited() const noexcept {
    return title_ || artist_ || album_ || year_ || comment_;
}

void cMP3ID3v1::reset() noexcept {
    has_tag_ = false;
    record_ = Id3v1Record();
    for (HostText* text : {&title_, &artist_, &album_, &year_, &comment_}) {
        text->reset();
    }
}

String cMP3ID3v1::text(const HostText& set, Id3v1Field field) const {
    if (set) {
        String cleaned = TrimChars(*set, u" ", kBinaryCompare);
        std::erase(cleaned, u'\0');
        return cleaned;
    }
    const auto bytes = without_spaces_at_ends(record_.text(field));
    if (find_byte(bytes, 0) == bytes.size()) {
        return widen(bytes);
    }
    String cleaned = widen(bytes);
    std::erase(cleaned, u'\0');
    return cleaned;
}

Id3v1Record cMP3ID3v1::record_to_write() const {
    const std::pair<const HostText&, Id3v1Field> texts[] = {{title_, kId3v1Title},
                                                            {artist_, kId3v1Artist},
                                                            {album_, kId3v1Album},
                                                            {year_, kId3v1Year},
                                                            {comment_, kId3v1Comment}};
    Id3v1Record record = record_;
    for (const auto& [set, field] : texts) {
        if (set) {
            record.set_text(field, narrowed(*set));
        }
    }
    return record;
}

void cMP3ID3v1::strip_record() {
    FileSystem& files = environment_->files;
    const auto file = files.open(file_name_, OpenMode::Read);
    const FileState state = file->state();
    const std::int64_t kept = length_without_id3v1_record(*file, state.length);
    if (kept != state.length) {
        const auto fill = [&](BinaryFile& stripped) {
            copy_bytes(*file, 0, stripped, 0, kept);
            file->close();
        };
        replace_file(files, file_name_, fill, {.expected = state});
        MP3File(file_name_);
    }
}

}  // namespace brindle
