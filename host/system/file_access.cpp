#include "system/file_access.h"

#include <cerrno>
#include <system_error>

namespace brindle::host {

std::optional<std::string> reason_against(const FileStatus& status) {
    switch (status.kind) {
        case FileKind::Regular:
            return std::nullopt;
        case FileKind::Folder:
            return std::generic_category().message(EISDIR);
        case FileKind::Other:
            break;
    }
    return "Not a regular file";
}

std::optional<std::string> reason_against_file(const std::string& name, std::int64_t& size) {
    FileStatus status;
    if (auto reason = read_status(name, status)) {
        return reason;
    }
    size = status.size;
    return reason_against(status);
}

}  // namespace brindle::host
