// A tag of any frames, edited: what was not named stays, and what was named is there once.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "id3v2/cMP3ID3v2.h"
#include "id3v2/file_edit.h"
#include "id3v2/public_tag_reader.h"
#include "support/bytes.h"
#include "support/damaged_files.h"
#include "support/memory_environment.h"

namespace brindle::test {

using namespace std::string_view_literals;

// A frame as stored, and as it has to be stored in a tag of version 2.3.
struct MadeFrame {
    std::string id;    // of version 2.3
    std::string name;  // of user-defined text
    Bytes flags = zeros(2);
    Bytes body;     // as it has to be
    Bytes in_file;  // header and body
    bool is_comment_without_description = false;

    [[nodiscard]] bool can_be_stepped_over() const {
        return body.size() <= (id == "APIC" ? 81'920U : 5'000U);
    }
    friend bool operator==(const MadeFrame& a, const MadeFrame& b) {
        return a.id == b.id && a.flags == b.flags && a.body == b.body;
    }
};

class EditPromise {
public:
    EditPromise(const Bytes& audio, Choices& choices)
        : choices_(choices), version_(choices.between(2, 4)), audio_(audio) {
        const bool is_whole_unsynchronised = version_ != 4 && choices.one_in(4);
        Bytes content = make_tag(is_whole_unsynchronised);
        if (choices.one_in(5)) {
            content += make_tag(is_whole_unsynchronised);
        }
        has_noise_ = choices.one_in(6);
        if (has_noise_) {
            content += noise(1 + choices.below(40), choices);
        }
        world_.files.put(kName, content + audio_);
        model_.FileName(kName);
    }

    // What is wrong after any edit; "" for nothing.
    [[nodiscard]] std::string check() {
        const Bytes before = content();
        const std::vector<MadeFrame> added = set_fields();
        {
            const auto edit = model_.begin_edit({});
            if (edit->plan().refusal || !edit->plan().losses().empty()) {
                return has_noise_ && content() == before ? "" : "a lost frame";
            }
            edit->save({.atomic = choices_.one_in(3)});
        }
        const EditPlan again = model_.begin_edit({})->plan();
        if (!again.changes_nothing && !(has_noise_ && !again.losses().empty())) {
            return "an edit made again would change the file";
        }
        if (content().size() < audio_.size() || content().last(audio_.size()) != audio_) {
            return "audio was lost";
        }
        const std::string fault = check_frames(expected(added));
        return fault.empty() ? check_common_form() : fault;
    }

private:
    static inline const String kName = u"a.mp3";

    // --- Making a tag

    // In one of the encodings of the documents: 0 Latin-1, 1 UTF-16 with mark, 2 big-endian, 3
    // UTF-8.
    static Bytes encoded(const std::string& ascii, std::uint32_t encoding) {
        Bytes bytes = encoding == 1 ? Bytes{0xFF, 0xFE} : Bytes();
        for (const char c : ascii) {
            const auto byte = static_cast<std::uint8_t>(c);
            bytes += encoding == 1   ? Bytes{byte, 0x01}
                     : encoding == 2 ? Bytes{0x01, byte}
                     : encoding == 3 ? Bytes{static_cast<std::uint8_t>(0xC4 | byte >> 6U),
                                             static_cast<std::uint8_t>(0x80 | (byte & 0x3FU))}
                                     : Bytes{byte};
        }
        return bytes;
    }
    // U+0041 is "A" in 8-bit text, and U+0141 in the others, so that all of their bytes count.
    static Bytes terminator(std::uint32_t encoding) {
        return zeros(encoding == 1 || encoding == 2 ? 2 : 1);
    }

    // Parts of a frame: bytes, or text in the frame's encoding.
    struct Part {
        Bytes bytes;
        std::string text;
        bool is_text = false;
        bool is_terminated = false;
    };
    static Part raw(Bytes bytes) { return {std::move(bytes), {}, false, false}; }
    static Part text(std::string ascii) { return {{}, std::move(ascii), true, false}; }
    static Part string(std::string ascii) { return {{}, std::move(ascii), true, true}; }
    static Bytes body_of(const std::vector<Part>& parts, std::uint32_t encoding) {
        Bytes body{static_cast<std::uint8_t>(encoding)};
        for (const Part& part : parts) {
            body += part.is_text ? encoded(part.text, encoding) : part.bytes;
            body += part.is_terminated ? terminator(encoding) : Bytes();
        }
        return body;
    }

    std::string word() {
        return std::string(1 + choices_.below(9), static_cast<char>('A' + choices_.below(20)));
    }

    MadeFrame make_frame() {
        constexpr std::uint32_t kEncodings[] = {0, 1, 2, 3};
        const std::uint32_t encoding = kEncodings[choices_.below(version_ == 4 ? 4 : 2)];
        const std::uint32_t kept_encoding = encoding < 2 ? encoding : 1;
        MadeFrame frame;
        std::string version2_id;
        std::vector<Part> parts;
        bool has_encoding = true;
        switch (choices_.below(8)) {
            case 0:
                frame.id = "TIT2", version2_id = "TT2", parts = {text(word())};
                break;
            case 1:
                frame.id = "TALB", version2_id = "TAL";
                parts = {string(word()), text(word())};
                break;
            case 2: {
                constexpr std::string_view kNames[] = {"Cue In", "cue in", "Other", "Cue In "};
                frame.id = "TXXX", version2_id = "TXX";
                const std::string name(kNames[choices_.below(4)]);
                // Other encodings spell another name, see encoded().
                frame.name = encoding == 0 ? name : "";
                parts = {string(name), text(word())};
                break;
            }
            case 3: {
                frame.id = "COMM", version2_id = "COM";
                const bool is_bare = choices_.one_in(2);
                frame.is_comment_without_description = is_bare;
                parts = {raw(Bytes("eng")), string(is_bare ? "" : word()), text(word())};
                break;
            }
            case 4:
                frame.id = "USLT", version2_id = "ULT";
                parts = {raw(Bytes("deu")), string(word()),
                         text(std::string(choices_.any_size() / 8, 'L'))};
                break;
            case 5: {
                frame.id = "APIC", version2_id = "PIC";
                const Bytes image = noise(choices_.any_size() * 2, choices_);
                parts = {raw(version_ == 2 ? Bytes("PNG") : Bytes("image/png\0"sv)), raw(Bytes{3}),
                         string(word()), raw(image)};
                break;
            }
            case 6:
                frame.id = "TYER", version2_id = "TYE", parts = {text(word())};
                break;
            default:
                frame.id = "UFID", version2_id = "UFI", has_encoding = false;
                parts = {raw(Bytes("me\0"sv)), raw(noise(choices_.below(300), choices_))};
        }
        Bytes body = body_of(parts, encoding);
        if (frame.id == "APIC" && version_ == 2) {
            parts[0] = raw(Bytes("image/png\0"sv));
        }
        frame.body = body_of(parts, kept_encoding);
        if (!has_encoding) {
            body = body.last(body.size() - 1);
            frame.body = body;
        }
        frame.in_file = in_file(frame, version2_id, std::move(body));
        return frame;
    }

    Bytes in_file(MadeFrame& frame, const std::string& version2_id, Bytes body) {
        if (version_ == 2) {
            return Bytes(version2_id) + big_endian(body.size(), 3) + body;
        }
        Bytes flags = zeros(2);
        if (choices_.one_in(6)) {
            const bool is_version4 = version_ == 4;
            flags = is_version4 ? Bytes{0x40, 0x40} : Bytes{0x80, 0x20};  // to be dropped, grouped
            frame.flags = Bytes{0x80, 0x20};
            frame.body = Bytes{'G'} + frame.body;
            body = Bytes{'G'} + body;
        }
        if (version_ == 4 && choices_.one_in(4)) {
            flags[1] = static_cast<std::uint8_t>(flags[1] | 2U);
            body = unsynchronised(body);
        }
        const Bytes size = version_ == 4 ? syncsafe(static_cast<std::uint32_t>(body.size()))
                                         : big_endian(body.size(), 4);
        return Bytes(frame.id) + size + flags + body;
    }

    static Bytes unsynchronised(const Bytes& bytes) {
        Bytes result;
        for (const std::uint8_t byte : bytes) {
            result.push_back(byte);
            if (byte == 0xFF) {
                result.push_back(0);
            }
        }
        return result;
    }

    Bytes make_tag(bool is_unsynchronised) {
        Bytes frames;
        for (std::uint32_t left = choices_.below(7); left > 0; --left) {
            frames_.push_back(make_frame());
            frames += frames_.back().in_file;
        }
        if (is_unsynchronised) {
            frames = unsynchronised(frames);
        }
        frames += zeros(choices_.one_in(3) ? 0 : choices_.below(3'000));
        return Bytes("ID3") +
               Bytes{static_cast<std::uint8_t>(version_), 0,
                     static_cast<std::uint8_t>(is_unsynchronised ? 0x80 : 0)} +
               syncsafe(static_cast<std::uint32_t>(frames.size())) + frames;
    }

    // --- Editing it

    static MadeFrame set_frame(std::string id, std::string name, const Bytes& body) {
        MadeFrame frame;
        frame.id = std::move(id);
        frame.name = std::move(name);
        frame.body = body;
        frame.is_comment_without_description = frame.id == "COMM";
        return frame;
    }

    std::vector<MadeFrame> set_fields() {
        std::vector<MadeFrame> set;
        if (choices_.one_in(2)) {
            const std::string title(choices_.below(300), 't');
            model_.Title(String(title.begin(), title.end()));
            set.push_back(set_frame("TIT2", "", Bytes{0} + Bytes(title)));
        }
        if (choices_.one_in(3)) {
            model_.Comment(u"c");
            set.push_back(set_frame("COMM", "", Bytes("\0\0nt\0c"sv)));
        }
        if (choices_.one_in(3)) {
            model_.Year(u"2026");
            set.push_back(set_frame("TYER", "",
                                    Bytes("\0"
                                          "2026"sv)));
        }
        if (choices_.one_in(2) || set.empty()) {
            model_.CueIn(200);
            set.push_back(set_frame("TXXX", "Cue In",
                                    Bytes("\0Cue In\0"
                                          "200"sv)));
        }
        set.push_back(set_frame("TXXX", "TAGGED BY",
                                Bytes("\0TAGGED BY\0CorvaneTagger- Revised Feb 2011"sv)));
        return set;
    }

    static bool replaces(const MadeFrame& set, const MadeFrame& old) {
        return set.id == old.id && set.name == old.name &&
               (set.id != "COMM" || old.is_comment_without_description);
    }

    // The frames of the new tag, worked out in another way than by the editor.
    [[nodiscard]] std::vector<MadeFrame> expected(const std::vector<MadeFrame>& set) const {
        std::vector<MadeFrame> frames = frames_;
        std::vector<MadeFrame> added;
        for (const MadeFrame& value : set) {
            const auto is_old = [&](const MadeFrame& old) { return replaces(value, old); };
            const auto first = std::find_if(frames.begin(), frames.end(), is_old);
            if (first == frames.end()) {
                added.push_back(value);
                continue;
            }
            *first = value;
            first->name += '\n';  // it is not its own duplicate
            frames.erase(std::remove_if(std::next(first), frames.end(), is_old), frames.end());
        }
        const auto large = std::stable_partition(
            frames.begin(), frames.end(),
            [](const MadeFrame& frame) { return frame.can_be_stepped_over(); });
        frames.insert(large, added.begin(), added.end());
        return frames;
    }

    // --- The form that hosts and other programs read alike

    // Id, description and value of each text, several values as one.
    static std::multiset<String> values_of(const TagFacts& facts) {
        std::multiset<String> values;
        for (const TagText& text : facts.texts) {
            values.insert(text.id + u"\n" + text.description + u"\n" + text.text());
        }
        return values;
    }

    [[nodiscard]] std::string check_common_form() {
        const TagFacts before = model_.begin_edit({})->facts();
        const EditOptions options{.common_form = true};
        TagFacts after;
        {
            const auto edit = model_.begin_edit(options);
            if (edit->plan().refusal || !edit->plan().losses().empty()) {
                return has_noise_ ? "" : "the common form loses a frame";
            }
            after = edit->facts();
            edit->save({});
        }
        if (values_of(before) != values_of(after)) {
            return "other programs read other values in the common form";
        }
        if (!model_.begin_edit(options)->plan().changes_nothing) {
            return "the common form made again would change the file";
        }
        return content().last(audio_.size()) == audio_ ? "" : "the common form lost audio";
    }

    // --- Reading it

    [[nodiscard]] std::string check_frames(const std::vector<MadeFrame>& expected_frames) {
        const Bytes& file = content();
        if (file.first(6) != Bytes("ID3\3\0\0"sv)) {
            return "no plain tag of version 2.3";
        }
        std::size_t size = 0;
        for (std::size_t i = 6; i < 10; ++i) {
            size = size * 128 + file[i];
        }
        std::vector<MadeFrame> found;
        std::size_t position = 10;
        while (position + 10 <= size + 10 && file[position] != 0) {
            std::size_t body = 0;
            for (std::size_t i = 4; i < 8; ++i) {
                body = body * 256 + file[position + i];
            }
            MadeFrame frame;
            frame.id = file.part(position, 4).text();
            frame.flags = file.part(position + 8, 2);
            frame.body = file.part(position + 10, body);
            found.push_back(std::move(frame));
            position += 10 + body;
        }
        if (found != expected_frames) {
            return "other frames than expected";
        }
        const auto opened = world_.files.open(kName, OpenMode::Read);
        FileWindow window(*opened);
        const auto tag = read_public_tag(window, 0);
        const bool reads_the_same =
            tag && std::equal(tag->frames.begin(), tag->frames.end(), found.begin(), found.end(),
                              [](const PublicFrame& read, const MadeFrame& made) {
                                  return read.id() == made.id &&
                                         std::cmp_equal(read.size, made.body.size());
                              });
        return reads_the_same ? "" : "the public reader finds other frames";
    }

    [[nodiscard]] const Bytes& content() const { return world_.files.content(kName); }

    Choices& choices_;
    std::uint32_t version_;
    Bytes audio_;
    // After the tag, so that nothing proves where it ends: a picture that looks like audio then is
    // taken for it, and an edit is refused.
    bool has_noise_ = false;
    std::vector<MadeFrame> frames_;
    MemoryEnvironment world_;
    cMP3ID3v2 model_{world_.environment};
};

}  // namespace brindle::test
