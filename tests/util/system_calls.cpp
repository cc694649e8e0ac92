#include "util/system_calls.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include <sys/stat.h>
#include <sys/types.h>

namespace brindle::test {
namespace {

thread_local SystemCalls* current = nullptr;

}  // namespace

SystemCalls::SystemCalls() {
    current = this;
}

SystemCalls::~SystemCalls() {
    current = nullptr;
}

void SystemCalls::plan(SystemCall call, std::initializer_list<CallOutcome> outcomes) {
    for (const CallOutcome& outcome : outcomes) {
        planned_.push_back({call, outcome});
    }
}

void SystemCalls::plan(SystemCall call, CallOutcome outcome, int times) {
    for (int i = 0; i < times; ++i) {
        planned_.push_back({call, outcome});
    }
}

std::vector<SeenCall> SystemCalls::seen(SystemCall call) const {
    std::vector<SeenCall> calls;
    std::copy_if(seen_.begin(), seen_.end(), std::back_inserter(calls),
                 [call](const SeenCall& seen) { return seen.call == call; });
    return calls;
}

CallOutcome SystemCalls::outcome_of(SystemCall call, std::int64_t offset, std::size_t count) {
    if (current == nullptr) {
        return {};
    }
    current->seen_.push_back({call, offset, count});
    auto& planned = current->planned_;
    const auto next = std::find_if(planned.begin(), planned.end(),
                                   [call](const Planned& plan) { return plan.call == call; });
    if (next == planned.end()) {
        return {};
    }
    const CallOutcome outcome = next->outcome;
    planned.erase(next);
    return outcome;
}

}  // namespace brindle::test

// The linker sends each call of NAME to __wrap_NAME and has the system's own under __real_NAME.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

using brindle::test::CallOutcome;
using brindle::test::SystemCall;
using brindle::test::SystemCalls;

// The system takes the mode of a new file as it takes an argument of its own.
int __real_open64(const char* name, int flags, mode_t mode);
int __real_fstat64(int file, struct stat64* status);
ssize_t __real_pread64(int file, void* into, size_t count, off64_t offset);
ssize_t __real_pwrite64(int file, const void* from, size_t count, off64_t offset);
ssize_t __real_copy_file_range(int from, off64_t* from_offset, int to, off64_t* to_offset,
                               size_t count, unsigned flags);
int __real_fsync(int file);
int __real_fdatasync(int file);
int __real_ftruncate64(int file, off64_t length);
int __real_close(int file);
ssize_t __real_getrandom(void* into, size_t count, unsigned flags);

int __wrap_open64(const char* name, int flags, mode_t mode) {
    const CallOutcome outcome = SystemCalls::outcome_of(SystemCall::Open, 0, 0);
    if (outcome.error != 0) {
        errno = outcome.error;
        return -1;
    }
    return __real_open64(name, flags, mode);
}

int __wrap_fstat64(int file, struct stat64* status) {
    const CallOutcome outcome = SystemCalls::outcome_of(SystemCall::Status, 0, 0);
    if (outcome.error != 0) {
        errno = outcome.error;
        return -1;
    }
    return __real_fstat64(file, status);
}

ssize_t __wrap_pread64(int file, void* into, size_t count, off64_t offset) {
    const CallOutcome outcome = SystemCalls::outcome_of(SystemCall::Read, offset, count);
    if (outcome.error != 0) {
        errno = outcome.error;
        return -1;
    }
    return __real_pread64(file, into, std::min(count, outcome.most), offset);
}

ssize_t __wrap_pwrite64(int file, const void* from, size_t count, off64_t offset) {
    const CallOutcome outcome = SystemCalls::outcome_of(SystemCall::Write, offset, count);
    if (outcome.error != 0) {
        errno = outcome.error;
        return -1;
    }
    return __real_pwrite64(file, from, std::min(count, outcome.most), offset);
}

ssize_t __wrap_copy_file_range(int from, off64_t* from_offset, int to, off64_t* to_offset,
                               size_t count, unsigned flags) {
    const CallOutcome outcome = SystemCalls::outcome_of(SystemCall::CopyRange, *to_offset, count);
    if (outcome.error != 0) {
        errno = outcome.error;
        return -1;
    }
    return __real_copy_file_range(from, from_offset, to, to_offset, std::min(count, outcome.most),
                                  flags);
}

int __wrap_fsync(int file) {
    const CallOutcome outcome = SystemCalls::outcome_of(SystemCall::Sync, 0, 0);
    if (outcome.error != 0) {
        errno = outcome.error;
        return -1;
    }
    return __real_fsync(file);
}

int __wrap_fdatasync(int file) {
    const CallOutcome outcome = SystemCalls::outcome_of(SystemCall::Sync, 0, 0);
    if (outcome.error != 0) {
        errno = outcome.error;
        return -1;
    }
    return __real_fdatasync(file);
}

int __wrap_ftruncate64(int file, off64_t length) {
    const CallOutcome outcome = SystemCalls::outcome_of(SystemCall::Truncate, length, 0);
    if (outcome.error != 0) {
        errno = outcome.error;
        return -1;
    }
    return __real_ftruncate64(file, length);
}

// A close that fails has closed the file nevertheless.
int __wrap_close(int file) {
    const CallOutcome outcome = SystemCalls::outcome_of(SystemCall::Close, 0, 0);
    const int result = __real_close(file);
    if (outcome.error != 0) {
        errno = outcome.error;
        return -1;
    }
    return result;
}

// No more than 0 bytes of chance: always the same.
ssize_t __wrap_getrandom(void* into, size_t count, unsigned flags) {
    const CallOutcome outcome = SystemCalls::outcome_of(SystemCall::Random, 0, count);
    if (outcome.error != 0) {
        errno = outcome.error;
        return -1;
    }
    if (outcome.most == 0) {
        std::fill_n(static_cast<char*>(into), count, '\x11');
        return static_cast<ssize_t>(count);
    }
    return __real_getrandom(into, count, flags);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
