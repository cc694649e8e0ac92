// How the model reaches the host program: through the facade's events and hooks.
#pragma once

#include <utility>

#include <brindle/cMPEGHeader.h>

#include "facade/handlers.h"
#include "util/host.h"

namespace brindle {

// While it lives, the object is inside a loop that lets the host run.
class cMPEGHeader::ReentrancyGuard {
public:
    explicit ReentrancyGuard(cMPEGHeader& facade) noexcept
        : facade_(facade), was_in_loop_(std::exchange(facade.in_loop_, true)) {}
    ReentrancyGuard(const ReentrancyGuard&) = delete;
    ReentrancyGuard& operator=(const ReentrancyGuard&) = delete;
    ~ReentrancyGuard() { facade_.in_loop_ = was_in_loop_; }
    [[nodiscard]] bool was_in_loop() const noexcept { return was_in_loop_; }

private:
    cMPEGHeader& facade_;
    bool was_in_loop_;  // a message may come up inside another loop
};

class cMPEGHeader::HostLink : public Host {
public:
    explicit HostLink(cMPEGHeader& facade) : facade_(&facade) {}

    // For a facade that has moved.
    void speak_for(cMPEGHeader& facade) noexcept { facade_ = &facade; }

    void RaiseScanningEvent(const String& FileName, std::int32_t FilePos, std::int32_t FileLength,
                            bool& Cancel) override {
        raise_event(facade_->Scanning, FileName, FilePos, FileLength, Cancel);
    }

    void yield() override { call_handler(facade_->OnYield); }

    void show_message(const String& text) override {
        if (facade_->OnMessageBox) {
            // The host runs on while its message is up; the model that shows it must not go.
            const ReentrancyGuard mark(*facade_);
            call_handler(facade_->OnMessageBox, text);
        }
    }

private:
    cMPEGHeader* facade_;  // never null
};

}  // namespace brindle
