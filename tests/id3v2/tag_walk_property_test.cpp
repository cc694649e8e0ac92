#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "id3v2/reference_tag.h"
#include "id3v2/same_tag.h"
#include "id3v2/walked_tag.h"
#include "support/tags.h"

namespace brindle {
namespace {

using namespace std::string_view_literals;
using test::big_endian;
using test::Bytes;
using test::ReferenceTag;
using test::WalkedTag;
using test::zeros;

Bytes any_body() {
    Bytes body = *rc::gen::element<Bytes>(Bytes(), Bytes("\0"sv), Bytes("\1\xFF\xFE"sv),
                                          Bytes("\3"sv), Bytes("\0\0"sv), Bytes("\0eng"sv));
    const auto pieces = *rc::gen::inRange(0, 5);
    for (int piece = 0; piece < pieces; ++piece) {
        body += *rc::gen::element<Bytes>(Bytes("\0"sv), Bytes("a"), Bytes("(17"), Bytes(")"),
                                         Bytes("(255)x"), Bytes("Rock"), Bytes("e1"), Bytes(".5"),
                                         Bytes("Cue In\0"sv), Bytes("\x80\xFF"), Bytes("TIT2"));
    }
    if (*rc::gen::inRange(0, 12) == 0) {
        const auto length = *rc::gen::element<std::size_t>(4999, 5000, 5001, 81920, 81921);
        while (body.size() < length) {
            body.push_back(static_cast<std::uint8_t>(body.size() % 97 == 0 ? 0 : 'z'));
        }
        body.resize(length);
    }
    return body;
}

Bytes any_frame(int version) {
    const Bytes body = any_body();
    std::uint64_t size = body.size();
    switch (*rc::gen::inRange(0, 10)) {
        case 0:
            size += *rc::gen::inRange<std::uint64_t>(0, 20);
            break;
        case 1:
            size -= std::min<std::uint64_t>(size, *rc::gen::inRange<std::uint64_t>(0, 20));
            break;
        case 2:
            size = *rc::gen::element<std::uint64_t>(0, 5000, 5001, 16777215, 16777216, 16777217,
                                                    2147483648, 4294967295);
            break;
        default:
            break;
    }
    if (version == 2) {
        const Bytes id = *rc::gen::element<Bytes>("TT2", "TP1", "TAL", "COM", "TRK", "TEN", "TYE",
                                                  "TCO", "PIC", "TXX", "XXX");
        return id + big_endian(size, 3) + body;
    }
    const Bytes id =
        *rc::gen::element<Bytes>("TIT2", "TPE1", "TALB", "TYER", "TRCK", "COMM", "TCON", "TCON",
                                 "TXXX", "TXXX", "TXXX", "APIC", "USLT", "WXXX", "XYZW", "a\0b "sv);
    return id + big_endian(size, 4) + zeros(2) + body;
}

RC_GTEST_PROP(TagWalk, ReadsWhatThePlainStepsRead, ()) {
    const auto version = *rc::gen::element(2, 3, 3, 4);
    Bytes frames;
    const auto count = *rc::gen::inRange(0, 9);
    std::vector<std::size_t> ends;
    for (int frame = 0; frame < count; ++frame) {
        frames += any_frame(version);
        ends.push_back(frames.size());
    }
    frames += zeros(*rc::gen::element<std::size_t>(0, 0, 3, 9, 40));
    long size = static_cast<long>(frames.size());
    const auto junk = *rc::gen::element<std::size_t>(0, 0, 1, 30);
    switch (*rc::gen::inRange(0, 3)) {
        case 0:
            size = std::max(0L, size + *rc::gen::inRange(-40, 41));
            break;
        case 1:
            // Around the position of a frame's end in the file.
            if (!ends.empty()) {
                size = static_cast<long>(junk + 10 + *rc::gen::elementOf(ends)) +
                       *rc::gen::inRange(-1, 2);
            }
            break;
        default:
            break;
    }
    Bytes file = test::repeated(junk, 'j') + Bytes("ID3") +
                 Bytes{static_cast<std::uint8_t>(version), 0, 0} +
                 test::syncsafe(static_cast<std::uint32_t>(size)) + frames;
    if (*rc::gen::inRange(0, 4) == 0) {
        file.resize(*rc::gen::inRange<std::size_t>(junk + 4, file.size() + 1));
    }
    const auto mutations = *rc::gen::element(0, 0, 0, 1, 5);
    for (int mutation = 0; mutation < mutations; ++mutation) {
        // Anywhere but in the identifier and version.
        if (file.size() > junk + 4) {
            file[*rc::gen::inRange(junk + 4, file.size())] = *rc::gen::arbitrary<std::uint8_t>();
        }
    }
    ReferenceTag reference;
    reference.walk(file, static_cast<long>(junk) + 4);
    const WalkedTag tag(file, static_cast<std::int64_t>(junk));
    RC_ASSERT(difference(tag, reference) == std::string());
}

}  // namespace
}  // namespace brindle
