#pragma once

#include <memory>

#include <brindle/keyed_collection.h>

#include "facade/com/dispatch_object.h"
#include "facade/com/values.h"

namespace brindle::com {

template <>
[[nodiscard]] Members members_of<::IKeyedCollection>() noexcept;

// A keyed collection as hosts hold it. Shares the collection itself, which outlives the file.
class CollectionObject final : public DispatchObject<::IKeyedCollection> {
public:
    explicit CollectionObject(std::shared_ptr<KeyedCollection> collection);

    HRESULT __stdcall Remove(BSTR Key) override;
    HRESULT __stdcall Add(VARIANT Item, BSTR Key) override;
    HRESULT __stdcall Reserved3() override { return E_NOTIMPL; }
    HRESULT __stdcall Item(VARIANT Position, VARIANT Key, VARIANT* Result) override;
    HRESULT __stdcall Exists(BSTR Key, VARIANT_BOOL* Result) override;
    HRESULT __stdcall Reserved6() override { return E_NOTIMPL; }
    HRESULT __stdcall get_Count(LONG* Value) override;
    HRESULT __stdcall get__NewEnum(IUnknown** Value) override;

private:
    [[nodiscard]] Variant item(const VARIANT& position, const VARIANT& key) const;

    std::shared_ptr<KeyedCollection> collection_;
};

}  // namespace brindle::com
