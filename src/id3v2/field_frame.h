// A field that the host has set, as the frame that the editor writes for it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <brindle/values.h>

namespace brindle {

struct EditedField {
    std::string id;      // of the frame
    String custom_name;  // of user-defined text
    String held;         // what the component would write after an encoding byte
};

// What every saved tag bears.
[[nodiscard]] EditedField saved_stamp();

// Header and body. Text that the narrow encoding does not hold becomes UTF-16; without one all text
// is in the code page.
enum class NarrowText { CodePage, Latin1 };
[[nodiscard]] std::vector<std::uint8_t> frame_of(const EditedField& field,
                                                 std::optional<NarrowText> narrow);

// A text frame in 8-bit text.
[[nodiscard]] std::vector<std::uint8_t> text_frame(std::string_view id, std::string_view text);

// Whether several frames of that id differ by their descriptions.
[[nodiscard]] bool has_description(std::string_view id) noexcept;

}  // namespace brindle
