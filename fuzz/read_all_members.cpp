#include "fuzz/read_all_members.h"

#include <type_traits>
#include <variant>

#include "support/every_property.h"

namespace brindle::fuzz {
namespace {

class Answers {
public:
    template <typename Value>
    Answers& operator<<(const Value& value) {
        if constexpr (std::is_same_v<Value, String>) {
            text_ += value;
        } else if constexpr (std::is_same_v<Value, Variant>) {
            std::visit([this](const auto& held) { *this << held; }, value);
        } else if constexpr (std::is_enum_v<Value>) {
            *this << static_cast<std::int32_t>(value);
        } else if constexpr (!std::is_same_v<Value, Empty>) {
            const std::string digits = std::to_string(value);
            text_.append(digits.begin(), digits.end());
        }
        text_.push_back(u'\n');
        return *this;
    }
    [[nodiscard]] const String& text() const { return text_; }

private:
    String text_;
};

}  // namespace

String read_all_members(const cMPEGHeader& header) {
    Answers answers;
    test::visit_every_property(header, [&](const auto& value) { answers << value; });

    const auto frames = header.v2Frames();
    for (std::int32_t place = 1; frames && place <= frames->Count(); ++place) {
        const String id = std::get<String>(frames->Item(place));
        answers << id;
        for (std::int32_t number = 1; number <= header.TagsInFrame(id); ++number) {
            answers << header.v2Tag(id, number);
        }
    }
    return answers.text();
}

}  // namespace brindle::fuzz
