#include "system/input_file.h"

#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <brindle/error.h>
#include <brindle/text.h>

#include "system/error_text.h"

namespace brindle::host {

namespace {

// Of files above 2 GiB, in which hosts find nothing.
constexpr auto kTooLong = static_cast<std::int32_t>(RuntimeError::Overflow);

char ascii_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Reads the regular file of that name into `header`.
std::optional<std::string> read_file(cMPEGHeader& header, const std::string& name) {
    if (!ends_in_mp3_or_mp2(name)) {
        return "The name does not end in mp3 or mp2";
    }
    header.FileName(from_utf8(name));
    // Removed since it was checked.
    if (header.FileName().empty()) {
        return std::generic_category().message(ENOENT);
    }
    const std::optional<Error> error = header.OpeningError();
    if (!error || error->number() == kTooLong) {
        return std::nullopt;
    }
    // In the system's words, if it has any.
    const auto reason = reason_against_reading(name);
    return reason ? reason : reason_of(*error);
}

}  // namespace

bool ends_in_mp3_or_mp2(std::string_view name) {
    constexpr std::size_t kLength = 3;
    if (name.size() < kLength) {
        return false;
    }
    const std::string_view end = name.substr(name.size() - kLength);
    return ascii_lower(end[0]) == 'm' && ascii_lower(end[1]) == 'p' &&
           (end[2] == '3' || end[2] == '2');
}

std::optional<std::string> open_file(cMPEGHeader& header, const std::string& name) {
    std::int64_t size = 0;
    return open_file(header, name, size);
}

std::optional<std::string> open_file(cMPEGHeader& header, const std::string& name,
                                     std::int64_t& size) {
    if (auto reason = reason_against_file(name, size)) {
        return reason;
    }
    return read_file(header, name);
}

std::optional<std::string> InputFile::open() {
    if (found_.failure) {
        return found_.failure;
    }
    if (!found_.status) {
        FileStatus status;
        if (auto reason = read_status(found_.name, status)) {
            return reason;
        }
        found_.status = status;
    }
    if (auto reason = reason_against(*found_.status)) {
        return reason;
    }
    return read_file(header_, found_.name);
}

const TagFacts& InputFile::facts() {
    if (compared_tag_) {
        return compared_tag_->facts;
    }
    if (!facts_) {
        facts_ = read_tag_facts(header_);
    }
    return *facts_;
}

const ComparedTag& InputFile::compared_tag() {
    if (!compared_tag_) {
        compared_tag_ = compare_tag(header_);
    }
    return *compared_tag_;
}

std::string InputFile::read(std::int64_t offset, std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    bytes.resize(session_.read(offset, bytes));
    return {bytes.begin(), bytes.end()};
}

}  // namespace brindle::host
