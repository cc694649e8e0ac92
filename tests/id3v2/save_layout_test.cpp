#include "id3v2/save_layout.h"

#include <gtest/gtest.h>

#include <brindle/error.h>

namespace brindle {
namespace {

TEST(TagLength, Of28BitsIsTheMost) {
    EXPECT_NO_THROW(require_tag_length(268'435'455));
    try {
        require_tag_length(268'435'456);
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.number(), 6);
    }
}

}  // namespace
}  // namespace brindle
