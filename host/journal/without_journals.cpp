// Replaces the other sources in a build without the libraries that journals need.
#include "journal/journal.h"
#include "journal/undo_run.h"

namespace brindle::host {

namespace {

constexpr char kReason[] = "built without zlib and libcrypto, which journals need";

}  // namespace

std::optional<std::string> reason_against_journals() {
    return kReason;
}

struct Journal::State {};

Journal::Journal(const JournalOptions& options, std::string, std::string) {
    if (options.file) {
        throw JournalError(std::string("--journal: ") + kReason);
    }
}

Journal::~Journal() = default;

bool Journal::is_kept() const {
    return false;
}

void Journal::add(const std::string&, const FileState&, const NewContent&,
                  const std::vector<PictureFile>&) {}

void Journal::count(const std::string&, const FileState&, const NewContent&,
                    const std::vector<PictureFile>&) {}

void Journal::flush() {}

bool Journal::is_full() const {
    return false;
}

std::int64_t Journal::size() const {
    return 0;
}

ExitStatus undo_run(const UndoOptions&) {
    return ExitStatus::WrongUsage;
}

ExitStatus list_journals() {
    return ExitStatus::WrongUsage;
}

ExitStatus list_journal(const std::string&) {
    return ExitStatus::WrongUsage;
}

}  // namespace brindle::host
