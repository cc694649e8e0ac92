// Files made to do harm, each with its name, for every test that goes over all of them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "support/bytes.h"
#include "support/tags.h"

namespace brindle::test {

struct AttackFile {
    std::string name;
    Bytes file;
    // What must be left of it whatever is saved; empty where nothing in it is audio.
    Bytes audio = {};
};

// All that follow; made once, as they are megabytes.
const std::vector<AttackFile>& attack_files();

std::vector<AttackFile> claimed_sizes();
std::vector<AttackFile> short_files();
std::vector<AttackFile> hostile_streams();
std::vector<AttackFile> hostile_tags();

struct CutText {
    std::string name;
    Bytes bytes;
};

// A text of each encoding, cut at every byte.
std::vector<CutText> cut_texts();
Bytes tag_of_cut_text(const Bytes& text);

// 120 frames.
const Bytes& good_audio();
Tag many_frames(std::string_view id, const Bytes& body, std::size_t count);
// Frames of 8 and 16 kbit/s by turns, which is too slow for a stream of changing rates: it is
// walked, and then looked for from each later frame.
Bytes rejected_stream(std::size_t pairs);

}  // namespace brindle::test
