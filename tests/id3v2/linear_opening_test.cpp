// What opening costs grows with the file and no faster. Calls and allocations are counted, so the
// results do not depend on the machine.
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "id3v2/opened_model.h"
#include "support/counting_allocator.h"

namespace brindle {
namespace {

using test::Bytes;
using test::FileCall;
using test::kSong;
using test::OpenedModel;
using test::Tag;

struct Cost {
    std::uint64_t allocations;
    std::uint64_t allocated_bytes;
    std::uint64_t reads;
    std::uint64_t bytes_read;
};

// Without audio, so that the tag alone is what costs.
Cost cost_of(const Bytes& file, std::int32_t frame_ids, const String& id, std::int32_t values) {
    OpenedModel opened;
    opened.world.files.put(kSong, file);
    opened.world.files.reset_counts();
    const std::uint64_t allocations = test::allocations();
    const std::uint64_t allocated_bytes = test::allocated_bytes();
    opened.model.FileName(kSong);
    const Cost cost{test::allocations() - allocations, test::allocated_bytes() - allocated_bytes,
                    opened.world.files.calls(FileCall::Read), opened.world.files.bytes_read()};
    EXPECT_EQ(opened.model.FrameCount(), frame_ids);
    EXPECT_EQ(opened.model.TagsInFrame(id), values);
    return cost;
}

Bytes frame(const std::string& id, const Bytes& body) {
    return Bytes(id) + test::big_endian(body.size(), 4) + test::zeros(2) + body;
}

Bytes custom_fields(int count) {
    Bytes frames;
    for (int number = 0; number < count; ++number) {
        frames += frame("TXXX", test::zeros(1) + Bytes("name" + std::to_string(number)) +
                                    test::zeros(1) + Bytes("v"));
    }
    return Tag(3).raw(frames).padding(5000) + Bytes();
}

Bytes comments(int count) {
    Bytes frames;
    for (int number = 0; number < count; ++number) {
        frames += frame("COMM", test::zeros(1) + Bytes("c"));
    }
    return Tag(3).raw(frames).padding(5000) + Bytes();
}

// Each with an id of its own.
Bytes tiny_frames(int count) {
    Bytes frames;
    for (int number = 0; number < count; ++number) {
        std::string id = "A000";
        int rest = number;
        for (std::size_t place = 3; place > 0; --place) {
            id[place] = static_cast<char>('0' + rest % 40);
            rest /= 40;
        }
        frames += frame(id, test::zeros(1));
    }
    return Tag(3).raw(frames).padding(5000) + Bytes();
}

void expect_linear(const Cost& half, const Cost& whole, std::uint64_t file_size) {
    // Twice the frames: at most twice the cost, and a little for the tables that grow by doubling.
    EXPECT_LE(whole.allocations, 2 * half.allocations + 200);
    EXPECT_LE(whole.allocated_bytes, 3 * half.allocated_bytes);
    EXPECT_LE(whole.reads, 2 * half.reads + 16);
    // Searching for audio after the tag may go over the rest once more.
    EXPECT_LE(whole.bytes_read, 3 * file_size);
}

TEST(LinearOpening, ManyCustomFields) {
    const Bytes file = custom_fields(20000);
    const Cost half = cost_of(custom_fields(10000), 1, u"TXXX", 10000);
    const Cost whole = cost_of(file, 1, u"TXXX", 20000);
    expect_linear(half, whole, file.size());
    EXPECT_LT(whole.allocations, 20000U) << "less than one for each frame";
}

TEST(LinearOpening, ManyValuesOfOneId) {
    const Bytes file = comments(100000);
    const Cost half = cost_of(comments(50000), 1, u"COMM", 50000);
    const Cost whole = cost_of(file, 1, u"COMM", 100000);
    expect_linear(half, whole, file.size());
    EXPECT_LT(whole.allocations, 4000U) << "less than one for twenty-five values";
}

TEST(LinearOpening, ManyTinyFrames) {
    const Bytes file = tiny_frames(50000);
    const Cost half = cost_of(tiny_frames(25000), 25000, u"A000", 1);
    const Cost whole = cost_of(file, 50000, u"A000", 1);
    expect_linear(half, whole, file.size());
    EXPECT_LT(whole.allocations, 100000U) << "not more than two for each frame";
}

}  // namespace
}  // namespace brindle
