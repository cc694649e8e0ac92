// A build without the libraries that decode pictures.
#include "pictures/shrunk_picture.h"

namespace brindle::host {

std::optional<std::string> reason_against_shrinking() {
    return "built without libjpeg-turbo and libpng, which decode pictures";
}

ShrunkPicture shrink_picture(std::span<const std::uint8_t> /*image*/, std::size_t /*max_bytes*/) {
    throw PictureError(*reason_against_shrinking());
}

std::optional<int> run_picture_process(const std::vector<std::string>& /*arguments*/) {
    return std::nullopt;
}

}  // namespace brindle::host
