// Makes the system calls of a list and nothing else: what a program that makes the same ones takes
// at least.
//
//   replay LIST THREADS
//
// The list names files, one a line, each followed by its calls. One thread makes those of a file,
// in order, and then takes the next file:
//
//   file NAME
//   stat | open | fstat | fsync | fdatasync | close
//   advise ADVICE            of posix_fadvise, a number
//   read OFFSET LENGTH
//   change | create          open for writing: what is there, and what is not
//   append                   opens for writing at the end: what all files of this name do goes
//                            through one descriptor, which the first of them creates
//   write OFFSET LENGTH
//   add LENGTH               writes where the last write ended
//   cut LENGTH
//   rename NEW
//   flush-folder FOLDER
//   print LENGTH             to the standard output
//
// A call that fails ends the program, so that no limit is fast because it did less. Prints the
// seconds that the calls took, and those of the processor, to the standard error; reading the list
// is in neither.
#define _GNU_SOURCE
#include <fcntl.h>
#include <pthread.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <sys/resource.h>
#include <sys/stat.h>

enum { PAGE = 4096, MAX_THREADS = 256, LONGEST_CALL = 1 << 22 };

// What a thread works on.
struct place {
    const char* name;
    int descriptor;
    char* buffer;
};

struct call;

struct kind {
    const char* word;
    void (*make)(const struct call* call, struct place* place);
    int flags;             // of make_open
    int (*act)(int file);  // of make_act
};

struct call {
    const struct kind* kind;
    long long first;
    long long second;
    char* name;
};

struct file {
    char* name;
    size_t calls_begin;
    size_t calls_end;
};

static struct file* files;
static size_t file_count;
static struct call* calls;
static size_t call_count;
static atomic_size_t next_file;
static char written[LONGEST_CALL];

static void require(int done, const char* what) {
    if (!done) {
        perror(what);
        exit(1);
    }
}

static void open_for(struct place* place, int flags) {
    place->descriptor = open(place->name, flags | O_CLOEXEC, 0600);
    require(place->descriptor >= 0, place->name);
}

static void make_open(const struct call* call, struct place* place) {
    open_for(place, call->kind->flags);
}

static void make_act(const struct call* call, struct place* place) {
    require(call->kind->act(place->descriptor) == 0, place->name);
}

static void make_stat(const struct call* call, struct place* place) {
    (void)call;
    struct stat status;
    require(stat(place->name, &status) == 0, place->name);
}

static void make_fstat(const struct call* call, struct place* place) {
    (void)call;
    struct stat status;
    require(fstat(place->descriptor, &status) == 0, place->name);
}

static void make_advise(const struct call* call, struct place* place) {
    require(posix_fadvise(place->descriptor, 0, 0, (int)call->first) == 0, place->name);
}

static void make_read(const struct call* call, struct place* place) {
    // Where bytes have the same place in their page as in the file, the kernel copies fast.
    char* const buffer = place->buffer + call->first % PAGE;
    require(pread(place->descriptor, buffer, (size_t)call->second, call->first) == call->second,
            place->name);
}

static void make_append(const struct call* call, struct place* place) {
    (void)call;
    static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
    static int shared = -1;
    pthread_mutex_lock(&lock);
    if (shared == -1) {
        open_for(place, O_WRONLY | O_CREAT | O_EXCL | O_APPEND);
        shared = place->descriptor;
    }
    place->descriptor = shared;
    pthread_mutex_unlock(&lock);
}

static void make_write(const struct call* call, struct place* place) {
    require(pwrite(place->descriptor, written, (size_t)call->second, call->first) == call->second,
            place->name);
}

static void make_add(const struct call* call, struct place* place) {
    require(write(place->descriptor, written, (size_t)call->first) == call->first, place->name);
}

static void make_cut(const struct call* call, struct place* place) {
    require(ftruncate(place->descriptor, call->first) == 0, place->name);
}

static void make_rename(const struct call* call, struct place* place) {
    require(rename(place->name, call->name) == 0, place->name);
}

static void make_flush_folder(const struct call* call, struct place* place) {
    (void)place;
    const int folder = open(call->name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    require(folder >= 0 && fsync(folder) == 0, call->name);
    close(folder);
}

static void make_print(const struct call* call, struct place* place) {
    (void)place;
    require(write(STDOUT_FILENO, written, (size_t)call->first) == call->first, "write");
}

static const struct kind kinds[] = {
    {.word = "open", .make = make_open, .flags = O_RDONLY},
    {.word = "change", .make = make_open, .flags = O_RDWR},
    {.word = "create", .make = make_open, .flags = O_RDWR | O_CREAT | O_EXCL},
    {.word = "append", .make = make_append},
    {.word = "fsync", .make = make_act, .act = fsync},
    {.word = "fdatasync", .make = make_act, .act = fdatasync},
    {.word = "close", .make = make_act, .act = close},
    {.word = "stat", .make = make_stat},
    {.word = "fstat", .make = make_fstat},
    {.word = "advise", .make = make_advise},
    {.word = "read", .make = make_read},
    {.word = "write", .make = make_write},
    {.word = "add", .make = make_add},
    {.word = "cut", .make = make_cut},
    {.word = "rename", .make = make_rename},
    {.word = "flush-folder", .make = make_flush_folder},
    {.word = "print", .make = make_print},
};

// With room for one more, twice as much whenever the count is a power of two.
static void* with_room(void* block, size_t count, size_t size) {
    if ((count & (count - 1)) == 0) {
        block = realloc(block, (count * 2 + 1) * size);
        require(block != NULL, "memory");
    }
    return block;
}

static void add_file(const char* name) {
    files = with_room(files, file_count, sizeof *files);
    files[file_count++] = (struct file){strdup(name), call_count, call_count};
}

static void add_call(const char* word, const char* rest) {
    require(file_count > 0, "list");
    calls = with_room(calls, call_count, sizeof *calls);
    struct call* const call = &calls[call_count];
    *call = (struct call){.name = strdup(rest)};
    sscanf(rest, "%lld %lld", &call->first, &call->second);
    require(call->first >= 0 && call->second >= 0 && call->second <= LONGEST_CALL, "list");
    for (size_t kind = 0; kind < sizeof kinds / sizeof *kinds; ++kind) {
        if (strcmp(word, kinds[kind].word) == 0) {
            call->kind = &kinds[kind];
        }
    }
    require(call->kind != NULL, word);
    const int takes_length = call->kind->make == make_add || call->kind->make == make_print;
    require(!takes_length || call->first <= LONGEST_CALL, "list");
    files[file_count - 1].calls_end = ++call_count;
}

static void read_list(const char* name) {
    FILE* const list = fopen(name, "r");
    require(list != NULL, name);
    char* line = NULL;
    size_t size = 0;
    for (ssize_t length; (length = getline(&line, &size, list)) > 0;) {
        line[length - 1] = '\0';
        char* const space = strchrnul(line, ' ');
        const char* const rest = *space == '\0' ? space : space + 1;
        *space = '\0';
        if (strcmp(line, "file") == 0) {
            add_file(rest);
        } else {
            add_call(line, rest);
        }
    }
    free(line);
    fclose(list);
}

static void* work(void* unused) {
    (void)unused;
    struct place place = {.buffer = aligned_alloc(PAGE, LONGEST_CALL + PAGE)};
    require(place.buffer != NULL, "memory");
    for (size_t number; (number = atomic_fetch_add(&next_file, 1)) < file_count;) {
        place.name = files[number].name;
        place.descriptor = -1;
        for (size_t call = files[number].calls_begin; call < files[number].calls_end; ++call) {
            calls[call].kind->make(&calls[call], &place);
        }
    }
    free(place.buffer);
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
    require(count == 3, "usage: replay LIST THREADS");
    read_list(arguments[1]);
    const int threads = atoi(arguments[2]);
    require(threads >= 1 && threads <= MAX_THREADS, "threads");
    memset(written, 'x', sizeof written);
    const double elapsed_before = elapsed();
    const double processor_before = of_the_processor();
    pthread_t started[MAX_THREADS];
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
