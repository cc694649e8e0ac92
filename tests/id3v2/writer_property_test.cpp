// Any files, any edits, saves and strips: the audio bytes stay what they are.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "id3v2/cMP3ID3v2.h"
#include "support/bytes.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/memory_environment.h"
#include "support/tags.h"

namespace brindle {
namespace {

using namespace std::string_literals;
using test::Bytes;
using test::FileCall;
using test::Frame;
using test::Mode;
using test::Tag;

const String kName = u"song.mp3";

template <typename Value>
Value any_of(const std::vector<Value>& values) {
    return *rc::gen::elementOf(values);
}
int any_below(int end) {
    return *rc::gen::inRange(0, end);
}

Bytes junk(std::size_t count) {
    return test::repeated(count, 0x55);
}

struct File {
    Bytes content;
    // All of it must still be there after each step.
    Bytes audio;
};

// How audio may begin: whole frames, or frames of which some are damaged.
enum class Beginning { Whole, Damaged };

struct Audio {
    Bytes bytes;
    Beginning beginning = Beginning::Whole;
};

Audio any_audio() {
    const auto frame = any_of<Frame>({Frame{}, Frame{.padding = true},
                                      Frame{.kbps = 32}.with_mode(Mode::SingleChannel),
                                      Frame{.version = 2, .kbps = 64, .frequency = 22050},
                                      Frame{.layer = 2, .kbps = 192, .frequency = 48000}});
    const Frame other =
        frame.with_mode(frame.mode == Mode::JointStereo ? Mode::Stereo : Mode::JointStereo);
    const auto count = static_cast<std::size_t>(any_of<int>({40, 99, 100, 101, 102, 130, 250}));
    switch (any_below(9)) {
        case 0:  // too few for the analyser
            return {test::stream(frame, static_cast<std::size_t>(3 + any_below(9)))};
        case 1: {  // the mode changes within the first frames
            const auto first = static_cast<std::size_t>(1 + any_below(60));
            return {test::stream(frame, first) + test::stream(other, count)};
        }
        case 2: {  // any rates
            std::vector<int> rates;
            for (std::size_t i = 0; i < count; ++i) {
                rates.push_back(any_of<int>({32, 64, 128, 160}));
            }
            return {test::variable_stream(frame.layer == 3 ? frame : Frame{}, rates)};
        }
        case 3: {  // a VBR header, right or promising too much
            const Bytes rest = test::stream({}, count);
            const auto promised =
                static_cast<std::uint32_t>(rest.size()) * any_of<std::uint32_t>({1, 1, 100});
            return {test::xing_frame(
                        {}, {.frames = static_cast<std::uint32_t>(count), .bytes = promised}) +
                    rest};
        }
        case 4:  // some frames, then bytes that are none
            return {test::stream(frame, static_cast<std::size_t>(3 + any_below(5))) +
                        junk(static_cast<std::size_t>(1 + any_below(600))) +
                        test::stream(frame, count),
                    Beginning::Damaged};
        case 5:  // the last frame is cut off
            return {test::stream(frame, count) + frame.bytes(7).first(30)};
        default:
            return {test::stream(frame, count)};
    }
}

Tag any_tag(int version) {
    Tag tag(version);
    if (version == 2) {
        tag.text("TT2", "Song").text("TAL", "Disc").field("Cue In", "1500");
    } else {
        tag.text("TIT2", "Song").comment("eng", "", "Hi").field("Cue In", "1500");
        tag.picture("image/png", 3, "", junk(static_cast<std::size_t>(any_below(300))));
        // Not a text that looks like a frame of Layer I together with its byte order mark.
        tag.utf16_text("TPE1", u"\u00FFo");
    }
    return tag;
}

// The file with its tags in front of the audio, all of them possibly wrong about their size.
File any_file() {
    const Audio audio = any_audio();
    Bytes front;
    const bool has_tag = any_below(5) != 0;
    // Bytes in front of the tag, or of audio without one, that are neither.
    if (any_below(4) == 0 && (has_tag || audio.beginning == Beginning::Whole)) {
        front += junk(static_cast<std::size_t>(any_below(900)));
    }
    if (has_tag) {
        Tag tag = any_tag(any_of<int>({2, 3, 3, 4}));
        tag.padding(static_cast<std::size_t>(any_of<int>({0, 20, 300, 2500})));
        const auto size = static_cast<std::uint32_t>(tag.length() - 10);
        switch (any_below(6)) {
            case 0:  // claims some bytes of the audio
                if (audio.beginning == Beginning::Whole) {
                    tag.size(size + static_cast<std::uint32_t>(1 + any_below(60)));
                }
                break;
            case 1:  // claims less than it has
                tag.size(size - static_cast<std::uint32_t>(1 + any_below(20)));
                break;
            case 2:  // more than the file
                if (audio.beginning == Beginning::Whole) {
                    tag.size(100'000'000);
                }
                break;
            case 3:  // another one follows
                front += tag.bytes();
                tag = any_tag(3);
                break;
            default:
                break;
        }
        front += tag.bytes();
        if (any_below(4) == 0) {
            front += junk(static_cast<std::size_t>(any_below(200)));
        }
    }
    Bytes end;
    if (any_below(2) == 0) {
        end = test::Id3v1{.title = "Old"}.bytes();
    }
    return {front + audio.bytes + end, audio.bytes};
}

String any_text() {
    const std::size_t length = static_cast<std::size_t>(any_of<int>({0, 1, 30, 400, 2500, 4990}));
    return String(length, static_cast<char16_t>('a' + any_below(26)));
}

class Session {
public:
    explicit Session(const Bytes& content) {
        world_.files.put(kName, content);
        model_.FileName(kName);
    }

    void edit() {
        switch (any_below(8)) {
            case 0:
                return model_.Title(any_text());
            case 1:
                return model_.Comment(any_text());
            case 2:
                return model_.CueIn(any_below(100'000));
            case 3:
                return model_.Genre(static_cast<std::uint8_t>(any_below(256)));
            case 4:
                return model_.AddCustomField(u"Agency", any_text() + u"x");
            case 5:
                return model_.Titlev1Tag(any_text());
            case 6:
                return model_.RemoveFrame(String(u"TPE1"));
            default:
                return model_.AddTag(u"APIC", u"\0image/png\0\x03\0"s + any_text());
        }
    }
    void save() { model_.Update(); }
    bool strip(std::int32_t tags) { return model_.StripTags(tags); }
    void reopen() { model_.FileName(kName); }

    test::MemoryFiles& files() { return world_.files; }
    [[nodiscard]] const Bytes& content() const { return world_.files.content(kName); }
    [[nodiscard]] bool holds_only_the_file() const {
        return world_.files.names() == std::vector<String>{kName} && world_.files.open_files() == 0;
    }

    // The bytes between the tags at the start and the record at the end.
    [[nodiscard]] bool ends_with_audio(const Bytes& audio) const {
        Bytes rest = content();
        if (rest.size() >= 128 && rest.last(128).first(3) == Bytes("TAG")) {
            rest = rest.first(rest.size() - 128);
        }
        return rest.size() >= audio.size() && rest.last(audio.size()) == audio;
    }

private:
    test::MemoryEnvironment world_;
    cMP3ID3v2 model_{world_.environment};
};

// Without the bytes in the report.
bool same(const Bytes& left, const Bytes& right) {
    return left == right;
}

// In a smaller file no tag is ever found.
constexpr std::size_t kTagsAreFoundFrom = 4200;

RC_GTEST_PROP(AnySession, LeavesTheAudioAsItIs, ()) {
    const File file = any_file();
    Session session(file.content);
    for (int steps = 1 + any_below(8); steps > 0; --steps) {
        switch (any_below(5)) {
            case 0:
                session.save();
                break;
            case 1:
                session.strip(1 + any_below(3));
                break;
            case 2:
                session.reopen();
                break;
            default:
                session.edit();
        }
        RC_ASSERT(session.ends_with_audio(file.audio));
        RC_ASSERT(session.holds_only_the_file());
    }
}

RC_GTEST_PROP(AnySession, SavesInPlaceTheSecondTime, ()) {
    const File file = any_file();
    RC_PRE(file.audio.size() > kTagsAreFoundFrom);
    Session session(file.content);
    for (int edits = any_below(4); edits > 0; --edits) {
        session.edit();
    }
    session.save();
    const Bytes once = session.content();
    session.files().reset_counts();
    session.save();
    RC_ASSERT(same(session.content(), once));
    RC_ASSERT(session.files().calls(FileCall::Replace) == 0U);
}

RC_GTEST_PROP(AnySession, ComesToRestAfterTwoSavesAndReopenings, ()) {
    const File file = any_file();
    Session session(file.content);
    for (int edits = any_below(4); edits > 0; --edits) {
        session.edit();
    }
    session.save();
    session.reopen();
    session.save();
    const Bytes twice = session.content();
    session.reopen();
    session.save();
    RC_ASSERT(same(session.content(), twice));
    RC_ASSERT(session.ends_with_audio(file.audio));
}

RC_GTEST_PROP(AnySession, LeavesNothingButAudioWhenAllIsStripped, ()) {
    const File file = any_file();
    RC_PRE(file.audio.size() > kTagsAreFoundFrom);
    Session session(file.content);
    session.save();
    RC_ASSERT(session.strip(3));
    RC_ASSERT(same(session.content(), file.audio));
}

}  // namespace
}  // namespace brindle
