#include "pictures/jpeg_image.h"

#include <algorithm>
#include <array>
#include <cstdio>  // jpeglib.h needs it
#include <cstdlib>
#include <memory>
#include <string_view>

// clang-format off
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#include "pictures/exif_orientation.h"

namespace brindle::host {

namespace {

using MadeByLibrary = std::unique_ptr<unsigned char, decltype(&std::free)>;

constexpr int kMaxScans = 500;
constexpr int kExif = JPEG_APP0 + 1;
constexpr int kProfile = JPEG_APP0 + 2;
constexpr unsigned kLongestMarker = 0xFFFF;
constexpr unsigned kFullScale = 8;
constexpr int kWhite = 255;

void refuse_by_message(j_common_ptr codec) {
    std::array<char, JMSG_LENGTH_MAX> text{};
    codec->err->format_message(codec, text.data());
    refuse_image(text.data());
}

void refuse_if_cut(j_common_ptr codec, int level) {
    const int code = codec->err->msg_code;
    if (level < 0 && (code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER)) {
        refuse_image("it is damaged");
    }
}

void print_nothing(j_common_ptr /*codec*/) {}

// A scan can cost as much as the image has pixels, in a few bytes.
void refuse_too_many_scans(j_common_ptr codec) {
    if (reinterpret_cast<j_decompress_ptr>(codec)->input_scan_number > kMaxScans) {
        refuse_image("it has more than 500 scans");
    }
}

jpeg_error_mgr* set_errors(jpeg_error_mgr& errors) {
    jpeg_std_error(&errors);
    errors.error_exit = refuse_by_message;
    errors.emit_message = refuse_if_cut;
    errors.output_message = print_nothing;
    return &errors;
}

int orientation_of(const jpeg_decompress_struct& decoder) {
    using namespace std::string_view_literals;
    constexpr std::string_view kMark = "Exif\0\0"sv;
    for (const jpeg_marker_struct* marker = decoder.marker_list; marker != nullptr;
         marker = marker->next) {
        const std::string_view data(reinterpret_cast<const char*>(marker->data),
                                    marker->data_length);
        if (marker->marker == kExif && data.starts_with(kMark)) {
            return exif_orientation(
                std::span(marker->data, marker->data_length).subspan(kMark.size()));
        }
    }
    return 1;
}

std::vector<std::uint8_t> profile_of(jpeg_decompress_struct& decoder) {
    JOCTET* data = nullptr;
    unsigned size = 0;
    std::vector<std::uint8_t> profile;
    if (jpeg_read_icc_profile(&decoder, &data, &size) != 0) {
        const MadeByLibrary held(data, &std::free);
        if (is_kept_profile(data, size)) {
            profile.assign(data, data + size);
        }
    }
    return profile;
}

// The decoder makes images of 1/8 to 8/8 of the size, at a fraction of the cost.
unsigned scale_for(const jpeg_decompress_struct& decoder, std::size_t longer_side) {
    const std::size_t longer = std::max(decoder.image_width, decoder.image_height);
    for (const unsigned scale : {1U, 2U, 4U}) {
        if (longer * scale / kFullScale >= longer_side) {
            return scale;
        }
    }
    return kFullScale;
}

// Programs that write an Adobe marker store the complement of each ink.
void cmyk_to_rgb(const std::uint8_t* cmyk, std::size_t width, bool is_complement,
                 std::uint8_t* rgb) {
    constexpr std::size_t kCmyk = 4;
    const auto light = [&](std::uint8_t ink) { return is_complement ? ink : kWhite - ink; };
    for (std::size_t x = 0; x < width; ++x) {
        const int black = light(cmyk[x * kCmyk + kRgb]);
        for (std::size_t i = 0; i < kRgb; ++i) {
            rgb[x * kRgb + i] = static_cast<std::uint8_t>(
                (light(cmyk[x * kCmyk + i]) * black + kWhite / 2) / kWhite);
        }
    }
}

}  // namespace

Image read_jpeg(std::span<const std::uint8_t> bytes, std::size_t longer_side) {
    jpeg_error_mgr errors{};
    jpeg_progress_mgr progress{};
    jpeg_decompress_struct decoder{};
    decoder.err = set_errors(errors);
    jpeg_create_decompress(&decoder);
    progress.progress_monitor = refuse_too_many_scans;
    decoder.progress = &progress;
    jpeg_mem_src(&decoder, bytes.data(), bytes.size());
    jpeg_save_markers(&decoder, kExif, kLongestMarker);
    jpeg_save_markers(&decoder, kProfile, kLongestMarker);
    jpeg_read_header(&decoder, TRUE);
    require_pixels(decoder.image_width, decoder.image_height);
    const bool is_cmyk =
        decoder.jpeg_color_space == JCS_CMYK || decoder.jpeg_color_space == JCS_YCCK;
    decoder.out_color_space = is_cmyk ? JCS_CMYK : JCS_RGB;
    decoder.scale_num = scale_for(decoder, longer_side);
    decoder.scale_denom = kFullScale;
    jpeg_start_decompress(&decoder);
    Image image = image_of_size(decoder.output_width, decoder.output_height);
    std::vector<std::uint8_t> cmyk(is_cmyk ? image.width * (kRgb + 1) : 0);
    while (decoder.output_scanline < decoder.output_height) {
        std::uint8_t* const row = image.row(decoder.output_scanline);
        JSAMPROW target = is_cmyk ? cmyk.data() : row;
        jpeg_read_scanlines(&decoder, &target, 1);
        if (is_cmyk) {
            cmyk_to_rgb(cmyk.data(), image.width, decoder.saw_Adobe_marker != 0, row);
        }
    }
    image.orientation = orientation_of(decoder);
    image.profile = profile_of(decoder);
    jpeg_finish_decompress(&decoder);
    jpeg_destroy_decompress(&decoder);
    return image;
}

std::vector<std::uint8_t> jpeg_of(const Image& image, int quality) {
    jpeg_error_mgr errors{};
    jpeg_compress_struct encoder{};
    encoder.err = set_errors(errors);
    jpeg_create_compress(&encoder);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;  // NOLINT(google-runtime-int): the type of the interface
    jpeg_mem_dest(&encoder, &buffer, &size);
    encoder.image_width = static_cast<JDIMENSION>(image.width);
    encoder.image_height = static_cast<JDIMENSION>(image.height);
    encoder.input_components = kRgb;
    encoder.in_color_space = JCS_RGB;
    jpeg_set_defaults(&encoder);
    encoder.optimize_coding = TRUE;
    jpeg_set_quality(&encoder, quality, TRUE);
    jpeg_start_compress(&encoder, TRUE);
    if (!image.profile.empty()) {
        jpeg_write_icc_profile(&encoder, image.profile.data(),
                               static_cast<unsigned>(image.profile.size()));
    }
    while (encoder.next_scanline < encoder.image_height) {
        JSAMPROW row = image.row(encoder.next_scanline);
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    const MadeByLibrary held(buffer, &std::free);
    return {buffer, buffer + size};
}

}  // namespace brindle::host
