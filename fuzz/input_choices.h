#pragma once

#include <cstdint>

#include "fuzz/input.h"
#include "support/damaged_files.h"

namespace brindle::fuzz {

// Choices made by the fuzzer's input; after its end always the first choice.
class InputChoices : public test::Choices {
public:
    explicit InputChoices(Input& input) : input_(input) {}
    std::uint32_t below(std::uint32_t end) override {
        constexpr std::uint32_t kByte = 256;
        return input_.number(end > kByte ? 3 : 1) % end;
    }

private:
    Input& input_;
};

}  // namespace brindle::fuzz
