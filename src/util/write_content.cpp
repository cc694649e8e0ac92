#include "util/write_content.h"

#include <cstdint>
#include <span>
#include <vector>

#include <brindle/error.h>

#include "util/file_content.h"
#include "util/overwrite_file.h"
#include "util/replace_file.h"

namespace brindle {

namespace {

void announce(const SaveOptions& options, SaveWay way) {
    if (options.before_change) {
        options.before_change(way);
    }
}

std::vector<std::uint8_t> read_range(BinaryFile& file, const ByteRange& range) {
    FileContent content;
    content.append(file, range);
    return content.read_all();
}

// The range that is kept stays where it is, so what is around it is written over.
void write_around(BinaryFile& file, const FileState& expected, const NewContent& content) {
    const auto back_size = static_cast<std::int64_t>(content.back.size());
    const std::vector<std::uint8_t> old_front = read_range(file, {0, content.kept_from});
    const std::vector<std::uint8_t> old_back = read_range(file, {content.kept_to, expected.length});
    std::vector<Overwrite> pieces;
    // What follows the audio goes first, as in saves.
    if (content.back != old_back && !content.back.empty()) {
        pieces.push_back({content.kept_to, content.back, old_back});
    }
    if (content.front != old_front) {
        pieces.push_back({0, content.front, old_front});
    }
    overwrite_file(file, expected, pieces, content.kept_to + back_size);
}

}  // namespace

void write_content(FileSystem& files, const String& name, const NewContent& content,
                   const SaveOptions& options) {
    const auto file = files.open(name, OpenMode::Read);
    const FileState state = file->state();
    if (content.kept_from < 0 || content.kept_from > content.kept_to ||
        content.kept_to > state.length) {
        throw Error(RuntimeError::InvalidCall);
    }
    if (options.before_write) {
        options.before_write(content);
    }
    const bool stays = static_cast<std::int64_t>(content.front.size()) == content.kept_from;
    if (stays && !options.atomic) {
        announce(options, SaveWay::InPlace);
        write_around(*files.open(name, OpenMode::ReadWrite), state, content);
        return;
    }
    const auto fill = [&](BinaryFile& new_file) {
        FileContent all;
        all.append(content.front);
        all.append(*file, {content.kept_from, content.kept_to});
        all.append(content.back);
        all.copy_to(new_file, 0, nullptr);
        file->close();
    };
    replace_file(files, name, fill, {.expected = state, .before_rename = [&] {
                                         announce(options, SaveWay::Replace);
                                     }});
}

}  // namespace brindle
