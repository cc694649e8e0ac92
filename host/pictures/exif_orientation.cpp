#include "pictures/exif_orientation.h"

#include <cstddef>

namespace brindle::host {

namespace {

// Numbers in the byte order of the data; 0 after its end.
class TiffNumbers {
public:
    explicit TiffNumbers(std::span<const std::uint8_t> bytes)
        : bytes_(bytes), is_big_endian_(!bytes.empty() && bytes.front() == 'M') {}

    [[nodiscard]] std::uint32_t read(std::size_t offset, std::size_t width) const {
        constexpr unsigned kByte = 8;
        if (offset > bytes_.size() || bytes_.size() - offset < width) {
            return 0;
        }
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < width; ++i) {
            number = number << kByte | bytes_[offset + (is_big_endian_ ? i : width - 1 - i)];
        }
        return number;
    }

private:
    std::span<const std::uint8_t> bytes_;
    bool is_big_endian_;
};

}  // namespace

//   "II" or "MM" | 42 | offset of the first directory
//   directory: count of entries | entries of 12 bytes: id, type, count, value
int exif_orientation(std::span<const std::uint8_t> tiff) {
    constexpr std::uint32_t kMark = 42;
    constexpr std::uint32_t kOrientation = 0x0112;
    constexpr std::uint32_t kShort = 3;
    constexpr std::size_t kEntry = 12;
    constexpr std::uint32_t kLast = 8;
    const TiffNumbers numbers(tiff);
    if (numbers.read(2, 2) != kMark) {
        return 1;
    }
    const std::size_t directory = numbers.read(4, 4);
    const std::size_t count = numbers.read(directory, 2);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t entry = directory + 2 + i * kEntry;
        if (numbers.read(entry, 2) == kOrientation && numbers.read(entry + 2, 2) == kShort) {
            const std::uint32_t value = numbers.read(entry + 8, 2);
            return value >= 1 && value <= kLast ? static_cast<int>(value) : 1;
        }
    }
    return 1;
}

}  // namespace brindle::host
