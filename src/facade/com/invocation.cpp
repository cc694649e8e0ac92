#include "facade/com/invocation.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <oaidl.h>
#include <oleauto.h>
#include <optional>
#include <vector>

#include <wrl/client.h>

#include "facade/com/result_error.h"
#include "facade/com/values.h"

namespace brindle::com {
namespace {

constexpr WORD kReading = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

struct ReleaseDescription {
    ITypeInfo* type;
    void operator()(FUNCDESC* description) const { type->ReleaseFuncDesc(description); }
};
using Description = std::unique_ptr<FUNCDESC, ReleaseDescription>;

Description describe_at(ITypeInfo& type, UINT index) {
    FUNCDESC* description = nullptr;
    check(type.GetFuncDesc(index, &description));
    return Description(description, ReleaseDescription{&type});
}

UINT count_of_functions(ITypeInfo& type) {
    TYPEATTR* attributes = nullptr;
    check(type.GetTypeAttr(&attributes));
    const UINT count = attributes->cFuncs;
    type.ReleaseTypeAttr(attributes);
    return count;
}

// Null when there is none.
Description describe(ITypeInfo& type, DISPID member, INVOKEKIND kind) {
    // Not by GetFuncIndexOfMemId: systems disagree on whether its index counts inherited functions.
    const UINT count = count_of_functions(type);
    for (UINT index = 0; index < count; ++index) {
        Description description = describe_at(type, index);
        if (description->memid == member && description->invkind == kind) {
            return description;
        }
    }
    return Description(nullptr, ReleaseDescription{&type});
}

// Scripting languages differ in whether reading a property and calling a function are one thing;
// no name here is both.
Description describe(ITypeInfo& type, DISPID member, WORD flags) {
    if ((flags & kReading) == 0) {
        return (flags & DISPATCH_PROPERTYPUT) != 0 ? describe(type, member, INVOKE_PROPERTYPUT)
                                                   : Description(nullptr, ReleaseDescription{});
    }
    Description function = describe(type, member, INVOKE_FUNC);
    return function ? std::move(function) : describe(type, member, INVOKE_PROPERTYGET);
}

// One argument in the form in which the member takes it.
class Argument {
public:
    explicit Argument(const ELEMDESC& parameter) : parameter_(parameter) {}

    [[nodiscard]] bool is_optional() const noexcept {
        return (parameter_.paramdesc.wParamFlags & PARAMFLAG_FOPT) != 0;
    }

    HRESULT take(VARIANT& given) {
        if (is_taken_) {
            return DISP_E_BADPARAMCOUNT;
        }
        is_taken_ = true;
        if (is_omitted(given)) {
            return omit();
        }
        if (type() == VT_VARIANT) {
            passed_ = given;
            return S_OK;
        }
        return is_by_reference() ? take_reference(given) : take_value(given);
    }

    // For one that the host's list does not have.
    HRESULT omit() {
        if (!is_optional()) {
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
        return is_by_reference() ? take_reference(empty) : take_value(empty);
    }

    // A script's variable that was of another type gets its new value.
    void hand_back() {
        if (variable_ != nullptr) {
            ::VariantCopy(variable_, converted_.get());
        }
    }

    [[nodiscard]] bool is_taken() const noexcept { return is_taken_; }
    [[nodiscard]] const VARIANT& passed() const noexcept { return passed_; }

private:
    [[nodiscard]] bool is_by_reference() const noexcept { return parameter_.tdesc.vt == VT_PTR; }

    [[nodiscard]] VARTYPE type() const noexcept {
        const VARTYPE type = is_by_reference() ? parameter_.tdesc.lptdesc->vt : parameter_.tdesc.vt;
        // The only types of its own that the interface names are enumerations.
        return type == VT_USERDEFINED ? static_cast<VARTYPE>(VT_I4) : type;
    }

    HRESULT take_value(const VARIANT& given) {
        const HRESULT result = convert(given, type(), *converted_.get());
        passed_ = *converted_.get();
        return result;
    }

    HRESULT take_reference(VARIANT& given) {
        const auto wanted = static_cast<VARTYPE>(VT_BYREF | type());
        if (refers_to_nothing(given)) {
            return DISP_E_TYPEMISMATCH;
        }
        if (given.vt == wanted) {
            passed_ = given;
            return S_OK;
        }
        passed_.vt = wanted;
        if (given.vt == (VT_BYREF | VT_VARIANT) && given.pvarVal->vt == type()) {
            passed_.byref = &given.pvarVal->byref;
            return S_OK;
        }
        const HRESULT result = convert(given, type(), *converted_.get());
        passed_.byref = &converted_->byref;
        if (given.vt == (VT_BYREF | VT_VARIANT)) {
            variable_ = given.pvarVal;
        }
        return result;
    }

    const ELEMDESC& parameter_;
    bool is_taken_ = false;
    OwnedVariant converted_;
    VARIANT passed_{};             // owns nothing
    VARIANT* variable_ = nullptr;  // gets `converted_` afterwards
};

using Arguments = std::vector<std::unique_ptr<Argument>>;

// Which parameter the host's argument at `place` is for.
std::optional<std::size_t> parameter_of(const DISPPARAMS& given, UINT place, std::size_t count) {
    if (place >= given.cNamedArgs) {
        return given.cArgs - 1 - place;
    }
    const DISPID name = given.rgdispidNamedArgs[place];
    if (name == DISPID_PROPERTYPUT) {
        return count - 1;
    }
    if (name < 0 || static_cast<std::size_t>(name) >= count) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(name);
}

HRESULT fill(const Arguments& arguments, const DISPPARAMS& given, UINT& wrong) {
    if (given.cArgs > arguments.size() || given.cNamedArgs > given.cArgs) {
        return DISP_E_BADPARAMCOUNT;
    }
    for (UINT place = 0; place < given.cArgs; ++place) {
        wrong = place;
        const std::optional<std::size_t> parameter = parameter_of(given, place, arguments.size());
        if (!parameter) {
            return DISP_E_PARAMNOTFOUND;
        }
        const HRESULT result = arguments[*parameter]->take(given.rgvarg[place]);
        if (FAILED(result)) {
            return result;
        }
    }
    for (const auto& argument : arguments) {
        const HRESULT result = argument->is_taken() ? S_OK : argument->omit();
        if (FAILED(result)) {
            return result;
        }
    }
    return S_OK;
}

// header.v2Frames(1) means the item of the collection, as a script writes it.
bool is_index_of_result(const FUNCDESC& description, const Invocation& invocation) {
    return description.cParams == 0 && description.elemdescFunc.tdesc.vt == VT_DISPATCH &&
           invocation.arguments.cArgs > 0;
}

HRESULT invoke_default(IDispatch& object, const Invocation& invocation) {
    return object.Invoke(DISPID_VALUE, GUID_NULL, LOCALE_INVARIANT, invocation.flags,
                         const_cast<DISPPARAMS*>(&invocation.arguments), invocation.result,
                         invocation.exception, invocation.wrong_argument);
}

HRESULT call(ITypeInfo& type, void* object, const Invocation& invocation,
             const FUNCDESC& description, const Arguments& arguments) {
    std::vector<VARIANTARG> reversed;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument) {
        reversed.push_back((*argument)->passed());
    }
    DISPID put = DISPID_PROPERTYPUT;
    const bool is_put = description.invkind == INVOKE_PROPERTYPUT;
    DISPPARAMS passed{};
    passed.rgvarg = reversed.data();
    passed.cArgs = static_cast<UINT>(reversed.size());
    passed.rgdispidNamedArgs = is_put ? &put : nullptr;
    passed.cNamedArgs = is_put ? 1 : 0;
    // What is left there of an earlier failure must not explain this one.
    ::SetErrorInfo(0, nullptr);
    UINT wrong = 0;
    return type.Invoke(object, invocation.member, static_cast<WORD>(description.invkind), &passed,
                       is_put ? nullptr : invocation.result, invocation.exception, &wrong);
}

}  // namespace

HRESULT invoke(ITypeInfo& type, void* object, const Invocation& invocation) {
    const Description description = describe(type, invocation.member, invocation.flags);
    if (!description) {
        return DISP_E_MEMBERNOTFOUND;
    }
    if (is_index_of_result(*description, invocation)) {
        OwnedVariant collection;
        DISPPARAMS none{};
        const HRESULT result = call(type, object,
                                    {invocation.member, invocation.flags, none, collection.get(),
                                     invocation.exception, invocation.wrong_argument},
                                    *description, {});
        if (FAILED(result)) {
            return result;
        }
        return collection->pdispVal == nullptr ? DISP_E_TYPEMISMATCH
                                               : invoke_default(*collection->pdispVal, invocation);
    }
    Arguments arguments;
    for (SHORT i = 0; i < description->cParams; ++i) {
        arguments.push_back(std::make_unique<Argument>(description->lprgelemdescParam[i]));
    }
    UINT wrong = 0;
    HRESULT result = fill(arguments, invocation.arguments, wrong);
    if (FAILED(result)) {
        if (invocation.wrong_argument != nullptr) {
            *invocation.wrong_argument = wrong;
        }
        return result;
    }
    result = call(type, object, invocation, *description, arguments);
    for (const auto& argument : arguments) {
        argument->hand_back();
    }
    return result;
}

}  // namespace brindle::com
