#include "mediafoundation/AttributeStore.h"

#include <algorithm>

namespace mediafoundation {

namespace {

/// Sets one value through the interface.
struct Setter {
    IMFAttributes& destination;
    REFGUID key;

    HRESULT operator()(UINT32 value) const { return destination.SetUINT32(key, value); }
    HRESULT operator()(UINT64 value) const { return destination.SetUINT64(key, value); }
    HRESULT operator()(double value) const { return destination.SetDouble(key, value); }
    HRESULT operator()(REFGUID value) const { return destination.SetGUID(key, value); }
    HRESULT operator()(const AttributeStore::Blob& value) const {
        return destination.SetBlob(key, value.data(), static_cast<UINT32>(value.size()));
    }
};

} // namespace

HRESULT AttributeStore::TypeOf(REFGUID key, MF_ATTRIBUTE_TYPE& type) const {
    constexpr MF_ATTRIBUTE_TYPE types[] = {MF_ATTRIBUTE_UINT32, MF_ATTRIBUTE_UINT64, MF_ATTRIBUTE_DOUBLE,
                                           MF_ATTRIBUTE_GUID, MF_ATTRIBUTE_BLOB};
    static_assert(std::size(types) == std::variant_size_v<Value>);
    const Value* found = Find(key);
    if (found == nullptr) return MF_E_ATTRIBUTENOTFOUND;
    type = types[found->index()];
    return S_OK;
}

void AttributeStore::Set(REFGUID key, Value value) {
    const auto found = std::ranges::find(values_, key, &std::pair<GUID, Value>::first);
    if (found != values_.end()) {
        found->second = std::move(value);
    } else {
        values_.emplace_back(key, std::move(value));
    }
}

void AttributeStore::Delete(REFGUID key) {
    std::erase_if(values_, [&](const auto& item) { return item.first == key; });
}

HRESULT AttributeStore::CopyTo(IMFAttributes& destination) const {
    HRESULT result = destination.DeleteAllItems();
    for (const auto& [key, value] : values_) {
        if (FAILED(result)) break;
        result = std::visit(Setter{destination, key}, value);
    }
    return result;
}

const AttributeStore::Value* AttributeStore::Find(REFGUID key) const {
    const auto found = std::ranges::find(values_, key, &std::pair<GUID, Value>::first);
    return found != values_.end() ? &found->second : nullptr;
}

} // namespace mediafoundation
