#include "batch/file_batch.h"

#include <new>

#include <brindle/error.h>

#include "output/standard_streams.h"
#include "system/file_change.h"
#include "system/interruption.h"

namespace brindle::host {

namespace {

// Whatever goes wrong with one file is that file's: the next ones are done all the same.
std::optional<std::string> outcome_of(const FileStep& step, const std::string& name) {
    try {
        return step(name);
    } catch (const Error& error) {
        return reason_of(error);
    } catch (const std::bad_alloc&) {
        return "Out of memory";
    }
}

}  // namespace

ExitStatus for_each_file(const std::vector<std::string>& names, const FileStep& step) {
    watch_for_interruption(SecondSignal::Ignored);
    std::size_t done = 0;
    std::size_t failed = 0;
    for (const std::string& name : names) {
        if (is_interrupted()) {
            break;
        }
        if (const std::optional<std::string> reason = outcome_of(step, name)) {
            ++failed;
            write_error(name, *reason);
        }
        ++done;
    }
    if (is_interrupted()) {
        write_error("interrupted after " + std::to_string(done) + " of " +
                    std::to_string(names.size()) + " files, " + std::to_string(failed) + " failed");
        return interrupted_status();
    }
    return failed > 0 ? ExitStatus::SomeFileFailed : ExitStatus::AllFine;
}

}  // namespace brindle::host
