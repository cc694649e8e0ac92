#include "jobs.h"

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

void save_other_title(cMPEGHeader& header) {
    header.Title(header.Title() == u"Good morning" ? u"Good Morning" : u"Good morning");
    header.SaveAllInfo();
}

void open_and_save(const String& name) {
    cMPEGHeader header;
    header.FileName(name);
    save_other_title(header);
}

void open_and_grow(const String& name) {
    // More than the 2,048 bytes that a rebuild leaves free at most.
    constexpr std::size_t kGrowth = 4'000;
    cMPEGHeader header;
    header.FileName(name);
    String field = u"Growth 0";
    while (header.CustomFieldExists(field)) {
        ++field.back();
    }
    header.CustomFieldAdd(field, String(kGrowth, u'x'));
    header.SaveAllInfo();
}

}  // namespace brindle::bench
