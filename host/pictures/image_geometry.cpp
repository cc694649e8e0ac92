#include "pictures/image_geometry.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace brindle::host {

namespace {

std::size_t scaled_side(std::size_t side, std::size_t longer, std::size_t new_longer) {
    return std::max<std::size_t>(1, (side * new_longer + longer / 2) / longer);
}

// Pixels `begin` to `end` of the old row or column, as far as they lie in one new pixel.
struct Area {
    Area(std::size_t place, std::size_t count, std::size_t old_count)
        : begin(static_cast<double>(place) * static_cast<double>(old_count) /
                static_cast<double>(count)),
          end(static_cast<double>(place + 1) * static_cast<double>(old_count) /
              static_cast<double>(count)),
          first(static_cast<std::size_t>(begin)),
          last(std::min(old_count, static_cast<std::size_t>(std::ceil(end)))) {}

    // How much of an old pixel lies in it.
    [[nodiscard]] float share(std::size_t old) const {
        const double from = std::max(begin, static_cast<double>(old));
        const double to = std::min(end, static_cast<double>(old + 1));
        return static_cast<float>(std::max(0.0, to - from) / (end - begin));
    }

    double begin;
    double end;
    std::size_t first;
    std::size_t last;
};

// The place of an upright pixel in the image as it is stored.
std::pair<std::size_t, std::size_t> stored_place(const Image& image, std::size_t x, std::size_t y) {
    const std::size_t right = image.width - 1;
    const std::size_t bottom = image.height - 1;
    switch (image.orientation) {
        case 2:
            return {right - x, y};
        case 3:
            return {right - x, bottom - y};
        case 4:
            return {x, bottom - y};
        case 5:
            return {y, x};
        case 6:
            return {y, bottom - x};
        case 7:
            return {right - y, bottom - x};
        case 8:
            return {right - y, x};
        default:
            return {x, y};
    }
}

}  // namespace

Image scaled(const Image& image, std::size_t longer_side) {
    const std::size_t longer = std::max(image.width, image.height);
    const std::size_t new_longer = std::min(longer, longer_side);
    Image made = image_of_size(scaled_side(image.width, longer, new_longer),
                               scaled_side(image.height, longer, new_longer));
    made.profile = image.profile;
    made.orientation = image.orientation;
    std::vector<Area> columns;
    columns.reserve(made.width);
    for (std::size_t x = 0; x < made.width; ++x) {
        columns.emplace_back(x, made.width, image.width);
    }
    std::vector<float> sums(made.width * kRgb);
    for (std::size_t y = 0; y < made.height; ++y) {
        const Area rows(y, made.height, image.height);
        std::fill(sums.begin(), sums.end(), 0.0F);
        for (std::size_t old_y = rows.first; old_y < rows.last; ++old_y) {
            const float row_share = rows.share(old_y);
            const std::uint8_t* const row = image.row(old_y);
            for (std::size_t x = 0; x < made.width; ++x) {
                for (std::size_t old_x = columns[x].first; old_x < columns[x].last; ++old_x) {
                    const float share = row_share * columns[x].share(old_x);
                    for (std::size_t i = 0; i < kRgb; ++i) {
                        sums[x * kRgb + i] += share * static_cast<float>(row[old_x * kRgb + i]);
                    }
                }
            }
        }
        std::transform(sums.begin(), sums.end(), made.row(y), [](float sum) {
            return static_cast<std::uint8_t>(std::lround(std::clamp(sum, 0.0F, 255.0F)));
        });
    }
    return made;
}

Image turned(Image image) {
    constexpr int kFirstOnItsSide = 5;
    if (image.orientation == 1) {
        return image;
    }
    const bool is_on_its_side = image.orientation >= kFirstOnItsSide;
    Image made = image_of_size(is_on_its_side ? image.height : image.width,
                               is_on_its_side ? image.width : image.height);
    made.profile = std::move(image.profile);
    for (std::size_t y = 0; y < made.height; ++y) {
        for (std::size_t x = 0; x < made.width; ++x) {
            const auto [old_x, old_y] = stored_place(image, x, y);
            std::copy_n(image.row(old_y) + old_x * kRgb, kRgb, made.row(y) + x * kRgb);
        }
    }
    return made;
}

}  // namespace brindle::host
