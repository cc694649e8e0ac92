#include <brindle/file_session.h>

#include "util/environment.h"
#include "util/kept_open_files.h"

namespace brindle {

struct FileSession::State {
    explicit State(const Environment& outside)
        : files(outside.files), environment{files, outside.clock} {}

    KeptOpenFiles files;
    Environment environment;
};

FileSession::FileSession() : FileSession(system_environment()) {}

FileSession::FileSession(Environment& environment) : state_(std::make_unique<State>(environment)) {}

FileSession::~FileSession() = default;

Environment& FileSession::environment() noexcept {
    return state_->environment;
}

std::size_t FileSession::read(std::int64_t offset, std::span<std::uint8_t> into) {
    BinaryFile* const file = state_->files.last_opened();
    return file == nullptr ? 0 : file->read_at(offset, into);
}

}  // namespace brindle
