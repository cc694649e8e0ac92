#include "journal/changed_file.h"

#include <algorithm>
#include <map>
#include <span>
#include <system_error>
#include <utility>

#include <brindle/error.h>

#include "journal/journal_format.h"
#include "system/file_access.h"
#include "system/recorded_name.h"
#include "system/sha256.h"

namespace brindle::host {

namespace {

constexpr std::int64_t kBlock = std::int64_t{256} * 1024;
// What an entry holds besides the bytes of the file.
constexpr std::int64_t kRoomForTheRest = std::int64_t{1024} * 1024;

std::span<const std::uint8_t> as_bytes(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string hash_of(std::span<const std::uint8_t> bytes) {
    Sha256 hash;
    hash.add(bytes);
    return hash.digits();
}

std::string read_block(ReadOnlyFile& file, std::int64_t offset, std::int64_t count) {
    std::string block = file.read(offset, static_cast<std::size_t>(count));
    if (std::cmp_less(block.size(), count)) {
        throw Error(RuntimeError::InputPastEnd, u"brindle");
    }
    return block;
}

JournalBytes read_part(ReadOnlyFile& file, std::int64_t begin, std::int64_t end) {
    const std::string block = read_block(file, begin, end - begin);
    return {block.begin(), block.end()};
}

PartMark mark_in(ReadOnlyFile& file, std::int64_t begin, std::int64_t length) {
    Sha256 hash;
    for (std::int64_t done = 0; done < length;) {
        const std::int64_t count = std::min(kBlock, length - done);
        hash.add(as_bytes(read_block(file, begin + done, count)));
        done += count;
    }
    return {length, hash.digits()};
}

std::size_t common_end(const JournalBytes& one, const JournalBytes& other) {
    const auto [end, ignored] =
        std::mismatch(one.rbegin(), one.rend(), other.rbegin(), other.rend());
    static_cast<void>(ignored);
    return static_cast<std::size_t>(end - one.rbegin());
}

std::int64_t bytes_to_keep(const std::vector<PictureFile>& pictures) {
    std::int64_t bytes = 0;
    for (const PictureFile& picture : pictures) {
        bytes += picture.is_made ? 0 : std::ssize(picture.bytes);
    }
    return bytes;
}

}  // namespace

PartMark mark_of(std::span<const std::uint8_t> bytes) {
    return {static_cast<std::int64_t>(bytes.size()), hash_of(bytes)};
}

JournalEntry entry_of(const std::string& name, const FileState& before, const NewContent& content,
                      std::vector<PictureFile> pictures, Hashing hashing) {
    const std::int64_t around = content.kept_from + before.size - content.kept_to;
    if (around + bytes_to_keep(pictures) > kMaxRecord - kRoomForTheRest) {
        throw Error(static_cast<std::int32_t>(RuntimeError::Overflow),
                    u"Its tag is too large for a journal; --no-journal does without one");
    }
    JournalEntry entry;
    std::error_code error;
    const std::optional<std::string> recorded = recorded_name(name);
    entry.target = real_name(name, error);
    if (!recorded || error) {
        throw Error(RuntimeError::PathNotFound, u"brindle");
    }
    entry.name = *recorded;
    entry.before = before;
    ReadOnlyFile file(name);
    entry.front = read_part(file, 0, content.kept_from);
    entry.back = read_part(file, content.kept_to, before.size);
    // The unchanged end of a tag need not be kept.
    const std::size_t same = common_end(entry.front, content.front);
    entry.front.resize(entry.front.size() - same);
    const auto new_front = std::span(content.front).first(content.front.size() - same);
    const std::int64_t kept_from = content.kept_from - static_cast<std::int64_t>(same);
    entry.new_front = mark_of(new_front);
    entry.new_back = mark_of(content.back);
    const std::int64_t kept_length = content.kept_to - kept_from;
    entry.kept = hashing == Hashing::Done ? mark_in(file, kept_from, kept_length)
                                          : PartMark{kept_length, hash_of(as_bytes(name))};
    entry.pictures = std::move(pictures);
    for (PictureFile& picture : entry.pictures) {
        if (picture.is_made) {
            picture.content = mark_of(picture.bytes);
            picture.bytes.clear();
        }
    }
    return entry;
}

Comparison compared(const std::string& name, std::int64_t size, const JournalEntry& entry) {
    const PartMark fronts[] = {entry.new_front, mark_of(entry.front)};
    const PartMark backs[] = {entry.new_back, mark_of(entry.back)};
    ReadOnlyFile file(name);
    std::map<std::pair<std::int64_t, std::int64_t>, PartMark> known;
    const auto holds = [&](std::int64_t begin, const PartMark& mark) {
        const auto [place, is_unknown] = known.try_emplace({begin, mark.length});
        if (is_unknown) {
            place->second = mark_in(file, begin, mark.length);
        }
        return place->second == mark;
    };
    // Only a change in place can be interrupted half-way.
    const bool can_be_between = entry.new_front.length == std::ssize(entry.front);
    for (const PartMark& front : fronts) {
        for (const PartMark& back : backs) {
            const bool is_after = front == entry.new_front && back == entry.new_back;
            const bool is_before = front == fronts[1] && back == backs[1];
            const std::int64_t kept_from = front.length;
            const std::int64_t kept_to = kept_from + entry.kept.length;
            if ((is_after || is_before || can_be_between) && kept_to + back.length == size &&
                holds(0, front) && holds(kept_to, back) && holds(kept_from, entry.kept)) {
                return {is_before  ? StandsAs::Before
                        : is_after ? StandsAs::After
                                   : StandsAs::Between,
                        {entry.front, kept_from, kept_to, entry.back}};
            }
        }
    }
    return {};
}

}  // namespace brindle::host
