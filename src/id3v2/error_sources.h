// Who raises an error: hosts tell readers' errors from writers' by the source.
#pragma once

#include <new>

#include <brindle/error.h>
#include <brindle/values.h>

namespace brindle {

// The ID3v2 reader bears the name of the ID3v1 reader.
inline const String kReaderSource = u"BrindleId3v1Tagger";
inline const String kWriterSource = u"BrindleID3v2Tagger";

// Made while there is memory to make them.
inline const Error kOutOfMemory(RuntimeError::OutOfMemory);
inline const Error kWriterOutOfMemory(RuntimeError::OutOfMemory, kWriterSource);

// A member that needs a file was called before FileName.
inline const Error kFileNameNotSet(-896556, u"FileName is Not set");

// A tag that claims more than the file holds, with no audio to tell where it ends.
inline const Error kEndlessTag(
    static_cast<std::int32_t>(RuntimeError::InvalidCall),
    u"The tag claims more bytes than the file holds, and no audio tells where it ends",
    kWriterSource);

// The system says that there is no such file or folder.
[[nodiscard]] inline bool is_missing_file(const Error& error) noexcept {
    return error.number() == static_cast<std::int32_t>(RuntimeError::FileNotFound) ||
           error.number() == static_cast<std::int32_t>(RuntimeError::PathNotFound);
}

// Runs a step that opens the file; its errors keep number and description.
template <typename Step>
auto as_reader(Step step) {
    try {
        return step();
    } catch (const Error& error) {
        throw error.from(kReaderSource);
    }
}

// Runs a step of the writer; its errors keep number and description.
template <typename Step>
auto as_writer(Step step) {
    try {
        return step();
    } catch (const Error& error) {
        throw error.from(kWriterSource);
    }
}

// The same for memory that runs out on the way.
template <typename Step>
auto with_writer_memory(Step step) {
    try {
        return step();
    } catch (const std::bad_alloc&) {
        throw Error(kWriterOutOfMemory);
    }
}

}  // namespace brindle
