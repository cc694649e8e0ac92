#pragma once

#include <optional>
#include <string>

namespace brindle::host {

// The system's word that nobody else has a file open for writing, such as a program that is still
// recording into it. Linux gives it; elsewhere, and on file systems that do not, nothing is known.
class WriteLease {
public:
    WriteLease() = default;
    WriteLease(const WriteLease&) = delete;
    WriteLease& operator=(const WriteLease&) = delete;
    ~WriteLease() { release(); }

    // The answer is why the file must not be changed, or nothing.
    [[nodiscard]] std::optional<std::string> acquire(const std::string& name);
    // The same, later: somebody may have asked to open the file for writing, and waits.
    [[nodiscard]] std::optional<std::string> check() const;
    // Before this program opens the file for writing itself.
    void release();

private:
    static constexpr int kNone = -1;
    int descriptor_ = kNone;
};

}  // namespace brindle::host
