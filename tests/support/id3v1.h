// The 128 bytes at the end of a file, from their fields.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "support/bytes.h"

namespace brindle::test {

struct Id3v1 {
    std::string title = {};
    std::string artist = {};
    std::string album = {};
    std::string year = {};
    std::string comment = {};
    std::uint8_t track = 0;
    std::uint8_t genre = 255;
    std::uint8_t byte_125 = 0;
    std::string identifier = "TAG";
    // What fills a field after its text. Most taggers take NULs, Brindle spaces.
    char filler = '\0';

    [[nodiscard]] Bytes bytes() const {
        return Bytes(identifier) + filled(title, 30) + filled(artist, 30) + filled(album, 30) +
               filled(year, 4) + filled(comment, 28) + Bytes{byte_125, track, genre};
    }

private:
    [[nodiscard]] Bytes filled(std::string text, std::size_t width) const {
        text.resize(width, filler);
        return text;
    }
};

}  // namespace brindle::test
