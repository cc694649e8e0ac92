// A record of a journal, as any program may have written it: it is refused, or it is what a
// writer of the same values would have written.
#include <cstddef>
#include <cstdint>
#include <span>

#include "fuzz/input.h"
#include "journal/journal_entry.h"

using brindle::fuzz::require;
using namespace brindle::host;

namespace {

template <class Read>
void check(std::span<const std::uint8_t> bytes, Read read) {
    try {
        const JournalBytes written = bytes_of(read(bytes));
        require(bytes_of(read(written)) == written, "a record that changes when it is read");
    } catch (const FieldFault&) {
        return;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span bytes(data, size);
    check(bytes, read_run);
    check(bytes, [](std::span<const std::uint8_t> record) {
        JournalEntry entry = read_entry(record);
        require(entry.length_before() >= 0 && entry.length_after() >= 0, "a negative length");
        return entry;
    });
    return 0;
}
