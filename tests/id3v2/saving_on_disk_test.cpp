// What a save does on a real disk that files in memory cannot show.
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "id3v2/cMP3ID3v2.h"
#include "support/frames.h"
#include "support/temporary_folder.h"
#include "util/environment.h"

namespace brindle {
namespace {

// Positions in a tag's own numbers, and in a host's, end there.
TEST(SavingOnDisk, FileOfTwoGibibytesIsRefused) {
    const test::TemporaryFolder folder;
    const String name = folder.put("song.mp3", test::stream(test::Frame{}, 120));
    constexpr std::uintmax_t kLength = 2'147'483'648;
    std::filesystem::resize_file(folder.path("song.mp3"), kLength);
    cMP3ID3v2 model(system_environment());
    model.FileName(name);
    model.Title(u"Song");
    try {
        model.Update();
        FAIL() << "nothing was raised";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), 6);
        EXPECT_EQ(error.source(), u"BrindleID3v2Tagger");
    }
    EXPECT_EQ(std::filesystem::file_size(folder.path("song.mp3")), kLength);
    EXPECT_EQ(folder.entries(), std::vector<std::string>{"song.mp3"});
}

}  // namespace
}  // namespace brindle
