// Opens the files named on standard input and goes from frame to frame to their end, as J2 does:
// what checking every frame of them costs at least.
#include <cstdint>
#include <iostream>
#include <string>

#include <brindle/cMPEGHeader.h>
#include <brindle/frame_walk.h>
#include <brindle/text.h>

int main() {
    std::int64_t frames = 0;
    for (std::string name; std::getline(std::cin, name);) {
        brindle::cMPEGHeader header;
        header.FileName(brindle::from_utf8(name));
        frames += brindle::walk_frames(header).frames;
    }
    std::cout << frames << '\n';
    return 0;
}
