#include "facade/com/argument.h"

#include <oleauto.h>

namespace brindle::com {
namespace {

bool is_reference(VARTYPE type) noexcept {
    return (type & VT_BYREF) != 0;
}

}  // namespace

HRESULT Argument::take(VARIANT& given) {
    if (is_taken_) {
        return DISP_E_BADPARAMCOUNT;
    }
    if (is_omitted(given)) {
        return omit();
    }
    is_taken_ = true;
    if (type() == VT_VARIANT) {
        passed_ = given;
        return S_OK;
    }
    return is_reference(type()) ? take_reference(given) : take_value(given);
}

HRESULT Argument::omit() {
    if (!parameter_.is_optional) {
        return DISP_E_PARAMNOTOPTIONAL;
    }
    is_taken_ = true;
    if (type() == VT_VARIANT) {
        passed_.vt = VT_ERROR;
        passed_.scode = DISP_E_PARAMNOTFOUND;
        return S_OK;
    }
    // Every default is 0, which is what Empty becomes.
    VARIANT empty{};
    return is_reference(type()) ? take_reference(empty) : take_value(empty);
}

VARTYPE Argument::plain_type() const noexcept {
    return static_cast<VARTYPE>(type() & ~VT_BYREF);
}

HRESULT Argument::take_value(const VARIANT& given) {
    const HRESULT result = convert(given, type(), *converted_.get());
    passed_ = *converted_.get();
    return result;
}

HRESULT Argument::take_reference(VARIANT& given) {
    if (refers_to_nothing(given)) {
        return DISP_E_TYPEMISMATCH;
    }
    VARIANT& origin = referred(given);
    const bool is_variable = &origin != &given;
    passed_.vt = type();
    if (origin.vt == type()) {
        passed_.byref = origin.byref;
        return S_OK;
    }
    if (is_variable && origin.vt == plain_type()) {
        passed_.byref = &origin.byref;
        return S_OK;
    }
    const HRESULT result = convert(origin, plain_type(), *converted_.get());
    passed_.byref = &converted_->byref;
    if (FAILED(result) || !(is_variable || is_reference(origin.vt))) {
        return result;
    }
    origin_ = &origin;
    return ::VariantCopy(before_.get(), converted_.get());
}

void Argument::hand_back() {
    if (origin_ == nullptr || is_same(*converted_.get(), *before_.get())) {
        return;
    }
    if (is_reference(origin_->vt)) {
        assign_referred(*origin_, *converted_.get());
    } else {
        ::VariantCopy(origin_, converted_.get());
    }
}

}  // namespace brindle::com
