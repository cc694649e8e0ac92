#include "pictures/png_image.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <png.h>
#include <string_view>
#include <vector>

#include "pictures/exif_orientation.h"

namespace brindle::host {

namespace {

constexpr std::size_t kRgba = 4;
constexpr unsigned kWhite = 255;

[[noreturn]] void refuse_by_message(png_structp /*png*/, png_const_charp message) {
    refuse_image(message);
}

void ignore_warning(png_structp /*png*/, png_const_charp /*message*/) {}

// The decoder allocates as many bytes as a chunk claims before it reads any of them.
//
//   signature, 8 | chunks, of which IEND is the last: length, 4 | name, 4 | data | checksum, 4
void refuse_if_cut(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kSignature = 8;
    constexpr std::size_t kName = 4;
    constexpr std::size_t kAround = 12;
    constexpr std::string_view kLast = "IEND";
    std::span<const std::uint8_t> rest = bytes.subspan(std::min(kSignature, bytes.size()));
    bool is_last = false;
    while (!is_last) {
        if (rest.size() < kAround || png_get_uint_32(rest.data()) > rest.size() - kAround) {
            refuse_image("it is damaged");
        }
        is_last = std::equal(kLast.begin(), kLast.end(), rest.begin() + kName);
        rest = rest.subspan(kAround + png_get_uint_32(rest.data()));
    }
}

void read_ahead(png_structp png, png_bytep to, png_size_t count) {
    auto& ahead = *static_cast<std::span<const std::uint8_t>*>(png_get_io_ptr(png));
    if (ahead.size() < count) {
        refuse_image("it is damaged");
    }
    std::copy_n(ahead.begin(), count, to);
    ahead = ahead.subspan(count);
}

// To three or four channels of 8 bits.
void set_conversions(png_structp png, png_infop info) {
    png_set_expand(png);
    png_set_scale_16(png);
    const int colours = png_get_color_type(png, info);
    if (colours == PNG_COLOR_TYPE_GRAY || colours == PNG_COLOR_TYPE_GRAY_ALPHA) {
        png_set_gray_to_rgb(png);
    }
}

std::uint8_t over_white(unsigned channel, unsigned alpha) {
    return static_cast<std::uint8_t>((channel * alpha + kWhite * (kWhite - alpha) + kWhite / 2) /
                                     kWhite);
}

// In place: the result has fewer bytes.
void blend(std::uint8_t* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned alpha = pixels[i * kRgba + kRgb];
        for (std::size_t channel = 0; channel < kRgb; ++channel) {
            pixels[i * kRgb + channel] = over_white(pixels[i * kRgba + channel], alpha);
        }
    }
}

void read_profile(png_structp png, png_infop info, Image& image) {
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 size = 0;
    if (png_get_iCCP(png, info, &name, &compression, &profile, &size) != 0 &&
        is_kept_profile(profile, size)) {
        image.profile.assign(profile, profile + size);
    }
}

void read_orientation(png_structp png, png_infop info, Image& image) {
    png_uint_32 size = 0;
    png_bytep exif = nullptr;
    if (png_get_eXIf_1(png, info, &size, &exif) != 0) {
        image.orientation = exif_orientation(std::span(exif, size));
    }
}

}  // namespace

Image read_png(std::span<const std::uint8_t> bytes) {
    constexpr png_uint_32 kMaxSide = 50'000'000;
    constexpr png_alloc_size_t kMaxChunk = std::size_t{8} * 1024 * 1024;
    constexpr png_uint_32 kMaxChunks = 1'000;
    refuse_if_cut(bytes);
    png_structp png =
        png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, refuse_by_message, ignore_warning);
    png_infop info = png_create_info_struct(png);
    png_set_user_limits(png, kMaxSide, kMaxSide);
    png_set_chunk_malloc_max(png, kMaxChunk);
    png_set_chunk_cache_max(png, kMaxChunks);
    png_set_read_fn(png, &bytes, read_ahead);
    png_read_info(png, info);
    Image image;
    image.width = png_get_image_width(png, info);
    image.height = png_get_image_height(png, info);
    require_pixels(image.width, image.height);
    set_conversions(png, info);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    const std::size_t row_bytes = png_get_rowbytes(png, info);
    image.rgb = std::make_unique_for_overwrite<std::uint8_t[]>(row_bytes * image.height);
    if (passes > 1) {
        // Each pass sets some pixels of a row and leaves the others as they are.
        std::fill_n(image.rgb.get(), row_bytes * image.height, std::uint8_t{0});
    }
    for (int pass = 0; pass < passes; ++pass) {
        for (std::size_t y = 0; y < image.height; ++y) {
            png_read_row(png, &image.rgb[y * row_bytes], nullptr);
        }
    }
    if (png_get_channels(png, info) == kRgba) {
        blend(image.rgb.get(), image.width * image.height);
    }
    png_read_end(png, info);
    read_profile(png, info, image);
    read_orientation(png, info, image);
    png_destroy_read_struct(&png, &info, nullptr);
    return image;
}

}  // namespace brindle::host
