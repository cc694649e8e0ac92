// Saving and stripping a file that another program holds open, or that has attributes.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>
#include <windows.h>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "id3v2/cMP3ID3v2.h"
#include "support/bytes.h"
#include "support/frames.h"
#include "support/id3v1.h"
#include "support/tags.h"
#include "support/temporary_folder.h"
#include "support/written_files.h"
#include "util/disk_name_windows.h"
#include "util/environment.h"

namespace brindle {
namespace {

using test::Bytes;
using test::Tag;

constexpr const char* kSong = "song.mp3";
constexpr std::size_t kArea = 2048;
constexpr std::size_t kLargerArea = 4096;

Bytes audio() {
    return test::stream(test::Frame{}, 120);
}

Bytes old_record() {
    return test::Id3v1{.title = "Old", .filler = ' '}.bytes();
}

Bytes old_tag() {
    return Tag(3).text("TIT2", "Old").padded_to(kArea).bytes();
}

Bytes new_tag(const std::string& title, std::size_t area) {
    return test::stamped(Tag(3).text("TIT2", title)).padded_to(area).bytes();
}

const std::string& long_title() {
    static const std::string title = test::title_for(3000);
    return title;
}

enum class Kind { InPlace, Replacement };

struct Way {
    const char* name;
    Kind kind;
    Bytes old;
    Bytes result;
    void (*work)(cMP3ID3v2&);
};

void PrintTo(const Way& way, std::ostream* out) {
    *out << way.name;
}

void set_title(cMP3ID3v2& model, const std::string& title) {
    model.Title(test::wide(title));
    model.Update();
}

std::vector<Way> ways() {
    const Bytes old = old_tag() + audio() + old_record();
    return {
        {"InPlace", Kind::InPlace, old, new_tag("New", kArea) + audio() + old_record(),
         [](cMP3ID3v2& model) { set_title(model, "New"); }},
        {"AppendedRecord", Kind::InPlace, old_tag() + audio(),
         new_tag("New", kArea) + audio() + test::blank_record(),
         [](cMP3ID3v2& model) { set_title(model, "New"); }},
        {"Rebuild", Kind::Replacement, old,
         new_tag(long_title(), kLargerArea) + audio() + old_record(),
         [](cMP3ID3v2& model) { set_title(model, long_title()); }},
        {"Strip1", Kind::Replacement, old, old_tag() + audio(),
         [](cMP3ID3v2& model) { model.RemoveTags(1, {}); }},
        {"Strip2", Kind::Replacement, old, audio() + old_record(),
         [](cMP3ID3v2& model) { model.RemoveTags(2, {}); }},
        {"Strip3", Kind::Replacement, old, audio(),
         [](cMP3ID3v2& model) { model.RemoveTags(3, {}); }},
    };
}

// What a step asks of the others that have the song open.
enum class Step { Reads, Writes, Replaces, AsksNothing };

// The system's own files; tells of each step before it is made.
class SteppedFiles : public FileSystem {
public:
    std::function<void(Step)> before_step = [](Step) {};

    std::unique_ptr<BinaryFile> open(const String& name, OpenMode mode) override {
        before_step(mode == OpenMode::Read ? Step::Reads : Step::Writes);
        return files_.open(name, mode);
    }
    bool exists(const String& name) override {
        before_step(Step::AsksNothing);
        return files_.exists(name);
    }
    String resolve_links(const String& name) override {
        before_step(Step::AsksNothing);
        return files_.resolve_links(name);
    }
    void require_writable(const String& name) override {
        before_step(Step::Writes);
        files_.require_writable(name);
    }
    FileState state(const String& name) override {
        before_step(Step::AsksNothing);
        return files_.state(name);
    }
    std::unique_ptr<BinaryFile> create_beside(const String& neighbour, String& name) override {
        before_step(Step::AsksNothing);
        return files_.create_beside(neighbour, name);
    }
    void copy_attributes(const String& from, BinaryFile& to) override {
        before_step(Step::AsksNothing);
        files_.copy_attributes(from, to);
    }
    bool clone(BinaryFile& from, BinaryFile& to) override {
        before_step(Step::AsksNothing);
        return files_.clone(from, to);
    }
    void remove(const String& name) override {
        before_step(Step::AsksNothing);
        files_.remove(name);
    }
    void replace(const String& from, const String& to) override {
        before_step(Step::Replaces);
        files_.replace(from, to);
    }
    void flush_folder_of(const String& name) override {
        before_step(Step::AsksNothing);
        files_.flush_folder_of(name);
    }

private:
    FileSystem& files_ = system_environment().files;
};

// A song of its own in a folder of its own, opened by a model.
struct OpenedSong {
    explicit OpenedSong(const Way& chosen) : way(chosen) {
        folder.put(kSong, way.old);
        model.FileName(folder.name(kSong));
    }

    // The number of the error, 0 without one.
    std::int32_t work() {
        try {
            way.work(model);
        } catch (const Error& error) {
            return error.number();
        }
        return 0;
    }

    const Way& way;
    test::TemporaryFolder folder;
    SteppedFiles files;
    Environment environment{files, system_environment().clock};
    cMP3ID3v2 model{environment};
};

class Holder {
public:
    Holder(const String& name, DWORD share)
        : file_(::CreateFileW(disk_name(name).c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                              0, nullptr)) {}
    ~Holder() {
        if (holds()) {
            ::CloseHandle(file_);
        }
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    [[nodiscard]] bool holds() const { return file_ != INVALID_HANDLE_VALUE; }

private:
    void* file_;
};

bool is_refused(Step step, DWORD share) {
    const bool reading = (share & FILE_SHARE_READ) != 0;
    switch (step) {
        case Step::Reads:
            return !reading;
        case Step::Writes:
            return !reading || (share & FILE_SHARE_WRITE) == 0;
        case Step::Replaces:
            // Wine, and Windows where the file system cannot rename as POSIX does, replace no file
            // that is open, even if others may delete it.
            return true;
        case Step::AsksNothing:
            break;
    }
    return false;
}

std::string in_words(DWORD share) {
    std::string words = "shares";
    words += (share & FILE_SHARE_READ) != 0 ? " read" : "";
    words += (share & FILE_SHARE_WRITE) != 0 ? " write" : "";
    words += (share & FILE_SHARE_DELETE) != 0 ? " delete" : "";
    return words;
}

struct Cell {
    DWORD share;
    std::size_t step;  // before which the file is held
    bool was_held = false;
    std::int32_t error = 0;
    Bytes content = {};
    std::vector<std::string> entries = {};
};

Cell work_while_held(const Way& way, DWORD share, std::size_t held_before) {
    OpenedSong song(way);
    std::optional<Holder> holder;
    std::size_t steps = 0;
    song.files.before_step = [&](Step) {
        if (steps++ == held_before) {
            holder.emplace(song.folder.name(kSong), share);
        }
    };
    Cell cell{.share = share, .step = held_before};
    cell.error = song.work();
    cell.was_held = holder && holder->holds();
    holder.reset();
    cell.content = song.folder.content(kSong);
    cell.entries = song.folder.entries();
    return cell;
}

class HeldFile : public testing::TestWithParam<Way> {
protected:
    // The steps up to the one by which the file is changed.
    static std::vector<Step> steps_of(const Way& way) {
        OpenedSong song(way);
        std::vector<Step> steps;
        song.files.before_step = [&](Step step) { steps.push_back(step); };
        EXPECT_EQ(song.work(), 0);
        EXPECT_EQ(song.folder.content(kSong), way.result);
        const Step last = way.kind == Kind::InPlace ? Step::Writes : Step::Replaces;
        const auto end = std::find(steps.rbegin(), steps.rend(), last).base();
        EXPECT_NE(end, steps.begin());
        steps.erase(end, steps.end());
        return steps;
    }
};

TEST_P(HeldFile, IsTheOldOneOrTheNewOne) {
    constexpr DWORD kShareModes = 8;  // every sum of read (1), write (2) and delete (4)
    const Way& way = GetParam();
    const std::vector<Step> steps = steps_of(way);
    // Side by side, as many of them wait for a second.
    std::vector<std::vector<Cell>> cells(kShareModes);
    std::vector<std::thread> threads;
    for (DWORD share = 0; share < kShareModes; ++share) {
        threads.emplace_back([&, share] {
            for (std::size_t step = 0; step < steps.size(); ++step) {
                cells[share].push_back(work_while_held(way, share, step));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::size_t refused = 0;
    for (const std::vector<Cell>& row : cells) {
        for (const Cell& cell : row) {
            SCOPED_TRACE(in_words(cell.share) + ", held before step " + std::to_string(cell.step));
            const bool shares_reading = (cell.share & FILE_SHARE_READ) != 0;
            // No program can open the file without sharing reading once the save reads it.
            EXPECT_TRUE(cell.was_held || (cell.step > 0 && !shares_reading));
            const bool is_refused_later =
                std::any_of(steps.begin() + static_cast<std::ptrdiff_t>(cell.step), steps.end(),
                            [&](Step step) { return is_refused(step, cell.share); });
            EXPECT_EQ(cell.error, cell.was_held && is_refused_later ? 70 : 0);
            EXPECT_TRUE(cell.content == (cell.error == 0 ? way.result : way.old));
            EXPECT_EQ(cell.entries, std::vector<std::string>{kSong});
            refused += cell.error == 0 ? 0U : 1U;
        }
    }
    EXPECT_GT(refused, steps.size());
}

// Hosts only get False.
TEST(HeldFileOfAHost, IsNotStripped) {
    const std::vector<Way> all = ways();
    const Way& way = all.front();
    OpenedSong song(way);
    const Holder holder(song.folder.name(kSong), FILE_SHARE_READ);
    for (const std::int32_t tags : {1, 2, 3}) {
        EXPECT_FALSE(song.model.StripTags(tags)) << tags;
        EXPECT_TRUE(song.folder.content(kSong) == way.old) << tags;
    }
}

// Under Wine the superuser may write what is read-only.
bool may_be_written(const std::wstring& path) {
    void* const file = ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                     OPEN_EXISTING, 0, nullptr);
    return file != INVALID_HANDLE_VALUE && ::CloseHandle(file) != 0;
}

TEST_P(HeldFile, AttributesAreKeptInPlaceAndThoseOfANewFileOtherwise) {
    const Way& way = GetParam();
    for (const DWORD attribute :
         {FILE_ATTRIBUTE_READONLY, FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_SYSTEM}) {
        SCOPED_TRACE(attribute);
        OpenedSong song(way);
        const std::wstring path = disk_name(song.folder.name(kSong));
        ASSERT_NE(::SetFileAttributesW(path.c_str(), attribute), 0);
        ASSERT_NE(::GetFileAttributesW(path.c_str()) & attribute, 0U);
        const bool refused = !may_be_written(path);
        EXPECT_TRUE(!refused || attribute == FILE_ATTRIBUTE_READONLY);
        EXPECT_EQ(song.work(), refused ? 75 : 0);
        EXPECT_EQ((::GetFileAttributesW(path.c_str()) & attribute) != 0,
                  refused || way.kind == Kind::InPlace);
        ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        EXPECT_TRUE(song.folder.content(kSong) == (refused ? way.old : way.result));
        EXPECT_EQ(song.folder.entries(), std::vector<std::string>{kSong});
    }
}

INSTANTIATE_TEST_SUITE_P(By, HeldFile, testing::ValuesIn(ways()),
                         [](const auto& way) { return way.param.name; });

}  // namespace
}  // namespace brindle
