#pragma once

#include <wrl/client.h>

#include "facade/com/com_object.h"
#include "facade/com/guard.h"
#include "facade/com/invocation.h"
#include "facade/com/type_library.h"

namespace brindle::com {

// An object whose dual interface is served by name and number from the type library, and whose
// errors carry texts.
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
        if (type == nullptr) {
            return E_POINTER;
        }
        *type = nullptr;
        if (index != 0) {
            return DISP_E_BADINDEX;
        }
        return guarded(__uuidof(Dual), [&] { type_info().CopyTo(type); });
    }

    HRESULT __stdcall GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID /*language*/,
                                    DISPID* ids) override {
        if (reserved != GUID_NULL) {
            return DISP_E_UNKNOWNINTERFACE;
        }
        if (names == nullptr || ids == nullptr) {
            return E_POINTER;
        }
        HRESULT found = S_OK;
        const HRESULT result =
            guarded(__uuidof(Dual), [&] { found = type_info()->GetIDsOfNames(names, count, ids); });
        return FAILED(result) ? result : found;
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
        const Microsoft::WRL::ComPtr<IUnknown> alive(static_cast<Dual*>(this));
        HRESULT outcome = S_OK;
        const HRESULT prepared = guarded(__uuidof(Dual), [&] {
            outcome = invoke(*type_info().Get(), static_cast<Dual*>(this),
                             {member, flags, *arguments, result, exception, wrong_argument});
        });
        return FAILED(prepared) ? prepared : outcome;
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

private:
    // Hosts that are bound early never need it.
    Microsoft::WRL::ComPtr<ITypeInfo> type_info() {
        if (!type_info_) {
            type_info_ = load_type_info(__uuidof(Dual));
        }
        return type_info_;
    }

    Microsoft::WRL::ComPtr<ITypeInfo> type_info_;
};

}  // namespace brindle::com
