// Pictures that hosts read: smaller JPEG images, made by a process of their own with limits on
// memory and time, since images come from anywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace brindle::host {

// Why this program does not shrink pictures, or nothing.
[[nodiscard]] std::optional<std::string> reason_against_shrinking();

struct ShrunkPicture {
    std::vector<std::uint8_t> image;  // JPEG
    std::string refusal;              // why there is none; "" where there is one
};

// The process has not ended as it should, or could not be started.
class PictureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Of a JPEG or PNG image, of at most that many bytes. Raises PictureError.
[[nodiscard]] ShrunkPicture shrink_picture(std::span<const std::uint8_t> image,
                                           std::size_t max_bytes);

// Does the process's work if the program was started for it. The answer is then its exit status.
[[nodiscard]] std::optional<int> run_picture_process(const std::vector<std::string>& arguments);

}  // namespace brindle::host
