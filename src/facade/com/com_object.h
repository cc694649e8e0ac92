#pragma once

#include <atomic>
#include <ocidl.h>
#include <type_traits>

#include "facade/com/module.h"
#include "facade/com/result_error.h"

namespace brindle::com {

// True when a pointer to Interface is what a caller asks for with `iid`.
template <typename Interface>
[[nodiscard]] bool answers_to(REFIID iid) noexcept {
    if (iid == __uuidof(Interface)) {
        return true;
    }
    if constexpr (std::is_base_of_v<IDispatch, Interface>) {
        return iid == __uuidof(IDispatch);
    } else if constexpr (std::is_base_of_v<IProvideClassInfo, Interface>) {
        return iid == __uuidof(IProvideClassInfo);
    } else {
        return false;
    }
}

// Counts references and answers for the interfaces listed. Begins with one reference, which belongs
// to the code that made it.
template <typename First, typename... Others>
class ComObject : public First, public Others... {
public:
    ComObject() = default;
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;
    virtual ~ComObject() = default;

    HRESULT __stdcall QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        if (iid == __uuidof(IUnknown)) {
            *object = static_cast<First*>(this);
        } else {
            static_cast<void>((give<First>(iid, *object) || ... || give<Others>(iid, *object)));
        }
        if (*object == nullptr) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }

    ULONG __stdcall AddRef() override { return ++references_; }

    ULONG __stdcall Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

private:
    template <typename Interface>
    bool give(REFIID iid, void*& object) noexcept {
        if (answers_to<Interface>(iid)) {
            object = static_cast<Interface*>(this);
        }
        return object != nullptr;
    }

    std::atomic<ULONG> references_ = 1;
    ModuleUse module_use_;
};

// Makes an object and gives the caller one of its interfaces.
template <typename Object>
void make(REFIID iid, void** object) {
    auto* const made = new Object;
    const HRESULT result = made->QueryInterface(iid, object);
    made->Release();
    check(result);
}

}  // namespace brindle::com
