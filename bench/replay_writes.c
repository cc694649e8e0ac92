// Makes the writes and flushes of a plan, and nothing else, on several threads: what a program that
// makes the same ones takes at least.
//
//   replay_writes THREADS PLAN
//
// Lines of a plan; the lines of a unit are run in order by one thread, units by any:
//
//   u                     a unit begins
//   o NAME, c NAME        opens a file for writing; creates it
//   j NAME                appends to a file that all units share, which the first one creates
//   w OFFSET LENGTH       writes; a LENGTH: at the end of that shared file
//   t LENGTH              cuts
//   s, d                  fsync, fdatasync
//   x                     closes
//   m OLD NEW, f FOLDER   renames; flushes the names in a folder
#define _GNU_SOURCE
#include <fcntl.h>
#include <pthread.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { kLargestWrite = 1 << 20 };

struct step {
    char kind;
    long long numbers[2];
    char* names[2];
};

static struct step* steps;
static size_t step_count;
static size_t* units;  // their first steps
static size_t unit_count;
static atomic_size_t next_unit;
static char bytes[kLargestWrite];
static int shared = -1;
static pthread_mutex_t shared_lock = PTHREAD_MUTEX_INITIALIZER;

static void require(int holds, const char* what) {
    if (!holds) {
        perror(what);
        exit(1);
    }
}

static void* allocated(void* block, size_t size) {
    block = realloc(block, size);
    require(block != NULL, "memory");
    return block;
}

static void read_plan(const char* name) {
    FILE* const file = fopen(name, "r");
    require(file != NULL, name);
    char* line = NULL;
    size_t room = 0;
    while (getline(&line, &room, file) > 0) {
        if ((step_count & (step_count - 1)) == 0) {
            steps = allocated(steps, (step_count * 2 + 1) * sizeof *steps);
            units = allocated(units, (step_count * 2 + 1) * sizeof *units);
        }
        struct step* const step = &steps[step_count];
        *step = (struct step){.kind = line[0]};
        int words = 0;
        for (char* word = strtok(line + 1, " \n"); word != NULL; word = strtok(NULL, " \n")) {
            require(words < 2, "a plan of two words");
            step->names[words] = strdup(word);
            step->numbers[words++] = atoll(word);
        }
        if (step->kind == 'u') {
            units[unit_count++] = step_count;
        }
        ++step_count;
    }
    free(line);
    fclose(file);
}

static void write_bytes(int file, long long count, long long offset) {
    while (count > 0) {
        const size_t block = count < kLargestWrite ? (size_t)count : kLargestWrite;
        require(pwrite(file, bytes, block, offset) == (ssize_t)block, "write");
        count -= (long long)block;
        offset += (long long)block;
    }
}

static void flush_folder(const char* name) {
    const int folder = open(name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    require(folder != -1, name);
    require(fsync(folder) == 0, name);
    close(folder);
}

static int open_shared(const char* name) {
    pthread_mutex_lock(&shared_lock);
    if (shared == -1) {
        shared = open(name, O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0600);
        require(shared != -1, name);
    }
    pthread_mutex_unlock(&shared_lock);
    return shared;
}

static void run_unit(size_t place) {
    int file = -1;
    for (++place; place < step_count && steps[place].kind != 'u'; ++place) {
        const struct step* const step = &steps[place];
        const char* const name = step->names[0];
        switch (step->kind) {
            case 'o':
                file = open(name, O_RDWR | O_CLOEXEC);
                require(file != -1, name);
                break;
            case 'c':
                file = open(name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
                require(file != -1, name);
                break;
            case 'j':
                file = open_shared(name);
                break;
            case 'w':
                write_bytes(file, step->numbers[1], step->numbers[0]);
                break;
            case 'a':
                require(write(file, bytes, (size_t)step->numbers[0]) == step->numbers[0], "write");
                break;
            case 't':
                require(ftruncate(file, step->numbers[0]) == 0, "ftruncate");
                break;
            case 's':
                require(fsync(file) == 0, "fsync");
                break;
            case 'd':
                require(fdatasync(file) == 0, "fdatasync");
                break;
            case 'x':
                require(close(file) == 0, "close");
                break;
            case 'm':
                require(rename(name, step->names[1]) == 0, name);
                break;
            case 'f':
                flush_folder(name);
                break;
            default:
                require(0, "a plan of known steps");
        }
    }
}

static void* run_units(void* unused) {
    for (size_t unit; (unit = atomic_fetch_add(&next_unit, 1)) < unit_count;) {
        run_unit(units[unit]);
    }
    return unused;
}

int main(int count, char** arguments) {
    require(count == 3, "replay_writes THREADS PLAN");
    const int threads = atoi(arguments[1]);
    require(threads > 0, "threads");
    memset(bytes, 'x', sizeof bytes);
    read_plan(arguments[2]);
    // The plan is not part of the work.
    struct timespec begin, end;
    clock_gettime(CLOCK_MONOTONIC, &begin);
    pthread_t* const running = allocated(NULL, (size_t)threads * sizeof *running);
    for (int i = 0; i < threads; ++i) {
        require(pthread_create(&running[i], NULL, run_units, NULL) == 0, "thread");
    }
    for (int i = 0; i < threads; ++i) {
        pthread_join(running[i], NULL);
    }
    clock_gettime(CLOCK_MONOTONIC, &end);
    printf("%.6f\n", (double)(end.tv_sec - begin.tv_sec) +
                         (double)(end.tv_nsec - begin.tv_nsec) / 1e9);
    return 0;
}
