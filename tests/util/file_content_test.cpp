#include "util/file_content.h"

#include <algorithm>
#include <memory>
#include <span>

#include <gtest/gtest.h>

#include "support/memory_files.h"
#include "support/raised_error.h"

namespace brindle {
namespace {

using test::Bytes;
using test::error_number;

class FileContentTest : public testing::Test {
protected:
    void SetUp() override {
        files.put(u"digits", "0123456789");
        files.put(u"letters", "abcdefghij");
        digits = files.open(u"digits", OpenMode::Read);
        letters = files.open(u"letters", OpenMode::Read);
    }
    static Bytes read(const FileContent& content, std::int64_t offset, std::size_t count) {
        Bytes bytes(count, 0);
        return bytes.first(ContentFile(content).read_at(offset, bytes));
    }
    // As copy_to() writes it.
    Bytes copy_of(const FileContent& content) {
        files.put(u"copy", {});
        content.copy_to(*files.open(u"copy", OpenMode::ReadWrite), 0, nullptr);
        return files.content(u"copy");
    }

    test::MemoryFiles files;
    std::unique_ptr<BinaryFile> digits;
    std::unique_ptr<BinaryFile> letters;
};

TEST_F(FileContentTest, OfNothingIsEmpty) {
    const FileContent content;
    EXPECT_EQ(content.size(), 0);
    EXPECT_EQ(read(content, 0, 5), Bytes());
    EXPECT_EQ(copy_of(content), Bytes());
}

TEST_F(FileContentTest, RunsThroughMemoryAndFilesInTheirOrder) {
    const Bytes middle = "--";
    FileContent content;
    content.append(*digits, {2, 5});
    content.append(middle);
    content.append(*letters, {0, 3});
    EXPECT_EQ(content.size(), 8);
    EXPECT_EQ(read(content, 0, 8), Bytes("234--abc"));
    EXPECT_EQ(read(content, 2, 3), Bytes("4--"));
    EXPECT_EQ(read(content, 4, 9), Bytes("-abc"));
    EXPECT_EQ(read(content, 8, 9), Bytes());
    EXPECT_EQ(copy_of(content), Bytes("234--abc"));
}

TEST_F(FileContentTest, EmptyPiecesAddNothing) {
    FileContent content;
    content.append(*digits, {5, 5});
    content.append(*digits, {7, 3});
    content.append(std::span<const std::uint8_t>());
    content.append(*digits, {1, 2});
    EXPECT_EQ(read(content, 0, 9), Bytes("1"));
}

TEST_F(FileContentTest, PartsOfAnotherContentAreTaken) {
    const Bytes middle = "<->";
    FileContent whole;
    whole.append(*digits, {0, 4});
    whole.append(middle);
    whole.append(*letters, {0, 4});
    struct Row {
        ByteRange range;
        const char* expected;
    };
    for (const Row& row : {Row{{0, 11}, "0123<->abcd"}, Row{{2, 5}, "23<"}, Row{{5, 6}, "-"},
                           Row{{6, 9}, ">ab"}, Row{{8, 10}, "bc"}, Row{{4, 4}, ""}}) {
        FileContent part;
        part.append(whole, row.range);
        EXPECT_EQ(read(part, 0, 20), Bytes(row.expected));
        EXPECT_EQ(copy_of(part), Bytes(row.expected));
        EXPECT_EQ(part.size(), row.range.length());
    }
}

// Otherwise bytes after the missing ones would take their place.
TEST_F(FileContentTest, FileThatWasCutEndsTheReading) {
    FileContent content;
    content.append(*digits, {0, 10});
    content.append(*letters, {0, 2});
    files.open(u"digits", OpenMode::ReadWrite)->set_length(4);
    EXPECT_EQ(read(content, 0, 20), Bytes("0123"));
    EXPECT_EQ(error_number([&] { copy_of(content); }), 62);
}

// "0", "11", "222", ... up to nine nines.
class CountedDigits : public ByteSource {
public:
    [[nodiscard]] std::unique_ptr<ByteStream> open() const override {
        ++opened;
        return std::make_unique<Stream>();
    }
    static Bytes all() {
        Bytes bytes;
        for (std::size_t digit = 0; digit < 10; ++digit) {
            bytes += test::repeated(digit + 1, static_cast<std::uint8_t>('0' + digit));
        }
        return bytes;
    }
    mutable int opened = 0;

private:
    class Stream : public ByteStream {
    public:
        std::size_t read(std::span<std::uint8_t> into) override {
            const Bytes part = all().part(std::min<std::size_t>(at_, 55), into.size());
            std::copy(part.begin(), part.end(), into.begin());
            at_ += part.size();
            return part.size();
        }

    private:
        std::size_t at_ = 0;
    };
};

TEST_F(FileContentTest, BytesAreMadeWhileTheyAreRead) {
    const auto source = std::make_shared<CountedDigits>();
    EXPECT_EQ(count_bytes(*source), 55);
    FileContent content;
    content.append(*letters, {0, 3});
    content.append(source, 55);
    content.append(*letters, {3, 4});
    EXPECT_EQ(copy_of(content), "abc" + CountedDigits::all() + "d");
    EXPECT_EQ(read(content, 5, 4), Bytes("1222"));
    FileContent part;
    part.append(content, {6, 57});
    EXPECT_EQ(copy_of(part), CountedDigits::all().part(3, 51));
    EXPECT_EQ(part.read_all(), CountedDigits::all().part(3, 51));
}

// A source is read once from its start to its end, however many reads that takes.
TEST_F(FileContentTest, ReadingOnOpensASourceOnce) {
    const auto source = std::make_shared<CountedDigits>();
    FileContent content;
    content.append(source, 55);
    ContentFile file(content);
    Bytes seen;
    for (std::int64_t offset = 0; offset < 55; offset += 5) {
        Bytes bytes(5, 0);
        seen += bytes.first(file.read_at(offset, bytes));
    }
    EXPECT_EQ(seen, CountedDigits::all());
    EXPECT_EQ(source->opened, 1);
    Bytes byte(1, 0);
    file.read_at(0, byte);
    EXPECT_EQ(source->opened, 2);
}

TEST_F(FileContentTest, OwnedBytesOutliveTheirMaker) {
    FileContent content;
    content.append_owned(Bytes("mine"));
    const FileContent copy = content;
    content = FileContent();
    EXPECT_EQ(copy_of(copy), Bytes("mine"));
}

TEST_F(FileContentTest, FileOfItIsRead) {
    FileContent content;
    content.append(*digits, {3, 6});
    ContentFile file(content);
    Bytes bytes(5, 0);
    EXPECT_EQ(file.length(), 3);
    EXPECT_EQ(file.state().length, 3);
    EXPECT_EQ(bytes.first(file.read_at(1, bytes)), Bytes("45"));
}

TEST_F(FileContentTest, FileOfItCannotBeChanged) {
    FileContent content;
    content.append(*digits, {3, 6});
    ContentFile file(content);
    EXPECT_EQ(error_number([&] { file.write_at(0, Bytes("a")); }), 5);
    EXPECT_EQ(error_number([&] { file.copy_from(*digits, 0, 0, 1); }), 5);
    EXPECT_EQ(error_number([&] { file.set_length(1); }), 5);
    EXPECT_EQ(error_number([&] { file.flush(); }), 5);
    EXPECT_EQ(error_number([&] { file.flush_data(); }), 5);
    file.close();
    EXPECT_EQ(files.content(u"digits"), Bytes("0123456789"));
    EXPECT_EQ(files.open_files(), 2U);
}

TEST(FileContent, HasZeros) {
    const std::vector<std::uint8_t> letters{'a', 'b'};
    FileContent content;
    content.append(letters);
    content.append_zeros(3);
    content.append_owned({'c'});
    EXPECT_EQ(content.read_all(), (std::vector<std::uint8_t>{'a', 'b', 0, 0, 0, 'c'}));
    EXPECT_EQ(content.read({3, 6}), (std::vector<std::uint8_t>{0, 0, 'c'}));
}

}  // namespace
}  // namespace brindle
