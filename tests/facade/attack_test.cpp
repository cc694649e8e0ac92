// Files made to do harm: none of them crashes, stalls, or costs a byte of audio, and what is read
// of them is known.
#include <gtest/gtest.h>

#include <brindle/frame_walk.h>
#include <brindle/save_plan.h>

#include "facade/attack_files.h"
#include "facade/loaded_header.h"
#include "support/every_property.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using test::AttackFile;
using test::Bytes;
using test::good_audio;
using test::LoadedHeader;
using test::Tag;

TEST(AttackFile, IsLeftAsItIsByReading) {
    for (const AttackFile& attack : test::attack_files()) {
        SCOPED_TRACE(attack.name);
        LoadedHeader loaded(attack.file);
        const auto answers = test::read_every_property(loaded.header);
        EXPECT_EQ(answers, test::read_every_property(loaded.header));
        (void)walk_frames(loaded.header);
        (void)plan_save(loaded.header);
        EXPECT_EQ(loaded.world.files.content(test::kSong), attack.file);
        EXPECT_EQ(loaded.world.files.open_files(), 0U);
    }
}

TEST(AttackFile, KeepsItsAudioWhateverIsSavedAndStripped) {
    for (const AttackFile& attack : test::attack_files()) {
        SCOPED_TRACE(attack.name);
        LoadedHeader loaded(attack.file);
        loaded.header.Title(u"New");
        try {
            loaded.header.SaveAllInfo();
        } catch (const Error&) {
            EXPECT_EQ(loaded.world.files.content(test::kSong), attack.file);
        }
        for (const eTagType tags : {v1TagOnly, v1andv2TagsBothPresent}) {
            const std::string left = loaded.world.files.content(test::kSong).text();
            EXPECT_NE(left.find(attack.audio.text()), std::string::npos);
            (void)loaded.header.StripTags(tags);
        }
        const std::string left = loaded.world.files.content(test::kSong).text();
        EXPECT_NE(left.find(attack.audio.text()), std::string::npos);
        EXPECT_EQ(loaded.world.files.names().size(), 1U);
    }
}

struct Answer {
    const char* name;
    std::int32_t tag_type;
    std::int16_t frames;
    String title;
    std::int32_t frequency;
};

void expect_answers(const std::vector<AttackFile>& files, const std::vector<Answer>& answers) {
    std::size_t asked = 0;
    for (const AttackFile& attack : files) {
        for (const Answer& answer : answers) {
            if (attack.name != answer.name) {
                continue;
            }
            SCOPED_TRACE(attack.name);
            ++asked;
            const LoadedHeader loaded(attack.file);
            EXPECT_EQ(static_cast<std::int32_t>(loaded.header.TagType()), answer.tag_type);
            EXPECT_EQ(loaded.header.FrameCount(), answer.frames);
            EXPECT_EQ(loaded.header.Title().substr(0, answer.title.size()), answer.title);
            EXPECT_EQ(loaded.header.Title().empty(), answer.title.empty());
            EXPECT_EQ(loaded.header.Frequency(), answer.frequency);
        }
    }
    EXPECT_EQ(asked, answers.size());
}

TEST(AttackFile, ClaimsOfSizesHaveKnownAnswers) {
    const String corrupt = u"Corrupt ID3v2 Tag";
    expect_answers(test::claimed_sizes(), {
                                              {"tag larger than the file", 2, 1, u"Song", 44100},
                                              {"tag of the largest size", 2, 1, u"Song", 44100},
                                              {"tag of size 0", 2, 1, u"Song", 44100},
                                              {"frame of 0 bytes", 2, 0, u"", 44100},
                                              {"frame of 16777217 bytes", 2, 0, corrupt, 44100},
                                              {"frame of 2147483647 bytes", 2, 0, corrupt, 44100},
                                              {"frame of 2147483648 bytes", 2, 0, corrupt, 44100},
                                              {"frame of 4294967286 bytes", 2, 0, corrupt, 44100},
                                              {"frame of 4294967295 bytes", 2, 0, corrupt, 44100},
                                          });
}

TEST(AttackFile, HostileStreamsHaveKnownAnswers) {
    expect_answers(test::hostile_streams(),
                   {
                       {"ones", -1, 0, u"", 0},
                       // Each 24 bytes a header: frames of 8 kbit/s for whoever looks.
                       {"headers without frames", -1, 0, u"", 24000},
                       // No length can be told of it.
                       {"XING of 0 frames", -1, 0, u"", 0},
                       {"XING of 0 bytes", -1, 0, u"", 44100},
                       {"reserved index 8", -1, 0, u"", 0},
                       {"reserved index 9", -1, 0, u"", 0},
                       {"reserved index 10", -1, 0, u"", 0},
                       {"reserved index 11", -1, 0, u"", 0},
                       {"reserved index 12", -1, 0, u"", 0},
                       {"reserved index 13", -1, 0, u"", 0},
                   });
}

TEST(AttackFile, HostileTagsHaveKnownAnswers) {
    expect_answers(test::hostile_tags(),
                   {
                       // Audio is looked for in 16,384 places of a file at most.
                       {"100,000 identical ids", 2, 1, u"", 0},
                       {"id with a colon", 2, 1, u"", 44100},
                       {"id with a NUL", 2, 1, u"", 44100},
                       {"ids that read alike with their number", 2, 1, u"", 44100},
                       {"id of ones", 2, 1, u"", 44100},
                       // The second joins the first.
                       {"tags one behind the other", 2, 1, u"2", 44100},
                   });
}

// Somebody else writes to the file between opening and saving.
TEST(AttackFile, ThatShrankSinceItWasOpenedIsNotCut) {
    LoadedHeader loaded(Tag(3).text("TIT2", "Song").padding(3'000) + good_audio());
    const Bytes shorter = good_audio();  // the tag was taken off meanwhile
    loaded.world.files.put(test::kSong, shorter);
    loaded.header.Title(u"New");
    loaded.header.SaveAllInfo();
    const std::string left = loaded.world.files.content(test::kSong).text();
    EXPECT_NE(left.find(shorter.text()), std::string::npos);
}

TEST(AttackFile, ThatGrewSinceItWasOpenedKeepsWhatCameToIt) {
    const Bytes opened = Tag(3).text("TIT2", "Song").padding(3'000) + good_audio();
    LoadedHeader loaded(opened);
    const Bytes more = test::stream(test::Frame{}, 30);
    loaded.world.files.put(test::kSong, opened + more);
    loaded.header.Title(u"New");
    loaded.header.SaveAllInfo();
    const std::string left = loaded.world.files.content(test::kSong).text();
    EXPECT_NE(left.find((good_audio() + more).text()), std::string::npos);
}

TEST(AttackFile, ThatDisappearedSinceItWasOpenedIsNotMadeAnew) {
    LoadedHeader loaded(Tag(3).text("TIT2", "Song").padding(3'000) + good_audio());
    loaded.world.files.remove(test::kSong);
    loaded.header.Title(u"New");
    loaded.header.SaveAllInfo();
    EXPECT_TRUE(loaded.world.files.names().empty());
}

}  // namespace
}  // namespace brindle
