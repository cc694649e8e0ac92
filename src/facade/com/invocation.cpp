#include "facade/com/invocation.h"

#include <array>
#include <cstddef>
#include <oleauto.h>
#include <optional>

#include <wrl/client.h>

#include "facade/com/argument.h"
#include "facade/com/result_error.h"
#include "facade/com/values.h"

namespace brindle::com {
namespace {

// Those of IUnknown and IDispatch.
constexpr std::size_t kInheritedFunctions = 7;

using Arguments = std::array<std::optional<Argument>, kMaxParameters>;

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

HRESULT fill(Arguments& arguments, const Member& member, const DISPPARAMS& given, UINT& wrong) {
    const std::size_t count = member.parameters.size();
    if (given.cArgs > count || given.cNamedArgs > given.cArgs) {
        return DISP_E_BADPARAMCOUNT;
    }
    for (std::size_t i = 0; i < count; ++i) {
        arguments[i].emplace(member.parameters[i]);
    }
    for (UINT place = 0; place < given.cArgs; ++place) {
        wrong = place;
        const std::optional<std::size_t> parameter = parameter_of(given, place, count);
        if (!parameter) {
            return DISP_E_PARAMNOTFOUND;
        }
        const HRESULT result = arguments[*parameter]->take(given.rgvarg[place]);
        if (FAILED(result)) {
            return result;
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        const HRESULT result = arguments[i]->is_taken() ? S_OK : arguments[i]->omit();
        if (FAILED(result)) {
            return result;
        }
    }
    return S_OK;
}

// What the failed member has left in the thread's error object. Never raises: texts that cannot be
// had are left out.
void describe_failure(HRESULT number, EXCEPINFO& into) noexcept {
    into = {};
    into.scode = number;
    Microsoft::WRL::ComPtr<IErrorInfo> information;
    if (::GetErrorInfo(0, &information) == S_OK) {
        information->GetSource(&into.bstrSource);
        information->GetDescription(&into.bstrDescription);
        information->GetHelpFile(&into.bstrHelpFile);
        information->GetHelpContext(&into.dwHelpContext);
    }
}

HRESULT call(const Members& members, const Member& member, void* object, Arguments& arguments,
             const Invocation& invocation) {
    std::array<VARTYPE, kMaxParameters + 1> types{};
    std::array<VARIANTARG*, kMaxParameters + 1> values{};
    UINT count = 0;
    for (; count < member.parameters.size(); ++count) {
        types[count] = arguments[count]->type();
        values[count] = &arguments[count]->passed();
    }
    OwnedVariant result;
    VARIANTARG place{};
    if (member.result != VT_EMPTY) {
        types[count] = static_cast<VARTYPE>(VT_BYREF | member.result);
        place.vt = types[count];
        place.byref = member.result == VT_VARIANT ? static_cast<void*>(result.get())
                                                  : static_cast<void*>(&result->byref);
        values[count] = &place;
        ++count;
    }
    const auto index = static_cast<std::size_t>(&member - members.data());
    VARIANT returned{};
    // What is left there of an earlier failure must not explain this one.
    ::SetErrorInfo(0, nullptr);
    check(::DispCallFunc(object, (kInheritedFunctions + index) * sizeof(void*), CC_STDCALL, VT_I4,
                         count, types.data(), values.data(), &returned));
    for (std::size_t i = 0; i < member.parameters.size(); ++i) {
        arguments[i]->hand_back();
    }
    if (FAILED(returned.lVal)) {
        if (invocation.exception != nullptr) {
            describe_failure(returned.lVal, *invocation.exception);
        }
        return DISP_E_EXCEPTION;
    }
    if (member.result != VT_EMPTY && member.result != VT_VARIANT) {
        result->vt = member.result;
    }
    if (invocation.result != nullptr && member.kind != INVOKE_PROPERTYPUT) {
        *invocation.result = result.release();
    }
    return S_OK;
}

// header.v2Frames(1) means the item of the collection, as a script writes it.
bool is_index_of_result(const Member& member, const Invocation& invocation) {
    return member.parameters.empty() && member.result == VT_DISPATCH &&
           invocation.arguments.cArgs > 0;
}

HRESULT invoke_default(IDispatch& object, const Invocation& invocation) {
    return object.Invoke(DISPID_VALUE, GUID_NULL, LOCALE_INVARIANT, invocation.flags,
                         const_cast<DISPPARAMS*>(&invocation.arguments), invocation.result,
                         invocation.exception, invocation.wrong_argument);
}

}  // namespace

HRESULT invoke(Members members, void* object, const Invocation& invocation) {
    const Member* const member = find_member(members, invocation.member, invocation.flags);
    if (member == nullptr) {
        return DISP_E_MEMBERNOTFOUND;
    }
    Arguments arguments;
    if (is_index_of_result(*member, invocation)) {
        OwnedVariant collection;
        DISPPARAMS none{};
        const HRESULT result = call(members, *member, object, arguments,
                                    {invocation.member, invocation.flags, none, collection.get(),
                                     invocation.exception, invocation.wrong_argument});
        if (FAILED(result)) {
            return result;
        }
        return collection->pdispVal == nullptr ? DISP_E_TYPEMISMATCH
                                               : invoke_default(*collection->pdispVal, invocation);
    }
    UINT wrong = 0;
    const HRESULT result = fill(arguments, *member, invocation.arguments, wrong);
    if (FAILED(result)) {
        if (invocation.wrong_argument != nullptr) {
            *invocation.wrong_argument = wrong;
        }
        return result;
    }
    return call(members, *member, object, arguments, invocation);
}

}  // namespace brindle::com
