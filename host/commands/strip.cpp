// brindle strip: removes tags.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>
#include <brindle/error.h>
#include <brindle/save_plan.h>

#include "commands/command_line.h"
#include "output/printable_text.h"
#include "output/save_text.h"
#include "output/standard_streams.h"
#include "system/error_text.h"
#include "system/file_access.h"
#include "system/file_change.h"
#include "system/file_state.h"

namespace brindle::host {

namespace {

struct StripOptions : ChangeOptions {
    JournalOptions journal;
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

// Files of 2 GiB and more cannot be stripped; without tags they need not be.
bool has_no_tag(const cMPEGHeader& header, const std::string& name, std::int64_t size) {
    constexpr std::int64_t kRecord = 128;
    constexpr std::size_t kIdentifier = 3;
    const std::string identifier = read_bytes(name, size - kRecord, kIdentifier);
    constexpr auto kUntagged = static_cast<eTagType>(-1);
    return header.TagType() == kUntagged && identifier != "TAG" && identifier != "tag";
}

struct FileToStrip {
    explicit FileToStrip(const std::string& name) : change(name) {}

    FileChange change;
    cMPEGHeader header;
    StripPlan plan;
};

// Why the file failed, or nothing.
std::optional<std::string> strip_file(FileToStrip& file, const StripOptions& options) {
    FileChange& change = file.change;
    const StripPlan& plan = file.plan;
    const std::string& name = change.name();
    SaveOptions save = change.save_options();
    // The journal must not restore bytes that are no longer in the file.
    save.before_write = [&](const NewContent& content) {
        if (!change.before() || !(content == plan.content)) {
            throw Error(RuntimeError::PermissionDenied, u"brindle");
        }
        require_same_content(name, *change.before());
    };
    file.header.RemoveTags(options.tags(), save);
    std::vector<std::string> remarks;
    if (auto reason = change.conclude("Stripped", options.preserve, remarks)) {
        return reason;
    }
    write_output(printable(name) + ": stripped " + tags_text(plan) + " (" +
                 std::to_string(plan.tag_bytes + plan.record_bytes) + " bytes)" +
                 remarks_text(remarks) + "\n");
    return std::nullopt;
}

PlannedChange plan_file(const std::string& name, const StripOptions& options, Journal& journal) {
    const auto file = std::make_shared<FileToStrip>(name);
    auto& [change, header, plan] = *file;
    if (auto reason = change.open(header)) {
        return {reason};
    }
    plan = plan_strip(header, options.tags());
    const std::int64_t bytes = plan.tag_bytes + plan.record_bytes;
    if (plan.refusal && !(change.before() && has_no_tag(header, name, change.before()->size))) {
        return {reason_of(*plan.refusal)};
    }
    if (bytes == 0) {
        return {.write = [name] {
            write_output(printable(name) + ": no tag\n");
            return std::optional<std::string>();
        }};
    }
    if (plan.loses_stream && !options.force) {
        return {lost_stream_text()};
    }
    if (options.dry_run) {
        if (auto reason = change.reason_against(SaveWay::Replace)) {
            return {reason};
        }
        write_output(printable(name) + ": dry run, would strip " + tags_text(plan) + "\n");
        if (change.before()) {
            journal.count(name, *change.before(), plan.content);
        }
        return {};
    }
    if (change.before()) {
        journal.add(name, *change.before(), plan.content);
    }
    return {.write = [file, &options] { return strip_file(*file, options); }};
}

ExitStatus strip(const StripOptions& options) {
    Journal journal(options.journal, "strip");
    return change_files(
        options, [&](const std::string& name) { return plan_file(name, options, journal); },
        journal);
}

}  // namespace

void add_strip(CommandLine& program) {
    const auto options = std::make_shared<StripOptions>();
    CommandOptions command = program.add("strip", "Remove tags; the audio is not changed",
                                         "brindle strip --v1 jingle.mp3 spot.mp3",
                                         [options] { return strip(*options); });
    CommandOptions tags = command.one_of("Tags", "Which tags; one of");
    tags.flag("--v1", options->v1, "The ID3v1 record at the end");
    tags.flag("--v2", options->v2, "The ID3v2 tag at the start");
    tags.flag("--all", options->all, "Both");
    command.flag("--preserve", options->preserve, "Keep the modification time");
    command.flag("--force", options->force, "Strip even if hosts would find no stream afterwards");
    command.journal(options->journal);
    command.changed_paths(*options, "Show what would be removed; write nothing");
}

}  // namespace brindle::host
