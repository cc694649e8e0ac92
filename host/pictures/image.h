// A decoded image, in the process that decodes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace brindle::host {

inline constexpr std::size_t kRgb = 3;

struct Image {
    std::size_t width = 0;
    std::size_t height = 0;
    // Three bytes a pixel, row by row. Not initialised: memory is used only as far as rows are
    // decoded, whatever size the header claims.
    std::unique_ptr<std::uint8_t[]> rgb;
    std::vector<std::uint8_t> profile;  // ICC; of RGB
    int orientation = 1;                // EXIF, 1 to 8

    [[nodiscard]] std::uint8_t* row(std::size_t y) const { return &rgb[y * width * kRgb]; }
};

// Exit status of the process for an image that it does not shrink. Its output is the reason.
inline constexpr int kImageRefused = 3;

// Writes the reason and ends the process, so that no exception passes through frames of C.
[[noreturn]] void refuse_image(std::string_view reason);

// Refuses an image of more than 50 megapixels, by its header.
void require_pixels(std::size_t width, std::size_t height);

// A profile that is kept: of RGB, and small.
[[nodiscard]] bool is_kept_profile(const std::uint8_t* profile, std::size_t size);

// Without pixels yet.
[[nodiscard]] Image image_of_size(std::size_t width, std::size_t height);

}  // namespace brindle::host
