// Decoding a file and measuring its loudness.
#pragma once

#include <string>

namespace brindle::bench {

// What libmpg123 and libebur128 take alone: the file's samples, in blocks of 10 ms, to integrated
// loudness, range and true peak.
void listen_limit(const std::string& path);

// What Brindle does.
void listen_whole(const std::string& path);
void listen_quickly(const std::string& path);

}  // namespace brindle::bench
