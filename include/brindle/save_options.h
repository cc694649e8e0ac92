// How a C++ host saves and strips. The automation interface has no such choice.
#pragma once

#include <functional>

namespace brindle {

struct NewContent;  // <brindle/new_content.h>

// How a change reaches the file.
enum class SaveWay {
    InPlace,  // the tag is written over the old one, the rest of the file is not touched
    Replace,  // a complete new file takes the old one's place in one rename
};

struct SaveOptions {
    // Always Replace: at every instant, a power cut included, the file is the old one or the new
    // one. Otherwise a tag that fits is written in place, which is faster; a power cut during the
    // write can then leave a tag of old and new fields. The audio is whole either way.
    bool atomic = false;
    // Called right before the file is changed: for InPlace before it is opened for writing, for
    // Replace before the rename. An Error that it throws ends the save with the file as it was.
    std::function<void(SaveWay)> before_change = nullptr;
    // Called before anything is written, with what the file will be. An Error that it throws ends
    // the save with the file as it was.
    std::function<void(const NewContent&)> before_write = nullptr;
};

}  // namespace brindle
