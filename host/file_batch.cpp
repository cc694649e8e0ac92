#include "file_batch.h"

#include "interruption.h"
#include "standard_streams.h"

namespace brindle::host {

ExitStatus for_each_file(const std::vector<std::string>& names, const FileStep& step) {
    watch_for_interruption(SecondSignal::Ignored);
    std::size_t done = 0;
    std::size_t failed = 0;
    for (const std::string& name : names) {
        if (is_interrupted()) {
            break;
        }
        if (const std::optional<std::string> reason = step(name)) {
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
