#pragma once

namespace brindle::test {

// Number of random cases. With a sanitizer each takes many times as long, and a tenth of them runs
// the same code.
constexpr unsigned case_count(unsigned without_sanitizer) {
#ifdef BRINDLE_SANITIZED
    return without_sanitizer / 10;
#else
    return without_sanitizer;
#endif
}

}  // namespace brindle::test
