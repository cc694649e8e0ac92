#pragma once

#include <optional>
#include <string>
#include <vector>

#include <brindle/cMPEGHeader.h>

#include "system/file_guard.h"
#include "system/file_state.h"

namespace brindle::host {

// The change of one file: guarded from before it is read until it is written, and checked
// afterwards.
class FileChange {
public:
    explicit FileChange(std::string name) : name_(std::move(name)) {}

    [[nodiscard]] const std::string& name() const { return name_; }

    // Reads the file into `header`. The answer is why it must not or cannot be changed, or nothing.
    [[nodiscard]] std::optional<std::string> open(cMPEGHeader& header);
    // How it was then.
    [[nodiscard]] const std::optional<FileState>& before() const { return before_; }

    [[nodiscard]] SaveOptions save_options(bool atomic = false) {
        return guard_.save_options(atomic);
    }
    // What would keep the change from being written, as far as that can be known without writing.
    [[nodiscard]] std::optional<std::string> reason_against(SaveWay way) const;

    // After the change, which `done` names ("Saved"): gives the file its old modification time on
    // demand. `remarks` then tell what of its surroundings is not as before, in a few words each.
    // The answer is why the file failed, or nothing.
    [[nodiscard]] std::optional<std::string> conclude(const std::string& done, bool preserve,
                                                      std::vector<std::string>& remarks);
    // After conclude(): whether the change was made in another file than the one that was opened.
    [[nodiscard]] bool is_rebuilt() const;

private:
    [[nodiscard]] std::vector<std::string> remarks() const;

    std::string name_;
    FileGuard guard_;
    std::optional<FileState> before_;
    std::optional<FileState> after_;
};

}  // namespace brindle::host
