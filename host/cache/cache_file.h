// The file of a cache, before SQLite opens it.
#pragma once

#include <cstdint>
#include <string>

namespace brindle::host {

// "BRND" in the header of the database, which file(1) shows.
inline constexpr std::int32_t kApplicationId = 0x42524E44;

// Creates the file, readable by its user only, if it does not exist. Refuses files that others can
// write to, symbolic links, and all content except a database with our id. Returns the path for
// Database. Raises CacheError.
[[nodiscard]] std::string prepare_cache_file(const std::string& name);

}  // namespace brindle::host
