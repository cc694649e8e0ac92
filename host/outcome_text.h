// What is said of a changed file besides what was changed.
#pragma once

#include <string>
#include <vector>

namespace brindle::host {

// Why a change is refused after which hosts would find no stream.
[[nodiscard]] inline std::string lost_stream_text() {
    return "Hosts would find no stream in it afterwards: they look at 16,384 positions after the "
           "tag, or from the start where the tag is more than half of the file; --force does it all "
           "the same";
}

// `; a remark; another one`
[[nodiscard]] inline std::string remarks_text(const std::vector<std::string>& remarks) {
    std::string text;
    for (const std::string& remark : remarks) {
        text += "; " + remark;
    }
    return text;
}

}  // namespace brindle::host
