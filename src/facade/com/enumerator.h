// What IEnumVARIANT, IEnumConnections and IEnumConnectionPoints have in common.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "facade/com/com_object.h"
#include "facade/com/guard.h"

namespace brindle::com {

// Goes through a list as it was when the enumerator was made. Kind names the interface, the type
// kept, the type handed out and how one becomes the other:
//
//     using Interface, Kept, Given;
//     static void give(const Kept&, Given&);   // may throw
//     static void take_back(Given&) noexcept;
template <typename Kind>
class Enumerator final : public ComObject<typename Kind::Interface> {
    using Interface = typename Kind::Interface;
    using Kept = typename Kind::Kept;
    using Given = typename Kind::Given;

public:
    explicit Enumerator(std::shared_ptr<const std::vector<Kept>> items, std::size_t next = 0)
        : items_(std::move(items)), next_(next) {}

    HRESULT __stdcall Next(ULONG wanted, Given* into, ULONG* given) override {
        if (into == nullptr || (given == nullptr && wanted != 1)) {
            return E_POINTER;
        }
        ULONG count = 0;
        const HRESULT result = guarded(__uuidof(Interface), [&] {
            for (; count < wanted && next_ + count < items_->size(); ++count) {
                Kind::give((*items_)[next_ + count], into[count]);
            }
        });
        if (FAILED(result)) {
            std::for_each(into, into + count, &Kind::take_back);
            count = 0;
        }
        next_ += count;
        if (given != nullptr) {
            *given = count;
        }
        return FAILED(result) ? result : count == wanted ? S_OK : S_FALSE;
    }

    HRESULT __stdcall Skip(ULONG count) override {
        const std::size_t left = items_->size() - next_;
        next_ += std::min<std::size_t>(count, left);
        return count <= left ? S_OK : S_FALSE;
    }

    HRESULT __stdcall Reset() override {
        next_ = 0;
        return S_OK;
    }

    HRESULT __stdcall Clone(Interface** clone) override {
        if (clone == nullptr) {
            return E_POINTER;
        }
        *clone = nullptr;
        return guarded(__uuidof(Interface), [&] { *clone = new Enumerator(items_, next_); });
    }

private:
    std::shared_ptr<const std::vector<Kept>> items_;
    std::size_t next_;
};

}  // namespace brindle::com
