#include "system/file_guard.h"

#include <cstdint>

#include <brindle/error.h>
#include <brindle/text.h>

namespace brindle::host {

SaveOptions FileGuard::save_options(bool atomic) {
    return {.atomic = atomic, .before_change = [this](SaveWay way) { before_change(way); }};
}

void FileGuard::before_change(SaveWay way) {
    if (const auto reason = lease_.check()) {
        throw Error(static_cast<std::int32_t>(RuntimeError::PermissionDenied), from_utf8(*reason));
    }
    if (way == SaveWay::InPlace) {
        lease_.release();
    }
}

}  // namespace brindle::host
