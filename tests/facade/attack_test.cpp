// Files made to do harm: none of them crashes, stalls, or costs a byte of audio, and what is read
// of them is known.
#include <algorithm>
#include <string>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/frame_walk.h>
#include <brindle/save_plan.h>

#include "facade/loaded_header.h"
#include "support/attack_files.h"
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

TEST(AttackFile, KeepsItsAudioInAnySaveAndStrip) {
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

// The test above looks for the audio of most files: the others are tags, records and ones.
TEST(AttackFile, HasItsAudioNamedWhereItHasAny) {
    std::size_t with_audio = 0;
    std::size_t without = 0;
    for (const AttackFile& attack : test::attack_files()) {
        const std::string file = attack.file.text();
        EXPECT_NE(file.find(attack.audio.text()), std::string::npos) << attack.name;
        const bool may_hold_audio = file.find("\xFF\xFB\x90") != std::string::npos ||
                                    file.find("\xFF\xF3\x14") != std::string::npos;
        EXPECT_TRUE(!attack.audio.empty() || !may_hold_audio || attack.file.size() < 29 ||
                    attack.name.starts_with("reserved"))
            << attack.name;
        ++(attack.audio.empty() ? without : with_audio);
    }
    EXPECT_GT(with_audio, 300U);
    EXPECT_LT(without, 320U);
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
                       // Each 24 bytes a header: frames of 8 kbit/s.
                       {"headers without frames", -1, 0, u"", 24000},
                       // No length can be told of it.
                       {"XING of 0 frames", -1, 0, u"", 0},
                       {"XING of 0 bytes", -1, 0, u"", 44100},
                       // 60 frames are too few for those of MPEG-1, and those after them begin
                       // 25,020 bytes on; audio is looked for in 16,384 places.
                       {"version changes half way", -1, 0, u"", 0},
                       {"layer changes half way", -1, 0, u"", 0},
                       // 12,510 bytes on.
                       {"version changes after 30 frames", -1, 0, u"", 22050},
                       {"layer changes after 30 frames", -1, 0, u"", 48000},
                       {"reserved index of the version", -1, 0, u"", 0},
                       {"reserved index of the layer", -1, 0, u"", 0},
                       {"reserved index 0 of the bit rate", -1, 0, u"", 0},
                       {"reserved index 15 of the bit rate", -1, 0, u"", 0},
                       {"reserved index of the frequency", -1, 0, u"", 0},
                       {"reserved index of the emphasis", -1, 0, u"", 0},
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
                       {"tags one after the other", 2, 1, u"2", 44100},
                   });
}

TEST(AttackFile, ShortFilesHaveKnownAnswers) {
    expect_answers(test::short_files(),
                   {
                       {"end of a file with a record of 3 bytes", -1, 0, u"", 0},
                       {"end of a file with a record of 127 bytes", -1, 0, u"", 0},
                       // A record and nothing else is no music.
                       {"end of a file with a record of 128 bytes", -1, 0, u"", 0},
                       {"end of a file with a record of 129 bytes", 1, 0, u"", 0},
                       {"end of a file with a record of 130 bytes", 1, 0, u"", 0},
                       {"start of a tag of 130 bytes", -1, 0, u"", 0},
                       // A block of 4,096 bytes is searched if more than one byte follows
                       // it. Nine frames of 417 bytes are one too few for a stream.
                       {"tag and stream of 4096 bytes", -1, 0, u"", 0},
                       {"tag and stream of 4097 bytes", -1, 0, u"", 0},
                       {"tag and stream of 4098 bytes", 2, 1, u"Song", 0},
                       {"tag and padding of 4097 bytes", -1, 0, u"", 0},
                       {"tag and padding of 4098 bytes", 2, 1, u"Song", 0},
                   });
}

// ISO-8859-1 loses its encoding byte; UTF-16 with a little-endian mark also the mark and all NULs;
// of any other the bytes after the first NUL count, or all of it without a NUL.
TEST(AttackFile, TextsThatAreCutHaveKnownAnswers) {
    const std::vector<std::vector<String>> titles = {
        {u"", u"", u"S", u"So", u"Sou", u"Soun", u"Sound"},
        {u"", u"\1", u"\1\u00FF", u"", u"S", u"S", u"So", u"So"},
        {u"", u"\1", u"\1\u00FE", u"\1\u00FE\u00FF", u"", u"S", u"S", u"So"},
        {u"", u"\2", u"", u"S", u"S", u"So"},
        {u"", u"\3", u"\3S", u"\3S\u00C3", u"\3S\u00C3\u00B6"},
    };
    const std::vector<test::CutText> texts = test::cut_texts();
    std::size_t at = 0;
    for (const std::vector<String>& of_encoding : titles) {
        for (const String& title : of_encoding) {
            ASSERT_LT(at, texts.size());
            SCOPED_TRACE(texts[at].name);
            const LoadedHeader loaded(test::tag_of_cut_text(texts[at].bytes) + good_audio());
            EXPECT_EQ(loaded.header.Title(), title);
            EXPECT_EQ(loaded.header.Frequency(), 44100);
            ++at;
        }
    }
    EXPECT_EQ(at, texts.size());
}

TEST(AttackFile, StrangeIdsAreFoundByTheirBytes) {
    struct Strange {
        const char* name;
        String id;
        std::int32_t values;
        String last;
    };
    const Strange strange_ids[] = {
        {"id with a colon", u"T:1\u00FF", 1, u"a"},
        {"id with a NUL", String(u"T\0\0\0", 4), 1, u"a"},
        {"ids that read alike with their number", u"TT:1", 2, u"b"},
        {"id of ones", u"\u00FF\u00FF\u00FF\u00FF", 1, u"a"},
        {"100,000 identical ids", u"COMM", 100'000, u"c"},
    };
    const std::vector<AttackFile> files = test::hostile_tags();
    for (const Strange& strange : strange_ids) {
        SCOPED_TRACE(strange.name);
        const auto attack = std::find_if(files.begin(), files.end(), [&](const AttackFile& file) {
            return file.name == strange.name;
        });
        ASSERT_NE(attack, files.end());
        const LoadedHeader loaded(attack->file);
        EXPECT_EQ(std::get<String>(loaded.header.v2Frames()->Item(1)), strange.id);
        EXPECT_EQ(loaded.header.TagsInFrame(strange.id), strange.values);
        EXPECT_EQ(loaded.header.v2Tag(strange.id, strange.values), strange.last);
        EXPECT_EQ(loaded.header.v2Tag(strange.id, strange.values + 1), u"");
        EXPECT_EQ(loaded.header.TagsInFrame(u"TT"), 0);
    }
}

// Another program writes to the file between opening and saving.
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

TEST(AttackFile, ThatDisappearedSinceItWasOpenedIsNotCreatedAgain) {
    LoadedHeader loaded(Tag(3).text("TIT2", "Song").padding(3'000) + good_audio());
    loaded.world.files.remove(test::kSong);
    loaded.header.Title(u"New");
    loaded.header.SaveAllInfo();
    EXPECT_TRUE(loaded.world.files.names().empty());
}

}  // namespace
}  // namespace brindle
