#pragma once

#include <optional>
#include <string>

#include <brindle/save_options.h>

#include "system/file_lock.h"
#include "system/write_lease.h"

namespace brindle::host {

// Keeps others from a file while this program changes it.
class FileGuard {
public:
    // To be called before the file is read. The answer is why it must not be changed, or nothing.
    [[nodiscard]] std::optional<std::string> acquire(const std::string& name) {
        if (auto reason = lock_.acquire(name)) {
            return reason;
        }
        return lease_.acquire(name);
    }

    // For saves and strips. The guard must outlive them.
    [[nodiscard]] SaveOptions save_options(bool atomic = false);

private:
    void before_change(SaveWay way);

    FileLock lock_;
    WriteLease lease_;
};

}  // namespace brindle::host
