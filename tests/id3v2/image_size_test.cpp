// Headers of images byte by byte, as the public documents of each format draw them.
#include "id3v2/image_size.h"

#include <ostream>
#include <string>
#include <string_view>

#include <gmock/gmock.h>

#include "support/bytes.h"
#include "support/memory_files.h"

namespace brindle::test {
namespace {

using namespace std::string_view_literals;

// "300x200", or "none".
std::string size_of(const Bytes& image) {
    MemoryFiles files;
    files.put(u"a", Bytes("before"sv) + image + Bytes("behind"sv));
    const auto file = files.open(u"a", OpenMode::Read);
    constexpr std::int64_t kBegin = 6;
    const auto size =
        read_image_size(*file, {kBegin, kBegin + static_cast<std::int64_t>(image.size())});
    return size ? std::to_string(size->width) + "x" + std::to_string(size->height) : "none";
}

struct ImageCase {
    const char* name;
    Bytes image;
    const char* size;
};

void PrintTo(const ImageCase& image_case, std::ostream* out) {
    *out << image_case.name;
}

Bytes segment(std::uint8_t marker, std::size_t contents) {
    const std::size_t length = contents + 2;
    return Bytes("\xFF"sv) + repeated(1, static_cast<std::uint8_t>(marker)) +
           repeated(1, static_cast<std::uint8_t>(length >> 8U)) +
           repeated(1, static_cast<std::uint8_t>(length & 0xFFU)) + zeros(contents);
}

Bytes times(std::size_t count, const Bytes& bytes) {
    Bytes all;
    for (std::size_t i = 0; i < count; ++i) {
        all = all + bytes;
    }
    return all;
}

const Bytes kJpeg("\xFF\xD8"sv);
// Precision 8, height 200, width 300.
const Bytes kFrame("\xFF\xC0\x00\x11\x08\x00\xC8\x01\x2C\x03"sv);
const Bytes kProgressiveFrame("\xFF\xC2\x00\x11\x08\x00\xC8\x01\x2C\x03"sv);
const Bytes kPng("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\x01\x2C\0\0\0\xC8"sv);
const Bytes kWebp("RIFF\0\0\0\0WEBP"sv);

const ImageCase kImageCases[] = {
    {"Png", kPng, "300x200"},
    {"PngThatIsCut", kPng.part(0, 23), "none"},
    {"PngWithoutItsHeader", Bytes("\x89PNG\r\n\x1A\n\0\0\0\x0DIDAT\0\0\x01\x2C\0\0\0\xC8"sv),
     "none"},
    {"PngOfNoWidth", Bytes("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\0\0\0\0\0\xC8"sv), "none"},
    {"PngOfMoreThan31Bits", Bytes("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\x80\0\0\0\0\0\0\xC8"sv), "none"},
    {"Jpeg", kJpeg + segment(0xE0, 14) + segment(0xDB, 65) + kFrame, "300x200"},
    {"JpegProgressive", kJpeg + kProgressiveFrame, "300x200"},
    {"JpegWithTablesBefore", kJpeg + segment(0xC4, 30) + segment(0xCC, 2) + kFrame, "300x200"},
    {"JpegWithFillAndLoneMarkers", kJpeg + Bytes("\xFF\xFF\xFF\x01\xFF\xD0"sv) + kFrame, "300x200"},
    {"JpegAfterLargeProfiles", kJpeg + times(9, segment(0xE2, 65'533)) + kFrame, "300x200"},
    {"JpegAfter63Segments", kJpeg + times(63, segment(0xE1, 0)) + kFrame, "300x200"},
    {"JpegAfter64Segments", kJpeg + times(64, segment(0xE1, 0)) + kFrame, "none"},
    {"JpegScanWithoutAFrame", kJpeg + segment(0xDA, 10) + kFrame, "none"},
    {"JpegThatIsCutInTheFrame", kJpeg + kFrame.part(0, 8), "none"},
    {"JpegThatIsCutInASegment", kJpeg + segment(0xE0, 14).part(0, 10), "none"},
    {"JpegWithoutMarker", kJpeg + Bytes("\xFF"sv) + zeros(20), "none"},
    {"JpegOfLaterKnownHeight", kJpeg + Bytes("\xFF\xC0\x00\x11\x08\x00\x00\x01\x2C\x03"sv), "none"},
    {"Gif87", Bytes("GIF87a\x2C\x01\xC8\x00"sv), "300x200"},
    {"Gif89", Bytes("GIF89a\x2C\x01\xC8\x00"sv), "300x200"},
    {"GifThatIsCut", Bytes("GIF89a\x2C\x01\xC8"sv), "none"},
    {"Bmp", Bytes("BM"sv) + zeros(12) + Bytes("\x28\0\0\0\x2C\x01\0\0\xC8\0\0\0"sv), "300x200"},
    {"BmpFromTheTop", Bytes("BM"sv) + zeros(12) + Bytes("\x28\0\0\0\x2C\x01\0\0\x38\xFF\xFF\xFF"sv),
     "300x200"},
    {"BmpOfTheOldestForm",
     Bytes("BM"sv) + zeros(12) + Bytes("\x0C\0\0\0\x2C\x01\xC8\0\x01\0\x18\0"sv), "300x200"},
    {"WebpLossy", kWebp + Bytes("VP8 \0\0\0\0\0\0\0\x9D\x01\x2A\x2C\x41\xC8\x80"sv), "300x200"},
    {"WebpLossyWithoutStartCode", kWebp + Bytes("VP8 \0\0\0\0\0\0\0\x9D\x01\x2B\x2C\x01\xC8\0"sv),
     "none"},
    // 299 and 199: 0x012B | 199 << 14 = 0x0031C12B
    {"WebpLossless", kWebp + Bytes("VP8L\0\0\0\0\x2F\x2B\xC1\x31\x00"sv) + zeros(5), "300x200"},
    {"WebpExtended", kWebp + Bytes("VP8X\x0A\0\0\0\x10\0\0\0\x2B\x01\0\xC7\0\0"sv), "300x200"},
    {"Nothing", Bytes(), "none"},
    {"OtherBytes", zeros(100), "none"},
};

class Images : public ::testing::TestWithParam<ImageCase> {};

TEST_P(Images, HaveTheSizeOfTheirHeader) {
    EXPECT_EQ(size_of(GetParam().image), GetParam().size);
}

INSTANTIATE_TEST_SUITE_P(ImageSize, Images, ::testing::ValuesIn(kImageCases),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(ImageSize, OfAHugeImageIsReadFromAFewBlocks) {
    MemoryFiles files;
    files.put(u"a", kJpeg + times(20, segment(0xE2, 65'533)) + kFrame + zeros(1'000'000));
    const auto file = files.open(u"a", OpenMode::Read);
    EXPECT_TRUE(read_image_size(*file, {0, file->length()}));
    EXPECT_LE(files.bytes_read(), 22'000U);
}

}  // namespace
}  // namespace brindle::test
