#pragma once

#include <exception>
#include <windows.h>

namespace brindle::com {

// A system result code to be returned to the host.
class ResultError : public std::exception {
public:
    explicit ResultError(HRESULT result) noexcept : result_(result) {}
    [[nodiscard]] HRESULT result() const noexcept { return result_; }
    [[nodiscard]] const char* what() const noexcept override { return "a call of the system"; }

private:
    HRESULT result_;
};

inline void check(HRESULT result) {
    if (FAILED(result)) {
        throw ResultError(result);
    }
}

inline void require(bool condition, HRESULT otherwise) {
    if (!condition) {
        throw ResultError(otherwise);
    }
}

}  // namespace brindle::com
