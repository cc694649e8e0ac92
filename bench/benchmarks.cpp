// All jobs, timed against the least that the machine needs for them and against the peers.
//
//   brindle_benchmarks <inputs> <scratch> [options of Google Benchmark]
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include <brindle/cMPEGHeader.h>
#include <brindle/text.h>

#include "contest.h"
#include "flush_switch.h"
#include "jobs.h"
#include "listening.h"
#include "peers.h"
#include "physical_limit.h"

namespace brindle::bench {
namespace {

namespace fs = std::filesystem;

struct Folders {
    std::string inputs;
    std::string scratch;

    [[nodiscard]] std::string input(const std::string& name) const { return inputs + "/" + name; }
    // A copy that may be changed.
    [[nodiscard]] std::string copy(const std::string& name, const std::string& as) const {
        std::string path = scratch + "/" + as + ".mp3";
        fs::copy_file(input(name), path, fs::copy_options::overwrite_existing);
        return path;
    }
};

// So that no contender is charged for writing it back.
void flush_file(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    let_flushes_through(true);
    if (file < 0 || ::fsync(file) != 0) {
        std::abort();
    }
    ::close(file);
}

template <typename Job>
Contender brindle_on(Job job, const std::string& path) {
    return {"Brindle", [job, name = from_utf8(path)] { job(name); }};
}

std::vector<Contender> with_peers(std::vector<Contender> own, std::vector<Contender> peers) {
    own.insert(own.end(), peers.begin(), peers.end());
    return own;
}

std::vector<Contender> with_peers(Contender own, std::vector<Contender> peers) {
    peers.insert(peers.begin(), std::move(own));
    return peers;
}

void enter_opening(const Folders& folders) {
    for (const auto& [job, file] : {std::pair("J1", "song.mp3"), std::pair("J1p", "picture.mp3")}) {
        const std::string path = folders.input(file);
        const FileParts parts = parts_of(path);
        enter({.job = job,
               .limit = {"limit", [path, parts] { open_limit(path, parts); }},
               .contenders = with_peers(brindle_on(open_and_read, path), opening_peers(path))});
    }
}

void enter_walking(const Folders& folders) {
    const std::string path = folders.input("walk.mp3");
    enter({.job = "J2",
           .limit = {"limit", [path] { walk_limit(path); }},
           .contenders = with_peers(brindle_on(open_only, path), walking_peers(path))});
}

void enter_saving(const Folders& folders, bool flush) {
    const std::string suffix = flush ? " flushed" : "";
    const MakeCopy copy = [=](const std::string& as) {
        return folders.copy("song.mp3", "save-" + as + suffix);
    };
    const std::string limited = copy("limit");
    const std::string own = copy("Brindle");
    const FileParts parts = parts_of(limited);
    const SaveLimit save(limited, parts);
    const auto header = std::make_shared<cMPEGHeader>();
    header->FileName(from_utf8(copy("Brindle alone")));
    const auto edited = std::make_shared<cMPEGHeader>();
    edited->FileName(from_utf8(copy("Brindle edits alone")));
    enter({.job = "J3 save" + suffix,
           .limit = {"limit",
                     [=] {
                         let_flushes_through(flush);
                         save(flush);
                     }},
           .contenders = {{"Brindle",
                           [=] {
                               let_flushes_through(flush);
                               save_other_title(*header);
                           }},
                          {"Brindle, edited", [=] {
                               let_flushes_through(flush);
                               edit_other_title(*edited);
                           }}}});
    const auto open_and_save_flushed = [=](const String& name) {
        let_flushes_through(flush);
        open_and_save(name);
    };
    const auto open_and_edit_flushed = [=, name = from_utf8(copy("Brindle edits"))] {
        let_flushes_through(flush);
        open_and_edit(name);
    };
    const std::vector<Contender> brindle{brindle_on(open_and_save_flushed, own),
                                         {"Brindle, edited", open_and_edit_flushed}};
    enter({.job = "J3 open and save" + suffix,
           .limit = {"limit",
                     [=] {
                         let_flushes_through(flush);
                         open_limit(limited, parts);
                         save(flush);
                     }},
           // None of the peers flushes.
           .contenders = flush ? brindle : with_peers(brindle, saving_peers(copy))});
}

struct RebuiltFile {
    const char* size;
    const char* name;
    int iterations;
};

void enter_growing(const Folders& folders, const RebuiltFile& file, bool flush) {
    const MakeCopy copy = [=](const std::string& as) {
        std::string path = folders.copy(file.name, "grow-" + as);
        if (flush) {
            flush_file(path);
        }
        return path;
    };
    const std::string limited = copy("limit");
    const String own = from_utf8(copy("Brindle"));
    const String edited = from_utf8(copy("Brindle edits"));
    const std::vector<Contender> brindle{{"Brindle",
                                          [=] {
                                              let_flushes_through(flush);
                                              open_and_grow(own);
                                          },
                                          [=] { copy("Brindle"); }},
                                         {"Brindle, edited",
                                          [=] {
                                              let_flushes_through(flush);
                                              open_and_grow_by_edit(edited);
                                          },
                                          [=] { copy("Brindle edits"); }}};
    const Contender limit{"limit",
                          [=] {
                              let_flushes_through(flush);
                              rebuild_limit(limited, flush);
                          },
                          [=] { copy("limit"); }};
    enter({.job = std::string("J4 ") + file.size + (flush ? " flushed" : ""),
           .limit = limit,
           // None of the peers flushes.
           .contenders = flush ? brindle : with_peers(brindle, growing_peers(copy)),
           .rounds = 9,
           .iterations = file.iterations});
}

// With N threads, each processes every N-th file.
void on_threads(int count, const std::vector<std::string>& files,
                const std::function<void(const std::string&)>& job) {
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&, number] {
            for (auto at = static_cast<std::size_t>(number); at < files.size();
                 at += static_cast<std::size_t>(count)) {
                job(files[at]);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void enter_scanning(const Folders& folders) {
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(folders.input("jingles"))) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    const FileParts parts = parts_of(files.front());
    const auto contender = [files](const std::string& name, int threads, const auto& job) {
        return Contender{name, [=] { on_threads(threads, files, job); }};
    };
    const auto brindle = [](const std::string& path) { open_and_read(from_utf8(path)); };
    std::vector<Contender> contenders = {contender("Brindle", 2, brindle),
                                         contender("Brindle on one thread", 1, brindle)};
    for (const auto& [name, job] : threaded_peers()) {
        contenders.push_back(contender(name, 2, job));
    }
    enter({.job = "J5",
           .limit =
               contender("limit", 2, [parts](const std::string& path) { open_limit(path, parts); }),
           .contenders = std::move(contenders)});
}

void enter_hostile(const Folders& folders) {
    constexpr int kSizes = 5;  // four doublings
    for (const char* const kind : {"sync", "headers", "speech", "names", "ids"}) {
        const auto file = [&](int size) {
            return folders.input(kind + std::string("-") + std::to_string(size) + ".mp3");
        };
        const std::string whole = file(kSizes - 1);
        enter({.job = std::string("J6 ") + kind,
               .limit = {"limit", [whole] { walk_limit(whole); }},
               .contenders = {brindle_on(open_only, whole)}});

        std::vector<String> names;
        names.reserve(kSizes);
        for (int size = 0; size < kSizes; ++size) {
            names.push_back(from_utf8(file(size)));
        }
        auto* const fit = benchmark::RegisterBenchmark(
            (std::string("fit/") + kind).c_str(), [names](benchmark::State& state) {
                const auto& name = names[static_cast<std::size_t>(state.range(0))];
                for ([[maybe_unused]] auto iteration : state) {
                    open_only(name);
                }
                state.SetComplexityN(std::int64_t{1} << state.range(0));
            });
        fit->DenseRange(0, kSizes - 1)->Complexity(benchmark::oN);
    }
}

void enter_listening(const Folders& folders) {
    const std::string minute = folders.input("minute.mp3");
    enter({.job = "J7",
           .limit = {"limit", [minute] { listen_limit(minute); }},
           .contenders =
               with_peers({"Brindle", [minute] { listen_whole(minute); }}, listening_peers(minute)),
           .rounds = 9,
           .iterations = 1});
    const std::string song = folders.input("four-minutes.mp3");
    enter({.job = "J7 quick",
           .limit = {"limit", [song] { listen_whole(song); }},
           .contenders = {{"Brindle", [song] { listen_quickly(song); }}},
           .rounds = 5,
           .iterations = 1});
}

}  // namespace
}  // namespace brindle::bench

int main(int count, char** arguments) {
    using namespace brindle::bench;
    benchmark::Initialize(&count, arguments);
    constexpr int kArguments = 3;
    if (count != kArguments) {
        std::cerr << "usage: brindle_benchmarks <inputs> <scratch> [--benchmark_...]\n";
        return 2;
    }
    const Folders folders{arguments[1], arguments[2]};
    enter_opening(folders);
    enter_walking(folders);
    for (const bool flush : {false, true}) {
        enter_saving(folders, flush);
        enter_growing(folders, {"5 MB", "song.mp3", 10}, flush);
        enter_growing(folders, {"100 MB", "large.mp3", 1}, flush);
    }
    enter_scanning(folders);
    enter_hostile(folders);
    enter_listening(folders);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
