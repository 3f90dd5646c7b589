#pragma once

#include "framework/Export.h"
#include "iostream/BitBuffer.h"
#include "iostream/IOFramePayload.h"

#include <span>

namespace IOStream {

/// One NAL unit of a byte stream (ISO/IEC 14496-10, annex B). Its bytes begin at `offset + startCodeLength`
/// and end at the next unit's `offset`, or at the end of the data; zeros before a start code stay with the
/// unit before it.
struct NALEntry {
    uint8_t type;            ///< by `GetNALType`
    uint8_t startCodeLength; ///< 3 or 4
    uint32_t offset;         ///< of the first byte of the start code
};

/// H.264 data. Finds the NAL units as data arrives, reads parameter sets and starts of slices (ISO/IEC
/// 14496-10, 7.3) into an `IOElementaryStreamInfo`, and converts between byte streams and length-prefixed
/// samples (ISO/IEC 14496-15).
///
/// Parsers are partial: they go only as far as the fields that are kept. A unit that a parser refuses leaves
/// the fields that were read before; nothing is reported. Nothing but allocation failure passes as an
/// exception out of the public functions.
class IOH264NALPayload : public IOMPEG2VideoPayload {
public:
    /// @param parseNALs  whether units are parsed, and not only found
    explicit IOH264NALPayload(bool parseNALs);

    uint32_t GetFrameType() override;
    /// Finds the NAL units in what was appended and parses each whose end is known.
    /// @return false at a start code before a byte with forbidden_zero_bit set, where the scan stops for good
    bool ScanData() override;
    /// Parses the units that are still to be parsed, the last one included.
    const IOElementaryStreamInfo& GetStreamInfo() override;
    bool GetConfigRecord(std::vector<uint8_t>& out, uint32_t& fourCC) override;
    /// Reads the parameter sets of a configuration record ("avcC"; its first character highest in `fourCC`).
    /// @return bytes of a length field in the samples, 1 to 4; 0 if the record is refused
    virtual uint32_t ParseConfigRecord(const std::vector<uint8_t>& record, uint32_t fourCC);
    /// Appends one sample of a container, an Annex B one as it is, a length-prefixed one with start codes.
    /// A last unit that the sample cuts off is taken as far as it goes.
    /// @param lengthSize  bytes of a length field, 1 to 4; with others only Annex B samples are appended
    /// @return true
    virtual bool AppendSample(const uint8_t* sample, uint32_t size, uint32_t lengthSize);

    /// Appends a copy of `size` bytes, none of them this object's own, and scans them. Data that would pass 4
    /// GiB is left out whole.
    void AppendData(const uint8_t* bytes, uint32_t size);
    /// Parses the unit `index`, unless units are only to be found. No exception of a parser passes, and an
    /// index behind the last unit is ignored.
    void ParseEntry(uint32_t index);

    // Conversions. They share no state, so any threads may call them. No byte outside of the `size` bytes at
    // `data` is touched, which are none of `out`; `data` may be null for 0 bytes. A length that passes the
    // end ends a walk, with what was gathered before it.

    /// Whether the data begins with 00 00 00 01 and at least one byte more; 00 00 01 does not count.
    CORVEX_API static bool s_IsAnnexB(const uint8_t* data, uint64_t size);
    /// Bytes of access unit delimiters and ends of sequence, five each, at the start of a byte stream.
    CORVEX_API static uint64_t GetAVCCStreamOffset(const uint8_t* data, uint64_t size);
    /// Turns an "avcC" record into a byte stream of its parameter sets; data that begins with 0 is one
    /// already and is copied.
    /// @param out         replaced
    /// @param lengthSize  receives the bytes of a length field in the samples, 1 to 4
    /// @return whether there is anything in `out`; false below 6 bytes too, and both outputs are left alone
    ///         then
    CORVEX_API static bool s_ConvertH264(const uint8_t* data, uint64_t size, std::vector<uint8_t>& out,
                                         uint8_t& lengthSize);
    /// Collects the last sequence parameter set of a byte stream and the picture parameter sets of its first
    /// two access units, as delimiters tell them apart, into an "avcC" record with length fields of four
    /// bytes.
    /// @param out  replaced; if the stream has no sequence parameter set, the one of the record in `out`
    ///             stays
    /// @return false, with `out` left alone, without a picture parameter set, or without a whole sequence
    ///         parameter set in stream and record
    CORVEX_API static bool s_ConvertToAVCC(const uint8_t* data, uint32_t size, std::vector<uint8_t>& out);
    /// Turns a length-prefixed sample into a byte stream. With length fields of four bytes it does so in
    /// place, in the caller's buffer, although that is declared const (kept). A last unit that passes the end
    /// stays as it is, length field and all.
    /// @param lengthSize  bytes of a length field, 1 to 4
    /// @param out         replaced; empty after a true result: `data` itself is the byte stream
    /// @return false for another `lengthSize`, unless the data is a byte stream already, and for a length
    ///         field that passes the end; `out` has what was converted before
    CORVEX_API static bool s_ConvertToAnnexB(const uint8_t* data, uint64_t size, uint8_t lengthSize,
                                             std::vector<uint8_t>& out);
    /// Appends place and size of the first sequence parameter set of an "avcC" record and of each picture
    /// parameter set; the pointers point into the record.
    /// @return bytes of a length field in the samples, 1 to 4; 0 below 8 bytes, and for a record that ends
    ///         before a picture parameter set or has none, whose sequence parameter set is appended all the
    ///         same
    CORVEX_API static uint32_t s_ExtractParameterSets(const std::vector<uint8_t>& record,
                                                      std::vector<const uint8_t*>& pointers,
                                                      std::vector<uint64_t>& sizes);

protected:
    virtual uint8_t GetNALType(uint8_t firstByte) const;
    /// Parses one unit; may throw what `BitBuffer` throws.
    /// @param payload  byte behind the unit's first byte
    /// @param size     bytes from there on
    virtual void ParseNAL(uint8_t type, const uint8_t* payload, uint32_t size);
    /// Hands a unit, its header first, to `ParseNAL` and drops what that throws. An empty one is passed over.
    void ParseUnit(uint8_t type, std::span<const uint8_t> unit);
    /// VUI parameters (annex E).
    /// @return false if they are refused
    virtual bool ParseVUI(BitBuffer& reader, uint32_t spsID);
    /// HRD parameters (annex E).
    /// @return false if they are refused
    virtual bool ParseHRD(BitBuffer& reader);

    /// The start of the VUI parameters, up to the colour description, which H.264 and HEVC share.
    /// @return false if they are refused
    bool ParseVUICommon(BitBuffer& reader, uint32_t spsID);

    /// Bytes of the unit `index`, its header first, without its start code; valid until data is appended. Of
    /// data that came in pieces a header of 0 may be taken for part of the next start code, which leaves its
    /// unit empty; so may data that was rewritten through `GetData`.
    std::span<const uint8_t> Unit(uint32_t index) const;

    uint32_t picOrderCntType = 0;
    uint32_t log2MaxFrameNum = 0;
    uint32_t log2MaxPicOrderCntLsb = 0;
    bool bottomFieldPicOrderPresent = false;
    bool deltaPicOrderAlwaysZero = false;
    bool redundantPicCntPresent = false;
    bool entropyCodingMode = false;
    bool deblockingControlPresent = false;
    bool deblockingSeen = false; ///< an IDR slice with disable_deblocking_filter_idc 0 has been seen
    bool frameMbsOnly = false;   ///< the HEVC class keeps a source flag here
    bool fieldSeen = false;      ///< a field slice has been seen; the HEVC class keeps a source flag here
    bool frameFieldInfoPresent = false; ///< HEVC frame_field_info_present_flag
    bool separateColourPlane = false;
    uint32_t scanPos = 0;          ///< where the scan goes on
    std::vector<NALEntry> entries; ///< units found so far, in stream order
    int32_t lastParsed = -1;       ///< index of the last unit handed to `ParseNAL`
    bool parseNALs;                ///< whether units are parsed, and not only found

    /// One structure each (7.3.2.1, 7.3.2.2, 7.3.3); all may throw what `BitBuffer` throws. `payload` begins
    /// behind the unit's header.
    /// @return bytes consumed; 0 if the set is refused
    uint32_t ParseSPS(const uint8_t* payload, uint32_t size);
    /// @return false if the set is refused
    bool ParsePPS(const uint8_t* payload, uint32_t size);
    /// Reads up to the field flags and takes the field order from them.
    /// @return slice_type; 0 for a pic_parameter_set_id that no stream has
    uint32_t ParseSliceStart(BitBuffer& reader);
    /// Looks whether the deblocking filter is on, until a slice has shown that it is.
    /// @return whether the slice told
    bool ParseIDRSlice(const uint8_t* payload, uint32_t size);

private:
    /// A start code with forbidden_zero_bit set behind it was met: the scan would only find it again.
    bool isScanStopped = false;

    /// Parts of `ParseSPS` and of the slices, which throw as these; false refuses the set.
    void ClassifySlice(uint32_t sliceType);
    bool ParseSampleFormat(BitBuffer& reader);
    bool ParseHighSampleFormat(BitBuffer& reader);
    bool ParsePicOrderCnt(BitBuffer& reader);
    void ParseFrameSize(BitBuffer& reader);
    void ScaleCropping(bool isFrameMbsOnly);
};

} // namespace IOStream
