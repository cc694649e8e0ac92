// The file layer, the clock and the code page on Windows.
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <windows.h>

#include <gtest/gtest.h>

#include <brindle/error.h>

#include "util/binary_file.h"
#include "util/code_page_windows.h"
#include "util/disk_name_windows.h"
#include "util/environment.h"
#include "util/system_error_windows.h"

namespace brindle {
namespace {

FileSystem& files() {
    return system_environment().files;
}

template <typename Call>
std::int32_t number_of_error(Call call) {
    try {
        call();
    } catch (const Error& error) {
        return error.number();
    }
    return 0;
}

std::int32_t opening(const String& name, OpenMode mode) {
    return number_of_error([&] { files().open(name, mode)->close(); });
}

std::span<const std::uint8_t> bytes(const char* text) {
    return {reinterpret_cast<const std::uint8_t*>(text), std::strlen(text)};
}

std::string content(const String& name) {
    const auto file = files().open(name, OpenMode::Read);
    std::array<std::uint8_t, 100> into{};
    const std::size_t count = file->read_at(0, into);
    return {into.begin(), into.begin() + count};
}

// Opened as a virus scanner or an indexer does: others may read.
HANDLE hold(const String& name) {
    const HANDLE held = ::CreateFileW(disk_name(name).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(held, INVALID_HANDLE_VALUE);
    return held;
}

// Holds a file for a moment; it is let go by a thread of its own.
class HeldForAMoment {
public:
    explicit HeldForAMoment(const String& name)
        : file_(hold(name)), thread_(::CreateThread(nullptr, 0, let_go, file_, 0, nullptr)) {
        EXPECT_NE(thread_, nullptr);
    }
    ~HeldForAMoment() {
        ::WaitForSingleObject(thread_, INFINITE);
        ::CloseHandle(thread_);
    }
    HeldForAMoment(const HeldForAMoment&) = delete;
    HeldForAMoment& operator=(const HeldForAMoment&) = delete;

private:
    static DWORD __stdcall let_go(void* file) {
        ::Sleep(300);
        ::CloseHandle(file);
        return 0;
    }

    HANDLE file_;
    HANDLE thread_;
};

template <typename Call>
std::uint64_t milliseconds_of(Call call) {
    const ULONGLONG begin = ::GetTickCount64();
    call();
    return ::GetTickCount64() - begin;
}

String temporary_folder() {
    wchar_t path[MAX_PATH + 1];
    const DWORD size = ::GetTempPathW(MAX_PATH, path);
    return {path, path + size};
}

class WindowsFilesTest : public testing::Test {
protected:
    WindowsFilesTest() {
        ::CreateDirectoryW(disk_name(folder).c_str(), nullptr);
        files().open(song, OpenMode::ReadWriteOrCreate)->write_at(0, bytes("audio"));
    }

    ~WindowsFilesTest() override {
        ::DeleteFileW(disk_name(song).c_str());
        EXPECT_NE(::RemoveDirectoryW(disk_name(folder).c_str()), 0) << "something was left behind";
    }

    WindowsFilesTest(const WindowsFilesTest&) = delete;
    WindowsFilesTest& operator=(const WindowsFilesTest&) = delete;

    String in_folder(const String& name) const { return folder + name; }

    const String folder = temporary_folder() + u"brindle-files\\";
    const String song = folder + u"song.mp3";
};

TEST_F(WindowsFilesTest, WhatCannotBeOpenedHasItsNumber) {
    EXPECT_EQ(opening(song, OpenMode::Read), 0);
    EXPECT_EQ(opening(in_folder(u"none.mp3"), OpenMode::Read), 53);
    EXPECT_EQ(opening(in_folder(u"none.mp3"), OpenMode::ReadWrite), 53);
    EXPECT_EQ(opening(in_folder(u"none\\song.mp3"), OpenMode::Read), 76);
    EXPECT_EQ(opening(folder.substr(0, folder.size() - 1), OpenMode::Read), 75);
    EXPECT_EQ(opening(song + String(1, u'\0') + u".mp3", OpenMode::Read), 53);
    EXPECT_EQ(opening(in_folder(u"so*.mp3"), OpenMode::Read), 53);
    EXPECT_EQ(opening(u"NUL", OpenMode::Read), 75);
}

TEST_F(WindowsFilesTest, OthersDecideWhetherAFileInUseMayBeWritten) {
    const auto writer = files().open(song, OpenMode::ReadWrite);
    EXPECT_EQ(opening(song, OpenMode::Read), 0);
    EXPECT_EQ(opening(song, OpenMode::ReadWrite), 0);
    writer->close();
    const HANDLE other = hold(song);
    EXPECT_EQ(opening(song, OpenMode::Read), 0);
    EXPECT_EQ(opening(song, OpenMode::ReadWrite), 70);
    ::CloseHandle(other);
}

TEST_F(WindowsFilesTest, BytesAreReadAndWrittenAtTheirPlaces) {
    const auto file = files().open(song, OpenMode::ReadWrite);
    EXPECT_EQ(file->length(), 5);
    file->write_at(3, bytes("ABC"));
    EXPECT_EQ(file->length(), 6);
    std::array<std::uint8_t, 4> into{};
    EXPECT_EQ(file->read_at(4, into), 2U);
    EXPECT_EQ(into[0], 'B');
    EXPECT_EQ(file->read_at(6, into), 0U);
    EXPECT_EQ(file->read_at(600, into), 0U);
    file->set_length(2);
    EXPECT_EQ(file->length(), 2);
    file->set_length(4);
    file->flush();
    file->close();
    EXPECT_EQ(content(song), std::string("au\0\0", 4));
}

TEST_F(WindowsFilesTest, PlacesBeyondTwoGigabytesAreReached) {
    constexpr std::int64_t kFar = 5'000'000'000;
    const auto file = files().open(song, OpenMode::ReadWrite);
    file->write_at(kFar, bytes("far"));
    EXPECT_EQ(file->length(), kFar + 3);
    std::array<std::uint8_t, 3> into{};
    EXPECT_EQ(file->read_at(kFar, into), 3U);
    EXPECT_EQ(into[0], 'f');
}

TEST_F(WindowsFilesTest, FilesAreCopiedInPart) {
    String name;
    const auto source = files().open(song, OpenMode::Read);
    auto copy = files().create_beside(song, name);
    EXPECT_EQ(copy->copy_from(*source, 1, 2, 100), 4U);
    EXPECT_EQ(copy->copy_from(*source, 5, 0, 100), 0U);
    copy->close();
    EXPECT_EQ(content(name), std::string("\0\0udio", 6));
    files().remove(name);
}

TEST_F(WindowsFilesTest, NewFileIsBesideAndTakesTheOldOnesPlace) {
    String name;
    auto file = files().create_beside(song, name);
    EXPECT_EQ(name.substr(0, folder.size()), folder);
    EXPECT_TRUE(files().exists(name));
    String other;
    files().create_beside(song, other)->close();
    EXPECT_NE(name, other);
    files().remove(other);
    file->write_at(0, bytes("new"));
    file->close();
    files().replace(name, song);
    EXPECT_FALSE(files().exists(name));
    EXPECT_EQ(content(song), "new");
    files().flush_folder_of(song);
    EXPECT_EQ(files().resolve_links(song), song);
}

TEST_F(WindowsFilesTest, FileInUseIsNeitherReplacedNorLost) {
    String name;
    files().create_beside(song, name)->close();
    const HANDLE other = hold(song);
    EXPECT_EQ(number_of_error([&] { files().replace(name, song); }), 70);
    EXPECT_EQ(number_of_error([&] { files().remove(song); }), 70);
    ::CloseHandle(other);
    EXPECT_EQ(content(song), "audio");
    files().remove(name);
    EXPECT_EQ(number_of_error([&] { files().remove(name); }), 53);
}

TEST_F(WindowsFilesTest, FileThatIsHeldForAMomentIsWaitedFor) {
    String name;
    files().create_beside(song, name)->close();
    {
        const HeldForAMoment held(song);
        EXPECT_EQ(number_of_error([&] { files().replace(name, song); }), 0);
    }
    EXPECT_FALSE(files().exists(name));
    EXPECT_EQ(content(song), "");
    files().create_beside(song, name)->close();
    {
        // The new file, too, is what a scanner opens.
        const HeldForAMoment held(name);
        EXPECT_EQ(number_of_error([&] { files().replace(name, song); }), 0);
    }
    {
        const HeldForAMoment held(song);
        EXPECT_EQ(number_of_error([&] { files().remove(song); }), 0);
    }
    EXPECT_FALSE(files().exists(song));
}

TEST_F(WindowsFilesTest, FileThatIsHeldForLongerIsGivenUpAfterASecond) {
    String name;
    files().create_beside(song, name)->close();
    const HANDLE held = hold(song);
    for (const auto& action : std::initializer_list<std::function<void()>>{
             [&] { files().replace(name, song); }, [&] { files().remove(song); }}) {
        const std::uint64_t time = milliseconds_of([&] { EXPECT_EQ(number_of_error(action), 70); });
        EXPECT_GE(time, 900U);
        EXPECT_LE(time, 2'500U);
    }
    ::CloseHandle(held);
    files().remove(name);
}

TEST_F(WindowsFilesTest, WhatNoWaitingMendsIsNotWaitedFor) {
    String name;
    files().create_beside(song, name)->close();
    const auto expect_at_once = [](std::int32_t number, const std::function<void()>& action) {
        EXPECT_LE(milliseconds_of([&] { EXPECT_EQ(number_of_error(action), number); }), 500U);
    };
    expect_at_once(76, [&] { files().replace(name, in_folder(u"none\\song.mp3")); });
    expect_at_once(53, [&] { files().remove(in_folder(u"none.mp3")); });
    ::SetFileAttributesW(disk_name(song).c_str(), FILE_ATTRIBUTE_READONLY);
    expect_at_once(70, [&] { files().remove(song); });
    // Wine replaces a file that is merely read-only.
    const HANDLE held = hold(song);
    expect_at_once(70, [&] { files().replace(name, song); });
    ::CloseHandle(held);
    ::SetFileAttributesW(disk_name(song).c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(content(song), "audio");
    files().remove(name);
}

TEST_F(WindowsFilesTest, ExistenceIsAskedWithWildcardsInTheLastPart) {
    EXPECT_TRUE(files().exists(song));
    EXPECT_TRUE(files().exists(in_folder(u"SONG.MP3")));
    EXPECT_TRUE(files().exists(in_folder(u"s*.mp?")));
    EXPECT_FALSE(files().exists(in_folder(u"t*.mp?")));
    EXPECT_TRUE(files().exists(folder.substr(0, folder.size() - 1)));
    EXPECT_FALSE(files().exists(folder));
    EXPECT_FALSE(files().exists(song + u"/"));
    EXPECT_FALSE(files().exists(u""));
    EXPECT_FALSE(files().exists(in_folder(u"<.mp3")));
    EXPECT_FALSE(files().exists(song + String(1, u'\0')));
}

TEST(DiskName, LongNamesGetThePrefixAndNoOthers) {
    const String deep(300, u'd');
    EXPECT_EQ(disk_name(u"C:\\music\\song.mp3"), L"C:\\music\\song.mp3");
    const std::wstring wide(300, L'd');
    EXPECT_EQ(disk_name(u"C:\\" + deep + u"\\.\\song.mp3"), L"\\\\?\\C:\\" + wide + L"\\song.mp3");
    EXPECT_EQ(disk_name(u"C:/" + deep + u"/x/../song.mp3"), L"\\\\?\\C:\\" + wide + L"\\song.mp3");
    EXPECT_EQ(disk_name(u"\\\\server\\share\\" + deep), L"\\\\?\\UNC\\server\\share\\" + wide);
    EXPECT_EQ(disk_name(u"\\\\?\\C:\\" + deep), L"\\\\?\\C:\\" + wide);
    const String at_the_limit = u"C:\\" + String(256, u'd');  // 259 and the NUL after them
    EXPECT_EQ(disk_name(at_the_limit).substr(0, 3), L"C:\\");
    EXPECT_EQ(disk_name(at_the_limit + u"d").substr(0, 4), L"\\\\?\\");
}

TEST(SystemError, EveryCodeHasTheNumberThatHostsKnow) {
    struct Case {
        DWORD code;
        std::int32_t open;
        std::int32_t name;
    };
    const Case cases[] = {
        {ERROR_FILE_NOT_FOUND, 53, 53},
        {ERROR_INVALID_NAME, 53, 53},
        {ERROR_PATH_NOT_FOUND, 76, 76},
        {ERROR_BAD_NETPATH, 76, 76},
        {ERROR_ACCESS_DENIED, 75, 70},
        {ERROR_WRITE_PROTECT, 75, 70},
        {ERROR_SHARING_VIOLATION, 70, 70},
        {ERROR_LOCK_VIOLATION, 70, 70},
        {ERROR_FILE_EXISTS, 58, 58},
        {ERROR_ALREADY_EXISTS, 58, 58},
        {ERROR_DISK_FULL, 61, 61},
        {ERROR_HANDLE_DISK_FULL, 61, 61},
        {1295, 61, 61},
        {ERROR_TOO_MANY_OPEN_FILES, 67, 67},
        {ERROR_NOT_ENOUGH_MEMORY, 7, 7},
        {ERROR_CRC, 57, 57},
        {ERROR_NOT_READY, 57, 57},
        {ERROR_GEN_FAILURE, 57, 57},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(static_cast<std::int32_t>(runtime_error(row.code, FileAction::Open)), row.open)
            << row.code;
        EXPECT_EQ(static_cast<std::int32_t>(runtime_error(row.code, FileAction::Name)), row.name)
            << row.code;
    }
}

// The stamp of corrupt tags.
TEST(WindowsClock, MillisecondsAreThoseOfTheMultimediaTimer) {
    for (int i = 0; i < 50; ++i) {
        const DWORD before = ::timeGetTime();
        const std::uint32_t milliseconds = system_environment().clock.milliseconds_since_start();
        const DWORD after = ::timeGetTime();
        // Differences, since the number wraps.
        EXPECT_LE(milliseconds - before, after - before);
        ::Sleep(1);
    }
}

TEST(SystemCodePage, OnlySingleBytePagesThatGoBothWaysServe) {
    const auto western = single_byte_code_page(1252);
    ASSERT_TRUE(western.has_value());
    EXPECT_EQ((*western)[0x80], u'\u20AC');
    EXPECT_EQ((*western)[0xE9], u'\u00E9');
    const auto cyrillic = single_byte_code_page(1251);
    ASSERT_TRUE(cyrillic.has_value());
    EXPECT_EQ((*cyrillic)[0xC0], u'\u0410');
    EXPECT_EQ(single_byte_code_page(932), std::nullopt);    // two bytes for a character
    EXPECT_EQ(single_byte_code_page(65001), std::nullopt);  // up to four
    EXPECT_EQ(single_byte_code_page(37), std::nullopt);     // no ASCII
    EXPECT_EQ(single_byte_code_page(1253), std::nullopt);   // bytes without a character
}

}  // namespace
}  // namespace brindle
