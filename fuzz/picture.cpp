// Images of any bytes, shrunk in this process: each is refused, or becomes a JPEG image of at most
// the allowed bytes and pixels. The decoders are system libraries and not instrumented; the target
// tests what we make of headers, orientations, profiles and rows.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>
#include <zlib.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BRINDLE_WATCHES_MEMORY
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define BRINDLE_WATCHES_MEMORY
#endif
#ifdef BRINDLE_WATCHES_MEMORY
#include <sanitizer/allocator_interface.h>
#endif

#include "fuzz/input.h"
#include "pictures/image.h"
#include "pictures/image_kind.h"
#include "pictures/jpeg_image.h"
#include "pictures/shrink_image.h"

using brindle::fuzz::Input;
using brindle::fuzz::require;
using namespace brindle::host;

namespace {

constexpr std::uint64_t kMaxPixels = 50'000'000;
// Larger images take seconds; the tests of the program have some.
constexpr std::uint64_t kMaxDecodedPixels = 1'000'000;
constexpr std::size_t kLargestSide = 2'400;
constexpr std::size_t kFewestBytes = 600;
// Of an image of the size above, and of a chunk that an image has.
constexpr std::size_t kMaxMemory = std::size_t{32} * 1024 * 1024;
constexpr std::size_t kMaxMemoryOfHeader = std::size_t{1024} * 1024;

struct Refusal {};

using Block = const volatile void*;

// What is allocated while an image is shrunk, without allocating anything. An image that is refused
// leaves blocks of the decoder behind, which the end of the process frees in the program.
struct Memory {
    std::array<Block, 65'536> blocks{};
    std::size_t count = 0;
    std::size_t live = 0;
    std::size_t peak = 0;
    bool is_watched = false;
};
Memory memory;

#ifdef BRINDLE_WATCHES_MEMORY
void note_block(Block block, std::size_t size) {
    if (memory.is_watched && block != nullptr) {
        if (memory.count == memory.blocks.size()) {
            std::abort();  // no image needs that many
        }
        memory.blocks[memory.count++] = block;
        memory.live += size;
        memory.peak = std::max(memory.peak, memory.live);
    }
}

void forget_block(Block block) {
    if (!memory.is_watched || block == nullptr) {
        return;
    }
    auto* const end = memory.blocks.data() + memory.count;
    auto* const found = std::find(memory.blocks.data(), end, block);
    if (found != end) {
        *found = *(end - 1);
        --memory.count;
        memory.live -= __sanitizer_get_allocated_size(const_cast<const void*>(block));
    }
}

const int kHooks = __sanitizer_install_malloc_and_free_hooks(note_block, forget_block);
#endif

// An exception frees our own memory; what is left is that of the decoder.
void free_the_rest() {
    memory.is_watched = false;
    for (std::size_t i = 0; i < memory.count; ++i) {
        // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): allocated by C
        std::free(const_cast<void*>(memory.blocks[i]));
    }
    memory.count = 0;
}

std::uint32_t number_at(std::span<const std::uint8_t> bytes, std::size_t place, std::size_t width) {
    std::uint32_t number = 0;
    for (const std::uint8_t byte : bytes.subspan(place, width)) {
        number = number << 8U | byte;
    }
    return number;
}

void put_number(std::span<std::uint8_t, 4> place, std::uint32_t number) {
    for (std::uint8_t& byte : place) {
        byte = static_cast<std::uint8_t>(number >> 24U);
        number <<= 8U;
    }
}

// length | name | data | checksum, without which no changed chunk would be read
void mend_checksums(std::vector<std::uint8_t>& png) {
    constexpr std::size_t kSignature = 8;
    constexpr std::size_t kAround = 12;
    std::size_t place = kSignature;
    while (place + kAround <= png.size()) {
        const std::size_t length = number_at(png, place, 4);
        if (length > png.size() - place - kAround) {
            return;
        }
        const auto named = std::span(png).subspan(place + 4, 4 + length);
        const auto sum = crc32(0, named.data(), static_cast<uInt>(named.size()));
        put_number(std::span(png).subspan(place + kAround - 4 + length).first<4>(),
                   static_cast<std::uint32_t>(sum));
        place += kAround + length;
    }
}

// What its headers claim. A JPEG image may have several that look like one.
struct Claim {
    std::uint64_t fewest = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t most = 0;

    void add(std::uint64_t width, std::uint64_t height) {
        fewest = std::min(fewest, width * height);
        most = std::max(most, width * height);
    }
};

Claim claim_of(std::span<const std::uint8_t> image) {
    Claim claim;
    if (image_kind(image).format == ImageFormat::Png) {
        constexpr std::size_t kWidth = 16;
        constexpr std::size_t kHeight = 20;
        if (image.size() >= kHeight + 4) {
            claim.add(number_at(image, kWidth, 4), number_at(image, kHeight, 4));
        }
        return claim;
    }
    // FF C0 to FF CF | length, 2 | precision | height, 2 | width, 2
    constexpr std::size_t kFrame = 9;
    constexpr std::string_view kOthers = "\xC4\xC8\xCC";  // tables
    for (std::size_t i = 0; i + kFrame <= image.size(); ++i) {
        if (image[i] == 0xFF && image[i + 1] >= 0xC0 && image[i + 1] <= 0xCF &&
            kOthers.find(static_cast<char>(image[i + 1])) == std::string_view::npos) {
            claim.add(number_at(image, i + 7, 2), number_at(image, i + 5, 2));
        }
    }
    return claim;
}

// Nothing where the image is refused.
std::vector<std::uint8_t> shrunk(std::span<const std::uint8_t> image, std::size_t max_bytes) {
    memory.live = 0;
    memory.peak = 0;
    memory.is_watched = true;
    try {
        std::vector<std::uint8_t> made = shrunk_image(image, max_bytes);
        memory.is_watched = false;
        memory.count = 0;
        require(!made.empty(), "an image has bytes");
        return made;
    } catch (const Refusal&) {
    }
    free_the_rest();
    return {};
}

void check(std::span<const std::uint8_t> made, const Claim& claim, std::size_t max_bytes) {
    require(made.size() <= max_bytes, "an image has at most the allowed bytes");
    require(image_kind(made).format == ImageFormat::Jpeg, "what is made is a JPEG image");
    try {
        const Image image = read_jpeg(made, kLargestSide);
        require(std::max(image.width, image.height) <= kLargestSide, "an image has short sides");
        require(image.width * image.height <= claim.most, "an image does not grow");
        require(image.orientation == 1, "an image is upright");
    } catch (const Refusal&) {
        require(false, "what is made can be decoded");
    }
}

}  // namespace

namespace brindle::host {

// The program's own ends the process. The frames of C that the exception passes have tables for it,
// as on all systems where the fuzzers run.
void refuse_image(std::string_view reason) {
    require(!reason.empty(), "a refusal has a reason");
    throw Refusal();
}

}  // namespace brindle::host

// How many bytes are allowed, 2; the image.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::size_t max_bytes = kFewestBytes + input.number(2);
    const auto bytes = input.rest();
    std::vector<std::uint8_t> image(bytes.begin(), bytes.end());
    if (image_kind(image).format == ImageFormat::Png) {
        mend_checksums(image);
    }
    const Claim claim = claim_of(image);
    if (claim.most > kMaxDecodedPixels && claim.fewest <= kMaxPixels) {
        return 0;
    }
    const std::vector<std::uint8_t> made = shrunk(image, max_bytes);
    require(memory.peak <= kMaxMemory, "an image takes little memory");
    if (!made.empty()) {
        require(claim.fewest <= kMaxPixels, "an image of too many pixels is refused");
        check(made, claim, max_bytes);
    } else if (claim.fewest > kMaxPixels) {
        require(memory.peak <= kMaxMemoryOfHeader, "an image that is too large takes no memory");
    }
    return 0;
}
