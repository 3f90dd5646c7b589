#pragma once

#include "codecs/wmf/scripted/ScriptedMediaFoundation.h"

#include <algorithm>
#include <utility>
#include <variant>

/// Enters a call; its result.
HRESULT Enter(const std::string& call);

/// As long as this lives calls are the library's own: they don't count, and all succeed.
class OwnCalls {
public:
    OwnCalls()
        : results(std::exchange(Script().results, {})), empty(std::exchange(Script().empty, {})),
          calls(Script().calls.size()) {}
    OwnCalls(const OwnCalls&) = delete;
    OwnCalls& operator=(const OwnCalls&) = delete;
    ~OwnCalls() {
        Script().results = std::move(results);
        Script().empty = std::move(empty);
        Script().calls.resize(calls);
    }

private:
    decltype(MFScript::results) results;
    decltype(MFScript::empty) empty;
    size_t calls;
};

/// Short names of the identifiers that are used.
std::string NameOf(REFGUID identifier);

/// Counts references, and itself while there are any.
template <typename Interface>
class Counted : public Interface {
public:
    Counted() { ++Script().objects; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    virtual ~Counted() { --Script().objects; }

    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override {
        const ULONG left = --references;
        if (left == 0) delete this;
        return left;
    }

private:
    ULONG references = 1;
};

using AttributeValue = std::variant<UINT32, UINT64, GUID, std::vector<UINT8>>;

/// Attributes in the order in which they were set first.
template <typename Interface>
class Attributes : public Counted<Interface> {
public:
    HRESULT GetUINT32(REFGUID key, UINT32* value) override { return Get(key, value); }
    HRESULT GetUINT64(REFGUID key, UINT64* value) override { return Get(key, value); }
    HRESULT GetGUID(REFGUID key, GUID* value) override { return Get(key, value); }
    HRESULT GetBlobSize(REFGUID key, UINT32* size) override {
        if (const HRESULT result = Enter("GetBlobSize " + NameOf(key)); FAILED(result)) return result;
        std::vector<UINT8> blob;
        const HRESULT result = Get(key, &blob);
        *size = static_cast<UINT32>(blob.size()) + Script().blobSlack;
        return result;
    }
    HRESULT GetBlob(REFGUID key, UINT8* bytes, UINT32 capacity, UINT32* written) override {
        if (const HRESULT result = Enter("GetBlob " + NameOf(key)); FAILED(result)) return result;
        std::vector<UINT8> blob;
        const HRESULT result = Get(key, &blob);
        *written = std::min(capacity, static_cast<UINT32>(blob.size()));
        std::copy_n(blob.begin(), *written, bytes);
        return result;
    }
    HRESULT SetUINT32(REFGUID key, UINT32 value) override { return Set("SetUINT32 ", key, value); }
    HRESULT SetUINT64(REFGUID key, UINT64 value) override { return Set("SetUINT64 ", key, value); }
    HRESULT SetGUID(REFGUID key, REFGUID value) override { return Keep(key, value); }
    HRESULT SetBlob(REFGUID key, const UINT8* bytes, UINT32 size) override {
        return Keep(key, std::vector<UINT8>(bytes, bytes + size));
    }

    // Nothing calls these.
    HRESULT GetItem(REFGUID, PROPVARIANT*) override { return E_NOTIMPL; }
    HRESULT GetItemType(REFGUID, MF_ATTRIBUTE_TYPE*) override { return E_NOTIMPL; }
    HRESULT CompareItem(REFGUID, REFPROPVARIANT, BOOL*) override { return E_NOTIMPL; }
    HRESULT Compare(IMFAttributes*, MF_ATTRIBUTES_MATCH_TYPE, BOOL*) override { return E_NOTIMPL; }
    HRESULT GetDouble(REFGUID, double*) override { return E_NOTIMPL; }
    HRESULT GetStringLength(REFGUID, UINT32*) override { return E_NOTIMPL; }
    HRESULT GetString(REFGUID, LPWSTR, UINT32, UINT32*) override { return E_NOTIMPL; }
    HRESULT GetAllocatedString(REFGUID, LPWSTR*, UINT32*) override { return E_NOTIMPL; }
    HRESULT GetAllocatedBlob(REFGUID, UINT8**, UINT32*) override { return E_NOTIMPL; }
    HRESULT GetUnknown(REFGUID, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT SetItem(REFGUID, REFPROPVARIANT) override { return E_NOTIMPL; }
    HRESULT DeleteItem(REFGUID) override { return E_NOTIMPL; }
    HRESULT DeleteAllItems() override { return E_NOTIMPL; }
    HRESULT SetDouble(REFGUID, double) override { return E_NOTIMPL; }
    HRESULT SetString(REFGUID, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT SetUnknown(REFGUID, IUnknown*) override { return E_NOTIMPL; }
    HRESULT LockStore() override { return E_NOTIMPL; }
    HRESULT UnlockStore() override { return E_NOTIMPL; }
    HRESULT GetCount(UINT32*) override { return E_NOTIMPL; }
    HRESULT GetItemByIndex(UINT32, GUID*, PROPVARIANT*) override { return E_NOTIMPL; }
    HRESULT CopyAllItems(IMFAttributes*) override { return E_NOTIMPL; }

protected:
    template <typename Value>
    HRESULT Get(REFGUID key, Value* value) const {
        for (const auto& [name, held] : items) {
            if (!(name == key) || !std::holds_alternative<Value>(held)) continue;
            *value = std::get<Value>(held);
            return S_OK;
        }
        return MF_E_ATTRIBUTENOTFOUND;
    }
    HRESULT Keep(REFGUID key, AttributeValue value) {
        items.emplace_back(key, std::move(value));
        return S_OK;
    }

private:
    HRESULT Set(const char* function, REFGUID key, AttributeValue value) {
        const UINT64 number =
            std::holds_alternative<UINT32>(value) ? std::get<UINT32>(value) : std::get<UINT64>(value);
        constexpr int half = 32;
        const std::string upper = number >> half != 0 ? std::to_string(number >> half) + ":" : "";
        const std::string lower = std::to_string(static_cast<UINT32>(number));
        const HRESULT result = Enter(function + NameOf(key) + "=" + upper + lower);
        return FAILED(result) ? result : Keep(key, std::move(value));
    }

    std::vector<std::pair<GUID, AttributeValue>> items;
};

/// A type of video.
class MediaType : public Attributes<IMFMediaType> {
public:
    MediaType(REFGUID majorType, REFGUID subtype) {
        Keep(MF_MT_MAJOR_TYPE, majorType);
        Keep(MF_MT_SUBTYPE, subtype);
    }
    HRESULT GetMajorType(GUID* type) override { return Get(MF_MT_MAJOR_TYPE, type); }
    HRESULT IsCompressedFormat(BOOL*) override { return E_NOTIMPL; }
    HRESULT IsEqual(IMFMediaType*, DWORD*) override { return E_NOTIMPL; }
    HRESULT GetRepresentation(GUID, void**) override { return E_NOTIMPL; }
    HRESULT FreeRepresentation(GUID, void*) override { return E_NOTIMPL; }
};

/// The one transform, a decoder or encoder.
IMFTransform* NewTransform();
