#include <atomic>
#include <csignal>

#include "system/interruption.h"

namespace brindle::host {

namespace {

// Only this may be changed by a signal handler. 0: no signal yet.
std::atomic<int> received_signal = 0;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void keep_signal(int signal) {
    received_signal.store(signal, std::memory_order_relaxed);
}

void watch(int signal, SecondSignal second) {
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) {
        return;
    }
    struct sigaction action {};
    action.sa_handler = keep_signal;
    sigemptyset(&action.sa_mask);
    const unsigned restart = SA_RESTART;
    const unsigned once = second == SecondSignal::Ends ? SA_RESETHAND : 0U;
    action.sa_flags = static_cast<int>(restart | once);
    sigaction(signal, &action, nullptr);
}

}  // namespace

void watch_for_interruption(SecondSignal second) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        watch(signal, second);
    }
}

bool is_interrupted() {
    return received_signal.load(std::memory_order_relaxed) != 0;
}

ExitStatus interrupted_status() {
    constexpr int kSignalBase = 128;
    return static_cast<ExitStatus>(kSignalBase + received_signal.load(std::memory_order_relaxed));
}

}  // namespace brindle::host
