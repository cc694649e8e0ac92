#include "facade/com/values.h"

#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>
#include <variant>

#include <brindle/error.h>

namespace brindle::com {
namespace {

[[noreturn]] void raise_conversion_error(HRESULT result) {
    switch (result) {
        case DISP_E_OVERFLOW:
            throw Error(RuntimeError::Overflow);
        case E_OUTOFMEMORY:
            throw std::bad_alloc();
        default:
            throw Error(RuntimeError::TypeMismatch);
    }
}

void convert_or_raise(const VARIANT& from, VARTYPE type, OwnedVariant& into) {
    const HRESULT result = convert(from, type, *into.get());
    if (FAILED(result)) {
        raise_conversion_error(result);
    }
}

// Through a reference, also one to a VARIANT.
void copy_value(const VARIANT& from, OwnedVariant& into) {
    if (refers_to_nothing(from)) {
        throw Error(RuntimeError::TypeMismatch);
    }
    const HRESULT result = ::VariantCopyInd(into.get(), const_cast<VARIANT*>(&from));
    if (FAILED(result)) {
        raise_conversion_error(result);
    }
}

// 0 for what is no number.
std::size_t size_of_number(VARTYPE type) noexcept {
    switch (type) {
        case VT_I1:
        case VT_UI1:
            return sizeof(std::uint8_t);
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return sizeof(std::uint16_t);
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
            return sizeof(std::uint32_t);
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
            return sizeof(std::uint64_t);
        default:
            return 0;
    }
}

}  // namespace

OwnedBstr::OwnedBstr(const String& text) : text_(new_bstr(text)) {}

BSTR new_bstr(const String& text) {
    if (text.size() > std::numeric_limits<UINT>::max()) {
        throw Error(RuntimeError::OutOfStringSpace);
    }
    BSTR made = ::SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()),
                                    static_cast<UINT>(text.size()));
    if (made == nullptr) {
        throw std::bad_alloc();
    }
    return made;
}

String text_of(BSTR text) {
    return text == nullptr ? String() : String(text, text + ::SysStringLen(text));
}

bool is_omitted(const VARIANT& value) noexcept {
    if (value.vt == VT_ERROR) {
        return value.scode == DISP_E_PARAMNOTFOUND;
    }
    if (refers_to_nothing(value)) {
        return false;
    }
    return (value.vt == (VT_BYREF | VT_ERROR) && *value.pscode == DISP_E_PARAMNOTFOUND) ||
           (value.vt == (VT_BYREF | VT_VARIANT) && is_omitted(*value.pvarVal));
}

bool refers_to_nothing(const VARIANT& value) noexcept {
    if ((value.vt & VT_BYREF) == 0) {
        return false;
    }
    return value.byref == nullptr ||
           (value.vt == (VT_BYREF | VT_VARIANT) && refers_to_nothing(*value.pvarVal));
}

VARIANT& referred(VARIANT& value) noexcept {
    VARIANT* at = &value;
    while (at->vt == (VT_BYREF | VT_VARIANT) && at->pvarVal != nullptr) {
        at = at->pvarVal;
    }
    return *at;
}

void assign_referred(const VARIANT& reference, const VARIANT& value) noexcept {
    const auto type = static_cast<VARTYPE>(reference.vt & ~VT_BYREF);
    OwnedVariant made;
    if (FAILED(convert(value, type, *made.get()))) {
        return;
    }
    if (type == VT_BSTR) {
        std::swap(*reference.pbstrVal, made->bstrVal);
    } else {
        std::memcpy(reference.byref, &made->llVal, size_of_number(type));
    }
}

bool is_same(const VARIANT& first, const VARIANT& second) noexcept {
    if (first.vt != VT_BSTR) {
        return first.llVal == second.llVal;
    }
    const UINT length = ::SysStringByteLen(first.bstrVal);
    return length == ::SysStringByteLen(second.bstrVal) &&
           (length == 0 || std::memcmp(first.bstrVal, second.bstrVal, length) == 0);
}

HRESULT convert(const VARIANT& from, VARTYPE type, VARIANT& into) noexcept {
    if (refers_to_nothing(from)) {
        return DISP_E_TYPEMISMATCH;
    }
    const HRESULT result =
        ::VariantChangeTypeEx(&into, const_cast<VARIANT*>(&from), LOCALE_INVARIANT, 0, type);
    if (SUCCEEDED(result) || result == DISP_E_OVERFLOW || result == E_OUTOFMEMORY) {
        return result;
    }
    return DISP_E_TYPEMISMATCH;
}

Variant value_of(const VARIANT& value) {
    OwnedVariant plain;
    copy_value(value, plain);
    switch (plain->vt) {
        case VT_EMPTY:
            return Empty{};
        case VT_BOOL:
            return plain->boolVal != VARIANT_FALSE;
        case VT_I2:
            return plain->iVal;
        case VT_I4:
            return std::int32_t{plain->lVal};
        case VT_R8:
            return plain->dblVal;
        case VT_BSTR:
            return text_of(plain->bstrVal);
        default:
            return text_of(*plain.get());
    }
}

String text_of(const VARIANT& value) {
    OwnedVariant text;
    convert_or_raise(value, VT_BSTR, text);
    return text_of(text->bstrVal);
}

std::int32_t long_of(const VARIANT& value) {
    OwnedVariant number;
    convert_or_raise(value, VT_I4, number);
    return number->lVal;
}

void hand_out(const String& value, BSTR& into) {
    into = new_bstr(value);
}

void hand_out(const Variant& value, VARIANT& into) {
    std::visit(
        [&into](const auto& held) {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, Empty>) {
                into.vt = VT_EMPTY;
            } else if constexpr (std::is_same_v<Held, bool>) {
                hand_out(held, into.boolVal);
                into.vt = VT_BOOL;
            } else if constexpr (std::is_same_v<Held, std::int16_t>) {
                into.iVal = held;
                into.vt = VT_I2;
            } else if constexpr (std::is_same_v<Held, std::int32_t>) {
                into.lVal = held;
                into.vt = VT_I4;
            } else if constexpr (std::is_same_v<Held, double>) {
                into.dblVal = held;
                into.vt = VT_R8;
            } else {
                hand_out(held, into.bstrVal);
                into.vt = VT_BSTR;
            }
        },
        value);
}

}  // namespace brindle::com
