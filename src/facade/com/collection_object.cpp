#include "facade/com/collection_object.h"

#include <utility>
#include <vector>

#include <brindle/error.h>

#include "facade/com/enumerator.h"

namespace brindle::com {
namespace {

struct ItemKind {
    using Interface = IEnumVARIANT;
    using Kept = Variant;
    using Given = VARIANT;
    static void give(const Variant& item, VARIANT& into) {
        ::VariantInit(&into);
        hand_out(item, into);
    }
    static void take_back(VARIANT& given) noexcept { ::VariantClear(&given); }
};

std::shared_ptr<const std::vector<Variant>> items_of(const KeyedCollection& collection) {
    auto items = std::make_shared<std::vector<Variant>>();
    for (std::int32_t position = 1; position <= collection.Count(); ++position) {
        items->push_back(collection.Item(position));
    }
    return items;
}

}  // namespace

CollectionObject::CollectionObject(std::shared_ptr<KeyedCollection> collection)
    : collection_(std::move(collection)) {}

HRESULT CollectionObject::Remove(BSTR Key) {
    return run([&] { collection_->Remove(text_of(Key)); });
}

HRESULT CollectionObject::Add(VARIANT Item, BSTR Key) {
    return run([&] { collection_->Add(value_of(Item), text_of(Key)); });
}

HRESULT CollectionObject::Item(VARIANT Position, VARIANT Key, VARIANT* Result) {
    return give(Result, [&] { return item(Position, Key); });
}

HRESULT CollectionObject::Exists(BSTR Key, VARIANT_BOOL* Result) {
    return give(Result, [&] { return collection_->Exists(text_of(Key)); });
}

HRESULT CollectionObject::get_Count(LONG* Value) {
    return give(Value, [&] { return collection_->Count(); });
}

HRESULT CollectionObject::get__NewEnum(IUnknown** Value) {
    return store(
        Value, [&](IUnknown*& place) { place = new Enumerator<ItemKind>(items_of(*collection_)); });
}

Variant CollectionObject::item(const VARIANT& position, const VARIANT& key) const {
    if (!is_omitted(key)) {
        return collection_->Item(text_of(key));
    }
    if (is_omitted(position)) {
        throw Error(RuntimeError::InvalidCall);
    }
    const Variant wanted = value_of(position);
    if (const String* const text = std::get_if<String>(&wanted)) {
        return collection_->Item(*text);
    }
    return collection_->Item(long_of(position));
}

}  // namespace brindle::com
