#pragma once

#include "mediafoundation/Attributes.h"

namespace mediafoundation {

/// A form of data on one side of a transform.
class MediaType final : public Attributes<IMFMediaType> {
public:
    /// Makes a video type. Throws std::bad_alloc.
    explicit MediaType(REFGUID subtype);

    HRESULT GetMajorType(GUID* type) override { return GetGUID(MF_MT_MAJOR_TYPE, type); }
    HRESULT IsCompressedFormat(BOOL* isCompressed) override;
    HRESULT IsEqual(IMFMediaType*, DWORD*) override { return E_NOTIMPL; }
    HRESULT GetRepresentation(GUID, void**) override { return E_NOTIMPL; }
    HRESULT FreeRepresentation(GUID, void*) override { return E_NOTIMPL; }
};

/// Two numbers of one attribute: width and height, or numerator and denominator.
struct NumberPair {
    UINT32 first = 0;
    UINT32 second = 0;

    friend bool operator==(const NumberPair&, const NumberPair&) = default;
};

// They take any object of the interface, not only this library's.

/// Zeros if there is none.
NumberPair PairOf(IMFAttributes& attributes, REFGUID key);
HRESULT SetPair(IMFAttributes& attributes, REFGUID key, NumberPair pair);
/// A number, or another one if there is none.
UINT32 NumberOf(IMFAttributes& attributes, REFGUID key, UINT32 otherwise);
/// The subtype of a video type; zeros for another type.
GUID VideoSubtypeOf(IMFMediaType& type);

} // namespace mediafoundation
