// Formats of images, by their first bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace brindle::host {

enum class ImageFormat { Jpeg, Png, Other };

struct ImageKind {
    ImageFormat format = ImageFormat::Other;
    const char* name = "unknown";
    const char* extension = "bin";  // of a file
};

[[nodiscard]] ImageKind image_kind(std::span<const std::uint8_t> image);

// Of all of them, each once.
[[nodiscard]] std::vector<std::string> image_extensions();

}  // namespace brindle::host
