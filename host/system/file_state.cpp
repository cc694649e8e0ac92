#include "system/file_state.h"

#include <chrono>
#include <filesystem>
#include <system_error>

#include <brindle/error.h>

#include "system/file_path.h"
#include "system/utc_text.h"

namespace brindle::host {

void require_same_content(const std::string& name, const FileState& before) {
    const std::optional<FileState> now = state_of(name);
    if (!now || !now->has_same_content(before)) {
        throw Error(RuntimeError::PermissionDenied, u"brindle");
    }
}

std::optional<std::string> modification_time(const std::string& name) {
    namespace chrono = std::chrono;
    std::error_code error;
    const auto time = std::filesystem::last_write_time(path_of(name), error);
    if (error) {
        return std::nullopt;
    }
    const auto seconds = chrono::floor<chrono::seconds>(chrono::file_clock::to_sys(time));
    return utc_text(seconds.time_since_epoch().count());
}

}  // namespace brindle::host
