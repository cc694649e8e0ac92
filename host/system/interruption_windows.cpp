#include <atomic>
#include <windows.h>

#include "system/interruption.h"

namespace brindle::host {

namespace {

// Set by the system's own thread.
std::atomic<bool> was_asked_to_end = false;
std::atomic<bool> second_ends = false;

BOOL WINAPI keep_request(DWORD) {
    const bool is_first = !was_asked_to_end.exchange(true);
    return is_first || !second_ends ? TRUE : FALSE;
}

}  // namespace

void watch_for_interruption(SecondSignal second) {
    second_ends = second == SecondSignal::Ends;
    SetConsoleCtrlHandler(keep_request, TRUE);
}

bool is_interrupted() {
    return was_asked_to_end.load(std::memory_order_relaxed);
}

ExitStatus interrupted_status() {
    return ExitStatus::Interrupted;
}

}  // namespace brindle::host
