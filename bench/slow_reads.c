// Loaded before other libraries: every open and read of a file whose name, or whose other name,
// ends in .mp3 waits as a disk or a share would make it wait.
//
//   SLOW_READS_US       microseconds that one request takes
//   SLOW_READS_CROWD    above so many requests at a time each takes longer, by the square of their
//                       number; 0: any number at a time
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

static atomic_int requests;

static void wait_for_device(void) {
    static long microseconds = -1;
    static long crowd;
    if (microseconds < 0) {
        crowd = atol(getenv("SLOW_READS_CROWD"));
        microseconds = atol(getenv("SLOW_READS_US"));
    }
    const int running = atomic_fetch_add(&requests, 1) + 1;
    double times = 1;
    if (crowd > 0 && running > crowd) {
        times = (double)running * running / (double)(crowd * crowd);
    }
    const long nanoseconds = (long)((double)microseconds * 1e3 * times);
    struct timespec time = {nanoseconds / 1000000000L, nanoseconds % 1000000000L};
    nanosleep(&time, NULL);
    atomic_fetch_sub(&requests, 1);
}

ssize_t pread64(int descriptor, void* bytes, size_t count, off64_t offset) {
    static ssize_t (*next)(int, void*, size_t, off64_t);
    if (next == NULL) {
        next = (ssize_t(*)(int, void*, size_t, off64_t))dlsym(RTLD_NEXT, "pread64");
    }
    wait_for_device();
    return next(descriptor, bytes, count, offset);
}

int open64(const char* name, int flags, ...) {
    static int (*next)(const char*, int, ...);
    if (next == NULL) {
        next = (int (*)(const char*, int, ...))dlsym(RTLD_NEXT, "open64");
    }
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const size_t length = strlen(name);
    if (length > 4 && strcmp(name + length - 4, ".mp3") == 0) {
        wait_for_device();
    }
    return next(name, flags, mode);
}
