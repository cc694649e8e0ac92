#include "pictures/shrink_image.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <optional>

#include "pictures/image.h"
#include "pictures/image_geometry.h"
#include "pictures/image_kind.h"
#include "pictures/jpeg_image.h"
#include "pictures/png_image.h"

namespace brindle::host {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kSmallestSide = 300;
// No larger image of acceptable quality has so few bytes as hosts read.
constexpr std::size_t kLargestSide = 2'400;
constexpr int kLowQuality = 75;

Image read_image(std::span<const std::uint8_t> bytes) {
    switch (image_kind(bytes).format) {
        case ImageFormat::Jpeg:
            return read_jpeg(bytes, kLargestSide);
        case ImageFormat::Png:
            return read_png(bytes);
        default:
            refuse_image("it is neither a JPEG nor a PNG image");
    }
}

// The first of these qualities in which the image has so few bytes.
std::optional<Bytes> jpeg_that_fits(const Image& image, std::initializer_list<int> qualities,
                                    std::size_t max_bytes) {
    for (const int quality : qualities) {
        Bytes made = jpeg_of(image, quality);
        if (made.size() <= max_bytes) {
            return made;
        }
    }
    return std::nullopt;
}

// The side at which the image is expected to fit, by the number of its pixels.
std::size_t next_side(std::size_t side, std::size_t bytes, std::size_t max_bytes) {
    constexpr double kMargin = 0.97;
    const double ratio =
        std::sqrt(static_cast<double>(max_bytes) / static_cast<double>(bytes)) * kMargin;
    return std::max(kSmallestSide, static_cast<std::size_t>(static_cast<double>(side) * ratio));
}

}  // namespace

std::vector<std::uint8_t> shrunk_image(std::span<const std::uint8_t> bytes, std::size_t max_bytes) {
    const Image whole = turned(scaled(read_image(bytes), kLargestSide));
    std::size_t side = std::max(whole.width, whole.height);
    for (;;) {
        const Image image = scaled(whole, side);
        Bytes low = jpeg_of(image, kLowQuality);
        if (low.size() <= max_bytes) {
            return jpeg_that_fits(image, {95, 90, 85, 80}, max_bytes).value_or(std::move(low));
        }
        if (side <= kSmallestSide) {
            if (auto made = jpeg_that_fits(image, {65, 55, 45, 35, 25, 15, 5}, max_bytes)) {
                return *made;
            }
            refuse_image("it cannot be made small enough");
        }
        side = next_side(side, low.size(), max_bytes);
    }
}

}  // namespace brindle::host
