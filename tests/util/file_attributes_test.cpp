// The rights of a file that takes another one's place: never wider than those of the old one.
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <brindle/text.h>

#include "support/bytes.h"
#include "support/raised_error.h"
#include "support/temporary_folder.h"
#include "util/binary_file.h"
#include "util/environment.h"
#include "util/replace_file.h"

namespace brindle {
namespace {

using test::Bytes;
using test::TemporaryFolder;

constexpr uid_t kOwner = 1234;
constexpr gid_t kGroup = 5678;
constexpr uid_t kOther = 4321;
constexpr gid_t kOthersGroup = 8765;

// While it lives, this thread has the rights of that user on files, root's no more.
class UserOfFiles {
public:
    UserOfFiles(uid_t user, gid_t group) {
        ::setfsgid(group);
        ::setfsuid(user);
    }
    ~UserOfFiles() {
        ::setfsuid(::geteuid());
        ::setfsgid(::getegid());
    }
    UserOfFiles(const UserOfFiles&) = delete;
    UserOfFiles& operator=(const UserOfFiles&) = delete;
};

struct Rights {
    uid_t owner = 0;
    gid_t group = 0;
    mode_t mode = 0;

    friend bool operator==(const Rights&, const Rights&) = default;
    friend void PrintTo(const Rights& rights, std::ostream* stream) {
        *stream << rights.owner << ":" << rights.group << " " << std::oct << rights.mode;
    }
};

// One entry of an access control list as the system keeps it.
enum EntryTag : std::uint8_t {
    Owner = 1,
    User = 2,
    OwningGroup = 4,
    Group = 8,
    Mask = 16,
    Others = 32
};
Bytes entry(EntryTag tag, std::uint8_t permissions, std::uint32_t id = 0xFFFF'FFFF) {
    Bytes bytes{tag, 0, permissions, 0};
    for (unsigned shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<std::uint8_t>(id >> shift));
    }
    return bytes;
}
const Bytes kListVersion{2, 0, 0, 0};
constexpr const char* kList = "system.posix_acl_access";
constexpr const char* kFolderList = "system.posix_acl_default";

class FileAttributes : public testing::Test {
protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only root can give files away";
        }
        std::filesystem::permissions(folder.path(), std::filesystem::perms(0777));
        folder.put("song.mp3", "old");
    }
    [[nodiscard]] std::string song() const { return folder.path("song.mp3"); }
    void set(const Rights& rights) const {
        ASSERT_EQ(::chown(song().c_str(), rights.owner, rights.group), 0);
        ASSERT_EQ(::chmod(song().c_str(), rights.mode), 0);
    }
    void set_list(const Bytes& list) const {
        ASSERT_EQ(::setxattr(song().c_str(), kList, list.data(), list.size(), 0), 0);
    }
    [[nodiscard]] Rights rights() const {
        struct stat status {};
        EXPECT_EQ(::stat(song().c_str(), &status), 0);
        return {status.st_uid, status.st_gid, status.st_mode & 07777};
    }
    [[nodiscard]] std::optional<Bytes> attribute(const char* name) const {
        Bytes value = test::zeros(1000);
        const ssize_t size = ::getxattr(song().c_str(), name, value.data(), value.size());
        return size < 0 ? std::nullopt : std::optional(value.first(static_cast<std::size_t>(size)));
    }
    [[nodiscard]] std::int32_t replace() const {
        const auto fill = [](BinaryFile& file) { file.write_at(0, Bytes("new")); };
        const std::int32_t error = test::error_number(
            [&] { replace_file(system_environment().files, folder.name("song.mp3"), fill); });
        EXPECT_EQ(folder.entries(), std::vector<std::string>{"song.mp3"});
        return error;
    }
    [[nodiscard]] std::int32_t replace_as_other_user() const {
        const UserOfFiles user(kOther, kOthersGroup);
        return replace();
    }

    TemporaryFolder folder;
};

TEST_F(FileAttributes, OwnerGroupAndModeAreKept) {
    for (const mode_t mode : {0644U, 0600U, 0660U, 0444U, 06755U, 01644U}) {
        set({kOwner, kGroup, mode});
        EXPECT_EQ(replace(), 0);
        EXPECT_EQ(rights(), (Rights{kOwner, kGroup, mode}));
    }
}

TEST_F(FileAttributes, UmaskTakesNothingAway) {
    set({kOwner, kGroup, 0666});
    const mode_t mask = ::umask(077);
    EXPECT_EQ(replace(), 0);
    ::umask(mask);
    EXPECT_EQ(rights(), (Rights{kOwner, kGroup, 0666}));
}

TEST_F(FileAttributes, GroupIsKeptByAMemberAndSetIdsAreNot) {
    set({kOwner, kOthersGroup, 06664});
    EXPECT_EQ(replace_as_other_user(), 0);
    EXPECT_EQ(rights(), (Rights{kOther, kOthersGroup, 0664}));
}

TEST_F(FileAttributes, NewGroupHasNoMoreThanOthersHad) {
    struct Row {
        mode_t before;
        mode_t after;
    };
    // A group with fewer rights than others keeps its members from theirs: they are others now.
    for (const Row& row : {Row{0666, 0666}, Row{0642, 0620}, Row{0606, 0660}, Row{0646, 0664},
                           Row{0662, 0622}, Row{06666, 0666}}) {
        set({kOwner, kGroup, row.before});
        EXPECT_EQ(replace_as_other_user(), 0) << std::oct << row.before;
        EXPECT_EQ(rights(), (Rights{kOther, kOthersGroup, row.after})) << std::oct << row.before;
    }
}

TEST_F(FileAttributes, AccessControlListIsKept) {
    set({kOwner, kGroup, 0640});
    const Bytes list = kListVersion + entry(Owner, 6) + entry(User, 4, 99) + entry(OwningGroup, 0) +
                       entry(Group, 6, 77) + entry(Mask, 6) + entry(Others, 0);
    set_list(list);
    ASSERT_EQ(rights().mode, 0660U);
    EXPECT_EQ(replace(), 0);
    EXPECT_EQ(rights(), (Rights{kOwner, kGroup, 0660}));
    EXPECT_EQ(attribute(kList), list);
}

TEST_F(FileAttributes, NewGroupHasNoMoreThanOthersHadByTheListEither) {
    set({kOwner, kGroup, 0660});
    set_list(kListVersion + entry(Owner, 6) + entry(User, 6, kOther) + entry(OwningGroup, 6) +
             entry(Mask, 6) + entry(Others, 4));
    EXPECT_EQ(replace_as_other_user(), 0);
    EXPECT_EQ(rights(), (Rights{kOther, kOthersGroup, 0664}));
    EXPECT_EQ(attribute(kList), kListVersion + entry(Owner, 6) + entry(User, 6, kOther) +
                                    entry(OwningGroup, 4) + entry(Mask, 6) + entry(Others, 4));
}

TEST_F(FileAttributes, ListThatTheFolderGivesIsNotTaken) {
    const Bytes inherited = kListVersion + entry(Owner, 7) + entry(User, 7, 99) +
                            entry(OwningGroup, 7) + entry(Mask, 7) + entry(Others, 7);
    ASSERT_EQ(::setxattr(folder.path().c_str(), kFolderList, inherited.data(), inherited.size(), 0),
              0);
    set({kOwner, kGroup, 0640});
    ::removexattr(song().c_str(), kList);
    ASSERT_EQ(::chmod(song().c_str(), 0640), 0);
    EXPECT_EQ(replace(), 0);
    EXPECT_EQ(attribute(kList), std::nullopt);
    EXPECT_EQ(rights(), (Rights{kOwner, kGroup, 0640}));
}

TEST_F(FileAttributes, UserAttributesAreKept) {
    const Bytes note = "checked by Ann";
    ASSERT_EQ(::setxattr(song().c_str(), "user.note", note.data(), note.size(), 0), 0);
    ASSERT_EQ(::setxattr(song().c_str(), "user.empty", "", 0, 0), 0);
    EXPECT_EQ(replace(), 0);
    EXPECT_EQ(attribute("user.note"), note);
    EXPECT_EQ(attribute("user.empty"), Bytes());
}

TEST_F(FileAttributes, NothingButTheOwnerCanOpenTheFileUntilItIsWhole) {
    set({kOwner, kGroup, 0666});
    const auto fill = [&](BinaryFile& file) {
        file.write_at(0, Bytes("new"));
        for (const std::string& name : folder.entries()) {
            struct stat status {};
            ASSERT_EQ(::stat(folder.path(name).c_str(), &status), 0);
            EXPECT_EQ(status.st_mode & 0777, name == "song.mp3" ? 0666U : 0600U) << name;
        }
    };
    replace_file(system_environment().files, folder.name("song.mp3"), fill);
    EXPECT_EQ(rights().mode, 0666U);
}

}  // namespace
}  // namespace brindle
