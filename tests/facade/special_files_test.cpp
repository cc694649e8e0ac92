// What is no ordinary file, under the name of a music file on this machine's disk; and files that
// another program changes while they are read. Nothing here may block: a test that hangs has
// failed.
#include "facade/special_files.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/error.h>

#include "facade/loaded_header.h"
#include "support/every_property.h"
#include "support/temporary_folder.h"
#include "util/environment.h"

namespace brindle {
namespace {

using test::audio;
using test::Bytes;
using test::Tag;
using test::TemporaryFolder;

// Names and what they are.
std::map<std::string, std::filesystem::file_type> entries_of(const TemporaryFolder& folder) {
    std::map<std::string, std::filesystem::file_type> entries;
    for (const std::string& entry : folder.entries()) {
        entries[entry] = std::filesystem::symlink_status(folder.path(entry)).type();
    }
    return entries;
}

TEST(SpecialFile, IsNeitherReadNorWrittenNorWaitedFor) {
    for (const test::SpecialFile& special : test::special_files()) {
        SCOPED_TRACE(special.kind);
        const TemporaryFolder folder;
        const test::SpecialFile::Made made = special.make(folder);
        const auto entries = entries_of(folder);

        cMPEGHeader header;
        header.FileName(made.name);
        (void)test::read_every_property(header);
        EXPECT_EQ(static_cast<std::int32_t>(header.TagType()), -1);
        EXPECT_EQ(header.FrameCount(), 0);
        EXPECT_EQ(header.Frequency(), 0);
        EXPECT_EQ(header.Duration(), 0);
        EXPECT_EQ(header.Title(), u"");
        header.Title(u"New");
        try {
            header.SaveAllInfo();
        } catch (const Error&) {
            // Whether it says so or not, it writes nothing.
        }
        (void)header.StripTags(v1andv2TagsBothPresent);
        EXPECT_EQ(entries_of(folder), entries);
    }
}

Bytes changing_rates() {
    std::vector<int> rates(4'000, 128);
    for (std::size_t number = 1; number < rates.size(); number += 2) {
        rates[number] = 160;
    }
    return test::variable_stream(test::Frame{}, rates);
}

// Reads a file of changing rates, about 2 MB, and does something to it at the first event.
class WhileScanned : public testing::Test {
protected:
    WhileScanned() {
        clock_.step = 1.0;
        name_ = folder_.put("song.mp3", Tag(3).text("TIT2", "Song").padding(100) + stream_);
    }

    template <typename Change>
    void read_and(Change change) {
        header_.Scanning = [this, change](const String&, std::int32_t, std::int32_t, bool&) {
            if (++scans_ == 1) {
                change(folder_.path("song.mp3"));
            }
        };
        header_.FileName(name_);
        header_.Scanning = nullptr;
        EXPECT_GE(scans_, 1);
        EXPECT_EQ(header_.Title(), u"Song");
    }

    TemporaryFolder folder_;
    Bytes stream_ = changing_rates();
    String name_;
    test::FakeClock clock_;
    Environment environment_{system_environment().files, clock_};
    cMPEGHeader header_{environment_};
    int scans_ = 0;
};

TEST_F(WhileScanned, TruncatedFileKeepsTheRestOfItsAudio) {
    constexpr std::size_t kLeft = 500'000;
    read_and([](const std::string& path) { std::filesystem::resize_file(path, kLeft); });
    header_.Title(u"New");
    header_.SaveAllInfo();
    // Header, one frame of 15 bytes and 100 bytes of padding precede it.
    const Bytes left = stream_.first(kLeft - 125);
    EXPECT_NE(folder_.content("song.mp3").text().find(left.text()), std::string::npos);
}

TEST_F(WhileScanned, FileThatGrowsKeepsWhatCameToIt) {
    read_and([](const std::string& path) {
        const std::string more = audio().text();
        std::ofstream(path, std::ios::binary | std::ios::app) << more;
    });
    header_.Title(u"New");
    header_.SaveAllInfo();
    const std::string saved = folder_.content("song.mp3").text();
    EXPECT_NE(saved.find((stream_ + audio()).text()), std::string::npos);
}

TEST_F(WhileScanned, FileThatDisappearsIsReadToItsEndAndNotCreatedAgain) {
    read_and([](const std::string& path) { std::filesystem::remove(path); });
    EXPECT_TRUE(header_.VBR());
    EXPECT_EQ(header_.Frequency(), 44'100);
    header_.Title(u"New");
    header_.SaveAllInfo();
    EXPECT_FALSE(header_.StripTags(v2TagOnly));
    EXPECT_TRUE(folder_.entries().empty());
}

#ifndef _WIN32  // Wine does not give the name of an open file to another
TEST_F(WhileScanned, FileThatIsReplacedByAnotherIsSavedAsTheOther) {
    const Bytes other = Tag(3).text("TIT2", "Other").padding(5'000) + audio();
    read_and([&](const std::string& path) {
        folder_.put("other", other);
        std::filesystem::rename(folder_.path("other"), path);
    });
    header_.Title(u"New");
    header_.SaveAllInfo();
    const std::string saved = folder_.content("song.mp3").text();
    EXPECT_EQ(saved.substr(saved.size() - 128, 3), "TAG");
    EXPECT_EQ(saved.substr(saved.size() - 128 - audio().size(), audio().size()), audio().text());
}
#endif

}  // namespace
}  // namespace brindle
