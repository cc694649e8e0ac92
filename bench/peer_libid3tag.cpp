#include <cstdlib>
#include <id3tag.h>
#include <memory>
#include <string_view>

#include <benchmark/benchmark.h>

#include "peers.h"

namespace brindle::bench::libid3tag {
namespace {

struct Closer {
    void operator()(id3_file* file) const { id3_file_close(file); }
};
using File = std::unique_ptr<id3_file, Closer>;

// What the library duplicates comes from malloc.
struct Freer {
    void operator()(void* text) const { std::free(text); }  // NOLINT(cppcoreguidelines-no-malloc)
};

}  // namespace

void open(const std::string& path) {
    const File file(id3_file_open(path.c_str(), ID3_FILE_MODE_READONLY));
    const id3_tag* const tag = id3_file_tag(file.get());
    std::size_t sum = 0;
    for (unsigned number = 0; number < tag->nframes; ++number) {
        const id3_frame* const frame = tag->frames[number];
        if (frame->id[0] != 'T') {
            continue;
        }
        for (unsigned part = 0; part < frame->nfields; ++part) {
            const id3_field& field = frame->fields[part];
            if (id3_field_type(&field) == ID3_FIELD_TYPE_STRINGLIST &&
                id3_field_getnstrings(&field) != 0) {
                const std::unique_ptr<id3_latin1_t, Freer> text(
                    id3_ucs4_latin1duplicate(id3_field_getstrings(&field, 0)));
                sum += std::string_view(reinterpret_cast<const char*>(text.get())).size();
            }
        }
    }
    benchmark::DoNotOptimize(sum);
}

void save(const std::string& path) {
    const File file(id3_file_open(path.c_str(), ID3_FILE_MODE_READWRITE));
    id3_tag* const tag = id3_file_tag(file.get());
    id3_frame* const frame = id3_tag_findframe(tag, ID3_FRAME_TITLE, 0);
    id3_field* const field = id3_frame_field(frame, 1);
    const id3_ucs4_t* const old = id3_field_getstrings(field, 0);
    // "Good Morning" and "Good morning" differ in the sixth character alone.
    const bool other = old != nullptr && old[5] == 'm';
    const std::unique_ptr<id3_ucs4_t, Freer> text(id3_latin1_ucs4duplicate(
        reinterpret_cast<const id3_latin1_t*>(other ? "Good Morning" : "Good morning")));
    id3_ucs4_t* texts[] = {text.get()};
    id3_field_setstrings(field, 1, texts);
    id3_file_update(file.get());
}

}  // namespace brindle::bench::libid3tag
