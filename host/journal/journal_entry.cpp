#include "journal/journal_entry.h"

#include <limits>
#include <utility>

namespace brindle::host {

namespace {

constexpr std::int64_t kMaxFile = std::numeric_limits<std::int64_t>::max() / 4;
constexpr std::int64_t kMaxAttributes = 65'536;
constexpr std::int64_t kMaxPictures = 65'536;

void write_part(FieldWriter& fields, const PartMark& part) {
    fields.number(part.length);
    fields.text(part.hash);
}

std::uint32_t read_mode(FieldReader& fields) {
    return static_cast<std::uint32_t>(
        fields.number_up_to(std::numeric_limits<std::uint32_t>::max()));
}

PartMark read_part(FieldReader& fields) {
    const std::int64_t length = fields.number_up_to(kMaxFile);
    return {length, fields.text()};
}

void write_picture(FieldWriter& fields, const PictureFile& picture) {
    fields.number(picture.number);
    fields.text(picture.extension);
    fields.number(picture.is_made ? 1 : 0);
    if (picture.is_made) {
        write_part(fields, picture.content);
        return;
    }
    fields.bytes(picture.bytes);
    for (const std::int64_t value : {std::int64_t{picture.state.mode}, picture.state.accessed,
                                     picture.state.modified, picture.state.created}) {
        fields.number(value);
    }
}

PictureFile read_picture(FieldReader& fields) {
    PictureFile picture;
    picture.number = fields.number();
    picture.extension = fields.text();
    picture.is_made = fields.number_up_to(1) == 1;
    if (picture.is_made) {
        picture.content = read_part(fields);
        return picture;
    }
    picture.bytes = fields.bytes();
    picture.state.mode = read_mode(fields);
    for (std::int64_t* value :
         {&picture.state.accessed, &picture.state.modified, &picture.state.created}) {
        *value = fields.number();
    }
    return picture;
}

}  // namespace

std::int64_t JournalEntry::length_before() const {
    return static_cast<std::int64_t>(front.size() + back.size()) + kept.length;
}

std::int64_t JournalEntry::length_after() const {
    return new_front.length + kept.length + new_back.length;
}

JournalBytes bytes_of(const JournalRun& run) {
    FieldWriter fields;
    fields.text(run.command);
    fields.number(run.started);
    fields.text(run.undone);
    return fields.take();
}

JournalRun read_run(std::span<const std::uint8_t> bytes) {
    FieldReader fields(bytes);
    JournalRun run;
    run.command = fields.text();
    run.started = fields.number();
    run.undone = fields.text();
    fields.require_end();
    return run;
}

JournalBytes bytes_of(const JournalEntry& entry) {
    FieldWriter fields;
    fields.text(entry.name);
    fields.text(entry.target);
    fields.number(entry.before.mode);
    fields.number(entry.before.accessed);
    fields.number(entry.before.modified);
    fields.number(static_cast<std::int64_t>(entry.before.user_attributes.size()));
    for (const auto& [name, value] : entry.before.user_attributes) {
        fields.text(name);
        fields.text(value);
    }
    fields.bytes(entry.front);
    fields.bytes(entry.back);
    for (const PartMark* part : {&entry.kept, &entry.new_front, &entry.new_back}) {
        write_part(fields, *part);
    }
    // Entries end here, except those of Windows, and those with pictures.
    if (entry.before.created != 0 || !entry.pictures.empty()) {
        fields.number(entry.before.created);
    }
    if (!entry.pictures.empty()) {
        fields.number(std::ssize(entry.pictures));
        for (const PictureFile& picture : entry.pictures) {
            write_picture(fields, picture);
        }
    }
    return fields.take();
}

JournalEntry read_entry(std::span<const std::uint8_t> bytes) {
    FieldReader fields(bytes);
    JournalEntry entry;
    entry.name = fields.text();
    entry.target = fields.text();
    entry.before.mode = read_mode(fields);
    entry.before.accessed = fields.number();
    entry.before.modified = fields.number();
    for (std::int64_t left = fields.number_up_to(kMaxAttributes); left > 0; --left) {
        std::string name = fields.text();
        entry.before.user_attributes.insert_or_assign(std::move(name), fields.text());
    }
    entry.front = fields.bytes();
    entry.back = fields.bytes();
    for (PartMark* part : {&entry.kept, &entry.new_front, &entry.new_back}) {
        *part = read_part(fields);
    }
    if (!fields.is_at_end()) {
        entry.before.created = fields.number();
    }
    if (!fields.is_at_end()) {
        for (std::int64_t left = fields.number_up_to(kMaxPictures); left > 0; --left) {
            entry.pictures.push_back(read_picture(fields));
        }
    }
    fields.require_end();
    entry.before.size = entry.length_before();
    return entry;
}

}  // namespace brindle::host
