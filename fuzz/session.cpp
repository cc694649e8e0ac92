// Any bytes in front of good audio, then a host's session of edits, saves and strips: no byte of
// the audio ever changes, the values are read back, and after some saves the file stays the same.
#include <utility>

#include <brindle/cMPEGHeader.h>
#include <brindle/error.h>

#include "fuzz/input.h"
#include "fuzz/read_all_members.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/memory_environment.h"

using brindle::cMPEGHeader;
using brindle::String;
using brindle::fuzz::Input;
using brindle::fuzz::require;
using brindle::test::Bytes;
using brindle::test::Frame;
using brindle::test::Mode;

namespace {

const String kName = u"song.mp3";
// In a smaller file no tag is ever found.
constexpr std::size_t kTagsAreFoundFrom = 4200;

Bytes audio_of(Input& input) {
    static const Frame kKinds[] = {
        Frame{},
        Frame{.padding = true},
        Frame{.kbps = 32}.with_mode(Mode::SingleChannel),
        Frame{.version = 2, .kbps = 64, .frequency = 22050},
        Frame{.layer = 2, .kbps = 192, .frequency = 48000},
        Frame{.version = 2, .kbps = 8, .frequency = 24000},
    };
    const Frame& frame = kKinds[input.byte() % std::size(kKinds)];
    return brindle::test::stream(frame, std::size_t{100} + input.byte() % 40);
}

// Text that is stored in a tag unchanged: no NULs, which separate texts, and nothing that a code
// page lacks.
String text_of(Input& input) {
    const std::size_t length = input.byte() % 8 == 0 ? input.number(2) % 4'900 : input.byte();
    return String(1 + length, static_cast<char16_t>(u'A' + input.byte() % 50));
}

class Session {
public:
    Session(const Bytes& file, Bytes audio) : audio_(std::move(audio)) {
        world_.files.put(kName, file);
        reopen();
    }

    void step(Input& input) {
        switch (input.byte() % 14) {
            case 0:
                return header_.Title(text_of(input));
            case 1:
                return header_.Artist(text_of(input));
            case 2:
                return header_.Comments(text_of(input));
            case 3:
                return header_.CueInmSStart(static_cast<std::int32_t>(input.number(4)));
            case 4:
                return header_.Genre(text_of(input));
            case 5:
                return header_.CustomFieldAdd(u"Agency", text_of(input));
            case 6:
                return header_.CustomFieldAdd(text_of(input), text_of(input));
            case 7:
                return header_.Titlev1Tag(text_of(input));
            case 8:
                return header_.Year(static_cast<std::int16_t>(input.number(2)));
            case 9:
                return header_.Commentv1(text_of(input));
            case 10:
                return header_.Writev1v2Separate(!header_.Writev1v2Separate());
            case 11:
                return reopen();
            case 12:
                return strip(static_cast<brindle::eTagType>(1 + input.byte() % 3));
            default:
                save();
        }
    }

    void reopen() { header_.FileName(kName); }

    // Whether the save was not refused.
    bool save() {
        const Bytes before = content();
        bool saved = true;
        try {
            header_.SaveAllInfo();
        } catch (const brindle::Error&) {
            saved = false;
            require(content() == before, "what could not be saved is left as it was");
        }
        check_audio();
        return saved;
    }

    void strip(brindle::eTagType tags) {
        (void)header_.StripTags(tags);
        check_audio();
    }

    void check_audio() const {
        Bytes rest = content();
        if (rest.size() >= 128 && rest.last(128).first(3) == Bytes("TAG")) {
            rest = rest.first(rest.size() - 128);
        }
        require(rest.size() >= audio_.size() && rest.last(audio_.size()) == audio_,
                "the audio is as it was");
        require(world_.files.names().size() == 1, "no other file is left");
        require(world_.files.open_files() == 0, "the file is closed");
    }

    void check_read_form(Input& input) {
        const String title = text_of(input);
        const String artist = text_of(input);
        const auto cue_in = static_cast<std::int32_t>(input.number(3));
        header_.Writev1v2Separate(false);
        header_.Title(title);
        header_.Artist(artist);
        header_.CueInmSStart(cue_in);
        if (!save()) {
            return;
        }
        reopen();
        require(header_.Title() == title, "the title is read back");
        require(header_.Artist() == artist, "the artist is read back");
        require(header_.CueInmSStart() == cue_in, "the cue-in is read back");
        require(header_.Titlev1Tag() == title.substr(0, 30), "the short title is read back");
    }

    void check_rest() {
        const Bytes once = content();
        const auto answers = brindle::fuzz::read_all_members(header_);
        if (save()) {
            require(content() == once, "a second save changes nothing");
            reopen();
            require(brindle::fuzz::read_all_members(header_) == answers, "nor what is read");
        }
    }

    // The last frames of a tag after other bytes are not read.
    [[nodiscard]] bool has_readable_tag() const {
        return content().size() >= kTagsAreFoundFrom && content().first(3) == Bytes("ID3");
    }

    [[nodiscard]] const Bytes& content() const { return world_.files.content(kName); }

private:
    brindle::test::MemoryEnvironment world_;
    cMPEGHeader header_{world_.environment};
    Bytes audio_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const Bytes audio = audio_of(input);
    const Bytes record =
        input.byte() % 2 == 0 ? brindle::test::Id3v1{.title = "Old"}.bytes() : Bytes();
    const Bytes script = input.bytes(input.byte());
    const Bytes file = input.rest() + audio + record;

    Session session(file, audio);
    Input steps(script.data(), script.size());
    while (!steps.empty()) {
        session.step(steps);
    }
    // For any input file, the tag is one of ours from here on.
    session.reopen();
    if (!session.save()) {
        return 0;
    }
    session.reopen();
    if (session.has_readable_tag()) {
        session.check_read_form(steps);
        session.check_rest();
    }
    session.strip(brindle::v1andv2TagsBothPresent);
    return 0;
}
