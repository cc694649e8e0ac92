#include <filesystem>

#include "system/recorded_name.h"

namespace brindle::host {

namespace fs = std::filesystem;

std::string real_name(const std::string& name, std::error_code& error) {
    return fs::canonical(name, error).string();
}

std::optional<std::string> recorded_name(const std::string& name) {
    std::error_code error;
    const fs::path path(name);
    const fs::path folder = fs::canonical(path.has_parent_path() ? path.parent_path() : ".", error);
    return error ? std::nullopt : std::optional((folder / path.filename()).string());
}

bool is_recorded_name(const std::string& name) {
    const fs::path path(name);
    return path.is_absolute() && name.find('\0') == std::string::npos &&
           path.lexically_normal().native() == path.native() && path.has_filename();
}

}  // namespace brindle::host
