#include <cerrno>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "support/temporary_folder.h"
#include "util/system_error_posix.h"

namespace brindle {
namespace {

using test::TemporaryFolder;

std::int32_t number(int code, FileAction action) {
    return static_cast<std::int32_t>(runtime_error(code, action));
}

TEST(SystemError, EveryCodeHasTheNumberThatHostsKnow) {
    struct Case {
        int code;
        std::int32_t open;
        std::int32_t name;
        std::int32_t transfer;
    };
    const Case cases[] = {
        {ENOENT, 53, 53, 53},   //
        {EACCES, 75, 70, 75},   //
        {EPERM, 75, 70, 75},    //
        {EROFS, 75, 70, 75},    //
        {EBUSY, 75, 70, 75},    //
        {ETXTBSY, 70, 70, 70},  //
        {EISDIR, 75, 75, 75},   //
        {ENXIO, 75, 75, 75},    //
        {ENODEV, 75, 75, 75},   //
        {ELOOP, 75, 75, 75},    //
        {ENOTDIR, 76, 76, 76}, {ENAMETOOLONG, 76, 76, 76}, {EEXIST, 58, 58, 58},
        {ENOSPC, 61, 61, 61},  {EDQUOT, 61, 61, 61},       {EFBIG, 61, 61, 61},
        {EMFILE, 67, 67, 67},  {ENFILE, 67, 67, 67},       {ENOMEM, 7, 7, 7},
        {EIO, 57, 57, 57},     {EBADF, 57, 57, 57},        {EINVAL, 57, 57, 57},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(number(row.code, FileAction::Open), row.open) << std::strerror(row.code);
        EXPECT_EQ(number(row.code, FileAction::Name), row.name) << std::strerror(row.code);
        EXPECT_EQ(number(row.code, FileAction::Transfer), row.transfer) << std::strerror(row.code);
    }
}

TEST(SystemError, MissingFolderIsNotAMissingFile) {
    const TemporaryFolder folder;
    const auto missing = [](const std::string& name) {
        return runtime_error(ENOENT, FileAction::Open, name);
    };
    EXPECT_EQ(missing(folder.path("song.mp3")), RuntimeError::FileNotFound);
    EXPECT_EQ(missing(folder.path("none/song.mp3")), RuntimeError::PathNotFound);
    EXPECT_EQ(missing("song.mp3"), RuntimeError::FileNotFound);
    EXPECT_EQ(missing("/song.mp3"), RuntimeError::FileNotFound);
    EXPECT_EQ(missing(""), RuntimeError::FileNotFound);
}

TEST(SystemError, FolderIsAllUpToTheLastSlash) {
    EXPECT_EQ(folder_of("/a/b/c"), "/a/b/");
    EXPECT_EQ(folder_of("a/"), "a/");
    EXPECT_EQ(folder_of("/a"), "/");
    EXPECT_EQ(folder_of("a"), "");
    EXPECT_EQ(folder_of(""), "");
}

}  // namespace
}  // namespace brindle
