// The file of a cache, before SQLite opens it.
#pragma once

#include <cstdint>
#include <string>

namespace brindle::host {

// "BRND" in the header of the database, where file(1) finds it, too.
inline constexpr std::int32_t kApplicationId = 0x42524E44;

// Makes the file, for the user alone, if it is not there. Refused is what anybody else may have
// written, a symbolic link, and every file that holds anything but a database with our id. The
// answer is the path for Database. Raises CacheError.
[[nodiscard]] std::string prepare_cache_file(const std::string& name);

}  // namespace brindle::host
