// The power fails during a save or a strip, or after it. Every state that it may leave on the
// device is compared with the old file and the new one, and opened.
#include <cstdint>
#include <functional>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/frame_walk.h>

#include "id3v2/cMP3ID3v2.h"
#include "id3v2/opened_model.h"
#include "support/bytes.h"
#include "support/crash_states.h"
#include "support/file_operation.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/tags.h"
#include "support/written_files.h"

namespace brindle {
namespace {

using test::Bytes;
using test::CrashState;
using test::kSong;
using test::Tag;

enum class Way { InPlace, Replacement };

struct Work {
    const char* name;
    Bytes old;
    void (*work)(cMP3ID3v2&);
    Way way;
};

void PrintTo(const Work& work, std::ostream* stream) {
    *stream << work.name;
}

constexpr std::size_t kSector = 512;

// Short frames: thousands of states are made of each file.
Bytes audio() {
    return test::stream(test::Frame{.kbps = 32}.with_mode(test::Mode::SingleChannel), 120);
}

void save(cMP3ID3v2& model) {
    model.Title(test::wide(std::string(3500, 't')));  // over several sectors
    model.Titlev1Tag(u"New");
    model.Update();
}
void save_atomically(cMP3ID3v2& model) {
    model.Title(test::wide(std::string(3500, 't')));
    model.Titlev1Tag(u"New");
    model.Update({.atomic = true});
}
template <std::int32_t kTags>
void strip(cMP3ID3v2& model) {
    EXPECT_TRUE(model.StripTags(kTags));
}

std::vector<Work> works() {
    const Bytes roomy = Tag().text("TIT2", "Old").text("TALB", "Disc").padded_to(4000).bytes();
    const Bytes tight = Tag().text("TIT2", "Old").text("TALB", "Disc").padded_to(60).bytes();
    const Bytes version2 = Tag(2).text("TT2", "Old").text("TAL", "Disc").padded_to(500).bytes();
    const Bytes record = test::Id3v1{.title = "Old", .artist = "Somebody"}.bytes();
    return {
        {"SaveInPlace", roomy + audio() + record, save, Way::InPlace},
        {"SaveInPlaceWithItsFirstRecord", roomy + audio(), save, Way::InPlace},
        {"SaveWithRebuild", tight + audio() + record, save, Way::Replacement},
        {"SaveWithRebuildAndItsFirstRecord", audio(), save, Way::Replacement},
        {"SaveOfVersion2", version2 + audio() + record, save, Way::Replacement},
        {"AtomicSave", roomy + audio() + record, save_atomically, Way::Replacement},
        {"AtomicSaveWithItsFirstRecord", roomy + audio(), save_atomically, Way::Replacement},
        {"StripOfTheRecord", roomy + audio() + record, strip<1>, Way::Replacement},
        {"StripOfTheTag", roomy + audio() + record, strip<2>, Way::Replacement},
        {"StripOfBoth", roomy + audio() + record, strip<3>, Way::Replacement},
    };
}

bool has_audio(const Bytes& file) {
    return file.text().find(audio().text()) != std::string::npos;
}

// Whether each sector is one of the old file or of the new one. Where the new one is longer, its
// length may be there before its bytes.
bool is_mixed(const Bytes& file, const Bytes& old, const Bytes& result) {
    if (file.size() > result.size()) {
        return false;
    }
    const Bytes lengthened = old + test::zeros(result.size() - old.size());
    for (std::size_t place = 0; place < file.size(); place += kSector) {
        const Bytes found = file.part(place, kSector);
        if (found != lengthened.part(place, found.size()) &&
            found != result.part(place, found.size())) {
            return false;
        }
    }
    return file.size() >= old.size();
}

class PowerCut : public ::testing::TestWithParam<Work> {
protected:
    void SetUp() override {
        test::OpenedModel opened(GetParam().old);
        opened.world.files.record_into(operations_);
        GetParam().work(opened.model);
        result_ = opened.world.files.content(kSong);
        ASSERT_NE(result_, GetParam().old);
        ASSERT_TRUE(has_audio(result_));
    }

    // Passes each different content of the song to `check`, until a check fails.
    void for_each_content(const std::function<void(const Bytes&, bool finished)>& check) const {
        std::set<std::pair<bool, Bytes>> seen;
        const auto check_once = [&](const CrashState& state) {
            if (HasFailure()) {
                return;
            }
            ASSERT_TRUE(state.files.contains(kSong));
            const Bytes& content = state.files.at(kSong);
            if (seen.emplace(state.finished, content).second) {
                SCOPED_TRACE("content " + std::to_string(seen.size()) +
                             (state.finished ? " after the end" : ""));
                check(content, state.finished);
            }
        };
        test::for_each_crash_state({{kSong, GetParam().old}}, operations_, {.sector = kSector},
                                   check_once);
        if (!HasFailure()) {
            EXPECT_TRUE(seen.contains({false, GetParam().old}));
            EXPECT_TRUE(seen.contains({true, result_}));
            EXPECT_TRUE(GetParam().way == Way::Replacement || seen.size() > 50);
        }
    }

    std::vector<test::FileOperation> operations_;
    Bytes result_;
};

TEST_P(PowerCut, LeavesAllAudioWhereReadersFindIt) {
    for_each_content([](const Bytes& content, bool) {
        EXPECT_TRUE(has_audio(content));
        const FrameWalk walk = test::OpenedModel(content).model.walk_frames(FrameVisitor());
        EXPECT_EQ(walk.frames, 120);
        EXPECT_EQ(walk.gaps, 0);
    });
}

TEST_P(PowerCut, LeavesTheOldFileOrTheNewOne) {
    const Work& work = GetParam();
    for_each_content([&](const Bytes& content, bool) {
        EXPECT_TRUE(content == work.old || content == result_ ||
                    (work.way == Way::InPlace && is_mixed(content, work.old, result_)));
    });
}

TEST_P(PowerCut, LeavesTheNewFileOnceTheWorkIsDone) {
    for_each_content(
        [&](const Bytes& content, bool finished) { EXPECT_TRUE(!finished || content == result_); });
}

INSTANTIATE_TEST_SUITE_P(During, PowerCut, ::testing::ValuesIn(works()),
                         [](const auto& work) { return work.param.name; });

}  // namespace
}  // namespace brindle
