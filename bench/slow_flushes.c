// Loaded before other libraries: every flush waits longer, by the microseconds in SLOW_FLUSHES_US,
// as a device without a cache that survives a power cut makes it wait.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdlib.h>
#include <time.h>

static int flush_slowly(const char* name, int descriptor) {
    int (*const next)(int) = (int (*)(int))dlsym(RTLD_NEXT, name);
    const long microseconds = atol(getenv("SLOW_FLUSHES_US"));
    struct timespec time = {microseconds / 1000000L, microseconds % 1000000L * 1000L};
    nanosleep(&time, NULL);
    return next(descriptor);
}

int fsync(int descriptor) {
    return flush_slowly("fsync", descriptor);
}

int fdatasync(int descriptor) {
    return flush_slowly("fdatasync", descriptor);
}
