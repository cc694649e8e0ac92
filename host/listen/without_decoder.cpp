// Replaces listen_to_file.cpp in a build without the libraries that it needs.
#include "listen_to_file.h"

namespace brindle::host {

std::optional<std::string> reason_against_listening() {
    return "built without libmpg123 and libebur128, which listening needs";
}

class FileListening::State {};

FileListening::FileListening(std::int64_t, const ListenOptions&) {}

FileListening::~FileListening() = default;

void FileListening::visit(const WalkedFrame&) {}

std::optional<Listening> FileListening::conclude(const cMPEGHeader&, const FrameWalk&) {
    return std::nullopt;
}

std::optional<Listening> listen_to_file(const cMPEGHeader&, std::int64_t, const ListenOptions&) {
    return std::nullopt;
}

}  // namespace brindle::host
