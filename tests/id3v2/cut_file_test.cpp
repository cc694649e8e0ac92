#include "id3v2/cut_file.h"

#include <memory>

#include <gtest/gtest.h>

#include "support/memory_files.h"
#include "util/error_number.h"

namespace brindle {
namespace {

using test::Bytes;
using test::error_number;

const String kName = u"song.mp3";

class CutFileTest : public testing::Test {
protected:
    static Bytes read(CutFile& file, std::int64_t offset, std::size_t count) {
        Bytes bytes(count, 0);
        return bytes.first(file.read_at(offset, bytes));
    }
    void put(const Bytes& content) {
        files.put(kName, content);
        whole = files.open(kName, OpenMode::ReadWrite);
    }

    test::MemoryFiles files;
    std::unique_ptr<BinaryFile> whole;
};

TEST_F(CutFileTest, ReadsAsIfTheStretchWereNotThere) {
    put("0123456789");
    CutFile file(*whole, {3, 6});
    EXPECT_EQ(file.length(), 7);
    EXPECT_EQ(read(file, 0, 7), Bytes("0126789"));
    EXPECT_EQ(read(file, 0, 3), Bytes("012"));
    EXPECT_EQ(read(file, 2, 3), Bytes("267"));
    EXPECT_EQ(read(file, 3, 2), Bytes("67"));
    EXPECT_EQ(read(file, 6, 5), Bytes("9"));
    EXPECT_EQ(read(file, 7, 5), Bytes());
}

// Or bytes from behind the stretch would stand where others are missing.
TEST_F(CutFileTest, FileThatEndsBeforeTheStretchEndsThere) {
    put("01");
    CutFile file(*whole, {3, 6});
    EXPECT_EQ(read(file, 0, 7), Bytes("01"));
}

TEST_F(CutFileTest, CannotBeWritten) {
    put("0123456789");
    CutFile file(*whole, {3, 6});
    EXPECT_EQ(error_number([&] { file.write_at(0, Bytes("a")); }), 5);
    EXPECT_EQ(error_number([&] { file.copy_from(*whole, 0, 0, 1); }), 5);
    EXPECT_EQ(error_number([&] { file.set_length(1); }), 5);
    EXPECT_EQ(error_number([&] { file.flush(); }), 5);
    file.close();
    EXPECT_EQ(files.open_files(), 0U);
    EXPECT_EQ(files.content(kName), Bytes("0123456789"));
}

}  // namespace
}  // namespace brindle
