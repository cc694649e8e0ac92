// Opening a file to look at it, with the reason when it can't be.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <brindle/cMPEGHeader.h>
#include <brindle/file_session.h>
#include <brindle/tag_facts.h>

#include "system/file_access.h"
#include "system/found_name.h"

namespace brindle::host {

// Whether files of that name are read: what the header itself asks for, a dot not included.
[[nodiscard]] bool ends_in_mp3_or_mp2(std::string_view name);

// Reads the file of this name (as the system gives it) into `header`. The answer is why that could
// not be done, or nothing. The header itself is silent about files that it can't open: it reads as
// if they were empty.
[[nodiscard]] std::optional<std::string> open_file(cMPEGHeader& header, const std::string& name);
// Also tells the size of the file, as far as it is known.
[[nodiscard]] std::optional<std::string> open_file(cMPEGHeader& header, const std::string& name,
                                                   std::int64_t& size);

// A file that is only looked at. Whatever asks for its bytes reads the same open file.
class InputFile final : public FileBytes {
public:
    explicit InputFile(FoundName found) : found_(std::move(found)) {}

    // To be called once, before all others. Why the file can't be read, or nothing.
    [[nodiscard]] std::optional<std::string> open();

    [[nodiscard]] const std::string& name() const noexcept { return found_.name; }
    [[nodiscard]] const cMPEGHeader& header() const noexcept { return header_; }
    [[nodiscard]] std::int64_t size() const noexcept { return status().size; }
    [[nodiscard]] std::int64_t modified() const noexcept { return status().modified; }
    // Read once. Raises Error.
    [[nodiscard]] const TagFacts& facts();
    // The same, and whether hosts read that.
    [[nodiscard]] const ComparedTag& compared_tag();
    [[nodiscard]] std::string read(std::int64_t offset, std::size_t count) override;

private:
    [[nodiscard]] FileStatus status() const { return found_.status.value_or(FileStatus()); }

    FoundName found_;
    FileSession session_;
    cMPEGHeader header_{session_.environment()};
    std::optional<TagFacts> facts_;
    std::optional<ComparedTag> compared_tag_;
};

}  // namespace brindle::host
