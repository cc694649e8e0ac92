#include <memory>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>
#include <id3/misc_support.h>
#include <id3/tag.h>

#include "peers.h"

namespace brindle::bench::id3lib {

void open(const std::string& path) {
    ID3_Tag tag;
    tag.Link(path.c_str(), ID3TT_ALL);
    std::size_t sum = 0;
    const std::unique_ptr<ID3_Tag::Iterator> frames(tag.CreateIterator());
    while (ID3_Frame* const frame = frames->GetNext()) {
        if (char* const text = ID3_GetString(frame, ID3FN_TEXT)) {
            sum += std::string_view(text).size();
            delete[] text;
        }
    }
    if (const Mp3_Headerinfo* const stream = tag.GetMp3HeaderInfo()) {
        sum += stream->bitrate + stream->frequency + stream->time;
    }
    benchmark::DoNotOptimize(sum);
}

void save(const std::string& path) {
    ID3_Tag tag;
    tag.Link(path.c_str(), ID3TT_ALL);
    char* const title = ID3_GetTitle(&tag);
    const bool other = title != nullptr && std::string_view(title) == "Good morning";
    delete[] title;
    ID3_AddTitle(&tag, other ? "Good Morning" : "Good morning", true);
    tag.Update(ID3TT_ALL);
}

void grow(const std::string& path) {
    ID3_Tag tag;
    tag.Link(path.c_str(), ID3TT_ALL);
    auto* const frame = new ID3_Frame(ID3FID_USERTEXT);
    frame->GetField(ID3FN_DESCRIPTION)->Set("Growth");
    frame->GetField(ID3FN_TEXT)->Set(std::string(4000, 'x').c_str());
    tag.AttachFrame(frame);
    tag.Update(ID3TT_ALL);
}

}  // namespace brindle::bench::id3lib
