#include "support/damaged_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "support/frames.h"
#include "support/id3v1.h"

namespace brindle::test {

namespace {

constexpr std::size_t kFrameHeader = 4;

Bytes cut(const Bytes& bytes, std::size_t begin, std::size_t count) {
    return bytes.first(begin) + bytes.part(begin + count, bytes.size());
}

// --- Audio

// After its first header some of it is missing, doubled or overwritten.
Bytes damage(Bytes audio, Choices& choices) {
    for (std::uint32_t places = choices.below(6); places > 0; --places) {
        const auto room = static_cast<std::uint32_t>(audio.size() - kFrameHeader);
        const std::size_t begin = kFrameHeader + choices.below(room);
        const std::size_t count = std::min<std::size_t>(choices.any_size(), audio.size() - begin);
        switch (choices.below(5)) {
            case 0:
                audio = cut(audio, begin, count);
                break;
            case 1:
                audio = audio.first(begin + count) + audio.part(begin, audio.size());
                break;
            case 2: {
                const Bytes other = noise(count, choices);
                std::copy(other.begin(), other.end(),
                          audio.begin() + static_cast<std::ptrdiff_t>(begin));
                break;
            }
            case 3:
                std::fill_n(audio.begin() + static_cast<std::ptrdiff_t>(begin), count,
                            static_cast<std::uint8_t>(choices.one_in(2) ? 0 : 0xFF));
                break;
            default: {
                // Where frames begin, they are often cut out whole.
                const std::size_t whole = 417 * (1 + choices.below(20));
                audio = cut(audio, begin, std::min(whole, audio.size() - begin));
            }
        }
        if (audio.size() <= kFrameHeader) {
            break;
        }
    }
    return audio;
}

// --- A tag

Bytes text(Choices& choices) {
    const std::uint32_t kind = choices.below(4);
    if (kind == 0) {
        return Bytes{1, 0xFF, 0xFE} + Bytes{'S', 0, 0xF6, 0, 'n', 0};
    }
    if (kind == 1) {
        return Bytes{3} + Bytes("S\xC3\xB6ng");
    }
    return Bytes{0} +
           repeated(choices.below(200), static_cast<std::uint8_t>(choices.between(32, 122)));
}

Bytes body_of(std::string_view id, const std::vector<Bytes>& streams, Choices& choices) {
    if (id == "APIC" || id == "PIC") {
        return Bytes{0} + Bytes("image/jpeg") + Bytes{0, 3, 0} +
               noise(choices.any_size() / 2, choices);
    }
    if (id == "GEOB" || id == "GEO") {
        // A recording inside the tag.
        const Bytes& stream = streams[choices.below(static_cast<std::uint32_t>(streams.size()))];
        return zeros(4) +
               stream.first(std::min<std::size_t>(stream.size(), choices.any_size() / 8));
    }
    if (id == "TXXX" || id == "TXX") {
        return Bytes{0} + Bytes("Cue In") + Bytes{0} + Bytes("1500");
    }
    return text(choices);
}

// Header and body; the size is off by some bytes now and then.
Bytes frame(std::uint32_t version, std::string_view id, const Bytes& body, bool is_wrong,
            Choices& choices) {
    std::uint32_t size = static_cast<std::uint32_t>(body.size());
    if (is_wrong) {
        const std::uint32_t off = choices.any_size();
        size = choices.one_in(2) ? size + off : size - std::min(size, off);
    }
    if (version == 2) {
        return Bytes(id) + big_endian(size, 3) + body;
    }
    const bool is_syncsafe = version == 4 && !choices.one_in(5);
    return Bytes(id) + (is_syncsafe ? syncsafe(size) : big_endian(size, 4)) + zeros(2) + body;
}

Bytes frames(std::uint32_t version, const std::vector<Bytes>& streams, Choices& choices) {
    static constexpr const char* kIds[] = {"TIT2", "TPE1", "TXXX", "COMM", "APIC", "GEOB", "PRIV"};
    static constexpr const char* kVersion2Ids[] = {"TT2", "TP1", "TXX", "COM", "PIC", "GEO", "CRM"};
    const std::uint32_t count = choices.below(7);
    const std::uint32_t wrong = choices.one_in(3) ? choices.below(7) : 7;
    Bytes all;
    for (std::uint32_t number = 0; number < count; ++number) {
        const std::uint32_t kind = choices.below(7);
        const std::string_view id = version == 2 ? kVersion2Ids[kind] : kIds[kind];
        all += frame(version, id, body_of(id, streams, choices), number == wrong, choices);
    }
    return all;
}

std::uint32_t wrong_or_right(std::uint32_t size, Choices& choices) {
    const std::uint32_t off = choices.one_in(3) ? choices.between(1, 3) : choices.any_size();
    switch (choices.below(3)) {
        case 0:
            return size + off;
        case 1:
            return size - std::min(size, off);
        default:
            return size;
    }
}

Bytes tag(const std::vector<Bytes>& streams, Choices& choices) {
    const std::uint32_t version = choices.between(2, 4);
    const Bytes content =
        frames(version, streams, choices) + zeros(choices.one_in(3) ? 0 : choices.below(3000));
    const auto size = static_cast<std::uint32_t>(content.size());
    Bytes size_bytes = syncsafe(wrong_or_right(size, choices));
    if (choices.one_in(8)) {
        size_bytes[choices.below(4)] |= 0x80;
    }
    const std::uint8_t flags =
        choices.one_in(10) ? static_cast<std::uint8_t>(choices.below(16) << 4U) : std::uint8_t{0};
    return Bytes("ID3") + Bytes{static_cast<std::uint8_t>(version), 0, flags} + size_bytes +
           content;
}

}  // namespace

Bytes noise(std::size_t count, Choices& choices) {
    // One decision, or a fuzzer's input would be used up here.
    std::minstd_rand engine(1 + choices.below(1'000'000));
    Bytes bytes = zeros(count);
    std::generate(bytes.begin(), bytes.end(),
                  [&] { return static_cast<std::uint8_t>(engine() >> 7U); });
    return bytes;
}

std::vector<Bytes> read_streams(const std::string& folder) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<Bytes> streams;
    for (const std::filesystem::path& path : paths) {
        std::ifstream file(path, std::ios::binary);
        streams.push_back(std::vector<std::uint8_t>(std::istreambuf_iterator<char>(file), {}));
    }
    if (streams.empty()) {
        throw std::runtime_error("no streams in " + folder);
    }
    return streams;
}

DamagedFile make_damaged_file(const std::vector<Bytes>& streams, Choices& choices) {
    DamagedFile file;
    file.audio =
        damage(streams[choices.below(static_cast<std::uint32_t>(streams.size()))], choices);
    Bytes front;
    if (!choices.one_in(8)) {
        front = tag(streams, choices);
        if (choices.one_in(5)) {
            front += tag(streams, choices);
        }
    }
    if (choices.one_in(5)) {
        front += noise(choices.below(3000), choices);
    }
    file.content = front + file.audio;
    if (choices.one_in(2)) {
        file.content += Id3v1{.title = "Old"}.bytes();
    }
    return file;
}

}  // namespace brindle::test
