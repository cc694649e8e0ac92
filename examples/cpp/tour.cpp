// From FileName to SaveAllInfo: tour SONG.mp3. The file is changed; try it on a copy.
#include <cstdint>
#include <iostream>
#include <optional>
#include <string>
#include <variant>

#include <brindle/cMPEGHeader.h>
#include <brindle/file_session.h>
#include <brindle/frame_walk.h>
#include <brindle/path.h>
#include <brindle/save_plan.h>
#include <brindle/tag_edit.h>
#include <brindle/tag_facts.h>

using brindle::String;
using brindle::to_utf8;

namespace {

void listen(brindle::cMPEGHeader& header) {
    header.Reading = [](const String& name) { std::cout << "reading " << to_utf8(name) << "\n"; };
    header.Scanning = [](const String&, std::int32_t position, std::int32_t length, bool& cancel) {
        std::cerr << position << " of " << length << " bytes\r";
        cancel = false;  // true ends the walk, and the file is taken for one without a stream
    };
    header.DurationNeeded = [](std::int32_t& milliseconds) {
        milliseconds = 180'000;  // what the schedule says, for want of anything better
    };
}

void show(const brindle::cMPEGHeader& header) {
    std::cout << "Layer " << to_utf8(header.Layer()) << ", " << to_utf8(header.MonoStereo()) << ", "
              << header.Frequency() << " Hz\n";
    std::cout << (header.VBR() ? header.BitRate() : header.BitRate() / 1000) << " kbit/s, "
              << header.Duration() << " ms\n";
    std::cout << "title " << to_utf8(header.Title()) << ", cue-in " << header.CueInmSStart()
              << " ms\n";
    if (header.CustomFieldExists("Mood")) {
        const brindle::Variant mood = header.CustomFieldRetrieve("Mood");
        std::cout << "mood " << to_utf8(std::get<String>(mood)) << "\n";
    }
}

void show_frames(const brindle::cMPEGHeader& header) {
    for (const brindle::Variant& item : *header.v2Frames()) {
        const String id = std::get<String>(item);
        std::cout << to_utf8(id) << " " << header.v2Tag(id, 1).size() << " characters\n";
    }
    for (const brindle::CustomField& field : header.CustomFields()) {
        std::cout << to_utf8(field.name) << " is " << to_utf8(field.value) << "\n";
    }
}

void change(brindle::cMPEGHeader& header) {
    header.Title("Morning jingle");
    header.CueInmSStart(250);
    header.Intro(1'800);
    header.CustomFieldAdd("Mood", "bright");
    header.CustomFieldRemove("Key");
}

bool loses_nothing(const brindle::cMPEGHeader& header) {
    const brindle::SavePlan plan = brindle::plan_save(header);
    for (const brindle::LostFrame& frame : plan.losses) {
        std::cout << to_utf8(frame.id) << " would be lost\n";
    }
    std::cout << (plan.fits ? "fits into the old tag" : "the file is rebuilt") << "\n";
    return plan.losses.empty();
}

// Writes what was set, and leaves every other frame as it stands.
bool edit(const brindle::cMPEGHeader& header) {
    brindle::TagEdit edit(header);
    for (const brindle::EditedFrame& frame : edit.plan().losses()) {
        std::cout << to_utf8(frame.id) << " would be lost\n";
        return false;
    }
    edit.save();
    return true;
}

bool plays_what_it_promises(const brindle::cMPEGHeader& header) {
    const brindle::FrameWalk walk = brindle::walk_frames(header);
    std::cout << walk.frames << " frames, " << walk.milliseconds << " ms\n";
    const std::int64_t difference = walk.milliseconds - header.Duration();
    return difference > -100 && difference < 100;
}

// Several readers, one open file.
void look(const std::string& name) {
    brindle::FileSession session;
    brindle::cMPEGHeader header(session.environment());
    header.FileName(name);
    const auto facts = brindle::read_tag_facts(header);
    const auto walk = brindle::walk_frames(header);
    std::cout << facts.texts.size() << " texts, " << walk.frames << " frames\n";
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: tour SONG.mp3\n";
        return 2;
    }
    brindle::cMPEGHeader header;
    listen(header);
    brindle::open(header, arguments[1]);
    if (const std::optional<brindle::Error> error = header.OpeningError()) {
        std::cerr << arguments[1] << ": " << error->what() << "\n";
        return 1;
    }
    if (header.Frequency() == 0) {
        std::cerr << "no MPEG audio in " << arguments[1] << "\n";
        return 1;
    }

    show(header);
    show_frames(header);
    if (!plays_what_it_promises(header)) {
        std::cout << "dead air, or an end cut off\n";
    }
    look(arguments[1]);

    change(header);
    if (loses_nothing(header)) {
        try {
            header.SaveAllInfo();
        } catch (const brindle::Error& error) {
            std::cerr << "error " << error.number() << ": " << error.what() << "\n";
            return 1;
        }
    }

    header.FileName(header.FileName());  // reads the file again
    header.Album("Jingles");
    if (edit(header)) {
        header.FileName(header.FileName());
    }
    show(header);
    return 0;
}
