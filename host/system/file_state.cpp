#include "system/file_state.h"

#include <brindle/error.h>

namespace brindle::host {

void require_same_content(const std::string& name, const FileState& before) {
    const std::optional<FileState> now = state_of(name);
    if (!now || !now->has_same_content(before)) {
        throw Error(RuntimeError::PermissionDenied, u"brindle");
    }
}

}  // namespace brindle::host
