// Values between automation's types and the library's.
#pragma once

#include <cstdint>
#include <oaidl.h>
#include <oleauto.h>
#include <utility>

#include <brindle/values.h>

#include "Brindle_h.h"

namespace brindle::com {

// A text in the system's form, freed at the end.
class OwnedBstr {
public:
    explicit OwnedBstr(const String& text);
    ~OwnedBstr() { ::SysFreeString(text_); }
    OwnedBstr(const OwnedBstr&) = delete;
    OwnedBstr& operator=(const OwnedBstr&) = delete;

    [[nodiscard]] BSTR get() const noexcept { return text_; }

private:
    BSTR text_;
};

// A value in the system's form, cleared at the end.
class OwnedVariant {
public:
    OwnedVariant() noexcept { ::VariantInit(&value_); }
    ~OwnedVariant() { ::VariantClear(&value_); }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;

    [[nodiscard]] VARIANT* get() noexcept { return &value_; }
    VARIANT* operator->() noexcept { return &value_; }
    // The caller owns it from here on.
    [[nodiscard]] VARIANT release() noexcept { return std::exchange(value_, VARIANT{}); }

private:
    VARIANT value_{};
};

// The caller owns it.
[[nodiscard]] BSTR new_bstr(const String& text);
// A null text is an empty one.
[[nodiscard]] String text_of(BSTR text);

// True for an argument that the caller left out, also when it was left out further up and is passed
// on by reference.
[[nodiscard]] bool is_omitted(const VARIANT& value) noexcept;
// True when the value refers to nothing: it must not be followed.
[[nodiscard]] bool refers_to_nothing(const VARIANT& value) noexcept;
// The variable that the value refers to, through references to references; the value itself when it
// refers to none. It may hold a reference of another type.
[[nodiscard]] VARIANT& referred(VARIANT& value) noexcept;
// Stores `value` where `reference` refers to, in the type that it has there. A value that does not
// convert changes nothing.
void assign_referred(const VARIANT& reference, const VARIANT& value) noexcept;
// True when two values of one type, a text or a number, are equal.
[[nodiscard]] bool is_same(const VARIANT& first, const VARIANT& second) noexcept;

// `from` as another type, by the rules of automation and the same in every country. `into` must be
// empty. The result code says what failed.
[[nodiscard]] HRESULT convert(const VARIANT& from, VARTYPE type, VARIANT& into) noexcept;

// A host's value, by value or by reference. Types that the library does not have become text. Error
// 13 or 6 for what can't be converted, Null among it.
[[nodiscard]] Variant value_of(const VARIANT& value);
[[nodiscard]] String text_of(const VARIANT& value);
[[nodiscard]] std::int32_t long_of(const VARIANT& value);

// Results. `into` holds nothing before.
void hand_out(const String& value, BSTR& into);
void hand_out(const Variant& value, VARIANT& into);
inline void hand_out(bool value, VARIANT_BOOL& into) noexcept {
    into = value ? VARIANT_TRUE : VARIANT_FALSE;
}
inline void hand_out(std::int16_t value, short& into) noexcept {
    into = value;
}
inline void hand_out(std::int32_t value, long& into) noexcept {
    into = value;
}
inline void hand_out(double value, double& into) noexcept {
    into = value;
}
inline void hand_out(eTagType value, ::eTagType& into) noexcept {
    into = static_cast<::eTagType>(value);
}
inline void hand_out(eTimeDisplayStyle value, ::eTimeDisplayStyle& into) noexcept {
    into = static_cast<::eTimeDisplayStyle>(value);
}

}  // namespace brindle::com
