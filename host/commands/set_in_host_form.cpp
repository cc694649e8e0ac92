#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <brindle/cMPEGHeader.h>
#include <brindle/save_plan.h>
#include <brindle/text.h>

#include "commands/set_file.h"
#include "output/printable_text.h"
#include "output/save_text.h"
#include "output/standard_streams.h"
#include "output/stream_text.h"
#include "system/error_text.h"
#include "system/file_change.h"

namespace brindle::host {

namespace {

constexpr std::int32_t kConvertedVersion = 2;

using Failure = std::optional<std::string>;

// The change of one file. Its members return why the file failed, or nothing.
class FileInHostForm {
public:
    FileInHostForm(const std::string& name, const SetOptions& options, Journal& journal)
        : change_(name), options_(options), journal_(journal) {}

    Failure run() {
        if (Failure reason = change_.open(header_)) {
            return reason;
        }
        had_record_ = has_id3v1(header_);
        plan_ = plan_save(header_);
        return plan_.tag_version == kConvertedVersion ? set_converted() : set_directly();
    }

private:
    Failure set_directly() {
        const std::string changes = assign();
        plan_ = plan_save(header_);
        return finish(changes);
    }

    // A save converts the tag and drops other fields that were set, so they are set after it.
    Failure set_converted() {
        const auto is_replaced = [&](const LostFrame& frame) {
            return std::any_of(options_.edits.begin(), options_.edits.end(), [&](const Edit& edit) {
                return edit.version2_id == frame.id && edit.field_name == frame.name;
            });
        };
        std::erase_if(plan_.losses, is_replaced);
        if (options_.dry_run) {
            return finish(assign());
        }
        if (Failure reason = refusal()) {
            return reason;
        }
        save();
        header_.FileName(from_utf8(change_.name()));
        const std::string changes = assign();
        return finish(changes);
    }

    [[nodiscard]] Failure refusal() const {
        if (plan_.refusal) {
            return reason_of(*plan_.refusal);
        }
        if (!plan_.losses.empty() && !options_.force) {
            return "Saving would lose " + losses_text(plan_.losses) + "; --force saves anyway";
        }
        return plan_.loses_stream && !options_.force ? Failure(lost_stream_text()) : std::nullopt;
    }

    [[nodiscard]] SaveWay way() const {
        return plan_.fits && !options_.atomic ? SaveWay::InPlace : SaveWay::Replace;
    }

    Failure finish(const std::string& changes) {
        if (options_.dry_run) {
            write_output(printable(change_.name()) + ": dry run, nothing is written\n" + changes +
                         plan());
        }
        if (Failure reason = refusal()) {
            return reason;
        }
        if (options_.dry_run) {
            return change_.reason_against(way());
        }
        save();
        std::vector<std::string> remarks;
        if (Failure reason = change_.conclude("Saved", options_.preserve, remarks)) {
            return reason;
        }
        write_output(printable(change_.name()) + ": " + outcome() + remarks_text(remarks) + "\n");
        return std::nullopt;
    }

    // A version 2 tag is saved twice, and the second save depends on the result of the first: each
    // save has its own journal entry and flush.
    void save() {
        SaveOptions save = change_.save_options(options_.atomic);
        const auto before = state_of(change_.name());
        if (before && journal_.is_kept()) {
            save.before_write = [this, &before](const NewContent& content) {
                journal_.add(change_.name(), *before, content);
                journal_.flush();
            };
        }
        header_.SaveAllInfo(save);
    }

    // Old and new values, one per line.
    std::string assign() {
        const std::vector<ShownValue> values = values_changed_by(options_.edits, options_.separate);
        std::vector<std::string> lines;
        lines.reserve(values.size());
        for (const ShownValue& value : values) {
            lines.push_back("  " + value.label + ": " + value.text(header_));
        }
        header_.Writev1v2Separate(options_.separate);
        for (const Edit& edit : options_.edits) {
            edit.assign(header_);
        }
        std::string text;
        for (std::size_t i = 0; i < values.size(); ++i) {
            text += lines[i] + " -> " + values[i].text(header_) + "\n";
        }
        return text;
    }

    [[nodiscard]] std::string plan() const {
        std::string text = "  " + how_it_fits() + "\n";
        if (!had_record_) {
            text += "  An ID3v1 record would be appended\n";
        }
        for (const LostFrame& frame : plan_.losses) {
            text += "  Would be lost: " + frame_text(frame) + "\n";
        }
        for (const ChangedFrame& frame : plan_.changes) {
            text += "  Would be changed: " + frame_text(frame) + "\n";
        }
        return text;
    }

    [[nodiscard]] std::string how_it_fits() const {
        if (is_of_version2()) {
            return "Would be rebuilt: the ID3v2.2 tag is converted";
        }
        return host::how_it_fits(plan_.fits, plan_.needed_length, plan_.tag_area);
    }

    [[nodiscard]] bool is_of_version2() const { return plan_.tag_version == kConvertedVersion; }

    // Of the file as it is now.
    [[nodiscard]] std::string outcome() const {
        cMPEGHeader now;
        now.FileName(from_utf8(change_.name()));
        std::string text = tag_outcome() + ", " + record_text(now, had_record_);
        if (!plan_.losses.empty()) {
            text += ", lost " + losses_text(plan_.losses);
        }
        return text + unseen_tag_text(now);
    }

    [[nodiscard]] std::string tag_outcome() const {
        if (is_of_version2()) {
            return "ID3v2.2 tag converted and file rebuilt";
        }
        const bool is_rebuilt = change_.is_rebuilt();
        return (is_rebuilt ? "" : "ID3v2 tag ") +
               how_it_was_written(is_rebuilt, plan_.needed_length, plan_.tag_area);
    }

    FileChange change_;
    const SetOptions& options_;
    Journal& journal_;
    cMPEGHeader header_;
    SavePlan plan_;
    bool had_record_ = false;
};

}  // namespace

std::optional<std::string> set_in_host_form(const std::string& name, const SetOptions& options,
                                            Journal& journal) {
    return FileInHostForm(name, options, journal).run();
}

}  // namespace brindle::host
