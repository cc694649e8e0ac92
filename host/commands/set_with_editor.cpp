#include <algorithm>
#include <memory>
#include <utility>
#include <variant>
#include <vector>

#include <brindle/cMPEGHeader.h>
#include <brindle/file_session.h>
#include <brindle/tag_edit.h>
#include <brindle/text.h>

#include "commands/set_file.h"
#include "output/printable_text.h"
#include "output/save_text.h"
#include "output/stream_text.h"
#include "system/error_text.h"
#include "system/file_change.h"

namespace brindle::host {

namespace {

using Failure = std::optional<std::string>;

constexpr std::int32_t kWrittenVersion = 3;

// The values that are set, as hosts and other programs read them from a file.
class Reading {
public:
    Reading(const cMPEGHeader& header, const TagFacts& facts) : header_(header), facts_(facts) {}

    [[nodiscard]] std::string of_hosts(const ShownValue& value) const {
        return value.text(header_);
    }
    // None for a value that is in no frame.
    [[nodiscard]] std::optional<String> of_documents(const Edit& edit) const {
        if (edit.frame_id.empty()) {
            return std::nullopt;
        }
        std::optional<String> text;
        if (!edit.field_name.empty()) {
            text = facts_.custom(edit.field_name);
        } else if (edit.frame_id == kComment) {
            text = facts_.comment();
        } else {
            text = facts_.text(edit.frame_id);
        }
        return text.value_or(String());
    }
    // The text that hosts find in the frame.
    [[nodiscard]] String frame_text_of_hosts(const Edit& edit) const {
        if (!edit.field_name.empty()) {
            const Variant value = header_.CustomFieldRetrieve(edit.field_name);
            const auto* const text = std::get_if<String>(&value);
            return text == nullptr ? String() : *text;
        }
        return edit.frame_id == kComment ? header_.Comments() : header_.v2Tag(edit.frame_id, 1);
    }

private:
    inline static const String kComment = u"COMM";

    const cMPEGHeader& header_;
    const TagFacts& facts_;
};

// The change of one file. Its members return why the file failed, or nothing.
class FileToSet {
public:
    FileToSet(const std::string& name, const SetOptions& options, SetReport& report,
              Journal& journal)
        : change_(name), options_(options), report_(report), journal_(journal) {}

    // Plans the save, and adds it to the journal.
    Failure plan() {
        if (Failure reason = change_.open(header_)) {
            return reason;
        }
        if (is_outdated()) {
            report_.is_outdated = true;
            return "Another program has changed the file in the meantime";
        }
        had_record_ = has_id3v1(header_);
        const std::vector<ShownValue> values = shown_values();
        std::vector<std::string> old_values;
        old_values.reserve(values.size());
        for (const ShownValue& value : values) {
            old_values.push_back(value.text(header_));
        }
        header_.Writev1v2Separate(options_.separate);
        for (const Edit& edit : options_.edits) {
            edit.assign(header_);
        }
        brindle::EditOptions edit_options{.unicode = options_.unicode,
                                          .removed = removed_fields(),
                                          .common_form = options_.common_form,
                                          .latin1 = options_.latin1};
        if (options_.work) {
            work_ = options_.work(change_.name());
            if (Failure reason = work_->prepare(header_, edit_options)) {
                return reason;
            }
        }
        leaves_bytes_out_ = edit_options.left_out_from < edit_options.left_out_to;
        edit_.emplace(header_, edit_options);
        if (work_) {
            if (Failure reason = work_->failure()) {
                return reason;
            }
        }
        const EditPlan& plan = edit_->plan();
        if (plan.refusal) {
            return reason_of(*plan.refusal);
        }
        edit_->preview(promised_);
        promised_facts_ = edit_->facts();
        const Reading promise(promised_, promised_facts_);
        if (options_.dry_run) {
            show_plan(plan, old_values, promise);
        }
        if (Failure reason = refusal(plan, promise)) {
            return reason;
        }
        for (const KeptValue& value : options_.kept) {
            if (!value.is_kept(promised_, promised_facts_)) {
                return "Hosts would then read '" + printable(value.shown.text(promised_)) +
                       "' as " + printable(value.shown.label) + ", not '" +
                       printable(value.shown.text(header_)) +
                       "', which the next run would write; leave the cell empty";
            }
        }
        if (options_.dry_run) {
            if (Failure reason = change_.reason_against(way(plan))) {
                return reason;
            }
        }
        add_to_journal();
        return std::nullopt;
    }

    // When the journal is on the device.
    Failure save() {
        const Reading promise(promised_, promised_facts_);
        const EditPlan& plan = edit_->plan();
        if (work_ && change_.before()) {
            if (Failure reason = work_->before_save(header_, *change_.before())) {
                return reason;
            }
        }
        if (!plan.changes_nothing) {
            edit_->save(change_.save_options(options_.atomic));
            report_.is_written = true;
        }
        std::vector<std::string> remarks;
        if (Failure reason = change_.conclude("Saved", options_.preserve, remarks)) {
            return reason;
        }
        FileSession session;
        cMPEGHeader now(session.environment());
        now.FileName(from_utf8(change_.name()));
        const TagFacts facts = read_tag_facts(now);
        const Reading reading(now, facts);
        if (Failure reason = broken_promise(promise, reading)) {
            return reason;
        }
        report_.lines += printable(change_.name()) + ": " + outcome(plan, now) +
                         values_text(reading) + remarks_text(all_remarks(plan)) +
                         remarks_text(remarks) + "\n";
        return std::nullopt;
    }

private:
    void add_to_journal() {
        if (!change_.before() || !journal_.is_kept()) {
            return;
        }
        const FileState& before = *change_.before();
        const bool changes_nothing = edit_->plan().changes_nothing;
        const auto pictures = work_ ? work_->files_to_write(header_) : std::vector<PictureFile>();
        if (changes_nothing && pictures.empty()) {
            return;
        }
        const NewContent content = changes_nothing ? unchanged_content(before) : edit_->content();
        options_.dry_run ? journal_.count(change_.name(), before, content, pictures)
                         : journal_.add(change_.name(), before, content, pictures);
    }

    [[nodiscard]] bool is_outdated() const {
        return options_.expected_state && change_.before() &&
               !options_.expected_state->has_same_content(*change_.before());
    }

    [[nodiscard]] std::vector<ShownValue> shown_values() const {
        return values_changed_by(options_.edits, options_.separate);
    }

    [[nodiscard]] std::vector<FieldName> removed_fields() const {
        std::vector<FieldName> fields;
        for (const Edit& edit : options_.edits) {
            if (edit.removes && !edit.frame_id.empty()) {
                fields.push_back({edit.frame_id, edit.field_name});
            }
        }
        return fields;
    }

    [[nodiscard]] SaveWay way(const EditPlan& plan) const {
        const bool is_in_place = !leaves_bytes_out_ && (plan.fits || plan.needed_length == 0);
        return is_in_place && !options_.atomic ? SaveWay::InPlace : SaveWay::Replace;
    }

    [[nodiscard]] Failure refusal(const EditPlan& plan, const Reading& promise) const {
        if (options_.force) {
            return std::nullopt;
        }
        if (const auto losses = plan.losses(); !losses.empty()) {
            return "Saving would lose " + losses_text(losses) + way_to_force();
        }
        if (plan.loses_stream) {
            return lost_stream_text(options_.way_to_force);
        }
        for (const Edit& edit : options_.edits) {
            if (!is_read_back(edit, promise)) {
                return "Hosts would read " + promise.of_hosts(edit.shown) + " as " +
                       edit.shown.label + way_to_force();
            }
        }
        return std::nullopt;
    }

    [[nodiscard]] std::string way_to_force() const {
        return "; " + options_.way_to_force + " saves anyway";
    }

    // Hosts or other programs will read what was given; the line tells what the others read.
    [[nodiscard]] bool is_read_back(const Edit& edit, const Reading& promise) const {
        if (edit.removes) {
            return true;  // a removed value is not read back
        }
        if (edit.frame_id.empty() || promise.of_hosts(edit.shown) == edit.shown.text(header_)) {
            return true;
        }
        const std::optional<String> text = promise.of_documents(edit);
        return text && !text->empty();
    }

    [[nodiscard]] Failure broken_promise(const Reading& promise, const Reading& reading) const {
        for (const Edit& edit : options_.edits) {
            if (promise.of_hosts(edit.shown) != reading.of_hosts(edit.shown)) {
                return "Saved, but hosts read " + reading.of_hosts(edit.shown) + " as " +
                       edit.shown.label;
            }
            if (promise.of_documents(edit) != reading.of_documents(edit)) {
                return "Saved, but other programs read " +
                       in_quotes(reading.of_documents(edit).value_or(String())) + " as " +
                       edit.shown.label;
            }
        }
        return std::nullopt;
    }

    // `; Title: "New"`, each value once.
    [[nodiscard]] std::string values_text(const Reading& reading) const {
        std::string text;
        for (const ShownValue& value : shown_values()) {
            text +=
                "; " + value.label + ": " + reading.of_hosts(value) + other_reading(value, reading);
        }
        return text;
    }

    // What other programs read, where it is something else.
    [[nodiscard]] std::string other_reading(const ShownValue& value, const Reading& reading) const {
        const auto edit = std::find_if(
            options_.edits.begin(), options_.edits.end(),
            [&](const Edit& candidate) { return candidate.shown.label == value.label; });
        if (edit == options_.edits.end()) {
            return "";
        }
        const std::optional<String> text = reading.of_documents(*edit);
        if (edit->removes && text == String()) {
            return "";
        }
        const bool is_other = text && (*text != reading.frame_text_of_hosts(*edit) ||
                                       reading.of_hosts(value) != value.text(header_));
        return is_other ? " (other programs read " + in_quotes(*text) + ")" : "";
    }

    void show_plan(const EditPlan& plan, const std::vector<std::string>& old_values,
                   const Reading& promise) const {
        std::string text = printable(change_.name()) + ": dry run, nothing is written\n";
        const std::vector<ShownValue> values = shown_values();
        for (std::size_t i = 0; i < values.size(); ++i) {
            text += "  " + values[i].label + ": " + old_values[i] + " -> " +
                    promise.of_hosts(values[i]) + other_reading(values[i], promise) + "\n";
        }
        text += "  " + how_it_fits(plan) + "\n";
        if (!had_record_ && edits_record()) {
            text += "  An ID3v1 record would be appended\n";
        }
        for (const EditedFrame& frame : plan.frames) {
            if (frame.fate != FrameFate::Kept) {
                text += "  " + fate_text(frame.fate) + ": " + frame_text(frame) + "\n";
            }
        }
        for (const std::string& remark : all_remarks(plan)) {
            text += "  " + remark + "\n";
        }
        report_.lines += text;
    }

    [[nodiscard]] std::vector<std::string> all_remarks(const EditPlan& plan) const {
        std::vector<std::string> remarks = remarks_on(plan);
        if (work_) {
            const auto more = work_->remarks(options_.dry_run);
            remarks.insert(remarks.end(), more.begin(), more.end());
        }
        return remarks;
    }

    [[nodiscard]] static std::string how_it_fits(const EditPlan& plan) {
        if (plan.changes_nothing) {
            return "Nothing would be written: the file already has these values";
        }
        if (plan.needed_length == 0) {
            return "The ID3v2 tag stays as it is";
        }
        return host::how_it_fits(plan.fits, plan.needed_length, plan.tag_area);
    }

    [[nodiscard]] bool edits_record() const {
        return std::any_of(options_.edits.begin(), options_.edits.end(), [&](const Edit& edit) {
            const bool is_in_record =
                edit.frame_id.empty() || (edit.shown_in_record && !options_.separate);
            return is_in_record && (had_record_ || !edit.removes);
        });
    }

    [[nodiscard]] std::string outcome(const EditPlan& plan, const cMPEGHeader& now) const {
        std::string text = plan.changes_nothing
                               ? "nothing written, the file already has these values"
                               : tag_outcome(plan);
        if (edits_record() && (!plan.changes_nothing || !has_id3v1(now))) {
            text += ", " + record_text(now, had_record_);
        }
        if (const auto losses = plan.losses(); !losses.empty()) {
            text += ", lost " + losses_text(losses);
        }
        if (plan.needed_length != 0) {
            text += unseen_tag_text(now);
        }
        return text;
    }

    [[nodiscard]] std::string tag_outcome(const EditPlan& plan) const {
        if (plan.needed_length == 0) {
            return "ID3v2 tag left as it is";
        }
        const bool is_rebuilt = change_.is_rebuilt();
        const std::string written =
            how_it_was_written(is_rebuilt, plan.needed_length, plan.tag_area);
        if (plan.tag_version != 0 && plan.tag_version != kWrittenVersion) {
            return "ID3v2." + std::to_string(plan.tag_version) + " tag converted and " + written;
        }
        return (is_rebuilt ? "" : "ID3v2 tag ") + written;
    }

    FileChange change_;
    const SetOptions& options_;
    SetReport& report_;
    Journal& journal_;
    cMPEGHeader header_;
    std::unique_ptr<FileWork> work_;  // lives as long as the edit, which calls it
    std::optional<TagEdit> edit_;
    // What hosts and other programs will read.
    cMPEGHeader promised_;
    TagFacts promised_facts_;
    bool had_record_ = false;
    bool leaves_bytes_out_ = false;
};

}  // namespace

PlannedChange plan_with_editor(const std::string& name, const SetOptions& options,
                               SetReport& report, Journal& journal) {
    const auto file = std::make_shared<FileToSet>(name, options, report, journal);
    PlannedChange change;
    change.failure = file->plan();
    if (!change.failure && !options.dry_run) {
        change.write = [file] { return file->save(); };
    }
    return change;
}

std::optional<std::string> set_with_editor(const std::string& name, const SetOptions& options,
                                           SetReport& report, Journal& journal) {
    const PlannedChange change = plan_with_editor(name, options, report, journal);
    if (change.failure || !change.write) {
        return change.failure;
    }
    journal.flush();
    return change.write();
}

}  // namespace brindle::host
