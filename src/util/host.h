// What the library needs of the program that it runs in.
#pragma once

#include <cstdint>

#include <brindle/values.h>

namespace brindle {

// The facade implements it and the model passes it on, so that nothing below knows the facade.
class Host {
public:
    Host() = default;
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    virtual ~Host() = default;

    // Progress of a long scan: 0-based position and length in bytes. Cancel set to true ends it.
    virtual void RaiseScanningEvent(const String& FileName, std::int32_t FilePos,
                                    std::int32_t FileLength, bool& Cancel) = 0;
    // Lets the host's message loop run for a moment.
    virtual void yield() = 0;
    // Shows a text that the user has to acknowledge.
    virtual void show_message(const String& text) = 0;
};

}  // namespace brindle
