// Thousands of small files, made to be hard: the analyser must say of each what the slow and
// simple way says.

#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mpeg/clsMPEG.h"
#include "mpeg/reference_analyser.h"
#include "mpeg/same_outcome.h"
#include "support/bytes.h"
#include "support/case_count.h"
#include "support/frames.h"
#include "support/memory_environment.h"

namespace brindle::test {
namespace {

const String kName = u"file.mp3";

class Dice {
public:
    explicit Dice(unsigned seed) : engine_(seed) {}
    // From 0 to `sides` - 1.
    std::size_t operator()(std::size_t sides) { return engine_() % sides; }
    bool one_in(std::size_t sides) { return (*this)(sides) == 0; }

private:
    std::mt19937 engine_;
};

// Frames of 24 to 72 bytes, so that small files have many of them.
Frame short_frame(Dice& dice) {
    static const std::vector<Frame> kFrames = {
        {.version = 2, .layer = 3, .kbps = 8, .frequency = 24000},
        {.version = 2, .layer = 3, .kbps = 8, .frequency = 22050},
        {.version = 2, .layer = 3, .kbps = 16, .frequency = 24000},
        {.version = 2, .layer = 3, .kbps = 8, .frequency = 16000, .mode = Mode::SingleChannel},
        {.version = 25, .layer = 3, .kbps = 8, .frequency = 8000},
        {.version = 2, .layer = 2, .kbps = 8, .frequency = 24000},
        {.version = 1, .layer = 1, .kbps = 32, .frequency = 48000},
        {.version = 2, .layer = 3, .kbps = 24, .frequency = 24000},
    };
    return kFrames[dice(kFrames.size())];
}

// A run of frames that mostly belong together.
Bytes random_stream(Dice& dice, std::size_t frames) {
    const Frame first = short_frame(dice);
    const std::size_t changes_of_rate = 1 + dice(30);
    const std::size_t changes_of_mode = 20 + dice(400);
    const std::vector<int> rates = first.layer == 1 ? std::vector{32, 64} : std::vector{8, 16, 24};
    Frame frame = first;
    Bytes bytes;
    for (std::size_t number = 0; number < frames; ++number) {
        if (changes_of_rate != 1 && dice.one_in(changes_of_rate)) {
            frame.kbps = rates[dice(rates.size())];
        }
        if (dice.one_in(changes_of_mode)) {
            frame.mode = dice.one_in(2) ? Mode::JointStereo : Mode::Stereo;
        }
        frame.padding = dice.one_in(6);
        frame.bytes_in_stream = frame.length_as_read();
        bytes += frame.bytes(number);
    }
    return bytes;
}

void overwrite(Bytes& file, std::size_t place, const Bytes& with) {
    for (std::size_t index = 0; index < with.size() && place + index < file.size(); ++index) {
        file[place + index] = with[index];
    }
}

Bytes junk(Dice& dice, std::size_t size) {
    Bytes bytes;
    for (std::size_t index = 0; index < size; ++index) {
        bytes.push_back(static_cast<std::uint8_t>(dice.one_in(8) ? 0xFF : dice(256)));
    }
    return bytes;
}

struct Case {
    Bytes file;
    std::int32_t tag_length = 0;
    std::int32_t tag_offset = 0;
    bool has_v1 = false;
};

Case random_case(Dice& dice) {
    Case made;
    if (dice.one_in(2)) {
        const std::size_t size = dice(200);
        made.file += dice.one_in(2) ? zeros(size) : junk(dice, size);
        made.tag_length = static_cast<std::int32_t>(size) + static_cast<std::int32_t>(dice(3)) * 10;
        if (dice.one_in(4)) {
            made.tag_offset = static_cast<std::int32_t>(dice(40));
        }
    }
    const std::size_t parts = 1 + dice(3);
    for (std::size_t part = 0; part < parts; ++part) {
        made.file += random_stream(dice, dice(dice.one_in(3) ? 250 : 30));
        if (dice.one_in(3)) {
            made.file += junk(dice, dice(60));
        }
    }
    // Headers inside the bodies of others: chains that start there meet others or run beside them.
    for (std::size_t count = dice.one_in(2) ? dice(80) : 0; count > 0 && !made.file.empty();
         --count) {
        Frame frame = short_frame(dice);
        frame.padding = dice.one_in(3);
        overwrite(made.file, dice(made.file.size()), frame.bits().bytes());
    }
    if (dice.one_in(4) && made.file.size() > 60) {
        const std::size_t place = std::vector<std::size_t>{36, 21, 13}[dice(3)];
        const Bytes xing = Bytes(dice.one_in(2) ? "XING" : "xiNg") +
                           big_endian(dice.one_in(8) ? dice(4) : 3, 4) +
                           big_endian(dice.one_in(8) ? 4000000000U : dice(2000), 4) +
                           big_endian(dice.one_in(4) ? 0 : dice(2 * made.file.size()), 4);
        const std::size_t frame_start =
            dice.one_in(2) ? 0 : static_cast<std::size_t>(made.tag_length + made.tag_offset);
        overwrite(made.file, frame_start + place, xing);
    }
    if (dice.one_in(3)) {
        made.file += Bytes("TAG") + zeros(125);
        made.has_v1 = true;
    }
    if (dice.one_in(3)) {
        made.file = made.file.first(dice(made.file.size() + 1));
    }
    return made;
}

template <typename Analyser>
void tell_tags(Analyser& analyser, const Case& of) {
    analyser.ID3v2Length = of.tag_length;
    analyser.ID3v2Offset = of.tag_offset;
    analyser.HasV1Tag = of.has_v1;
}

// Returns what was expected.
ReferenceAnalyser expect_same_outcome(const Case& made) {
    MemoryEnvironment world;
    world.files.put(kName, made.file);

    ReferenceAnalyser reference;
    tell_tags(reference, made);
    reference.FileName(made.file);
    clsMPEG analyser(world.environment);
    tell_tags(analyser, made);
    analyser.FileName(kName);

    EXPECT_EQ(difference(analyser, reference), "");
    return reference;
}

// How often each kind of outcome came up, so that the comparison is known to be worth something.
struct Outcomes {
    unsigned accepted = 0;
    unsigned variable = 0;
    unsigned averaged = 0;  // variable, and not by a header in the first frame
    unsigned turned_down = 0;

    void count(const ReferenceAnalyser& reference, bool has_xing) {
        accepted += reference.found ? 1U : 0U;
        turned_down += reference.found ? 0U : 1U;
        variable += reference.VBR ? 1U : 0U;
        averaged += reference.VBR && !has_xing ? 1U : 0U;
    }
};

bool contains_xing(const Bytes& file) {
    const std::string text = file.text();
    return text.find("XING") != std::string::npos || text.find("xiNg") != std::string::npos;
}

TEST(ScanAgainstReference, RandomFilesHaveTheSameOutcome) {
    Outcomes outcomes;
    for (unsigned seed = 0; seed < case_count(5'000); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Dice dice(seed);
        const Case made = random_case(dice);
        outcomes.count(expect_same_outcome(made), contains_xing(made.file));
        if (HasFailure()) {
            return;
        }
    }
    EXPECT_GT(outcomes.accepted, case_count(1'000));
    EXPECT_GT(outcomes.averaged, case_count(250));
    EXPECT_GT(outcomes.variable - outcomes.averaged, case_count(30));
    EXPECT_GT(outcomes.turned_down, case_count(600));
}

class GivenFile : public ScannedFile {
public:
    explicit GivenFile(std::int32_t tag_size) : tag_size_(tag_size) {}
    [[nodiscard]] String FileName() const override { return kName; }
    [[nodiscard]] std::int32_t Id3v2TagSize() const override { return tag_size_; }

private:
    std::int32_t tag_size_;
};

TEST(ScanAgainstReference, SeriesOfFilesOnOneAnalyserHaveTheSameOutcome) {
    for (unsigned seed = 0; seed < case_count(600); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Dice dice(1'000'000 + seed);
        MemoryEnvironment world;
        ReferenceAnalyser reference;
        clsMPEG analyser(world.environment);
        for (int step = 0; step < 4; ++step) {
            SCOPED_TRACE("file " + std::to_string(step));
            const Case made = random_case(dice);
            world.files.put(kName, made.file);
            tell_tags(reference, made);
            tell_tags(analyser, made);
            if (dice.one_in(3)) {
                reference.FileName(made.file);
                analyser.FileName(kName);
            } else {
                const auto tag_size = static_cast<std::int32_t>(dice(120)) - 2;
                reference.SetFileName(made.file, tag_size);
                analyser.SetFileName(GivenFile(tag_size));
            }
            EXPECT_EQ(difference(analyser, reference), "");
            if (HasFailure()) {
                return;
            }
        }
    }
}

// Only headers, a few bytes apart: every chain meets many others.
TEST(ScanAgainstReference, FilesOfNothingButHeadersHaveTheSameOutcome) {
    for (unsigned seed = 0; seed < case_count(1'500); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Dice dice(2'000'000 + seed);
        const std::size_t kinds = 1 + dice(3);
        const Frame base = short_frame(dice);
        Case made;
        const std::size_t headers = 20 + dice(700);
        for (std::size_t count = 0; count < headers; ++count) {
            Frame frame = dice.one_in(40) ? short_frame(dice) : base;
            frame.padding = dice(kinds) == 1;
            if (dice(kinds) == 2) {
                frame.kbps = frame.layer == 1 ? 64 : 16;
            }
            made.file += frame.bits().bytes() + zeros(dice.one_in(30) ? dice(4) : 0);
        }
        made.has_v1 = dice.one_in(2);
        expect_same_outcome(made);
        if (HasFailure()) {
            return;
        }
    }
}

}  // namespace
}  // namespace brindle::test
