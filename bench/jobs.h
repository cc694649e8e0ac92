// What Brindle does in each job, through its public class alone.
#pragma once

#include <cstddef>

#include <brindle/cMPEGHeader.h>

namespace brindle::bench {

// A new object reads a file; every property is read once.
std::size_t open_and_read(const String& name);
// A new object reads a file.
std::size_t open_only(const String& name);
// Gives the file another title, which fits into the tag's area.
void save_other_title(cMPEGHeader& header);
// The same with the editor.
void edit_other_title(cMPEGHeader& header);
// A new object reads a file and does that.
void open_and_save(const String& name);
void open_and_edit(const String& name);
// A new object reads a file and adds a field for which the tag has no room.
void open_and_grow(const String& name);
void open_and_grow_by_edit(const String& name);

}  // namespace brindle::bench
