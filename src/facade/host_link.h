// How the model reaches the host program: through the facade's events and hooks.
#pragma once

#include <brindle/cMPEGHeader.h>

#include "util/host.h"

namespace brindle {

class cMPEGHeader::HostLink : public Host {
public:
    explicit HostLink(cMPEGHeader& facade) : facade_(facade) {}

    void RaiseScanningEvent(const String& FileName, std::int32_t FilePos, std::int32_t FileLength,
                            bool& Cancel) override {
        facade_.RaiseScanningEvent(FileName, FilePos, FileLength, Cancel);
    }

    void yield() override {
        if (facade_.OnYield) {
            facade_.OnYield();
        }
    }

    void show_message(const String& text) override {
        if (facade_.OnMessageBox) {
            facade_.OnMessageBox(text);
        }
    }

private:
    cMPEGHeader& facade_;
};

// While it lives, the object is inside a loop that lets the host run.
class cMPEGHeader::LoopMark {
public:
    explicit LoopMark(cMPEGHeader& facade) noexcept : facade_(facade) { facade_.in_loop_ = true; }
    LoopMark(const LoopMark&) = delete;
    LoopMark& operator=(const LoopMark&) = delete;
    ~LoopMark() { facade_.in_loop_ = false; }

private:
    cMPEGHeader& facade_;
};

}  // namespace brindle
