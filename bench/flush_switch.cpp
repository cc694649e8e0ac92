#include "flush_switch.h"

namespace {

bool lets_through = true;

}  // namespace

// The linker's names for the call as the library makes it, and as the system has it.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
extern "C" {
int __real_fsync(int descriptor);
int __real_fdatasync(int descriptor);
int __wrap_fsync(int descriptor);
int __wrap_fdatasync(int descriptor);

int __wrap_fsync(int descriptor) {
    return lets_through ? __real_fsync(descriptor) : 0;
}

int __wrap_fdatasync(int descriptor) {
    return lets_through ? __real_fdatasync(descriptor) : 0;
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)

namespace brindle::bench {

void let_flushes_through(bool through) {
    lets_through = through;
}

}  // namespace brindle::bench
