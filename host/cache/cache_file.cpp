#include "cache/cache_file.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include "cache/cache_error.h"
#include "system/file_path.h"
#include "system/private_file.h"

namespace brindle::host {

namespace {

// The header of an SQLite database: "SQLite format 3", a NUL, and from byte 68 on the number that
// its application has given it, the high byte first.
constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kIdOffset = 68;
constexpr std::size_t kHeader = 100;

bool has_our_id(const std::vector<std::uint8_t>& header) {
    if (header.size() < kHeader || !std::equal(kMagic.begin(), kMagic.end(), header.begin())) {
        return false;
    }
    std::uint32_t id = 0;
    for (std::size_t i = 0; i < sizeof id; ++i) {
        id = id << 8U | header[kIdOffset + i];
    }
    return id == static_cast<std::uint32_t>(kApplicationId);
}

bool is_there(const std::string& name) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(path_of(name), error));
}

// What SQLite would take over from a run that was killed.
void refuse_foreign_companions(const std::string& name) {
    for (const char* const suffix : {"-journal", "-wal", "-shm"}) {
        const std::string companion = name + suffix;
        PrivateFile file;
        if (!is_there(companion)) {
            continue;
        }
        // Another run may have removed it since.
        if (const auto reason = file.open(companion); reason && is_there(companion)) {
            throw CacheError(companion + ": " + *reason);
        }
    }
}

}  // namespace

std::string prepare_cache_file(const std::string& name) {
    PrivateFile file;
    std::optional<std::string> failure;
    if (!is_there(name)) {
        failure = file.create(name);
        file.close();
    }
    // Also after a failure: another run may have made it at the same time.
    if (const auto reason = file.open(name)) {
        throw CacheError(name + ": " + (failure && !is_there(name) ? *failure : *reason));
    }
    if (file.size() > 0 && !has_our_id(file.read(0, kHeader))) {
        throw CacheError(name + ": It is no cache of brindle");
    }
    // Closing a file takes SQLite's locks off it, so that is done before SQLite has any.
    file.close();
    refuse_foreign_companions(name);
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(path_of(name), error);
    const std::filesystem::path folder = std::filesystem::canonical(path.parent_path(), error);
    if (error) {
        throw CacheError(name + ": " + error.message());
    }
    return name_of(folder / path.filename());
}

}  // namespace brindle::host
