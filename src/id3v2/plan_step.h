// Working out a change before it is made.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include <brindle/error.h>

#include "id3v1/cMP3ID3v1.h"

namespace brindle {

// Runs a step of the plan. What the file's content rules out is an answer; what keeps it from being
// read is raised.
template <typename Step>
void plan_step(std::optional<Error>& refusal, Step step) {
    constexpr std::array kAnswers{static_cast<std::int32_t>(RuntimeError::InvalidCall),
                                  static_cast<std::int32_t>(RuntimeError::Overflow),
                                  static_cast<std::int32_t>(RuntimeError::InputPastEnd),
                                  cMP3ID3v1::kNotValidMp3File};
    try {
        step();
    } catch (const Error& error) {
        if (std::find(kAnswers.begin(), kAnswers.end(), error.number()) == kAnswers.end()) {
            throw;
        }
        refusal = error;
    }
}

}  // namespace brindle
