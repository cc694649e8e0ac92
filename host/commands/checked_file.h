// What the parts of a check share.
#pragma once

#include <cstdint>
#include <string>

#include <brindle/cMPEGHeader.h>
#include <brindle/tag_facts.h>

#include "system/file_access.h"

namespace brindle::host {

struct CheckedFile {
    const cMPEGHeader& header;  // has the file open
    const std::string& name;
    std::int64_t size;
    // What neither the walk nor the tag's reading hands out. Of most files nothing.
    FileBytes& bytes;
    const TagFacts& facts;
    bool hosts_read_the_same;  // of the tag's texts, and all of its pictures
};

}  // namespace brindle::host
