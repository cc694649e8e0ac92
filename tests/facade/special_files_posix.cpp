#include <filesystem>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "facade/special_files.h"

namespace brindle::test {
namespace {

using Made = SpecialFile::Made;

const std::string kEntry = "song.mp3";

Made make_folder(const TemporaryFolder& folder) {
    std::filesystem::create_directory(folder.path(kEntry));
    return {folder.name(kEntry), nullptr};
}

Made make_pipe(const TemporaryFolder& folder) {
    EXPECT_EQ(::mkfifo(folder.path(kEntry).c_str(), 0600), 0);
    return {folder.name(kEntry), nullptr};
}

Made make_socket(const TemporaryFolder& folder) {
    const std::string path = folder.path(kEntry);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    EXPECT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(listener);
    return {folder.name(kEntry), nullptr};
}

Made make_link(const TemporaryFolder& folder, const std::string& target) {
    std::filesystem::create_symlink(target, folder.path(kEntry));
    return {folder.name(kEntry), nullptr};
}

}  // namespace

std::vector<SpecialFile> special_files() {
    return {
        {"folder", make_folder},
        {"pipe", make_pipe},
        {"socket", make_socket},
        {"device without end", [](const auto& folder) { return make_link(folder, "/dev/zero"); }},
        {"device without content",
         [](const auto& folder) { return make_link(folder, "/dev/null"); }},
        {"terminal", [](const auto& folder) { return make_link(folder, "/dev/tty"); }},
        {"link to itself",
         [](const auto& folder) { return make_link(folder, folder.path(kEntry)); }},
        {"link to nothing", [](const auto& folder) { return make_link(folder, "/nothing/here"); }},
    };
}

}  // namespace brindle::test
