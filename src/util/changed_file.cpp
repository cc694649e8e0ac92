#include "util/changed_file.h"

#include <brindle/error.h>

namespace brindle {

void refuse_if_changed(const FileState& expected, const FileState& now) {
    if (now != expected) {
        throw Error(static_cast<std::int32_t>(RuntimeError::PermissionDenied),
                    u"Permission denied: another program has changed the file in the meantime");
    }
}

}  // namespace brindle
