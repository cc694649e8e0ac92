// How the facade asks and edits its model: nothing that goes wrong reaches the host.
#pragma once

#include <exception>
#include <memory>

#include "id3v2/cMP3ID3v2.h"
#include "util/skip_errors.h"

namespace brindle {

// The answer of the model; the type's default without a model or when the question fails.
template <typename Question>
auto read_or_default(const std::unique_ptr<cMP3ID3v2>& model, Question question)
    -> decltype(question(*model)) {
    // Not by way of skip_errors: so a text is made where the host receives it and never moved.
    try {
        if (model) {
            return question(*model);
        }
    } catch (const std::exception&) {
        return {};
    }
    return {};
}

// Changes the model; without one, or when the change fails, nothing happens.
template <typename Change>
void try_modify(const std::unique_ptr<cMP3ID3v2>& model, Change change) {
    if (model) {
        skip_errors([&] { change(*model); });
    }
}

}  // namespace brindle
