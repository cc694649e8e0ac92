#include "util/overwrite_file.h"

#include <cstddef>
#include <new>

#include <brindle/error.h>

#include "util/changed_file.h"
#include "util/skip_errors.h"

namespace brindle {

namespace {

// Puts back what the first `count` pieces have overwritten.
bool write_back(BinaryFile& file, std::span<const Overwrite> pieces, std::int64_t length) {
    return skip_errors([&] {
        for (const Overwrite& piece : pieces) {
            if (!piece.old_bytes.empty()) {
                file.write_at(piece.offset, piece.old_bytes);
            }
        }
        if (file.length() != length) {
            file.set_length(length);
        }
    });
}

Error with_mixed_content(const Error& error) {
    return {error.number(), error.description() +
                                u"; what was overwritten could not be restored, and the file holds "
                                u"part of the new tag"};
}

void write_all(BinaryFile& file, std::span<const Overwrite> pieces, std::int64_t length,
               std::optional<std::int64_t> new_length) {
    std::size_t begun = 0;
    try {
        for (const Overwrite& piece : pieces) {
            ++begun;
            file.write_at(piece.offset, piece.bytes);
        }
        if (new_length && *new_length < length) {
            file.set_length(*new_length);
        }
    } catch (const Error& error) {
        if (!write_back(file, pieces.first(begun), length)) {
            throw with_mixed_content(error);
        }
        throw;
    } catch (const std::bad_alloc&) {
        if (!write_back(file, pieces.first(begun), length)) {
            throw with_mixed_content(Error(RuntimeError::OutOfMemory));
        }
        throw;
    }
}

}  // namespace

void overwrite_file(BinaryFile& file, const FileState& expected, std::span<const Overwrite> pieces,
                    std::optional<std::int64_t> new_length) {
    if (pieces.empty() && !new_length) {
        file.close();
        return;
    }
    refuse_if_changed(expected, file.state());
    write_all(file, pieces, expected.length, new_length);
    const bool is_flushed = skip_errors([&] {
        file.flush_data();
        file.close();
    });
    if (!is_flushed) {
        throw Error(static_cast<std::int32_t>(RuntimeError::DeviceInputOutput),
                    u"Device I/O error: written, but perhaps not on the device");
    }
}

}  // namespace brindle
