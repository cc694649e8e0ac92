// brindle strip: takes tags off.
#include <cstdint>
#include <memory>
#include <optional>

#include <brindle/cMPEGHeader.h>
#include <brindle/save_plan.h>

#include "commands/command_line.h"
#include "output/printable_text.h"
#include "output/save_text.h"
#include "output/standard_streams.h"
#include "system/file_access.h"
#include "system/file_change.h"

namespace brindle::host {

namespace {

struct StripOptions : ChangeOptions {
    bool v1 = false;
    bool v2 = false;
    bool all = false;
    bool preserve = false;
    bool force = false;

    [[nodiscard]] eTagType tags() const {
        return all ? v1andv2TagsBothPresent : v1 ? v1TagOnly : v2TagOnly;
    }
};

std::string tags_text(const StripPlan& plan) {
    return plan.record_bytes != 0 && plan.tag_bytes != 0 ? "ID3v1 record and ID3v2 tag"
           : plan.record_bytes != 0                      ? "ID3v1 record"
                                                         : "ID3v2 tag";
}

// Files of 2 GiB and more are never stripped, but those without tags need not be.
bool has_no_tag(const cMPEGHeader& header, const std::string& name, std::int64_t size) {
    constexpr std::int64_t kRecord = 128;
    constexpr std::size_t kIdentifier = 3;
    const std::string identifier = read_bytes(name, size - kRecord, kIdentifier);
    constexpr auto kUntagged = static_cast<eTagType>(-1);
    return header.TagType() == kUntagged && identifier != "TAG" && identifier != "tag";
}

// Why the file failed, or nothing.
std::optional<std::string> strip_file(const std::string& name, const StripOptions& options) {
    cMPEGHeader header;
    FileChange change(name);
    if (auto reason = change.open(header)) {
        return reason;
    }
    const StripPlan plan = plan_strip(header, options.tags());
    const std::int64_t bytes = plan.tag_bytes + plan.record_bytes;
    if (plan.refusal && !(change.before() && has_no_tag(header, name, change.before()->size))) {
        return reason_of(*plan.refusal);
    }
    if (bytes == 0) {
        write_output(printable(name) + ": no tag\n");
        return std::nullopt;
    }
    if (plan.loses_stream && !options.force) {
        return lost_stream_text();
    }
    if (options.dry_run) {
        if (auto reason = change.reason_against(SaveWay::Replace)) {
            return reason;
        }
        write_output(printable(name) + ": dry run, would strip " + tags_text(plan) + "\n");
        return std::nullopt;
    }
    header.RemoveTags(options.tags(), change.save_options());
    const auto remarks = change.remarks();
    if (!remarks) {
        return "Stripped, but another program has removed it since";
    }
    if (options.preserve) {
        if (auto reason = change.restore_modification_time()) {
            return reason;
        }
    }
    write_output(printable(name) + ": stripped " + tags_text(plan) + " (" + std::to_string(bytes) +
                 " bytes)" + remarks_text(*remarks) + "\n");
    return std::nullopt;
}

ExitStatus strip(const StripOptions& options) {
    return change_files(options,
                        [&](const std::string& name) { return strip_file(name, options); });
}

}  // namespace

void add_strip(CommandLine& program) {
    const auto options = std::make_shared<StripOptions>();
    CommandOptions command = program.add("strip", "Take tags off; the audio stays as it is",
                                         "brindle strip --v1 jingle.mp3 spot.mp3",
                                         [options] { return strip(*options); });
    CommandOptions tags = command.one_of("Tags", "Which tags; one of");
    tags.flag("--v1", options->v1, "The ID3v1 record at the end");
    tags.flag("--v2", options->v2, "The ID3v2 tag at the start");
    tags.flag("--all", options->all, "Both");
    command.flag("--preserve", options->preserve, "Keep the modification time");
    command.flag("--force", options->force,
                 "Strip also when hosts would find no stream afterwards");
    command.changed_paths(*options, "Show what would go; touch nothing");
}

}  // namespace brindle::host
