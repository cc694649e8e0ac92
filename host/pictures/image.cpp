#include "pictures/image.h"

namespace brindle::host {

void require_pixels(std::size_t width, std::size_t height) {
    constexpr std::size_t kMaxPixels = 50'000'000;
    if (width == 0 || height == 0 || width > kMaxPixels / height) {
        refuse_image("it has more than 50 megapixels, or none");
    }
}

bool is_kept_profile(const std::uint8_t* profile, std::size_t size) {
    constexpr std::size_t kMaxSize = std::size_t{16} * 1024;
    constexpr std::size_t kColourSpace = 16;
    constexpr std::size_t kHeader = 128;
    return size >= kHeader && size <= kMaxSize &&
           std::string_view(reinterpret_cast<const char*>(profile) + kColourSpace, 4) == "RGB ";
}

Image image_of_size(std::size_t width, std::size_t height) {
    Image image;
    image.width = width;
    image.height = height;
    image.rgb = std::make_unique_for_overwrite<std::uint8_t[]>(width * height * kRgb);
    return image;
}

}  // namespace brindle::host
