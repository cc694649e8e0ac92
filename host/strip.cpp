// brindle strip: takes tags off.
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>

#include <brindle/cMPEGHeader.h>

#include "commands.h"
#include "file_access.h"
#include "file_batch.h"
#include "file_state.h"
#include "input_file.h"
#include "printable_text.h"
#include "standard_streams.h"

namespace brindle::host {

namespace {

struct StripOptions {
    bool v1 = false;
    bool v2 = false;
    bool all = false;
    bool dry_run = false;
    bool preserve = false;
    std::vector<std::string> files;

    [[nodiscard]] eTagType tags() const {
        return all ? v1andv2TagsBothPresent : v1 ? v1TagOnly : v2TagOnly;
    }
};

// Stripping also takes a record off that begins with "tag", which nobody reads.
bool has_record(const std::string& name) {
    constexpr std::int64_t kRecord = 128;
    constexpr std::size_t kIdentifier = 3;
    const std::optional<FileState> state = state_of(name);
    if (!state || state->size < kRecord) {
        return false;
    }
    const std::string identifier = read_bytes(name, state->size - kRecord, kIdentifier);
    return identifier == "TAG" || identifier == "tag";
}

bool has_tag(const cMPEGHeader& header) {
    const eTagType type = header.TagType();
    return type == v2TagOnly || type == v1andv2TagsBothPresent;
}

std::string tags_text(bool record, bool tag) {
    return record && tag ? "ID3v1 record and ID3v2 tag" : record ? "ID3v1 record" : "ID3v2 tag";
}

// Files of 2 GiB and more are never stripped, but those without tags need not be.
bool is_beyond_reach(const std::optional<FileState>& state) {
    return state && state->size > std::numeric_limits<std::int32_t>::max();
}

// Why the file failed, or nothing.
std::optional<std::string> strip_file(const std::string& name, const StripOptions& options) {
    cMPEGHeader header;
    if (auto reason = open_file(header, name)) {
        return reason;
    }
    const bool record = !options.v2 && has_record(name);
    const bool tag = !options.v1 && has_tag(header);
    const std::optional<FileState> before = state_of(name);
    if (!record && !tag && (options.dry_run || is_beyond_reach(before))) {
        write_output(printable(name) + ": no tag\n");
        return std::nullopt;
    }
    if (options.dry_run) {
        write_output(printable(name) + ": dry run, would strip " + tags_text(record, tag) + "\n");
        return std::nullopt;
    }
    // Also when no tag was seen: a file that could not be read looks like one without.
    if (!header.StripTags(options.tags())) {
        return "The tags could not be stripped";
    }
    const std::optional<FileState> after = state_of(name);
    const bool was_seen = record || tag;
    if (!was_seen && before && after && before->size == after->size) {
        write_output(printable(name) + ": no tag\n");
        return std::nullopt;
    }
    if (options.preserve && before) {
        if (auto reason = restore_state(name, *before)) {
            return reason;
        }
    }
    std::string removed;
    if (before && after) {
        removed = " (" + std::to_string(before->size - after->size) + " bytes)";
    }
    write_output(printable(name) + ": stripped " +
                 tags_text(was_seen ? record : !options.v2, was_seen ? tag : !options.v1) +
                 removed + "\n");
    return std::nullopt;
}

ExitStatus strip(const StripOptions& options) {
    return for_each_file(options.files,
                         [&](const std::string& name) { return strip_file(name, options); });
}

}  // namespace

void add_strip(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<StripOptions>();
    CLI::App* command = add_command(program, "strip", "Take tags off; the audio stays as it is",
                                    "brindle strip --v1 jingle.mp3 spot.mp3");
    CLI::Option_group* tags = command->add_option_group("Tags", "Which tags; one of");
    tags->add_flag("--v1", options->v1, "The ID3v1 record at the end")->disable_flag_override();
    tags->add_flag("--v2", options->v2, "The ID3v2 tag at the start")->disable_flag_override();
    tags->add_flag("--all", options->all, "Both")->disable_flag_override();
    tags->require_option(1);
    command->add_flag("--dry-run", options->dry_run, "Show what would go; touch nothing")
        ->disable_flag_override();
    command
        ->add_flag("--preserve", options->preserve,
                   "Keep modification time, mode and owner of the file")
        ->disable_flag_override();
    add_operands(*command, "FILE", options->files,
                 "Files whose names end in mp3 or mp2; after -- they may begin with a dash");
    command->callback([options, &chosen] { chosen = [options] { return strip(*options); }; });
}

}  // namespace brindle::host
