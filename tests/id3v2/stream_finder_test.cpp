#include "id3v2/stream_finder.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "id3v2/opened_model.h"
#include "support/id3v1.h"

namespace brindle {
namespace {

using test::Bytes;
using test::Frame;
using test::Id3v1;
using test::OpenedModel;
using test::repeated;
using test::Tag;

struct Case {
    const char* name;
    Bytes file;
    std::optional<std::int64_t> position;
};

// Without a bit rate that changes, eleven frames up to the end of the audio are accepted, ten are
// not.
std::vector<Case> cases() {
    const Bytes few = test::stream(Frame{}, 11);
    const Bytes many = test::stream(Frame{}, 120);
    const Bytes tag = Tag(3).text("TIT2", "Song").padded_to(1000).bytes();
    const Bytes record = Id3v1().bytes();
    return {
        {"Untagged", many, 0},
        {"Record", many + record, 0},
        {"FewFrames", few, 0},
        {"FewFramesAndARecord", few + record, 0},
        {"TooFewFrames", test::stream(Frame{}, 10), std::nullopt},
        {"Tag", tag + many, 1000},
        {"TagAfterJunk", repeated(100, 'j') + tag + many, 1100},
        {"TwoTags", tag + tag + many, 2000},
        {"NoAudio", repeated(5000, 'j'), std::nullopt},
    };
}

TEST(StreamFinder, FindsTheFrameThatOpeningAccepts) {
    for (const Case& test : cases()) {
        OpenedModel opened(test.file);
        EXPECT_EQ(opened.model.analyser().accepted_position(), test.position) << test.name;

        FileContent content;
        content.append_owned({test.file.begin(), test.file.end()});
        EXPECT_EQ(has_stream(opened.world.environment, test::kSong, content),
                  test.position.has_value())
            << test.name;
        ContentFile file(content);
        FileWindow window(file);
        const auto found = find_stream(opened.world.environment, test::kSong, window);
        EXPECT_EQ(found ? std::optional(found->position) : std::nullopt, test.position)
            << test.name;
    }
}

}  // namespace
}  // namespace brindle
