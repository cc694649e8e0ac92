#pragma once

#include <algorithm>
#include <string>
#include <utility>

#include <brindle/error.h>
#include <brindle/save_options.h>

#include "id3v2/cMP3ID3v2.h"
#include "id3v2/file_edit.h"
#include "support/bytes.h"
#include "support/damaged_files.h"
#include "support/id3v1.h"
#include "support/memory_environment.h"

namespace brindle::test {

// What is wrong with `content`, which was made of the file by saves and strips; "" for nothing. The
// audio must end it, but for a record.
[[nodiscard]] inline std::string audio_fault(const DamagedFile& file, const Bytes& content) {
    constexpr std::size_t kRecord = 128;
    const auto ends_in_audio = [&](const Bytes& bytes) {
        return bytes.size() >= file.audio.size() && bytes.last(file.audio.size()) == file.audio;
    };
    const bool has_record =
        content.size() >= kRecord && content.last(kRecord).first(3) == Bytes("TAG");
    const bool is_whole = ends_in_audio(content) ||
                          (has_record && ends_in_audio(content.first(content.size() - kRecord)));
    return is_whole ? "" : "audio was lost";
}

// One file in a sequence of saves, edits and strips.
class AudioPromise {
public:
    explicit AudioPromise(DamagedFile file) : file_(std::move(file)) {
        world_.files.put(kName, file_.content);
        model_.FileName(kName);
    }

    void step(Choices& choices) {
        switch (choices.below(10)) {
            case 0:
                model_.FileName(kName);
                break;
            case 1:
            case 2:
                (void)model_.StripTags(static_cast<std::int32_t>(choices.between(1, 3)));
                break;
            case 3:
                model_.AddCustomField(u"Note", String(choices.below(4000), u'n'));
                save({});
                break;
            case 4:
                model_.CueIn(static_cast<std::int32_t>(choices.below(4)));
                edit({.atomic = choices.one_in(3)});
                break;
            case 5:
                model_.AddCustomField(u"Note", String(choices.below(4000), u'n'));
                edit({});
                break;
            default:
                model_.Title(String(choices.below(100), u't'));
                save({.atomic = choices.one_in(3)});
        }
        check();
    }

    // Save, save, save: the bytes after the tag stay the same from then on. The tag itself may go
    // on growing, by stamps after an empty field.
    void come_to_rest() {
        for (int round = 0; round < 3; ++round) {
            reopen_and_save();
        }
        const Bytes once = after_the_tag();
        reopen_and_save();
        if (after_the_tag() != once && broken_.empty()) {
            broken_ = "a file does not come to rest";
        }
    }

    [[nodiscard]] const std::string& broken() const { return broken_; }

private:
    static inline const String kName = u"a.mp3";

    void save(const SaveOptions& options) {
        const Bytes before = content();
        try {
            model_.Update(options);
        } catch (const Error&) {
            if (content() != before) {
                broken_ = "a save that failed has changed the file";
            }
        }
    }

    // Whatever it loses besides.
    void edit(const SaveOptions& options) {
        const Bytes before = content();
        try {
            model_.begin_edit({})->save(options);
        } catch (const Error&) {
            if (content() != before) {
                broken_ = "an edit that failed has changed the file";
            }
            return;
        }
        // Where nothing proves the end of the tag, what is written can look like audio.
        const EditPlan again = model_.begin_edit({})->plan();
        if (broken_.empty() && !again.changes_nothing && again.losses().empty()) {
            broken_ = "an edit made again would change the file";
        }
    }

    void reopen_and_save() {
        model_.FileName(kName);
        save({});
        check();
    }

    [[nodiscard]] Bytes after_the_tag() {
        model_.FileName(kName);
        const auto length = static_cast<std::size_t>(model_.TotalId3v2TagLen());
        return content().last(content().size() - std::min(length, content().size()));
    }

    void check() {
        if (broken_.empty()) {
            broken_ = audio_fault(file_, content());
        }
        if (world_.files.names().size() != 1 || world_.files.open_files() != 0) {
            broken_ = "a file was left";
        }
    }

    [[nodiscard]] const Bytes& content() const { return world_.files.content(kName); }

    DamagedFile file_;
    MemoryEnvironment world_;
    cMP3ID3v2 model_{world_.environment};
    std::string broken_;
};

}  // namespace brindle::test
