#include <filesystem>
#include <string>
#include <windows.h>

#include <gtest/gtest.h>

#include "facade/special_files.h"

namespace brindle::test {
namespace {

using Made = SpecialFile::Made;

Made make_folder(const TemporaryFolder& folder) {
    std::filesystem::create_directory(folder.path("song.mp3"));
    return {folder.name("song.mp3"), nullptr};
}

// The names of devices are taken in every folder, whatever follows the dot.
Made device(const TemporaryFolder& folder, const char* entry) {
    return {folder.name(entry), nullptr};
}

Made make_pipe(const TemporaryFolder& /*folder*/) {
    constexpr const wchar_t* kName = L"\\\\.\\pipe\\brindle-test.mp3";
    const HANDLE pipe = ::CreateNamedPipeW(kName, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_WAIT, 1,
                                           512, 512, 0, nullptr);
    EXPECT_NE(pipe, INVALID_HANDLE_VALUE);
    const std::wstring name = kName;
    return {String(name.begin(), name.end()), std::shared_ptr<void>(pipe, ::CloseHandle)};
}

}  // namespace

std::vector<SpecialFile> special_files() {
    return {
        {"folder", make_folder},
        {"pipe", make_pipe},
        {"device without content", [](const auto& folder) { return device(folder, "nul.mp3"); }},
        {"terminal", [](const auto& folder) { return device(folder, "con.mp3"); }},
        {"port", [](const auto& folder) { return device(folder, "com1.mp3"); }},
    };
}

}  // namespace brindle::test
