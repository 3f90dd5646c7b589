#pragma once

#include "rawsdk/clip/Bytes.h"

#include "cameraraw/automation/Automation.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace rawsdk {

/// One value of metadata: a text, a number, or an array of numbers.
struct MetadataValue {
    VARTYPE type = VT_EMPTY;            ///< `VT_BSTR`, `VT_BOOL`, or that of the number or of each element
    std::vector<SAFEARRAYBOUND> bounds; ///< one for each dimension of an array; none for the rest
    std::vector<uint8_t> bytes;         ///< UTF-16 units, the number, or the elements
};

struct MetadataEntry {
    std::u16string key;
    MetadataValue value;
};

/// Entries in the order in which iterators give them. A key may come more than once.
using Metadata = std::vector<MetadataEntry>;

/// The type by which a number is told.
template <typename Number>
constexpr VARTYPE TypeOf() {
    if constexpr (std::is_same_v<Number, float>) return VT_R4;
    if constexpr (std::is_same_v<Number, double>) return VT_R8;
    if constexpr (std::is_same_v<Number, int8_t>) return VT_I1;
    if constexpr (std::is_same_v<Number, uint8_t>) return VT_UI1;
    if constexpr (std::is_same_v<Number, int16_t>) return VT_I2;
    if constexpr (std::is_same_v<Number, uint16_t>) return VT_UI2;
    if constexpr (std::is_same_v<Number, int32_t>) return VT_I4;
    if constexpr (std::is_same_v<Number, uint32_t>) return VT_UI4;
    if constexpr (std::is_same_v<Number, int64_t>) return VT_I8;
    if constexpr (std::is_same_v<Number, uint64_t>) return VT_UI8;
    return VT_EMPTY;
}

template <typename Number>
MetadataValue NumberValue(Number number) {
    static_assert(TypeOf<Number>() != VT_EMPTY);
    MetadataValue value{TypeOf<Number>(), {}, std::vector<uint8_t>(sizeof(Number))};
    std::memcpy(value.bytes.data(), &number, sizeof(Number));
    return value;
}

/// @param bounds  of as many elements as there are numbers; one dimension from 0 on if empty
template <typename Number>
MetadataValue ArrayValue(const std::vector<Number>& numbers, std::vector<SAFEARRAYBOUND> bounds = {}) {
    if (bounds.empty()) bounds = {{static_cast<ULONG>(numbers.size()), 0}};
    MetadataValue value{TypeOf<Number>(), std::move(bounds), {}};
    value.bytes.resize(numbers.size() * sizeof(Number));
    if (!numbers.empty()) std::memcpy(value.bytes.data(), numbers.data(), value.bytes.size());
    return value;
}

/// @param text  units of UTF-16, which need not be valid
MetadataValue TextValue(std::u16string_view text);

/// The value as it crosses the SDK, for the caller to clear.
/// @throw Failure  without memory
VARIANT VariantOf(const MetadataValue& value);

void WriteMetadata(const Metadata& metadata, ByteWriter& writer);
/// @throw Failure  if the metadata are damaged
Metadata ReadMetadata(ByteReader& reader);

} // namespace rawsdk
