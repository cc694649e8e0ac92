#include "pictures/image_kind.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

namespace brindle::host {

namespace {

using namespace std::string_view_literals;

struct Row {
    std::string_view beginning;
    std::size_t offset;
    ImageKind kind;
};

constexpr std::array kRows{
    Row{"\xFF\xD8\xFF"sv, 0, {ImageFormat::Jpeg, "JPEG", "jpg"}},
    Row{"\x89PNG\r\n\x1A\n"sv, 0, {ImageFormat::Png, "PNG", "png"}},
    Row{"GIF8"sv, 0, {ImageFormat::Other, "GIF", "gif"}},
    Row{"BM"sv, 0, {ImageFormat::Other, "BMP", "bmp"}},
    Row{"WEBP"sv, 8, {ImageFormat::Other, "WebP", "webp"}},
    Row{"II*\0"sv, 0, {ImageFormat::Other, "TIFF", "tif"}},
    Row{"MM\0*"sv, 0, {ImageFormat::Other, "TIFF", "tif"}},
    Row{"ftypavif"sv, 4, {ImageFormat::Other, "AVIF", "avif"}},
    Row{"ftyphei"sv, 4, {ImageFormat::Other, "HEIF", "heic"}},
    Row{"<svg"sv, 0, {ImageFormat::Other, "SVG", "svg"}},
};

}  // namespace

ImageKind image_kind(std::span<const std::uint8_t> image) {
    const std::string_view bytes(reinterpret_cast<const char*>(image.data()), image.size());
    const auto* const row = std::find_if(kRows.begin(), kRows.end(), [&](const Row& candidate) {
        return bytes.size() >= candidate.offset &&
               bytes.substr(candidate.offset).starts_with(candidate.beginning);
    });
    return row == kRows.end() ? ImageKind{} : row->kind;
}

std::vector<std::string> image_extensions() {
    std::set<std::string> extensions{ImageKind().extension};
    for (const Row& row : kRows) {
        extensions.insert(row.kind.extension);
    }
    return {extensions.begin(), extensions.end()};
}

}  // namespace brindle::host
