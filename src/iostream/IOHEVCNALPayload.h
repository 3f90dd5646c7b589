#pragma once

#include "iostream/IOH264NALPayload.h"

#include <array>

namespace IOStream {

/// HEVC data (ISO/IEC 23008-2): as its base class, and besides it fills the header of an HEVC decoder
/// configuration record (ISO/IEC 14496-15, 8.3.3). Slices are never read, so the frame type stays unknown.
class IOHEVCNALPayload : public IOH264NALPayload {
public:
    bool GetConfigRecord(std::vector<uint8_t>& out, uint32_t& fourCC) override;
    /// As in the base class, for "hvcC".
    uint32_t ParseConfigRecord(const std::vector<uint8_t>& configRecord, uint32_t fourCC) override;

    // Conversions, as those of the base class.

    /// Whether units of the type go into a configuration record: parameter sets (32 to 34) and SEI (39, 40).
    CORVEX_API static bool s_IsValidNalType(uint8_t type);
    /// Turns an "hvcC" record into a byte stream of its units; data that begins with 0 is one already and is
    /// copied.
    /// @param out         replaced
    /// @param lengthSize  receives the bytes of a length field in the samples, 1 to 4
    /// @return whether there is anything in `out`; false below 23 bytes too, and both outputs are left alone
    ///         then
    CORVEX_API static bool s_ConvertHEVC(const uint8_t* data, uint64_t size, std::vector<uint8_t>& out,
                                         uint8_t& lengthSize);
    /// Collects the parameter sets and SEI of a byte stream into an "hvcC" record, which tells of length
    /// fields as long as the first start code. The stream's last unit goes into the record, but is not parsed
    /// for its header (kept).
    /// @param out  replaced
    /// @return false, with `out` left alone, without a start code at the beginning or a profile, and for
    ///         4 GiB and more
    CORVEX_API static bool s_ConvertToHVCC(const uint8_t* data, uint64_t size, std::vector<uint8_t>& out);
    /// Turns a byte stream into a sample with length fields of four bytes. Units of all types stay, and those
    /// of H.264 may be converted as well.
    /// @param outData  receives a block that the caller frees with `Platform::FreeMemAligned`
    /// @param outSize  receives the bytes used in it
    /// @return false, with both left alone, without a start code at the beginning, without units or memory,
    ///         and for 4 GiB and more
    CORVEX_API static bool s_ConvertToHVCCStream(const uint8_t* data, uint64_t size, uint8_t*& outData,
                                                 uint64_t& outSize);
    /// Appends place and size of each unit of an "hvcC" record that is of a type for records; the pointers
    /// point into the record.
    /// @return bytes of a length field in the samples, 1 to 4; 0 below 23 bytes or without arrays
    CORVEX_API static uint32_t s_ExtractParameterSets(const std::vector<uint8_t>& record,
                                                      std::vector<const uint8_t*>& pointers,
                                                      std::vector<uint64_t>& sizes);

protected:
    explicit IOHEVCNALPayload(bool parseNALs);

    uint8_t GetNALType(uint8_t firstByte) const override;
    /// As in the base class; the unit's second header byte is the first of `payload`.
    void ParseNAL(uint8_t type, const uint8_t* payload, uint32_t size) override;
    bool ParseVUI(BitBuffer& reader, uint32_t spsID) override;
    bool ParseHRD(BitBuffer& reader) override;

    /// Sequence parameter set (7.3.2.2), up to the VUI parameters; `payload` begins behind the two header
    /// bytes, as it does for the others here. May throw what `BitBuffer` throws.
    /// @return false if it is refused
    bool ParseSPS(const uint8_t* payload, uint32_t size);
    /// Picture parameter set (7.3.2.3), as far as the tools of parallel decoding. Throws as `ParseSPS`.
    /// @return true
    bool ParsePPS(const uint8_t* payload, uint32_t size);
    /// The first message of a unit of supplemental enhancement information (7.3.5). Throws as `ParseSPS`.
    /// @param interpret  whether the message is read, and not only its type and size
    /// @return true
    bool ParseSEI(const uint8_t* payload, uint32_t size, bool interpret);

    /// Places in `record`.
    enum RecordByte : uint8_t {
        Record_Profile = 1,              ///< profile space (2 bits), tier (1), profile (5)
        Record_Compatibility = 2,        ///< 4 bytes
        Record_Constraints = 6,          ///< 6 bytes, in stream order
        Record_Level = 12,               ///< general_level_idc
        Record_SpatialSegmentation = 13, ///< 2 bytes, of which 12 bits
        Record_Parallelism = 15,         ///< 0 mixed, 1 slices, 2 tiles, 3 wavefronts
        Record_ChromaFormat = 16,        ///< low 2 bits of chroma_format_idc
        Record_BitDepthLuma = 17,        ///< less 8, low 3 bits
        Record_BitDepthChroma = 18,      ///< less 8, low 3 bits
        Record_AvgFrameRate = 19,        ///< 2 bytes
        Record_Layers = 21,              ///< constant rate (2 bits), layers (3), nesting (1), length size (2)
        Record_ArrayCount = 22
    };
    /// Header of the configuration record, byte for byte as it is written. Fields of more than one byte are
    /// little-endian and reserved bits are zero, unlike in ISO/IEC 14496-15 (kept).
    std::array<uint8_t, 23> record = {1};

private:
    /// Temporal sub-layers by the sequence parameter set, 0 to 7.
    uint32_t LayerCount() const { return record[Record_Layers] >> 3 & 7; }
    void ParseLayers(BitBuffer& reader);
    void ParseProfileTierLevel(BitBuffer& reader);
    void ParseGeneralProfile(BitBuffer& reader, bool interpret);
    void ApplyProfile();
    void ApplySourceFlags();
    void ParseChromaFormat(BitBuffer& reader);
    void ParsePictureSize(BitBuffer& reader);
    void ParseBitDepths(BitBuffer& reader);
    void SkipCodingTools(BitBuffer& reader) const;
    bool SkipReferencePictures(BitBuffer& reader) const;
    bool ParseVUITiming(BitBuffer& reader);
    bool ParseHRDCommon(BitBuffer& reader);
    void StoreLittleEndian16(RecordByte at, uint32_t value);
    void ParsePicTiming(BitBuffer& reader);
    void ParseAlphaChannelInfo(BitBuffer& reader);
};

} // namespace IOStream
