#include "output/outcome_text.h"

#include "output/stream_text.h"

namespace brindle::host {

namespace {

std::string of_space(std::int64_t needed, std::int64_t space) {
    return "(" + std::to_string(needed) + " of " + std::to_string(space) + " bytes)";
}

}  // namespace

std::string lost_stream_text() {
    return "Hosts would find no stream in it afterwards: they look at 16,384 positions after the "
           "tag, or from the start where the tag is more than half of the file; --force does it all "
           "the same";
}

std::string how_it_fits(bool fits, std::int64_t needed, std::int64_t space) {
    const std::string needs = "the tag needs " + std::to_string(needed) + " bytes";
    if (fits) {
        return "Fits in place: " + needs + " of " + std::to_string(space);
    }
    return "Would be rebuilt: " + needs +
           (space == 0 ? ", there is none yet" : ", its place has " + std::to_string(space));
}

std::string how_it_was_written(bool is_rebuilt, std::int64_t needed, std::int64_t space) {
    if (!is_rebuilt) {
        return "written in place " + of_space(needed, space);
    }
    if (needed < space) {
        return "file rebuilt with an ID3v2 tag of the same length " + of_space(needed, space);
    }
    return "file rebuilt with a larger ID3v2 tag (" + std::to_string(needed) +
           " bytes and padding)";
}

std::string record_text(const cMPEGHeader& now, bool had_record) {
    if (!has_id3v1(now)) {
        return "no ID3v1 record (the file is too short for one)";
    }
    return had_record ? "ID3v1 record overwritten" : "ID3v1 record appended";
}

std::string unseen_tag_text(const cMPEGHeader& now) {
    return has_id3v2(now) ? ""
                          : "; hosts will not find the tag: they look for one in files of 4,098 "
                            "bytes or more";
}

std::string remarks_text(const std::vector<std::string>& remarks) {
    std::string text;
    for (const std::string& remark : remarks) {
        text += "; " + remark;
    }
    return text;
}

}  // namespace brindle::host
