#include "jobs.h"

#include <brindle/tag_edit.h>

#include "support/every_property.h"

namespace brindle::bench {

std::size_t open_and_read(const String& name) {
    cMPEGHeader header;
    header.FileName(name);
    return test::read_every_property(header);
}

std::size_t open_only(const String& name) {
    cMPEGHeader header;
    header.FileName(name);
    return static_cast<std::size_t>(header.Duration());
}

namespace {

void set_other_title(cMPEGHeader& header) {
    header.Title(header.Title() == u"Good morning" ? u"Good Morning" : u"Good morning");
}

// More than the 2,048 bytes that a rebuild leaves free at most.
void set_another_field(cMPEGHeader& header) {
    constexpr std::size_t kGrowth = 4'000;
    String field = u"Growth 0";
    while (header.CustomFieldExists(field)) {
        ++field.back();
    }
    header.CustomFieldAdd(field, String(kGrowth, u'x'));
}

}  // namespace

void save_other_title(cMPEGHeader& header) {
    set_other_title(header);
    header.SaveAllInfo();
}

void edit_other_title(cMPEGHeader& header) {
    set_other_title(header);
    TagEdit(header).save();
}

void open_and_edit(const String& name) {
    cMPEGHeader header;
    header.FileName(name);
    edit_other_title(header);
}

void open_and_save(const String& name) {
    cMPEGHeader header;
    header.FileName(name);
    save_other_title(header);
}

void open_and_grow(const String& name) {
    cMPEGHeader header;
    header.FileName(name);
    set_another_field(header);
    header.SaveAllInfo();
}

void open_and_grow_by_edit(const String& name) {
    cMPEGHeader header;
    header.FileName(name);
    set_another_field(header);
    TagEdit(header).save();
}

}  // namespace brindle::bench
