// What a change makes of a file, byte for byte, before it is made: TagEdit::content() and
// StripPlan::content tell it, SaveOptions::before_write receives it, and write_content() makes it
// so.
//
//     brindle::NewContent before = ...;  // kept from an earlier change
//     brindle::write_content(u"song.mp3", before);
#pragma once

#include <cstdint>
#include <vector>

#include <brindle/export.h>
#include <brindle/save_options.h>
#include <brindle/values.h>

namespace brindle {

// New bytes around a range of the old file: as a rule around its audio.
struct NewContent {
    std::vector<std::uint8_t> front;
    // 0-based offsets in the old file; equal where nothing of it stays.
    std::int64_t kept_from = 0;
    std::int64_t kept_to = 0;
    std::vector<std::uint8_t> back;

    friend bool operator==(const NewContent&, const NewContent&) = default;
};

// Gives the file this content. In place where the range stays where it is, unless the options say
// `atomic`; else a complete new file takes the old one's place in one rename, with its owner,
// group, mode, access control list and user attributes. The file is on the device afterwards.
//
// Errors: 5 for a range that the file does not have; those of opening and writing (53, 57, 61, 70,
// 75). The file is then as it was, unless the error's text says otherwise.
BRINDLE_EXPORT void write_content(const String& file_name, const NewContent& content,
                                  const SaveOptions& options = {});

}  // namespace brindle
