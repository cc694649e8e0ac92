#pragma once

#include <cstdint>

#include <sys/stat.h>

#include "util/binary_file.h"

namespace brindle {

[[nodiscard]] inline FileState file_state(const struct stat& status) noexcept {
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    return {.volume = status.st_dev,
            .number = status.st_ino,
            .length = status.st_size,
            .modified = status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec};
}

}  // namespace brindle
