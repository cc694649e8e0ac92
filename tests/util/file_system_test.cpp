// Opening and naming files on this machine's disk.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <brindle/text.h>

#include "support/raised_error.h"
#include "support/temporary_folder.h"
#include "util/binary_file.h"
#include "util/environment.h"
#include "util/file_exists.h"
#include "util/system_calls.h"

namespace brindle {
namespace {

using test::at_most;
using test::Bytes;
using test::error_number;
using test::fails_with;
using test::SystemCall;
using test::SystemCalls;
using test::TemporaryFolder;

FileSystem& files() {
    return system_environment().files;
}

std::int32_t opening(const String& name, OpenMode mode) {
    return error_number([&] { files().open(name, mode)->close(); });
}

void link_to(const std::string& target, const std::string& link) {
    std::filesystem::create_symlink(target, link);
}

class FileSystemTest : public testing::Test {
protected:
    FileSystemTest() {
        folder.put("song.mp3", "audio");
        std::filesystem::create_directory(folder.path("folder"));
    }

    TemporaryFolder folder;
};

// Rights that root has as well as the owner are taken from the thread while it lives, so that what
// is forbidden to all is forbidden here.
class OrdinaryUser {
public:
    OrdinaryUser() { ::setfsuid(kNobody); }
    ~OrdinaryUser() { ::setfsuid(::geteuid()); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr uid_t kNobody = 65534;
};

TEST_F(FileSystemTest, EachModeTreatsAMissingFileInItsWay) {
    struct Case {
        const char* name;
        std::int32_t read;
        std::int32_t write;
        std::int32_t create;
    };
    const Case cases[] = {
        {"song.mp3", 0, 0, 0},
        {"missing.mp3", 53, 53, 0},
        {"missing/song.mp3", 76, 76, 76},
        {"song.mp3/song.mp3", 76, 76, 76},
        {"folder", 75, 75, 75},
        {"folder/", 75, 75, 75},
        {"pipe", 75, 75, 75},
        {"socket", 75, 75, 75},
        {"link to a song", 0, 0, 0},
        {"link to a folder", 75, 75, 75},
        {"link to a pipe", 75, 75, 75},
        {"link to itself", 75, 75, 75},
    };
    // It has no writer: code that waits for a writer runs into the time limit of the test.
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string socket_name = folder.path("socket");
    ASSERT_LT(socket_name.size(), sizeof address.sun_path);
    std::copy(socket_name.begin(), socket_name.end(), std::begin(address.sun_path));
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
    link_to("song.mp3", folder.path("link to a song"));
    link_to("folder", folder.path("link to a folder"));
    link_to("pipe", folder.path("link to a pipe"));
    link_to("link to itself", folder.path("link to itself"));
    for (const Case& row : cases) {
        const String name = folder.name(row.name);
        EXPECT_EQ(opening(name, OpenMode::Read), row.read) << row.name;
        EXPECT_EQ(opening(name, OpenMode::ReadWrite), row.write) << row.name;
        EXPECT_EQ(opening(name, OpenMode::ReadWriteOrCreate), row.create) << row.name;
    }
    EXPECT_EQ(folder.content("song.mp3"), Bytes("audio"));
    EXPECT_EQ(folder.content("missing.mp3"), Bytes(""));
}

TEST_F(FileSystemTest, OpeningContinuesAfterASignal) {
    SystemCalls calls;
    calls.plan(SystemCall::Open, fails_with(EINTR), 2);
    EXPECT_EQ(opening(folder.name("song.mp3"), OpenMode::Read), 0);
    EXPECT_EQ(calls.seen(SystemCall::Open).size(), 3U);
}

TEST_F(FileSystemTest, UnreadableFactsCloseTheFile) {
    SystemCalls calls;
    calls.plan(SystemCall::Status, {fails_with(EIO)});
    EXPECT_EQ(opening(folder.name("song.mp3"), OpenMode::Read), 57);
    EXPECT_EQ(calls.seen(SystemCall::Close).size(), 1U);
}

TEST_F(FileSystemTest, DevicesAreNoFiles) {
    EXPECT_EQ(opening(u"/dev/null", OpenMode::Read), 75);
    EXPECT_EQ(opening(u"/dev/zero", OpenMode::ReadWrite), 75);
}

TEST_F(FileSystemTest, NamesThatNoFileCanHave) {
    EXPECT_EQ(opening(u"", OpenMode::Read), 53);
    EXPECT_EQ(opening(folder.name("song.mp3") + String(u"\0x", 2), OpenMode::Read), 53);
    EXPECT_EQ(opening(folder.name(std::string(256, 'x')), OpenMode::Read), 76);
    EXPECT_EQ(error_number([&] { files().remove(folder.name("song.mp3") + String(1, u'\0')); }),
              53);
    EXPECT_EQ(folder.content("song.mp3"), Bytes("audio"));
}

TEST_F(FileSystemTest, EveryNameOnDiskCanBeOpened) {
    for (const char* name : {"Gr\xC3\xBC\xC3\x9F.mp3", "\xF0\x9F\x98\x80.mp3", "\xFF\xFE.mp3",
                             "\xC3.mp3", "\xED\xA0\x80.mp3", "a\\b.mp3", "*?.mp3", " .mp3"}) {
        folder.put(name, "audio");
        EXPECT_EQ(opening(folder.name(name), OpenMode::Read), 0) << name;
        EXPECT_TRUE(files().exists(folder.name(name))) << name;
    }
}

TEST_F(FileSystemTest, LinkToNowhereIsAMissingFile) {
    link_to("nowhere", folder.path("link"));
    EXPECT_EQ(opening(folder.name("link"), OpenMode::Read), 53);
    EXPECT_EQ(opening(folder.name("link"), OpenMode::ReadWrite), 53);
}

mode_t mode_of(const std::string& name) {
    struct stat status {};
    EXPECT_EQ(::stat(name.c_str(), &status), 0) << name;
    return status.st_mode & 07777;
}

TEST_F(FileSystemTest, FileThatOpeningCreatesHasANewFilesAttributes) {
    const mode_t mask = ::umask(027);
    files().open(folder.name("opened"), OpenMode::ReadWriteOrCreate)->close();
    ::umask(mask);
    EXPECT_EQ(mode_of(folder.path("opened")), 0640U);  // 0666 without 027
}

TEST_F(FileSystemTest, FileMadeForAReplacementIsItsOwnersAlone) {
    const mode_t mask = ::umask(0);
    String beside;
    files().create_beside(folder.name("song.mp3"), beside)->close();
    ::umask(mask);
    EXPECT_EQ(mode_of(to_utf8(beside)), 0600U);
}

TEST_F(FileSystemTest, WritableFilesAreRecognisedWithoutOpeningThem) {
    const auto asking = [&](const std::string& name) {
        return error_number([&] { files().require_writable(folder.name(name)); });
    };
    EXPECT_EQ(asking("song.mp3"), 0);
    EXPECT_EQ(asking("none.mp3"), 53);
    EXPECT_EQ(asking("none/song.mp3"), 76);
}

TEST_F(FileSystemTest, StateChangesWithEveryWriteAndWithTheFile) {
    const String song = folder.name("song.mp3");
    const FileState before = files().state(song);
    EXPECT_EQ(before.length, 5);
    EXPECT_EQ(files().open(song, OpenMode::Read)->state(), before);
    EXPECT_EQ(files().state(song), before);
    // The clock of the file system may stand still for some milliseconds.
    const std::filesystem::path path = folder.path("song.mp3");
    std::filesystem::last_write_time(
        path, std::filesystem::last_write_time(path) - std::chrono::hours(1));
    EXPECT_NE(files().state(song), before);
    files().replace(folder.put("other.mp3", "audio"), song);
    EXPECT_NE(files().state(song).number, before.number);
    EXPECT_EQ(error_number([&] { (void)files().state(folder.name("none.mp3")); }), 53);
}

TEST_F(FileSystemTest, MissingRightsToOpenAreAnAccessError) {
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    std::filesystem::permissions(folder.path("song.mp3"), std::filesystem::perms(0000));
    folder.put("read-only.mp3", "audio");
    std::filesystem::permissions(folder.path("read-only.mp3"), std::filesystem::perms(0444));
    const OrdinaryUser user;
    EXPECT_EQ(opening(folder.name("song.mp3"), OpenMode::Read), 75);
    EXPECT_EQ(opening(folder.name("read-only.mp3"), OpenMode::Read), 0);
    EXPECT_EQ(opening(folder.name("read-only.mp3"), OpenMode::ReadWrite), 75);
    if (::geteuid() == 0) {  // otherwise the folder is this user's own
        EXPECT_EQ(opening(folder.name("new.mp3"), OpenMode::ReadWriteOrCreate), 75);
    }
}

TEST_F(FileSystemTest, MissingRightsToNameArePermissionDenied) {
    folder.put("folder/a", "a");
    folder.put("folder/b", "b");
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    std::filesystem::permissions(folder.path("folder"), std::filesystem::perms(0555));
    {
        const OrdinaryUser user;
        String name;
        EXPECT_EQ(error_number([&] { files().remove(folder.name("folder/a")); }), 70);
        EXPECT_EQ(error_number(
                      [&] { files().replace(folder.name("folder/a"), folder.name("folder/b")); }),
                  70);
        EXPECT_EQ(error_number([&] { files().create_beside(folder.name("folder/a"), name); }), 75);
    }
    std::filesystem::permissions(folder.path("folder"), std::filesystem::perms(0755));
    EXPECT_EQ(folder.content("folder/a"), Bytes("a"));
    EXPECT_EQ(folder.content("folder/b"), Bytes("b"));
}

TEST_F(FileSystemTest, TooManyOpenFilesSaySo) {
    const String name = folder.name("song.mp3");
    ASSERT_EQ(opening(name, OpenMode::Read), 0);
    // A sanitizer needs a descriptor when it meets a type for the first time: an error, too.
    ASSERT_EQ(opening(folder.name("missing.mp3"), OpenMode::Read), 53);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const std::int32_t number = opening(name, OpenMode::Read);
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(number, 67);
}

TEST_F(FileSystemTest, OpenFilesDoNotReachOtherPrograms) {
    const auto file = files().open(folder.name("song.mp3"), OpenMode::Read);
    bool found = false;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry.path(), gone) == folder.path("song.mp3")) {
            const int descriptor = std::stoi(entry.path().filename().string());
            EXPECT_EQ(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
            found = true;
        }
    }
    EXPECT_TRUE(found);
}

TEST_F(FileSystemTest, LinksAreFollowedToTheEnd) {
    link_to("song.mp3", folder.path("first"));
    link_to(folder.path("first"), folder.path("second"));
    link_to("nowhere", folder.path("broken"));
    const String song = from_utf8(std::filesystem::canonical(folder.path("song.mp3")).string());
    EXPECT_EQ(files().resolve_links(folder.name("second")), song);
    EXPECT_EQ(files().resolve_links(folder.name("song.mp3")), song);
    EXPECT_EQ(files().resolve_links(folder.name("missing")), folder.name("missing"));
    EXPECT_EQ(files().resolve_links(folder.name("broken")), folder.name("broken"));
    EXPECT_EQ(files().resolve_links(u"no such file"), u"no such file");
}

TEST_F(FileSystemTest, LinkThatCannotBeFollowedIsNotTakenForItsTarget) {
    link_to("loop", folder.path("loop"));
    EXPECT_EQ(error_number([&] { (void)files().resolve_links(folder.name("loop")); }), 75);
}

TEST_F(FileSystemTest, NewFileIsHiddenBesideItsNeighbour) {
    std::set<String> names;
    for (int i = 0; i < 20; ++i) {
        String name;
        const auto file = files().create_beside(folder.name("song.mp3"), name);
        file->write_at(0, Bytes("x"));
        EXPECT_EQ(file->length(), 1);
        EXPECT_EQ(name.substr(0, name.rfind(u'/') + 2), folder.name("."));
        names.insert(name);
    }
    EXPECT_EQ(names.size(), 20U);
    EXPECT_EQ(folder.entries().size(), 22U);
}

TEST_F(FileSystemTest, NewFileBesideALongNameHasAShortOne) {
    const std::string longest(255, 'x');
    folder.put(longest, "audio");
    String name;
    files().create_beside(folder.name(longest), name)->close();
    EXPECT_LE(to_utf8(name).size() - folder.path("").size(), 32U);
}

TEST_F(FileSystemTest, NewFileTakesAnotherNameWhenItsOwnIsTaken) {
    SystemCalls calls;
    String first;
    String second;
    calls.plan(SystemCall::Random, at_most(0), 4);
    files().create_beside(folder.name("song.mp3"), first)->close();
    files().create_beside(folder.name("song.mp3"), second)->close();
    EXPECT_EQ(calls.left(), 0U);
    EXPECT_NE(first, second);
    EXPECT_TRUE(files().exists(first));
    EXPECT_TRUE(files().exists(second));
}

TEST_F(FileSystemTest, NewFileIsGivenUpWhenEveryNameIsTaken) {
    SystemCalls calls;
    String name;
    calls.plan(SystemCall::Random, at_most(0), 1'000);
    files().create_beside(folder.name("song.mp3"), name)->close();
    EXPECT_EQ(error_number([&] { files().create_beside(folder.name("song.mp3"), name); }), 58);
}

TEST_F(FileSystemTest, NewFileNeedsNoChanceOfTheSystem) {
    SystemCalls calls;
    calls.plan(SystemCall::Random, fails_with(EAGAIN), 2);
    String first;
    String second;
    files().create_beside(folder.name("song.mp3"), first)->close();
    files().create_beside(folder.name("song.mp3"), second)->close();
    EXPECT_EQ(calls.left(), 0U);
    EXPECT_NE(first, second);
}

TEST_F(FileSystemTest, NewFileInAMissingFolderIsAnError) {
    String name = u"unchanged";
    EXPECT_EQ(error_number([&] { files().create_beside(folder.name("none/song.mp3"), name); }), 76);
    EXPECT_EQ(name, u"unchanged");
}

TEST_F(FileSystemTest, RemovesFilesOnly) {
    files().remove(folder.name("song.mp3"));
    EXPECT_FALSE(files().exists(folder.name("song.mp3")));
    EXPECT_EQ(error_number([&] { files().remove(folder.name("song.mp3")); }), 53);
    EXPECT_EQ(error_number([&] { files().remove(folder.name("none/song.mp3")); }), 76);
    EXPECT_EQ(error_number([&] { files().remove(folder.name("folder")); }), 75);
    EXPECT_TRUE(files().exists(folder.name("folder")));
}

TEST_F(FileSystemTest, ReplacesInOneStep) {
    folder.put("new", "new audio");
    files().replace(folder.name("new"), folder.name("song.mp3"));
    EXPECT_EQ(folder.content("song.mp3"), Bytes("new audio"));
    EXPECT_FALSE(files().exists(folder.name("new")));
    EXPECT_EQ(error_number([&] { files().replace(folder.name("new"), folder.name("song.mp3")); }),
              53);
    EXPECT_EQ(error_number([&] { files().replace(folder.name("song.mp3"), folder.name("no/x")); }),
              76);
    EXPECT_EQ(
        error_number([&] { files().replace(folder.name("song.mp3"), folder.name("folder")); }), 75);
    EXPECT_EQ(folder.content("song.mp3"), Bytes("new audio"));
}

TEST_F(FileSystemTest, FlushesTheFolder) {
    SystemCalls calls;
    files().flush_folder_of(folder.name("song.mp3"));
    files().flush_folder_of(u"no folder in the name");
    EXPECT_EQ(calls.seen(SystemCall::Sync).size(), 2U);
    EXPECT_EQ(calls.seen(SystemCall::Close).size(), 2U);
    // Not every file system can do it for a folder.
    calls.plan(SystemCall::Sync, {fails_with(EINTR), fails_with(EINVAL)});
    files().flush_folder_of(folder.name("song.mp3"));
    calls.plan(SystemCall::Sync, {fails_with(EIO)});
    EXPECT_EQ(error_number([&] { files().flush_folder_of(folder.name("song.mp3")); }), 57);
    EXPECT_EQ(calls.seen(SystemCall::Close).size(), 4U);
    EXPECT_EQ(calls.left(), 0U);
    EXPECT_EQ(error_number([&] { files().flush_folder_of(folder.name("none/song.mp3")); }), 76);
}

TEST_F(FileSystemTest, FolderThatMayNotBeListedIsLeftUnflushed) {
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    std::filesystem::permissions(folder.path("folder"), std::filesystem::perms(0333));
    {
        const OrdinaryUser user;
        EXPECT_EQ(error_number([&] { files().flush_folder_of(folder.name("folder/a")); }), 0);
    }
    std::filesystem::permissions(folder.path("folder"), std::filesystem::perms(0755));
}

TEST_F(FileSystemTest, ExistsWhatIsNamed) {
    struct Case {
        const char* name;
        bool exists;
    };
    const Case cases[] = {
        {"song.mp3", true},
        {"folder", true},
        {"missing", false},
        {"missing/song.mp3", false},
        {"song.mp3/song.mp3", false},
        {"song.mp3/", false},
        {"folder/", false},
        {"link to nowhere", true},
        {"pipe", true},
        {"*.mp3", true},
        {"????.mp3", true},
        {"???.mp3", false},
        {"song.mp?", true},
        {"SONG.*", false},
        {"*.mp2", false},
        {"f*r", true},
        {"*/song.mp3", false},  // only the last part of a name is searched for
        {"*/*.mp3", false},
        {"missing/*", false},
        {"song.mp3/*", false},
        {"folder/*", true},  // a folder always lists itself
        {"folder/?", true},
        {"folder/*.mp3", false},
        {"folder/../song.*", true},
        {"odd*name", true},
        {"[s]ong.mp3", false},
    };
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    link_to("nowhere", folder.path("link to nowhere"));
    folder.put("odd*name", "");
    for (const Case& row : cases) {
        EXPECT_EQ(files().exists(folder.name(row.name)), row.exists) << row.name;
        EXPECT_EQ(FileExists(files(), folder.name(row.name)), row.exists) << row.name;
    }
}

TEST_F(FileSystemTest, NameWithWildcardsIsFirstTakenLiterally) {
    folder.put("folder/what?.mp3", "");
    EXPECT_TRUE(files().exists(folder.name("folder/what?.mp3")));
    files().remove(folder.name("folder/what?.mp3"));
    EXPECT_FALSE(files().exists(folder.name("folder/what?.mp3")));
}

TEST(FileExists, EmptyPathAndTheRootAreNothing) {
    EXPECT_FALSE(FileExists(files(), u""));
    EXPECT_FALSE(FileExists(files(), u"/"));
    EXPECT_FALSE(FileExists(files(), String(u"/tmp\0", 5)));
}

TEST(FileExists, ExistingFolderExists) {
    const TemporaryFolder folder;
    EXPECT_TRUE(FileExists(files(), from_utf8(folder.path())));
}

TEST(FileExists, NameWithoutAFolderIsLookedForInTheCurrentOne) {
    const TemporaryFolder folder;
    folder.put("only-here.mp3", "");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    const bool by_name = FileExists(files(), u"only-here.mp3");
    const bool by_wildcard = FileExists(files(), u"only-h*.mp?");
    const bool other = FileExists(files(), u"other-*.mp3");
    std::filesystem::current_path(before);
    EXPECT_TRUE(by_name);
    EXPECT_TRUE(by_wildcard);
    EXPECT_FALSE(other);
}

}  // namespace
}  // namespace brindle
