#include "util/copy_bytes.h"

#include <numeric>

#include <gtest/gtest.h>

#include "support/memory_files.h"
#include "support/raised_error.h"

namespace brindle {
namespace {

using test::Bytes;
using test::error_number;

class YieldCount : public Host {
public:
    void RaiseScanningEvent(const String&, std::int32_t, std::int32_t, bool&) override {}
    void yield() override { ++yields; }
    void show_message(const String&) override {}

    int yields = 0;
};

Bytes counted(std::size_t count) {
    Bytes bytes(count, 0);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

class CopyBytes : public testing::Test {
protected:
    void copy(const Bytes& from, std::int64_t from_offset, std::int64_t to_offset,
              std::int64_t count, Host* host = nullptr) {
        files.put(u"from", from);
        files.put(u"to", {});
        copy_bytes(*files.open(u"from", OpenMode::Read), from_offset,
                   *files.open(u"to", OpenMode::ReadWrite), to_offset, count, host);
    }

    test::MemoryFiles files;
};

TEST_F(CopyBytes, TakesThemFromAnyPlaceToAnyPlace) {
    copy("0123456789", 3, 2, 4);
    EXPECT_EQ(files.content(u"to"), Bytes({0, 0, '3', '4', '5', '6'}));
}

TEST_F(CopyBytes, SourceThatEndsTooEarlyIsAnError) {
    const Bytes source = counted(1'000);
    EXPECT_EQ(error_number([&] { copy(source, 0, 0, 1'500); }), 62);
    EXPECT_EQ(files.content(u"to"), source);
    EXPECT_EQ(error_number([&] { copy(source, 1'000, 0, 1); }), 62);
}

TEST_F(CopyBytes, HostMayRunAfterEvery409600Bytes) {
    YieldCount host;
    copy(counted(409'599), 0, 0, 409'599, &host);
    EXPECT_EQ(host.yields, 0);
    copy(counted(1'000'000), 0, 0, 1'000'000, &host);
    EXPECT_EQ(host.yields, 2);  // 819,200 and no 1,228,800
}

}  // namespace
}  // namespace brindle
