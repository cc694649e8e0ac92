#include "support/attack_files.h"

#include <utility>

#include "support/frames.h"
#include "support/id3v1.h"

namespace brindle::test {
namespace {

using namespace std::string_view_literals;

// Frames of the shortest kind, which give the most work for a byte.
Bytes slow_stream(std::size_t frames) {
    return stream(Frame{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000}, frames);
}

// 4-byte headers without a frame after them.
Bytes bare_headers(std::size_t count) {
    Bytes bytes;
    for (std::size_t number = 0; number < count; ++number) {
        bytes += Frame{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000}.bits().bytes();
    }
    return bytes;
}

// A frame of version 3 with a body of one byte, under an id that no other number has.
Bytes tiny_frame(std::size_t number) {
    constexpr std::size_t kLetters = 40;
    Bytes id = "A000";
    for (std::size_t place = 3; place > 0; --place) {
        id[place] = static_cast<std::uint8_t>('0' + number % kLetters);
        number /= kLetters;
    }
    return id + big_endian(1, 4) + zeros(3);
}

Bytes field_frame(std::size_t number) {
    const Bytes body = zeros(1) + Bytes(std::to_string(number)) + zeros(1);
    return Bytes("TXXX") + big_endian(body.size(), 4) + zeros(2) + body;
}

template <typename MakeFrame>
Tag numbered_frames(MakeFrame make_frame, std::size_t count) {
    Bytes frames;
    for (std::size_t number = 0; number < count; ++number) {
        frames += make_frame(number);
    }
    return Tag(3).raw(frames).padding(100);
}

// Frames of 2,880 bytes, the longest but for padding.
constexpr Frame kLongest{.version = 25, .layer = 2, .kbps = 160, .frequency = 8000};

// A file that is all audio, unless not even a header of it is there.
AttackFile all_audio(const std::string& name, const Bytes& file) {
    constexpr std::size_t kHeader = 4;
    return {name, file, file.size() < kHeader ? Bytes() : file};
}

// The same after a tag.
AttackFile tag_and_audio(const std::string& name, const Bytes& tag, const Bytes& file) {
    return {name, file, all_audio(name, file.part(tag.size(), file.size())).audio};
}

// What takes most time, most memory or most reading.
std::vector<AttackFile> greedy_files() {
    const Bytes audio = good_audio();
    // More than the window holds, so that going back means reading again.
    const Bytes rejected = rejected_stream(10'000);
    // Just above a power of two, where tables have just grown.
    constexpr std::size_t kGrown = (std::size_t{1} << 16) + 2;
    Bytes broken_chains;
    for (std::size_t number = 0; number < 4; ++number) {
        broken_chains += zeros(3) + stream(kLongest, 95);
    }
    const Bytes long_chain = kLongest.with_kbps(8).bytes() + stream(kLongest, 95);
    return {
        {"50,000 different ids", numbered_frames(tiny_frame, 50'000) + audio, audio},
        {"65,538 comments", many_frames("COMM", "\0c"sv, kGrown) + audio, audio},
        {"65,538 custom fields", numbered_frames(field_frame, kGrown) + audio, audio},
        {"65,538 genres", many_frames("TCON", "\0(17)"sv, kGrown) + audio, audio},
        all_audio("slow stream of two rates", rejected),
        {"slow stream of two rates in front of a tag",
         rejected + Tag(3).text("TIT2", "Song").padding(5'000).bytes(), rejected},
        {"slow stream of two rates between tag and record",
         Tag(3).text("TIT2", "Song").padding(5'000) + rejected + Id3v1{}.bytes(), rejected},
        all_audio(
            "short chain that breaks, then a long one",
            stream(kLongest.with_kbps(8), 4) + zeros(3) + stream(kLongest, 99) + zeros(3'000)),
        // What is between tag and first header may go.
        {"long chains that break", Tag(3).text("TIT2", "Song").padding(30) + broken_chains,
         broken_chains.part(3, broken_chains.size())},
        // The first frame is short, so a hundred seem to follow.
        {"long chain to the end of the file", Tag(3).text("TIT2", "Song").padding(30) + long_chain,
         long_chain},
    };
}

}  // namespace

const Bytes& good_audio() {
    static const Bytes audio = stream(Frame{}, 120);
    return audio;
}

Tag many_frames(std::string_view id, const Bytes& body, std::size_t count) {
    Bytes frames;
    const Bytes one = Bytes(id) + big_endian(body.size(), 4) + zeros(2) + body;
    for (std::size_t number = 0; number < count; ++number) {
        frames += one;
    }
    return Tag(3).raw(frames).padding(100);
}

Bytes rejected_stream(std::size_t pairs) {
    const Frame slow{.version = 2, .layer = 3, .kbps = 8, .frequency = 24000};
    Bytes bytes;
    for (std::size_t number = 0; number < pairs; ++number) {
        bytes += slow.bytes() + slow.with_kbps(16).bytes();
    }
    return bytes;
}

std::vector<AttackFile> claimed_sizes() {
    const Bytes audio = good_audio();
    const Tag song = Tag(3).text("TIT2", "Song").padding(30);
    std::vector<AttackFile> files = {
        {"tag larger than the file", Tag(song).size(100'000'000) + audio, audio},
        {"tag of the largest size", Tag(song).size(0x0FFF'FFFF) + audio, audio},
        {"tag of size 0", Tag(song).size(0) + audio, audio},
        {"size bytes above 127", Bytes("ID3\3\0\0\xFF\xFF\xFF\xFF"sv) + audio, audio},
        {"frame of 0 bytes", Tag(3).frame_claiming("TIT2", 0, {}).padding(9) + audio, audio},
        {"frame that ends beyond the tag",
         Tag(3).frame_claiming("TIT2", 4'900, "\0Song"sv).padding(30) + audio, audio},
        {"frames whose sizes add up to 2^32",
         Tag(3).frame_claiming("AAAA", 0x00FF'FFFF, "\0a"sv)
                 .frame_claiming("BBBB", 0xFF00'0001, "\0b"sv) +
             audio,
         audio},
        {"picture as large as pictures are read",
         Tag(3).picture("image/png", 3, "", zeros(81'900)).padding(9) + audio, audio},
        {"picture larger than the file",
         Tag(3).frame_claiming("APIC", 81'920, "\0image/png\0\3\0"sv).padding(9) + audio, audio},
    };
    for (const std::uint32_t size :
         {0x0100'0000U, 0x0100'0001U, 0x7FFF'FFFFU, 0x8000'0000U, 0xFFFF'FFF6U, 0xFFFF'FFFFU}) {
        files.push_back({"frame of " + std::to_string(size) + " bytes",
                         Tag(3).frame_claiming("TIT2", size, "\0Song"sv).padding(30) + audio,
                         audio});
        files.push_back(
            {"version 2 frame of " + std::to_string(size % 0x0100'0000) + " bytes",
             Tag(2).frame_claiming("TT2", size % 0x0100'0000, "\0Song"sv).padding(30) + audio,
             audio});
    }
    return files;
}

std::vector<AttackFile> short_files() {
    std::vector<AttackFile> files;
    const Bytes tag = Tag(3).text("TIT2", "Song").bytes();
    const Bytes record = Id3v1{.title = "Old"}.bytes();
    for (std::size_t size = 0; size <= 130; ++size) {
        const std::string bytes = " of " + std::to_string(size) + " bytes";
        const Bytes start = (tag + good_audio()).first(size);
        files.push_back(size < tag.size() ? AttackFile{"start of a tag" + bytes, start}
                                          : tag_and_audio("start of a tag" + bytes, tag, start));
        files.push_back(all_audio("start of a stream" + bytes, good_audio().first(size)));
        files.push_back(
            {"end of a file with a record" + bytes, (repeated(130, 0xFF) + record).last(size)});
        files.push_back({"ones" + bytes, repeated(size, 0xFF)});
    }
    for (const std::size_t size : {4'096U, 4'097U, 4'098U}) {
        const std::string bytes = " of " + std::to_string(size) + " bytes";
        files.push_back(
            tag_and_audio("tag and stream" + bytes, tag, (tag + good_audio()).first(size)));
        files.push_back({"tag and padding" + bytes, (tag + zeros(size)).first(size)});
    }
    return files;
}

std::vector<AttackFile> hostile_streams() {
    std::vector<AttackFile> files = {
        {"ones", repeated(200'000, 0xFF)},
        all_audio("headers without frames", bare_headers(50'000)),
        all_audio("endless slow chain", slow_stream(8'000)),
        all_audio("XING of 0 frames",
                  xing_frame({}, {.frames = 0, .bytes = 50'000}) + good_audio()),
        all_audio("XING of 0 bytes", xing_frame({}, {.frames = 120, .bytes = 0}) + good_audio()),
        all_audio("XING of 2^32 - 1 frames and bytes",
                  xing_frame({}, {.frames = 0xFFFF'FFFF, .bytes = 0xFFFF'FFFF}) + good_audio()),
        all_audio(
            "version changes half way",
            stream(Frame{}, 60) + stream(Frame{.version = 2, .kbps = 64, .frequency = 22050}, 60)),
        all_audio("layer changes half way",
                  stream(Frame{}, 60) + stream(Frame{.layer = 2, .kbps = 192}, 60)),
        all_audio(
            "version changes after 30 frames",
            stream(Frame{}, 30) + stream(Frame{.version = 2, .kbps = 64, .frequency = 22050}, 60)),
        all_audio(
            "layer changes after 30 frames",
            stream(Frame{}, 30) + stream(Frame{.layer = 2, .kbps = 192, .frequency = 48000}, 60)),
    };
    const std::pair<const char*, HeaderBits> reserved[] = {
        {"of the version", {.version = 1}},     {"of the layer", {.layer = 0}},
        {"0 of the bit rate", {.bitrate = 0}},  {"15 of the bit rate", {.bitrate = 15}},
        {"of the frequency", {.frequency = 3}}, {"of the emphasis", {.emphasis = 2}},
    };
    for (const auto& [field, bits] : reserved) {
        Bytes file;
        while (file.size() < 40'000) {
            file += bits.bytes() + zeros(413);
        }
        // Free format, index 0 of the bit rate, is audio that hosts do not play.
        const bool is_free_format = bits.bitrate == 0;
        files.push_back(
            {std::string("reserved index ") + field, file, is_free_format ? file : Bytes()});
    }
    return files;
}

std::vector<CutText> cut_texts() {
    const Bytes whole[] = {Bytes("\0Sound"sv), Bytes("\1\xFF\xFES\0o\0"sv),
                           Bytes("\1\xFE\xFF\0S\0o"sv), Bytes("\2\0S\0o"sv),
                           Bytes("\3S\xC3\xB6"sv)};
    std::vector<CutText> texts;
    for (const Bytes& text : whole) {
        for (std::size_t size = 0; size <= text.size(); ++size) {
            texts.push_back({"text of encoding " + std::to_string(text[0]) + " cut to " +
                                 std::to_string(size) + " bytes",
                             text.first(size)});
        }
    }
    return texts;
}

Bytes tag_of_cut_text(const Bytes& text) {
    return Tag(3).frame("TIT2", text).frame("TXXX", text).frame("APIC", text).padding(30).bytes();
}

std::vector<AttackFile> hostile_tags() {
    const Bytes audio = good_audio();
    std::vector<AttackFile> files = {
        {"100,000 identical ids", many_frames("COMM", "\0c"sv, 100'000) + audio, audio},
        {"20,000 empty custom fields", many_frames("TXXX", "\0\0"sv, 20'000) + audio, audio},
        {"id with a colon", Tag(3).frame("T:1\xFF", "\0a"sv).padding(30) + audio, audio},
        {"id with a NUL", Tag(3).frame("T\0\0\0"sv, "\0a"sv).padding(30) + audio, audio},
        {"ids that read alike with their number",
         Tag(3).frame("TT:1", "\0a"sv).frame("TT:1", "\0b"sv).padding(30) + audio, audio},
        {"id of ones", Tag(3).frame("\xFF\xFF\xFF\xFF"sv, "\0a"sv).padding(30) + audio, audio},
        {"comments that grow",
         many_frames("COMM", Bytes("\0eng\0"sv) + repeated(4'900, 'c'), 100) + audio, audio},
        {"tags one after the other",
         Tag(3).text("TIT2", "1") + Tag(3).text("TIT2", "2").bytes() +
             Tag(4).text("TIT2", "3").bytes() + audio,
         audio},
        {"record after a record", audio + Id3v1{}.bytes() + Id3v1{}.bytes(), audio},
    };
    for (const CutText& text : cut_texts()) {
        files.push_back({text.name, tag_of_cut_text(text.bytes) + audio, audio});
    }
    return files;
}

const std::vector<AttackFile>& attack_files() {
    static const std::vector<AttackFile> all = [] {
        std::vector<AttackFile> every;
        for (auto& files :
             {claimed_sizes(), short_files(), hostile_streams(), hostile_tags(), greedy_files()}) {
            every.insert(every.end(), files.begin(), files.end());
        }
        return every;
    }();
    return all;
}

}  // namespace brindle::test
