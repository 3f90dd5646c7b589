#include "rawsdk/clip/Metadata.h"

#include "rawsdk/clip/Failure.h"

namespace rawsdk {

namespace {

/// Bytes that the smallest entry takes: the lengths of a key and of a value, a type and a number of
/// dimensions.
constexpr size_t leastEntryBytes = 12;
constexpr size_t mostDimensions = 16;

size_t BytesOf(VARTYPE type) { return type == VT_BOOL ? sizeof(VARIANT_BOOL) : SizeOfElement(type); }

/// Whether the bytes of an array are as many as its bounds tell.
bool FillsItsBounds(const MetadataValue& value) {
    size_t bytes = SizeOfElement(value.type);
    if (bytes == 0) return false;
    for (const SAFEARRAYBOUND& bound : value.bounds) {
        if (bound.cElements != 0 && bytes > SIZE_MAX / bound.cElements) return false;
        bytes *= bound.cElements;
    }
    return bytes == value.bytes.size();
}

bool IsSound(const MetadataValue& value) {
    if (!value.bounds.empty()) return FillsItsBounds(value);
    if (value.type == VT_BSTR) return value.bytes.size() % sizeof(OLECHAR) == 0;
    return BytesOf(value.type) != 0 && value.bytes.size() == BytesOf(value.type);
}

void WriteValue(const MetadataValue& value, ByteWriter& writer) {
    writer.Write(value.type);
    writer.Write(static_cast<uint16_t>(value.bounds.size()));
    for (const SAFEARRAYBOUND& bound : value.bounds) {
        writer.Write(bound.cElements);
        writer.Write(bound.lLbound);
    }
    writer.Write(static_cast<uint32_t>(value.bytes.size()));
    writer.WriteBytes(value.bytes);
}

MetadataValue ReadValue(ByteReader& reader) {
    MetadataValue value;
    value.type = reader.Read<VARTYPE>();
    const auto dimensions = reader.Read<uint16_t>();
    Require(dimensions <= mostDimensions);
    for (size_t i = 0; i < dimensions; ++i) {
        const auto elements = reader.Read<uint32_t>();
        value.bounds.push_back({elements, reader.Read<int32_t>()});
    }
    const std::span<const uint8_t> bytes = reader.ReadBytes(reader.Read<uint32_t>());
    value.bytes.assign(bytes.begin(), bytes.end());
    Require(reader.IsSound() && IsSound(value));
    return value;
}

SAFEARRAY* ArrayOf(const MetadataValue& value) {
    std::vector<SAFEARRAYBOUND> bounds = value.bounds;
    SAFEARRAY* const array = SafeArrayCreate(value.type, static_cast<UINT>(bounds.size()), bounds.data());
    if (array == nullptr) throw Failure{E_OUTOFMEMORY};
    void* data = nullptr;
    SafeArrayAccessData(array, &data);
    if (!value.bytes.empty()) std::memcpy(data, value.bytes.data(), value.bytes.size());
    SafeArrayUnaccessData(array);
    return array;
}

BSTR StringOf(const MetadataValue& value) {
    const size_t units = value.bytes.size() / sizeof(OLECHAR);
    const BSTR string = SysAllocStringLen(nullptr, static_cast<UINT>(units));
    if (string == nullptr) throw Failure{E_OUTOFMEMORY};
    if (!value.bytes.empty()) std::memcpy(string, value.bytes.data(), value.bytes.size());
    return string;
}

} // namespace

MetadataValue TextValue(std::u16string_view text) {
    const auto* const bytes = reinterpret_cast<const uint8_t*>(text.data());
    return {VT_BSTR, {}, std::vector<uint8_t>(bytes, bytes + text.size() * sizeof(char16_t))};
}

VARIANT VariantOf(const MetadataValue& value) {
    VARIANT variant = {};
    if (!value.bounds.empty()) {
        variant.parray = ArrayOf(value);
        variant.vt = VT_SAFEARRAY;
        return variant;
    }
    if (value.type == VT_BSTR) {
        variant.bstrVal = StringOf(value);
    } else {
        std::memcpy(&variant.ullVal, value.bytes.data(), value.bytes.size());
    }
    variant.vt = value.type;
    return variant;
}

void WriteMetadata(const Metadata& metadata, ByteWriter& writer) {
    writer.Write(static_cast<uint32_t>(metadata.size()));
    for (const MetadataEntry& entry : metadata) {
        writer.WriteText<char16_t>(entry.key);
        WriteValue(entry.value, writer);
    }
}

Metadata ReadMetadata(ByteReader& reader) {
    const auto entries = reader.Read<uint32_t>();
    Require(reader.IsSound() && entries <= reader.Left() / leastEntryBytes);
    Metadata metadata(entries);
    for (MetadataEntry& entry : metadata) {
        entry.key = reader.ReadText<char16_t>();
        entry.value = ReadValue(reader);
    }
    return metadata;
}

} // namespace rawsdk
