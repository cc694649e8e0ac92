// A file as NewContent says that a change makes it.
#pragma once

#include <brindle/new_content.h>

#include "support/bytes.h"

namespace brindle::test {

[[nodiscard]] inline Bytes made_of(const Bytes& old, const NewContent& content) {
    const auto kept = old.part(static_cast<std::size_t>(content.kept_from),
                               static_cast<std::size_t>(content.kept_to - content.kept_from));
    return Bytes(content.front) + kept + Bytes(content.back);
}

}  // namespace brindle::test
