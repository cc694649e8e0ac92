#pragma once

#include <oaidl.h>

#include "facade/com/dispatch_table.h"
#include "facade/com/values.h"

namespace brindle::com {

// One argument in the form in which the member takes it.
class Argument {
public:
    explicit Argument(const Parameter& parameter) noexcept : parameter_(parameter) {}

    // The result code says why the host's value does not serve.
    [[nodiscard]] HRESULT take(VARIANT& given);
    // For one that the host's list does not have.
    [[nodiscard]] HRESULT omit();
    [[nodiscard]] bool is_taken() const noexcept { return is_taken_; }

    [[nodiscard]] VARTYPE type() const noexcept { return parameter_.type; }
    // Lives as long as this, or as what the host has given.
    [[nodiscard]] VARIANT& passed() noexcept { return passed_; }

    // After the call: what the member has changed by reference becomes the host's value. A value
    // that is the same as before is left as it was.
    void hand_back();

private:
    [[nodiscard]] VARTYPE plain_type() const noexcept;
    [[nodiscard]] HRESULT take_value(const VARIANT& given);
    [[nodiscard]] HRESULT take_reference(VARIANT& given);

    const Parameter& parameter_;
    bool is_taken_ = false;
    OwnedVariant converted_;
    OwnedVariant before_;        // `converted_` before the call
    VARIANT passed_{};           // owns nothing
    VARIANT* origin_ = nullptr;  // the host's variable or reference that `converted_` was made from
};

}  // namespace brindle::com
