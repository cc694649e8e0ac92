#include <cstdint>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <brindle/text.h>

#include "id3v2/opened_model.h"
#include "id3v2/reference_store.h"
#include "util/host.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using test::ReferenceStore;

class MessageCount : public Host {
public:
    void RaiseScanningEvent(const String&, std::int32_t, std::int32_t, bool&) override {}
    void yield() override {}
    void show_message(const String&) override { ++shown; }

    int shown = 0;
};

struct Setter {
    void (cMP3ID3v2::*set)(const String&);
    String (cMP3ID3v2::*get)() const;
    const char16_t* frame;
    std::u16string_view prefix;
    bool nuls_removed;
};

const Setter kSetters[] = {
    {&cMP3ID3v2::ArtistUrl, &cMP3ID3v2::ArtistUrl, u"WOAR", u"", false},
    {&cMP3ID3v2::BuyURL, &cMP3ID3v2::BuyURL, u"WCOM", u"", false},
    {&cMP3ID3v2::AudioURL, &cMP3ID3v2::AudioURL, u"WOAF", u"", false},
    {&cMP3ID3v2::CopyRight, &cMP3ID3v2::CopyRight, u"TCOP", u"", false},
    {&cMP3ID3v2::Composer, &cMP3ID3v2::Composer, u"TCOM", u"", false},
    {&cMP3ID3v2::OriginalArtist, &cMP3ID3v2::OriginalArtist, u"TOPE", u"", false},
    {&cMP3ID3v2::LinkTo, &cMP3ID3v2::LinkTo, u"WXXX", u"\0"sv, false},
    {&cMP3ID3v2::PlayCounter, &cMP3ID3v2::PlayCounter, u"PCNT", u"", false},
    {&cMP3ID3v2::EncodedBy, &cMP3ID3v2::EncodedBy, u"TENC", u"", false},
    {&cMP3ID3v2::Title, &cMP3ID3v2::Title, u"TIT2", u"", true},
    {&cMP3ID3v2::Artist, &cMP3ID3v2::Artist, u"TPE1", u"", true},
    {&cMP3ID3v2::Album, &cMP3ID3v2::Album, u"TALB", u"", true},
    {&cMP3ID3v2::Year, &cMP3ID3v2::Year, u"TYER", u"", false},
    {&cMP3ID3v2::Comment, &cMP3ID3v2::Comment, u"COMM", u"\0nt\0"sv, true},
    {&cMP3ID3v2::Lyrics, &cMP3ID3v2::Lyrics, u"USLT", u"\0"sv, false},
    {&cMP3ID3v2::Track, &cMP3ID3v2::Track, u"TRCK", u"", false},
    {&cMP3ID3v2::Publisher, &cMP3ID3v2::Publisher, u"TPUB", u"", false},
};

const std::vector<String> kFrames{u"TXXX", u"TXXX", u"TXXX", u"COMM", u"TIT2", u"", u"A:1"};
const std::vector<String> kValues{u"",
                                  String(u"a\0"
                                         u"1"sv),
                                  String(u"b\0"
                                         u"2"sv),
                                  String(u"\0x"sv),
                                  u"plain",
                                  String(u"Cue In\0"
                                         u"7"sv)};
const std::vector<String> kNames{u"a", u"b", u"c", u"Cue In", u"TAGGED BY", u""};

String any_of(const std::vector<String>& pool) {
    return *rc::gen::elementOf(pool);
}

void expect_same(cMP3ID3v2& model, ReferenceStore& store, const MessageCount& messages) {
    RC_ASSERT(messages.shown == store.messages);
    RC_ASSERT(model.FrameCount() == store.FrameList.count());
    for (std::int32_t place = 0; place <= store.FrameList.count() + 1; ++place) {
        String expected;
        test::suppressed([&] { expected = store.FrameList.item_at(place); });
        RC_ASSERT(model.Frame(place) == expected);
    }
    std::vector<String> frames = kFrames;
    for (const Setter& setter : kSetters) {
        frames.emplace_back(setter.frame);
        String expected = store.cached[setter.frame];
        if (setter.nuls_removed) {
            std::erase(expected, u'\0');
        }
        RC_ASSERT((model.*setter.get)() == expected);
    }
    frames.emplace_back(u"TCON");
    RC_ASSERT(model.OtherGenreName() == store.cached[u"TCON"]);
    RC_ASSERT(int{model.Genre()} == store.genre);
    for (const String& frame : frames) {
        std::int32_t count = 0;
        test::suppressed([&] { count = store.TagCounts.item(frame); });
        RC_ASSERT(model.TagsInFrame(frame) == count);
        for (std::int32_t index = -2; index < 14; ++index) {
            String value;
            const bool exists = test::suppressed(
                [&] { value = store.TagValues.item(test::ReferenceStore::key(frame, index)); });
            RC_ASSERT(model.Tag(frame, index) == value);
            RC_ASSERT(model.LastError() == (exists ? 0 : 455));
        }
    }
    for (const String& name : kNames) {
        RC_ASSERT(model.GetCustomField(name) == store.GetCustomField(name));
        RC_ASSERT(model.CustomFieldExists(name) == store.CustomFields.exists(name));
    }
}

// What one run is about. A store with few ids and few values comes into states that a large one
// never sees.
struct Run {
    std::vector<String> frames;
    std::vector<int> steps;
};

Run any_run() {
    Run run;
    const auto frames = *rc::gen::inRange(1, 4);
    for (int frame = 0; frame < frames; ++frame) {
        run.frames.push_back(any_of(kFrames));
    }
    const auto steps = *rc::gen::inRange(2, 5);
    for (int step = 0; step < steps; ++step) {
        run.steps.push_back(*rc::gen::inRange(0, 9));
    }
    // Nothing happens in a store to which nothing is added.
    run.steps.push_back(0);
    return run;
}

void any_step(cMP3ID3v2& model, ReferenceStore& store, const Run& run) {
    switch (*rc::gen::elementOf(run.steps)) {
        case 0:
        case 1: {
            const String frame = any_of(run.frames);
            const String value = any_of(kValues);
            const auto index = *rc::gen::element<std::int32_t>(0, 0, 0, 1, 2, 3, 5, -1);
            model.AddTag(frame, value, index);
            store.AddTag(frame, value, index);
            break;
        }
        case 2:
        case 3: {
            const String frame = any_of(run.frames);
            const String title = any_of(kNames);
            const auto index = *rc::gen::element<std::int32_t>(0, 0, 1, 2, 3, 7, -1);
            std::int32_t removed_by_model = index;
            std::int32_t removed_by_store = index;
            model.RemoveFrame(frame, title, removed_by_model);
            store.RemoveFrame(frame, title, removed_by_store);
            RC_ASSERT(removed_by_model == removed_by_store);
            break;
        }
        case 4: {
            const auto& setter = kSetters[*rc::gen::inRange<std::size_t>(0, std::size(kSetters))];
            const String value = any_of(kValues);
            (model.*setter.set)(value);
            store.set_standard(setter.frame, value, String(setter.prefix) + value);
            break;
        }
        case 5: {
            if (*rc::gen::arbitrary<bool>()) {
                store.genre = *rc::gen::inRange(0, 256);
                model.Genre(static_cast<std::uint8_t>(store.genre));
            } else {
                store.cached[u"TCON"] = any_of(kValues);
                model.OtherGenreName(store.cached[u"TCON"]);
            }
            const String name = store.cached[u"TCON"];
            store.set_standard(u"TCON", name, u"(" + to_text(store.genre) + u")" + name);
            break;
        }
        case 6: {
            // A host takes an entry out of the list that it was handed.
            const String frame = any_of(run.frames);
            if (store.FrameList.exists(frame)) {
                store.FrameList.remove(frame);
                model.Frames()->Remove(frame);
            }
            break;
        }
        default: {
            const String name = any_of(kNames);
            const String value = any_of(kValues);
            model.AddCustomField(name, value);
            store.AddCustomField(name, value);
        }
    }
}

RC_GTEST_PROP(FrameStore, EditsLeaveWhatThePlainCollectionsHold, ()) {
    test::MemoryEnvironment world;
    cMP3ID3v2 model(world.environment);
    MessageCount messages;
    model.Owner = &messages;
    ReferenceStore store;
    store.has_file = *rc::gen::inRange(0, 4) != 0;
    if (store.has_file) {
        world.files.put(test::kSong, test::zeros(10));
        model.FileName(test::kSong);
    }
    const Run run = any_run();
    const auto steps = *rc::gen::inRange(1, 40);
    for (int step = 0; step < steps; ++step) {
        any_step(model, store, run);
        expect_same(model, store, messages);
    }
}

}  // namespace
}  // namespace brindle
