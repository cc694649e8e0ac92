// Who raises an error: hosts tell readers' errors from writers' by the source.
#pragma once

#include <brindle/error.h>
#include <brindle/values.h>

namespace brindle {

// The ID3v2 reader bears the name of the ID3v1 reader.
inline const String kReaderSource = u"BrindleId3v1Tagger";
inline const String kWriterSource = u"BrindleID3v2Tagger";

// Made while there is memory to make them.
inline const Error kOutOfMemory(RuntimeError::OutOfMemory);
inline const Error kWriterOutOfMemory(RuntimeError::OutOfMemory, kWriterSource);

// Runs a step of the writer; its errors keep number and description.
template <typename Step>
auto as_writer(Step step) {
    try {
        return step();
    } catch (const Error& error) {
        throw error.from(kWriterSource);
    }
}

}  // namespace brindle
