#pragma once

#include "mediafoundation/AttributeStore.h"
#include "mediafoundation/Object.h"

#include <algorithm>
#include <cstdlib>

namespace mediafoundation {

/// The attributes of an object whose interface derives from IMFAttributes. One thread at a time. Strings,
/// objects and PROPVARIANT have no place here: their operations answer E_NOTIMPL.
template <typename Interface>
class Attributes : public Object<Interface> {
public:
    HRESULT GetItemType(REFGUID key, MF_ATTRIBUTE_TYPE* type) final {
        return type != nullptr ? store_.TypeOf(key, *type) : E_POINTER;
    }
    HRESULT GetUINT32(REFGUID key, UINT32* value) final { return Get(key, value); }
    HRESULT GetUINT64(REFGUID key, UINT64* value) final { return Get(key, value); }
    HRESULT GetDouble(REFGUID key, double* value) final { return Get(key, value); }
    HRESULT GetGUID(REFGUID key, GUID* value) final { return Get(key, value); }
    HRESULT GetBlobSize(REFGUID key, UINT32* size) final {
        if (size == nullptr) return E_POINTER;
        const AttributeStore::Blob* blob = nullptr;
        const HRESULT result = store_.Find(key, blob);
        if (SUCCEEDED(result)) *size = static_cast<UINT32>(blob->size());
        return result;
    }
    HRESULT GetBlob(REFGUID key, UINT8* bytes, UINT32 capacity, UINT32* written) final {
        if (bytes == nullptr) return E_POINTER;
        const AttributeStore::Blob* blob = nullptr;
        const HRESULT result = store_.Find(key, blob);
        if (FAILED(result)) return result;
        if (capacity < blob->size()) return MF_E_BUFFERTOOSMALL;
        std::ranges::copy(*blob, bytes);
        if (written != nullptr) *written = static_cast<UINT32>(blob->size());
        return S_OK;
    }
    HRESULT GetAllocatedBlob(REFGUID key, UINT8** bytes, UINT32* size) final {
        if (bytes == nullptr || size == nullptr) return E_POINTER;
        const AttributeStore::Blob* blob = nullptr;
        const HRESULT result = store_.Find(key, blob);
        if (FAILED(result)) return result;
        *bytes = static_cast<UINT8*>(std::malloc(std::max<size_t>(blob->size(), 1)));
        if (*bytes == nullptr) return E_OUTOFMEMORY;
        std::ranges::copy(*blob, *bytes);
        *size = static_cast<UINT32>(blob->size());
        return S_OK;
    }
    HRESULT DeleteItem(REFGUID key) final {
        store_.Delete(key);
        return S_OK;
    }
    HRESULT DeleteAllItems() final {
        store_.Clear();
        return S_OK;
    }
    HRESULT SetUINT32(REFGUID key, UINT32 value) final { return Set(key, value); }
    HRESULT SetUINT64(REFGUID key, UINT64 value) final { return Set(key, value); }
    HRESULT SetDouble(REFGUID key, double value) final { return Set(key, value); }
    HRESULT SetGUID(REFGUID key, REFGUID value) final { return Set(key, value); }
    HRESULT SetBlob(REFGUID key, const UINT8* bytes, UINT32 size) final {
        if (bytes == nullptr && size != 0) return E_POINTER;
        return Guarded([&] {
            store_.Set(key, AttributeStore::Blob(bytes, bytes + size));
            return S_OK;
        });
    }
    HRESULT LockStore() final { return S_OK; }
    HRESULT UnlockStore() final { return S_OK; }
    HRESULT GetCount(UINT32* count) final {
        if (count == nullptr) return E_POINTER;
        *count = store_.Count();
        return S_OK;
    }
    HRESULT CopyAllItems(IMFAttributes* destination) final {
        if (destination == nullptr) return E_POINTER;
        return destination != this ? store_.CopyTo(*destination) : S_OK;
    }

    HRESULT GetItem(REFGUID, PROPVARIANT*) final { return E_NOTIMPL; }
    HRESULT CompareItem(REFGUID, REFPROPVARIANT, BOOL*) final { return E_NOTIMPL; }
    HRESULT Compare(IMFAttributes*, MF_ATTRIBUTES_MATCH_TYPE, BOOL*) final { return E_NOTIMPL; }
    HRESULT GetStringLength(REFGUID, UINT32*) final { return E_NOTIMPL; }
    HRESULT GetString(REFGUID, LPWSTR, UINT32, UINT32*) final { return E_NOTIMPL; }
    HRESULT GetAllocatedString(REFGUID, LPWSTR*, UINT32*) final { return E_NOTIMPL; }
    HRESULT GetUnknown(REFGUID, REFIID, void**) final { return E_NOTIMPL; }
    HRESULT SetItem(REFGUID, REFPROPVARIANT) final { return E_NOTIMPL; }
    HRESULT SetString(REFGUID, LPCWSTR) final { return E_NOTIMPL; }
    HRESULT SetUnknown(REFGUID, IUnknown*) final { return E_NOTIMPL; }
    HRESULT GetItemByIndex(UINT32, GUID*, PROPVARIANT*) final { return E_NOTIMPL; }

private:
    template <typename Kind>
    HRESULT Get(REFGUID key, Kind* value) const {
        if (value == nullptr) return E_POINTER;
        const Kind* found = nullptr;
        const HRESULT result = store_.Find(key, found);
        if (SUCCEEDED(result)) *value = *found;
        return result;
    }
    template <typename Kind>
    HRESULT Set(REFGUID key, Kind value) {
        return Guarded([&] {
            store_.Set(key, value);
            return S_OK;
        });
    }

    AttributeStore store_;
};

} // namespace mediafoundation
