// Lets chosen system calls of the library end early or fail, as signals, full disks and old kernels
// make them. The test executable is linked so that those calls come here first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <vector>

namespace brindle::test {

enum class SystemCall { Open, Status, Read, Write, CopyRange, Sync, Truncate, Close, Random };

// What becomes of one call.
struct CallOutcome {
    int error = 0;                                               // it fails with this
    std::size_t most = std::numeric_limits<std::size_t>::max();  // it handles no more bytes
};

inline CallOutcome fails_with(int error) {
    return {.error = error};
}

inline CallOutcome at_most(std::size_t bytes) {
    return {.most = bytes};
}

struct SeenCall {
    SystemCall call;
    std::int64_t offset;
    std::size_t count;

    friend bool operator==(const SeenCall&, const SeenCall&) = default;
};

// While it lives, what is planned happens on this thread, and the calls are remembered.
class SystemCalls {
public:
    SystemCalls();
    ~SystemCalls();
    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    // The next calls of that kind end so, one after the other; those after them as usual.
    void plan(SystemCall call, std::initializer_list<CallOutcome> outcomes);
    // The same outcome `times` times.
    void plan(SystemCall call, CallOutcome outcome, int times);
    // How much of the plan has not come about.
    [[nodiscard]] std::size_t left() const { return planned_.size(); }
    [[nodiscard]] std::vector<SeenCall> seen(SystemCall call) const;

    // For the calls themselves.
    static CallOutcome outcome_of(SystemCall call, std::int64_t offset, std::size_t count);

private:
    struct Planned {
        SystemCall call = SystemCall::Read;
        CallOutcome outcome;
    };

    std::vector<Planned> planned_;
    std::vector<SeenCall> seen_;
};

}  // namespace brindle::test
