// Files in which several things are wrong at once: a tag that says something else than the truth,
// bytes around it, and audio that was damaged after its first header.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "support/bytes.h"

namespace brindle::test {

// Where decisions come from: a random number generator, or the input of a fuzzer.
class Choices {
public:
    Choices() = default;
    Choices(const Choices&) = delete;
    Choices& operator=(const Choices&) = delete;
    virtual ~Choices() = default;

    // 0 up to, and without, `end`.
    virtual std::uint32_t below(std::uint32_t end) = 0;

    [[nodiscard]] bool one_in(std::uint32_t cases) { return below(cases) == 0; }
    [[nodiscard]] std::uint32_t between(std::uint32_t least, std::uint32_t most) {
        return least + below(most - least + 1);
    }
    // 1 to 65,536, small numbers as often as large ones.
    [[nodiscard]] std::uint32_t any_size() { return 1 + below(std::uint32_t{1} << below(17)); }
};

class RandomChoices : public Choices {
public:
    explicit RandomChoices(std::uint64_t seed) : engine_(seed) {}
    std::uint32_t below(std::uint32_t end) override {
        return static_cast<std::uint32_t>(engine_() % end);
    }

private:
    std::mt19937_64 engine_;
};

struct DamagedFile {
    Bytes content;
    Bytes audio;  // as stored in the content
};

// The content of all files in tests/data/streams, by their names.
[[nodiscard]] std::vector<Bytes> read_streams(const std::string& folder);

// A file of one of the streams.
[[nodiscard]] DamagedFile make_damaged_file(const std::vector<Bytes>& streams, Choices& choices);

// Bytes that are neither zeros nor text.
[[nodiscard]] Bytes noise(std::size_t count, Choices& choices);

}  // namespace brindle::test
