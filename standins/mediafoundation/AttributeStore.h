#pragma once

#include "mediafoundation/Results.h"

#include <cstdint>
#include <utility>
#include <variant>
#include <vector>

namespace mediafoundation {

/// Values by key. What takes memory throws std::bad_alloc and leaves the store as it was.
class AttributeStore {
public:
    using Blob = std::vector<UINT8>;
    using Value = std::variant<UINT32, UINT64, double, GUID, Blob>;

    /// Gives a value, which stays the store's.
    /// @return MF_E_ATTRIBUTENOTFOUND, or MF_E_INVALIDTYPE for a value of another kind
    template <typename Kind>
    HRESULT Find(REFGUID key, const Kind*& value) const {
        const Value* found = Find(key);
        if (found == nullptr) return MF_E_ATTRIBUTENOTFOUND;
        value = std::get_if<Kind>(found);
        return value != nullptr ? S_OK : wrongAttributeType;
    }
    HRESULT TypeOf(REFGUID key, MF_ATTRIBUTE_TYPE& type) const;
    void Set(REFGUID key, Value value);
    void Delete(REFGUID key);
    void Clear() { values_.clear(); }
    UINT32 Count() const { return static_cast<UINT32>(values_.size()); }
    /// Puts these values in the place of the ones of `destination`.
    HRESULT CopyTo(IMFAttributes& destination) const;

private:
    const Value* Find(REFGUID key) const;

    std::vector<std::pair<GUID, Value>> values_;
};

} // namespace mediafoundation
