#include <cerrno>
#include <exception>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "commands/command_line.h"
#include "output/standard_streams.h"
#include "pictures/shrunk_picture.h"
#include "system/process.h"

using namespace brindle::host;

int main(int argc, char** argv) {
    keep_freed_memory();
    prepare_standard_streams();
    try {
        std::vector<std::string> arguments = program_arguments(argc, argv);
        if (const auto picture_status = run_picture_process(arguments)) {
            return *picture_status;
        }
        const ExitStatus status = run_command_line(
            std::move(arguments), {add_show, add_set, add_apply, add_normalize, add_export,
                                   add_import, add_strip, add_undo, add_journal, add_scan,
                                   add_check, add_report, add_listen, add_time, add_genres});
        close_output();
        return static_cast<int>(status);
    } catch (const OutputFailure& failure) {
        // A reader that closes the pipe early, such as `head`, needs no message.
        if (failure.error != EPIPE) {
            write_error("standard output", std::generic_category().message(failure.error));
        }
    } catch (const std::exception& error) {
        write_error(error.what());
    }
    return static_cast<int>(ExitStatus::SomeFileFailed);
}
