#pragma once

#include <oaidl.h>

#include <wrl/client.h>

#include "facade/com/com_object.h"
#include "facade/com/dispatch_table.h"
#include "facade/com/guard.h"
#include "facade/com/invocation.h"
#include "facade/com/result_error.h"
#include "facade/com/type_library.h"
#include "facade/com/values.h"

namespace brindle::com {

// An object whose dual interface is served by name and number, and whose errors carry texts.
template <typename Dual, typename... Others>
class DispatchObject : public ComObject<Dual, ISupportErrorInfo, Others...> {
public:
    HRESULT __stdcall GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) {
            return E_POINTER;
        }
        *count = 1;
        return S_OK;
    }

    HRESULT __stdcall GetTypeInfo(UINT index, LCID /*language*/, ITypeInfo** type) override {
        return store(type, [&](ITypeInfo*& into) {
            require(index == 0, DISP_E_BADINDEX);
            load_type_info(__uuidof(Dual)).CopyTo(&into);
        });
    }

    HRESULT __stdcall GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID /*language*/,
                                    DISPID* ids) override {
        if (reserved != GUID_NULL) {
            return DISP_E_UNKNOWNINTERFACE;
        }
        if (names == nullptr || ids == nullptr) {
            return E_POINTER;
        }
        return find_names(members_of<Dual>(), {names, count}, ids);
    }

    HRESULT __stdcall Invoke(DISPID member, REFIID reserved, LCID /*language*/, WORD flags,
                             DISPPARAMS* arguments, VARIANT* result, EXCEPINFO* exception,
                             UINT* wrong_argument) override {
        if (reserved != GUID_NULL) {
            return DISP_E_UNKNOWNINTERFACE;
        }
        if (arguments == nullptr) {
            return E_POINTER;
        }
        return run([&] {
            check(invoke(members_of<Dual>(), static_cast<Dual*>(this),
                         {member, flags, *arguments, result, exception, wrong_argument}));
        });
    }

    HRESULT __stdcall InterfaceSupportsErrorInfo(REFIID iid) override {
        return iid == __uuidof(Dual) ? S_OK : S_FALSE;
    }

protected:
    // Runs what a member does. A host may release its last reference from inside an event: the
    // object lives until the member is done.
    template <typename Call>
    [[nodiscard]] HRESULT run(Call call) noexcept {
        const Microsoft::WRL::ComPtr<IUnknown> alive(static_cast<Dual*>(this));
        return guarded(__uuidof(Dual), call);
    }

    // The same of one that has a result: `member` puts it into the place that the host names.
    // Zero or null after a failure.
    template <typename Out, typename Member>
    [[nodiscard]] HRESULT store(Out* into, Member member) noexcept {
        return run([&] {
            require(into != nullptr, E_POINTER);
            *into = Out{};
            member(*into);
        });
    }

    // The same of one whose result is a value.
    template <typename Out, typename Member>
    [[nodiscard]] HRESULT give(Out* into, Member member) noexcept {
        return store(into, [&](Out& place) { hand_out(member(), place); });
    }
};

}  // namespace brindle::com
