// Any end of a file: the values of a record are read back after it was written, and only its 128
// bytes ever change.
#include "fuzz/input.h"
#include "id3v1/cMP3ID3v1.h"
#include "support/memory_environment.h"

using brindle::String;
using brindle::fuzz::Input;
using brindle::fuzz::require;
using brindle::test::Bytes;

namespace {

const String kName = u"song.mp3";

// Text that a record returns unchanged: NULs and spaces around a text are padding.
String text_of(const Bytes& bytes) {
    String text;
    for (const std::uint8_t byte : bytes) {
        text.push_back(byte > ' ' && byte < 0x7F ? char16_t{byte} : u'x');
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const bool with_audio = (input.byte() & 1) != 0;
    const String title = text_of(input.bytes(input.byte() % 31));
    const String comment = text_of(input.bytes(input.byte() % 29));
    const std::uint8_t track = input.byte();
    const Bytes front = with_audio ? brindle::test::repeated(300, 0xA5) : Bytes();
    const Bytes file = front + input.rest();

    brindle::test::MemoryEnvironment world;
    world.files.put(kName, file);
    brindle::cMP3ID3v1 record(world.environment);
    record.MP3File(kName);
    const bool had_record = record.HasID3v1Tag();
    require(!had_record || (file.size() >= 128 && file.last(128).first(3) == Bytes("TAG")),
            "a record begins with TAG");
    const String artist = record.Artist();
    const std::uint8_t genre = record.Genre();

    if (file.size() <= 128) {
        require(!had_record, "a record and nothing else is no MP3 file");
        return 0;
    }
    record.Title(title);
    record.Comment(comment);
    record.Track(track);
    record.Update();

    const Bytes& saved = world.files.content(kName);
    const Bytes audio = had_record ? file.first(file.size() - 128) : file;
    require(saved.size() == audio.size() + 128, "a record takes the place of one, or is added");
    require(saved.first(audio.size()) == audio, "no byte in front of the record changes");

    brindle::cMP3ID3v1 again(world.environment);
    again.MP3File(kName);
    require(again.HasID3v1Tag(), "the record is found");
    require(again.Title() == title, "title");
    require(again.Comment() == comment, "comment");
    require(again.Track() == track, "track");
    require(again.Artist() == artist, "what was not set stays");
    require(again.Genre() == genre, "the genre stays");

    require(again.Stripv1Tag(), "the record is taken off");
    require(world.files.content(kName) == audio, "the audio is left as it is");
    return 0;
}
