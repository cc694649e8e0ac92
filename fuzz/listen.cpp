// Streams of frames with any side information and any data, listened to: every frame plays for
// its duration, and all results are inside the file. The decoder and the meter are system libraries
// and not instrumented; the target tests our own handling of frames and samples.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>

#include <brindle/cMPEGHeader.h>
#include <brindle/frame_walk.h>

#include "fuzz/input.h"
#include "listen/listen_to_file.h"
#include "support/frames.h"
#include "support/memory_environment.h"

using brindle::cMPEGHeader;
using brindle::fuzz::Input;
using brindle::fuzz::require;
using brindle::host::Listening;
using brindle::host::ListenOptions;
using brindle::host::TimeRange;
using brindle::test::Bytes;
using brindle::test::Frame;
using brindle::test::Mode;

namespace {

const brindle::String kName = u"song.mp3";
// As many as the library reads, plus one.
constexpr std::size_t kFewestFrames = 12;

Frame kind_of(Input& input) {
    static const Frame kKinds[] = {
        Frame{.kbps = 64},
        Frame{.kbps = 32, .frequency = 48000, .mode = Mode::SingleChannel},
        Frame{.version = 2, .kbps = 24, .frequency = 22050},
        Frame{.version = 2, .kbps = 8, .frequency = 24000},
        Frame{.version = 25, .kbps = 16, .frequency = 8000, .mode = Mode::SingleChannel},
        Frame{.layer = 2, .kbps = 64, .frequency = 32000},
        Frame{.version = 2, .layer = 2, .kbps = 16, .frequency = 16000},
        Frame{.layer = 1, .kbps = 32, .frequency = 48000},
    };
    return kKinds[input.byte() % std::size(kKinds)];
}

// The header as the kind has it, then bytes of the input and, after them, any others.
Bytes frame_of(Frame kind, Input& input) {
    const std::uint8_t form = input.byte();
    kind.crc = form % 4 == 1;
    kind.padding = form % 8 == 2 && kind.layer != 1;
    if (form % 64 == 3) {
        kind.mode = kind.mode == Mode::SingleChannel ? Mode::JointStereo : Mode::SingleChannel;
    }
    if (form % 16 == 4) {
        kind.kbps *= 2;
    }
    Bytes bytes = kind.bytes();
    std::uint32_t noise = form;
    for (auto place = bytes.begin() + 4; place != bytes.end(); ++place) {
        noise = noise * 1'664'525 + 1'013'904'223;
        *place = static_cast<std::uint8_t>(form < 128 ? noise >> 24 : 0);
    }
    const Bytes own = input.bytes(input.byte() % 48);
    std::copy_n(own.begin(), std::min(own.size(), bytes.size() - 4), bytes.begin() + 4);
    return form % 32 == 5 ? bytes + input.bytes(input.byte()) : bytes;
}

Bytes file_of(Input& input) {
    const std::uint8_t form = input.byte();
    if (form == 0) {
        return input.rest();
    }
    const Frame kind = kind_of(input);
    Bytes file;
    constexpr std::size_t kRoomForXing = 60;
    if (form % 8 == 1 && kind.length() >= kRoomForXing) {
        file += brindle::test::xing_frame(kind, {.frames = 20, .bytes = 1000});
    }
    for (std::size_t frames = kFewestFrames + form % 64; frames > 0; --frames) {
        file += frame_of(kind, input);
    }
    return file;
}

void check(const Listening& heard, const brindle::FrameWalk& walk) {
    require(heard.milliseconds == walk.milliseconds, "what is heard plays as long as the frames");
    require(heard.undecoded.count + heard.frames_cut_off <= walk.frames, "no frame fails twice");
    require(!heard.undecoded.count ||
                (heard.undecoded.offset >= walk.first_frame && heard.undecoded.offset < walk.end),
            "the first bad frame is one of the file");
    for (const auto& value : {heard.loudness, heard.range, heard.true_peak}) {
        require(!value || std::isfinite(*value), "what is measured is a number");
    }
    require(std::isfinite(heard.sample_peak) && heard.sample_peak >= 0, "a peak is a number");
    if (heard.balance) {
        require(std::abs(heard.balance->correlation) <= 1.001, "a correlation is no more than 1");
    }
    require(heard.end.has_value() == heard.sound.has_value(), "what sounds has an end");
    if (!heard.sound) {
        require(heard.silences.empty() && !heard.next_start, "points are points of a sound");
        return;
    }
    const TimeRange sound = *heard.sound;
    require(sound.begin >= 0 && sound.begin < sound.end && sound.end <= walk.milliseconds + 1,
            "sound is inside of the file");
    require(
        !heard.next_start || (*heard.next_start >= sound.begin && *heard.next_start <= sound.end),
        "the next starts while there is sound, or at its end");
    std::int64_t end = sound.begin;
    for (const TimeRange& silence : heard.silences) {
        require(silence.begin >= end && silence.end > silence.begin + 2'000,
                "silences are long, and in order");
        end = silence.end;
    }
    require(end <= sound.end, "silences are inside of the sound");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::uint8_t form = input.byte();
    const Bytes file = file_of(input);
    brindle::test::MemoryEnvironment world;
    world.files.put(kName, file);
    cMPEGHeader header(world.environment);
    header.FileName(kName);

    const brindle::FrameWalk walk = walk_frames(header);
    ListenOptions options{.quick = form % 2 == 1};
    const auto heard = listen_to_file(header, static_cast<std::int64_t>(file.size()), options);
    require(heard.has_value() == (walk.frames > 0), "what has frames is heard");
    if (!heard) {
        return 0;
    }
    check(*heard, walk);
    if (form % 8 == 2) {
        // None of these files has a middle to leave out.
        options.quick = true;
        const auto quick = listen_to_file(header, static_cast<std::int64_t>(file.size()), options);
        require(quick && quick->sound == heard->sound && quick->next_start == heard->next_start &&
                    quick->silences == heard->silences &&
                    std::abs(quick->loudness.value_or(0) - heard->loudness.value_or(0)) < 0.001,
                "a short file is heard whole");
    }
    require(world.files.content(kName) == file, "listening changes nothing");
    return 0;
}
