// What the peers do in each job: as much of it as each of them can. What they do not do is listed
// in docs/performance.md.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "contest.h"

namespace brindle::bench {

// Open a file and read what it knows of tags and stream.
[[nodiscard]] std::vector<Contender> opening_peers(const std::string& path);
// Go through all frames of a file without a header that tells their number.
[[nodiscard]] std::vector<Contender> walking_peers(const std::string& path);

// Makes a file that a contender of that name may change; its path.
using MakeCopy = std::function<std::string(const std::string& name)>;
// Open, change the title, save in place.
[[nodiscard]] std::vector<Contender> saving_peers(const MakeCopy& copy);
// Open, add a text of 4,000 characters, for which the tag has no room, save. Each run begins with a
// new copy.
[[nodiscard]] std::vector<Contender> growing_peers(const MakeCopy& copy);
// The first of the opening peers that many threads can use at a time.
[[nodiscard]] std::vector<std::pair<std::string, void (*)(const std::string&)>> threaded_peers();

// Measure the loudness of a file; programs of their own.
[[nodiscard]] std::vector<Contender> listening_peers(const std::string& path);

namespace taglib {
void open(const std::string& path);
void save(const std::string& path);
void grow(const std::string& path);
}  // namespace taglib

namespace id3lib {
void open(const std::string& path);
void save(const std::string& path);
void grow(const std::string& path);
}  // namespace id3lib

namespace libid3tag {
void open(const std::string& path);
void save(const std::string& path);
}  // namespace libid3tag

namespace libmad {
// The headers of the tag's first 101 frames; no tag.
void open(const std::string& path);
void walk(const std::string& path);
}  // namespace libmad

namespace libmpg123 {
void open(const std::string& path);
void walk(const std::string& path);
}  // namespace libmpg123

namespace libavformat {
void open(const std::string& path);
void walk(const std::string& path);
}  // namespace libavformat

namespace mediainfo {
void open(const std::string& path);
}  // namespace mediainfo

namespace mutagen {
void open(const std::string& path);
void save(const std::string& path);
void grow(const std::string& path);
}  // namespace mutagen

namespace mp3val {
// A process of its own.
void walk(const std::string& path);
}  // namespace mp3val

}  // namespace brindle::bench
