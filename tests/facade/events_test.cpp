#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/error.h>
#include <brindle/text.h>

#include "facade/loaded_header.h"

namespace brindle {
namespace {

using test::audio;
using test::Bytes;
using test::kSong;
using test::LoadedHeader;
using test::Tag;

const String kOther = u"other.mp3";

// Rates that differ, so that all frames are walked; long enough for many blocks.
Bytes variable_audio() {
    Bytes bytes;
    const test::Frame frame;
    for (std::size_t number = 0; number < 2000; ++number) {
        bytes += frame.with_kbps(number % 2 == 0 ? 128 : 160).bytes(number);
    }
    return bytes;
}

// Each look at the clock finds a second gone.
struct SlowlyLoaded : LoadedHeader {
    SlowlyLoaded() {
        world.clock.step = 1.0;
        world.files.put(kSong, Tag(3).text("TIT2", "Song").padded_to(300) + variable_audio());
        world.files.put(kOther, Tag(3).text("TIT2", "Other").padded_to(300) + audio());
    }
};

TEST(Events, ReadingComesBeforeScanning) {
    SlowlyLoaded loaded;
    std::vector<std::string> events;
    loaded.header.Reading = [&](const String& name) {
        events.push_back("reading " + to_utf8(name));
        EXPECT_FALSE(loaded.header.g_InUse()) << "the reset comes afterwards";
    };
    loaded.header.Scanning = [&](const String& name, std::int32_t position, std::int32_t length,
                                 bool& cancel) {
        events.push_back("scanning " + to_utf8(name));
        EXPECT_TRUE(loaded.header.g_InUse());
        EXPECT_GE(position, 300);
        EXPECT_LE(position, length);
        EXPECT_EQ(length, static_cast<std::int32_t>(loaded.world.files.content(kSong).size()));
        EXPECT_FALSE(cancel);
    };
    loaded.header.DurationNeeded = [&](std::int32_t&) { events.emplace_back("duration"); };
    loaded.header.FileName(kSong);
    ASSERT_GE(events.size(), 2U);
    EXPECT_EQ(events[0], "reading song.mp3");
    for (std::size_t i = 1; i < events.size(); ++i) {
        EXPECT_EQ(events[i], "scanning song.mp3");
    }
    EXPECT_TRUE(loaded.header.VBR());
    EXPECT_GT(loaded.header.Duration(), 0);
    EXPECT_NE(events.back(), "duration") << "it is known";
}

TEST(Events, CancelEndsTheScanWithoutAStream) {
    SlowlyLoaded loaded;
    int scans = 0;
    loaded.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool& cancel) {
        ++scans;
        cancel = true;
    };
    loaded.header.FileName(kSong);
    EXPECT_EQ(scans, 1);
    EXPECT_EQ(loaded.header.Layer(), u"0");
    EXPECT_FALSE(loaded.header.VBR());
    EXPECT_EQ(loaded.header.Title(), u"Song") << "the tag was read before";
}

TEST(Events, AConstantRateIsNotScanned) {
    LoadedHeader loaded;
    loaded.world.clock.step = 1.0;
    int scans = 0;
    loaded.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool&) { ++scans; };
    loaded.load(audio());
    EXPECT_EQ(scans, 0);
    EXPECT_EQ(loaded.header.Layer(), u"3");
}

TEST(Events, UnsetHandlersAreSkipped) {
    SlowlyLoaded loaded;
    EXPECT_NO_THROW(loaded.header.FileName(kSong));
    EXPECT_TRUE(loaded.header.VBR());
    loaded.load(test::repeated(9000, 'x'));
    EXPECT_EQ(loaded.header.Duration(), 0);
    loaded.header.CustomFieldAdd(u"", String(u"x"));
    bool cancel = false;
    loaded.header.RaiseScanningEvent(kSong, 1, 2, cancel);
    EXPECT_FALSE(cancel);
}

TEST(Events, WhatAHandlerThrowsEndsTheHandlerAlone) {
    SlowlyLoaded quiet;
    quiet.header.FileName(kSong);
    SlowlyLoaded loaded;
    int raised = 0;
    loaded.header.Reading = [&](const String&) {
        ++raised;
        throw std::runtime_error("reading");
    };
    loaded.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool&) {
        ++raised;
        throw Error(RuntimeError::InvalidCall);
    };
    loaded.header.FileName(kSong);
    EXPECT_GE(raised, 2);
    EXPECT_EQ(loaded.header.Title(), u"Song");
    EXPECT_TRUE(loaded.header.VBR());
    EXPECT_EQ(loaded.header.Duration(), quiet.header.Duration());
    EXPECT_TRUE(loaded.header.StripTags(v2TagOnly));
    EXPECT_EQ(loaded.header.Title(), u"");
}

TEST(Events, CancelSetBeforeAThrowCounts) {
    SlowlyLoaded loaded;
    loaded.header.Scanning = [](const String&, std::int32_t, std::int32_t, bool& cancel) {
        cancel = true;
        throw 1;
    };
    loaded.header.FileName(kSong);
    EXPECT_EQ(loaded.header.Frequency(), 0);
}

TEST(Events, DurationStoredBeforeAThrowCounts) {
    LoadedHeader loaded("no stream");
    loaded.header.DurationNeeded = [](std::int32_t& duration) {
        duration = 1500;
        throw std::runtime_error("duration");
    };
    EXPECT_EQ(loaded.header.Duration(), 1500);
}

TEST(Events, WhatAHandlerThrowsReachesTheOneWhoRaisesTheEvent) {
    LoadedHeader loaded(audio());
    loaded.header.Scanning = [](const String&, std::int32_t, std::int32_t, bool&) {
        throw std::runtime_error("scanning");
    };
    bool cancel = false;
    EXPECT_THROW(loaded.header.RaiseScanningEvent(kSong, 1, 2, cancel), std::runtime_error);
}

TEST(Events, HandlerMayClearOrReplaceItself) {
    SlowlyLoaded loaded;
    // Longer than what a std::function holds within itself, so that using it afterwards is an error
    // that the sanitizers see.
    const std::string note(100, 'n');
    std::vector<std::string> notes;
    int replaced = 0;
    loaded.header.Reading = [&, note](const String&) {
        loaded.header.Reading = nullptr;
        notes.push_back(note);
    };
    loaded.header.Scanning = [&, note](const String&, std::int32_t, std::int32_t, bool&) {
        loaded.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool&) {
            ++replaced;
        };
        notes.push_back(note);
    };
    loaded.header.OnYield = [&, note] {
        loaded.header.OnYield = nullptr;
        notes.push_back(note);
    };
    loaded.header.FileName(kSong);
    EXPECT_EQ(notes, std::vector<std::string>(3, note));
    EXPECT_GT(replaced, 0);
    loaded.load("no stream");
    loaded.header.DurationNeeded = [&, note](std::int32_t& duration) {
        loaded.header.DurationNeeded = nullptr;
        duration = static_cast<std::int32_t>(note.size());
    };
    EXPECT_EQ(loaded.header.Duration(), 100);
    EXPECT_EQ(loaded.header.Duration(), 0);
    loaded.header.OnMessageBox = [&, note](const String&) {
        loaded.header.OnMessageBox = nullptr;
        notes.push_back(note);
    };
    loaded.header.CustomFieldAdd(u"", Variant(String(u"value")));
    EXPECT_EQ(notes, std::vector<std::string>(4, note));
}

TEST(Events, RaiseScanningEventHandsAllFourOn) {
    LoadedHeader loaded;
    loaded.header.Scanning = [](const String& name, std::int32_t position, std::int32_t length,
                                bool& cancel) {
        EXPECT_EQ(name, u"x");
        EXPECT_EQ(position, 5);
        EXPECT_EQ(length, 9);
        EXPECT_TRUE(cancel);
        cancel = false;
    };
    bool cancel = true;
    loaded.header.RaiseScanningEvent(u"x", 5, 9, cancel);
    EXPECT_FALSE(cancel);
}

TEST(Events, AnUnknownDurationIsRequestedEachTime) {
    LoadedHeader loaded(test::repeated(9000, 'x'));
    std::vector<std::int32_t> starts;
    loaded.header.DurationNeeded = [&](std::int32_t& duration) {
        starts.push_back(duration);
        duration = 100 * static_cast<std::int32_t>(starts.size());
    };
    EXPECT_EQ(loaded.header.Duration(), 100);
    EXPECT_EQ(loaded.header.Duration(), 200);
    EXPECT_EQ(starts, (std::vector<std::int32_t>{0, 0}));
    loaded.header.DurationNeeded = [](std::int32_t&) {};
    EXPECT_EQ(loaded.header.Duration(), 0);
    loaded.header.DurationNeeded = [](std::int32_t& duration) { duration = -7; };
    EXPECT_EQ(loaded.header.Duration(), -7);
}

TEST(Events, WithoutAFileNoDurationIsRequested) {
    LoadedHeader loaded;
    int asked = 0;
    loaded.header.DurationNeeded = [&](std::int32_t&) { ++asked; };
    EXPECT_EQ(loaded.header.Duration(), 0);
    for (const char16_t* name : {u"", u"track.wav", u"nothing.mp3"}) {
        loaded.header.FileName(name);
        EXPECT_EQ(loaded.header.Duration(), 0);
    }
    EXPECT_EQ(asked, 0);
}

TEST(Events, AFileAssignedInsideReadingIsNotObeyed) {
    SlowlyLoaded loaded;
    int readings = 0;
    loaded.header.Reading = [&](const String&) {
        ++readings;
        EXPECT_NO_THROW(loaded.header.FileName(kOther));
        EXPECT_FALSE(loaded.header.StripTags(v2TagOnly));
    };
    loaded.header.FileName(kSong);
    EXPECT_EQ(readings, 1);
    EXPECT_EQ(loaded.header.FileName(), kSong);
    EXPECT_EQ(loaded.header.Title(), u"Song");
}

TEST(Events, AFileAssignedInsideScanningIsNotObeyed) {
    SlowlyLoaded loaded;
    int scans = 0;
    loaded.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool&) {
        ++scans;
        EXPECT_NO_THROW(loaded.header.FileName(kOther));
        EXPECT_FALSE(loaded.header.StripTags(v2TagOnly));
        try {
            loaded.header.SaveAllInfo();
            ADD_FAILURE() << "nothing was raised";
        } catch (const Error& error) {
            EXPECT_EQ(error.number(), 5);
        }
    };
    const Bytes before = loaded.world.files.content(kSong);
    loaded.header.FileName(kSong);
    EXPECT_GT(scans, 0);
    EXPECT_EQ(loaded.header.FileName(), kSong);
    EXPECT_TRUE(loaded.header.VBR());
    EXPECT_EQ(loaded.world.files.content(kSong), before);
    loaded.header.Scanning = nullptr;
    loaded.header.FileName(kOther);
    EXPECT_EQ(loaded.header.Title(), u"Other") << "afterwards it is";
}

TEST(Events, AFileAssignedInsideDurationNeededIsObeyed) {
    LoadedHeader loaded(test::repeated(9000, 'x'));
    loaded.world.files.put(kOther, Tag(3).text("TIT2", "Other").padded_to(300) + audio());
    loaded.header.DurationNeeded = [&](std::int32_t& duration) {
        loaded.header.FileName(kOther);
        duration = 5;
    };
    EXPECT_EQ(loaded.header.Duration(), 5);
    EXPECT_EQ(loaded.header.FileName(), kOther);
    EXPECT_EQ(loaded.header.Title(), u"Other");
}

TEST(Events, DurationReadInsideDurationNeededRaisesItAgain) {
    LoadedHeader loaded(test::repeated(9000, 'x'));
    int depth = 0;
    loaded.header.DurationNeeded = [&](std::int32_t& duration) {
        ++depth;
        duration = depth < 3 ? loaded.header.Duration() + 1 : 10;
    };
    EXPECT_EQ(loaded.header.Duration(), 12);
}

TEST(Events, HandlersThatAskForTheDurationWithoutEndGet0AtADepthOf16) {
    LoadedHeader loaded(test::repeated(9000, 'x'));
    int running = 0;
    int deepest = 0;
    std::vector<std::int32_t> answers;
    loaded.header.DurationNeeded = [&](std::int32_t& duration) {
        ++running;
        deepest = std::max(deepest, running);
        duration = loaded.header.Duration() + 1;
        answers.push_back(duration);
        --running;
    };
    EXPECT_EQ(loaded.header.Duration(), 16);
    EXPECT_EQ(deepest, 16);
    EXPECT_EQ(answers.front(), 1);  // the innermost got 0
    // The limit is one of depth, not of number.
    answers.clear();
    EXPECT_EQ(loaded.header.Duration(), 16);
    EXPECT_EQ(answers.size(), 16U);
}

TEST(Events, AHandlerThatThrowsLeavesTheDepthAsItWas) {
    LoadedHeader loaded(test::repeated(9000, 'x'));
    for (int i = 0; i < 20; ++i) {
        loaded.header.DurationNeeded = [](std::int32_t&) {
            throw Error(RuntimeError::InvalidCall);
        };
        try {
            static_cast<void>(loaded.header.Duration());
        } catch (const Error&) {
            // Whether it gets this far is not checked.
        }
    }
    loaded.header.DurationNeeded = [](std::int32_t& duration) { duration = 5; };
    EXPECT_EQ(loaded.header.Duration(), 5);
}

TEST(Events, PropertiesAnswerInsideEvents) {
    SlowlyLoaded loaded;
    loaded.header.FileName(kOther);
    loaded.header.Reading = [&](const String&) {
        EXPECT_EQ(loaded.header.Title(), u"Other") << "the file before is still there";
        loaded.header.Title(u"lost");
    };
    loaded.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool&) {
        EXPECT_EQ(loaded.header.Title(), u"Song");
        EXPECT_EQ(loaded.header.Duration(), 0);
        EXPECT_EQ(loaded.header.v2Frames()->Count(), 1);
    };
    loaded.header.FileName(kSong);
    EXPECT_EQ(loaded.header.Title(), u"Song");
}

TEST(Events, ANamelessFieldShowsTheMessage) {
    LoadedHeader loaded(Tag(3).field("a", "1").field("b", "2").padded_to(300) + audio());
    std::vector<String> shown;
    loaded.header.OnMessageBox = [&](const String& text) { shown.push_back(text); };
    loaded.header.CustomFieldAdd(u"", String(u"x"));
    EXPECT_EQ(shown,
              (std::vector<String>{u"You need to send a CustomFrameTitle to perform this!"}));
    EXPECT_EQ(loaded.header.TagsInFrame(u"TXXX"), 1);
    EXPECT_EQ(loaded.header.CustomFieldRetrieve(u""), Variant(String(u"x")));
}

// The user interface runs while the message is up, and the host in it.
TEST(Events, AFileAssignedWhileAMessageIsUpIsNotObeyed) {
    SlowlyLoaded loaded;
    loaded.header.FileName(kOther);
    int shown = 0;
    loaded.header.OnMessageBox = [&](const String&) {
        ++shown;
        loaded.header.FileName(kSong);
        EXPECT_FALSE(loaded.header.StripTags(v2TagOnly));
    };
    loaded.header.CustomFieldAdd(u"", String(u"x"));
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(loaded.header.FileName(), kOther);
    EXPECT_EQ(loaded.header.Title(), u"Other");
    loaded.header.FileName(kSong);
    EXPECT_EQ(loaded.header.Title(), u"Song") << "afterwards it is";
}

TEST(Events, AMessageInsideScanningLeavesTheLoopGuarded) {
    SlowlyLoaded loaded;
    loaded.header.OnMessageBox = [](const String&) {};
    int scans = 0;
    loaded.header.Scanning = [&](const String&, std::int32_t, std::int32_t, bool&) {
        ++scans;
        loaded.header.CustomFieldAdd(u"", String(u"x"));
        loaded.header.FileName(kOther);
    };
    loaded.header.FileName(kSong);
    EXPECT_GT(scans, 0);
    EXPECT_EQ(loaded.header.FileName(), kSong);
}

TEST(Events, StripTagsRaisesReadingAndReloads) {
    SlowlyLoaded loaded;
    loaded.header.FileName(kOther);
    std::vector<String> read;
    loaded.header.Reading = [&](const String& name) { read.push_back(name); };
    loaded.header.Title(u"Edited");
    EXPECT_TRUE(loaded.header.StripTags(NoTags));
    EXPECT_EQ(read, (std::vector<String>{kOther}));
    EXPECT_EQ(loaded.header.Title(), u"Other");
}

}  // namespace
}  // namespace brindle
