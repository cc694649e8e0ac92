#include "commands/check_file.h"

#include <algorithm>
#include <optional>

#include "commands/check_audio.h"
#include "commands/check_points.h"
#include "commands/check_sound.h"
#include "commands/check_tags.h"
#include "commands/checked_file.h"
#include "listen/listen_to_file.h"
#include "output/stream_text.h"

namespace brindle::host {

namespace {

// Saves write a file of such a name until it replaces the old one.
bool is_leftover(const std::string& name) {
    const std::size_t folder = name.find_last_of('/');
    return name.substr(folder == std::string::npos ? 0 : folder + 1).starts_with(".brindle-");
}

bool is_riff(CheckedFile& file) {
    constexpr std::size_t kHead = 12;
    // If audio or a tag is at the beginning, it is not a RIFF file.
    if (has_id3v2(file.header) || (has_stream(file.header) && !file.header.RepairRequired())) {
        return false;
    }
    const std::string head = file.bytes.read(0, kHead);
    return head.starts_with("RIFF") && head.ends_with("WAVE");
}

}  // namespace

std::vector<Finding> check_file(InputFile& input, const SoundLimits* limits) {
    std::vector<Finding> findings;
    const cMPEGHeader& header = input.header();
    const ComparedTag& tag = input.compared_tag();
    CheckedFile file{header, input.name(), input.size(), input, tag.facts, tag.hosts_read_the_same};
    std::optional<FileListening> listening;
    if (limits != nullptr) {
        listening.emplace(input.size(), listen_options(*limits));
    }
    const auto audio = check_audio(file, listening ? &*listening : nullptr, findings);
    if (audio) {
        check_points(header, audio->milliseconds, findings);
        if (audio->heard) {
            check_sound(header, *audio->heard, *limits, findings);
        }
    }
    check_points_of_others(file, audio ? audio->time : PlayingTime(), findings);
    if (is_riff(file)) {
        findings.push_back({Reason::Wrapped, "a RIFF file"});
    }
    if (is_leftover(input.name())) {
        findings.push_back({Reason::Leftover, "a temporary file of brindle"});
    }
    check_tags(file, findings);
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.reason < b.reason; });
    return findings;
}

}  // namespace brindle::host
