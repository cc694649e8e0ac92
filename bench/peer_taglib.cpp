#include <benchmark/benchmark.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/mpegproperties.h>
#include <taglib/textidentificationframe.h>

#include "peers.h"

namespace brindle::bench::taglib {
namespace {

constexpr auto kAccurate = TagLib::AudioProperties::Accurate;

// As it was: both tags, version 3.
void write(TagLib::MPEG::File& file) {
    file.save(TagLib::MPEG::File::ID3v1 | TagLib::MPEG::File::ID3v2, TagLib::File::StripNone,
              TagLib::ID3v2::v3, TagLib::File::DoNotDuplicate);
}

}  // namespace

void open(const std::string& path) {
    TagLib::MPEG::File file(path.c_str(), true, kAccurate);
    TagLib::uint sum = 0;
    if (const auto* const tag = file.ID3v2Tag()) {
        for (const auto* const frame : tag->frameList()) {
            const auto id = frame->frameID();
            if (id.startsWith("T")) {
                sum += frame->toString().size();
            }
        }
    }
    if (const auto* const record = file.ID3v1Tag()) {
        sum += record->title().size() + record->artist().size() + record->comment().size();
    }
    if (const auto* const stream = file.audioProperties()) {
        sum += static_cast<TagLib::uint>(stream->lengthInMilliseconds() + stream->bitrate() +
                                         stream->sampleRate() + stream->channelMode());
    }
    benchmark::DoNotOptimize(sum);
}

void save(const std::string& path) {
    TagLib::MPEG::File file(path.c_str(), true, kAccurate);
    const bool other = file.ID3v2Tag(true)->title() == "Good morning";
    file.ID3v2Tag()->setTitle(other ? "Good Morning" : "Good morning");
    file.ID3v1Tag(true)->setTitle(other ? "Good Morning" : "Good morning");
    write(file);
}

void grow(const std::string& path) {
    TagLib::MPEG::File file(path.c_str(), true, kAccurate);
    auto* const frame = new TagLib::ID3v2::UserTextIdentificationFrame(TagLib::String::Latin1);
    frame->setDescription("Growth");
    frame->setText(std::string(4000, 'x'));
    file.ID3v2Tag(true)->addFrame(frame);
    write(file);
}

}  // namespace brindle::bench::taglib
