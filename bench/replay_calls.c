// Makes the system calls of a list and nothing else: what a program that reads files pays the
// system at least.
//
//   replay_calls LIST THREADS
//
// The list names files, one a line, each followed by its calls, in order:
//
//   file NAME
//   stat | open | fstat | close
//   advise ADVICE            of posix_fadvise, a number
//   read OFFSET LENGTH
//   write LENGTH             to the standard output
//
// Each thread takes the next file until there is none. A call that fails ends the program, so that
// no limit is fast because it did less. Prints the seconds that the calls took, and those of the
// processor, to the standard error; reading the list is in neither.
#define _GNU_SOURCE
#include <fcntl.h>
#include <pthread.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

enum { PAGE = 4096, MOST_FILES = 1 << 20, MOST_THREADS = 256, LONGEST_CALL = 1 << 22 };

struct call {
    char kind;
    long first;
    long second;
};

struct file {
    char* name;
    size_t calls_begin;
    size_t calls_end;
};

static struct file files[MOST_FILES];
static size_t file_count;
static struct call* calls;
static size_t call_count;
static atomic_size_t next_file;

static void require(int done, const char* what) {
    if (!done) {
        perror(what);
        exit(1);
    }
}

static void add_call(const char* line) {
    static size_t room;
    if (call_count == room) {
        room = room * 2 + 1024;
        calls = realloc(calls, room * sizeof *calls);
        require(calls != NULL, "realloc");
    }
    struct call* call = &calls[call_count++];
    char word[16];
    call->first = call->second = 0;
    require(sscanf(line, "%15s %ld %ld", word, &call->first, &call->second) >= 1, "list");
    require(call->first >= 0 && call->second <= LONGEST_CALL, "list");
    call->kind = word[0];
    files[file_count - 1].calls_end = call_count;
}

static void read_list(const char* name) {
    FILE* list = fopen(name, "r");
    require(list != NULL, name);
    char* line = NULL;
    size_t size = 0;
    for (ssize_t length; (length = getline(&line, &size, list)) > 0;) {
        line[length - 1] = '\0';
        if (strncmp(line, "file ", 5) == 0) {
            require(file_count < MOST_FILES, "list");
            files[file_count++] = (struct file){strdup(line + 5), call_count, call_count};
        } else {
            require(file_count > 0, "list");
            add_call(line);
        }
    }
    free(line);
    fclose(list);
}

static void make_call(const struct call* call, const char* name, int* descriptor, char* buffer) {
    struct stat status;
    switch (call->kind) {
        case 's':
            require(stat(name, &status) == 0, name);
            break;
        case 'o':
            *descriptor = open(name, O_RDONLY | O_CLOEXEC);
            require(*descriptor >= 0, name);
            break;
        case 'f':
            require(fstat(*descriptor, &status) == 0, name);
            break;
        case 'a':
            require(posix_fadvise(*descriptor, 0, 0, (int)call->first) == 0, name);
            break;
        case 'r':
            // Where bytes have the same place in their page as in the file, the kernel copies fast.
            require(pread(*descriptor, buffer + call->first % PAGE, (size_t)call->second,
                          call->first) == call->second,
                    name);
            break;
        case 'w':
            require(write(STDOUT_FILENO, buffer, (size_t)call->first) == call->first, "write");
            break;
        case 'c':
            close(*descriptor);
            break;
        default:
            require(0, "list");
    }
}

static void* work(void* unused) {
    (void)unused;
    char* buffer = aligned_alloc(PAGE, LONGEST_CALL + PAGE);
    require(buffer != NULL, "aligned_alloc");
    for (size_t number; (number = atomic_fetch_add(&next_file, 1)) < file_count;) {
        const struct file* file = &files[number];
        int descriptor = -1;
        for (size_t call = file->calls_begin; call < file->calls_end; ++call) {
            make_call(&calls[call], file->name, &descriptor, buffer);
        }
    }
    free(buffer);
    return NULL;
}

static double seconds_in(struct timeval time) {
    return (double)time.tv_sec + (double)time.tv_usec / 1e6;
}

static double elapsed(void) {
    struct timespec now;
    require(clock_gettime(CLOCK_MONOTONIC, &now) == 0, "clock_gettime");
    return (double)now.tv_sec + (double)now.tv_nsec / 1e9;
}

static double of_the_processor(void) {
    struct rusage usage;
    require(getrusage(RUSAGE_SELF, &usage) == 0, "getrusage");
    return seconds_in(usage.ru_utime) + seconds_in(usage.ru_stime);
}

int main(int count, char** arguments) {
    require(count == 3, "usage: replay_calls LIST THREADS");
    read_list(arguments[1]);
    const int threads = atoi(arguments[2]);
    require(threads >= 1 && threads <= MOST_THREADS, "threads");
    const double elapsed_before = elapsed();
    const double processor_before = of_the_processor();
    pthread_t started[MOST_THREADS];
    for (int thread = 0; thread < threads; ++thread) {
        require(pthread_create(&started[thread], NULL, work, NULL) == 0, "pthread_create");
    }
    for (int thread = 0; thread < threads; ++thread) {
        pthread_join(started[thread], NULL);
    }
    fprintf(stderr, "%.6f %.6f\n", elapsed() - elapsed_before,
            of_the_processor() - processor_before);
    return 0;
}
