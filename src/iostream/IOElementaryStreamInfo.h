#pragma once

#include <array>
#include <cstdint>
#include <map>

namespace IOStream {

/// Values of `IOElementaryStreamInfo::frameType`.
enum IOFrameType : uint32_t {
    IOFrame_Unknown = 0,
    IOFrame_Intra = 1,
    IOFrame_Predicted = 2,
    IOFrame_BiPredicted = 3
};

/// Values of `IOElementaryStreamInfo::fieldOrder`.
enum IOFieldOrder : uint32_t {
    IOField_Unknown = 0,
    IOField_Progressive = 1,
    IOField_TopFirst = 2,
    IOField_BottomFirst = 3
};

/// What was learnt about an elementary stream by reading its parameter sets and slices. Each parameter set
/// overwrites what an earlier one said, field by field; fields that the stream does not speak of keep the
/// values below.
struct IOElementaryStreamInfo {
    virtual ~IOElementaryStreamInfo() = default;

    uint8_t profile = 0;   ///< profile_idc (H.264) or general_profile_idc (HEVC)
    uint8_t level = 0;     ///< level_idc or general_level_idc
    uint16_t streamID = 0; ///< the caller's, by `SetStreamID`; no parser reads it
    /// Codec tag, as a little-endian word holds the characters. HEVC streams have the same bytes (kept).
    std::array<char, 4> codecFourCC = {'1', 'c', 'v', 'a'};
    uint16_t width = 0; ///< displayed size in luma samples, after cropping, cut to 16 bits
    uint16_t height = 0;
    uint16_t cropLeft = 0; ///< cropping in luma samples, cut to 16 bits
    uint16_t cropRight = 0;
    uint16_t cropTop = 0;
    uint16_t cropBottom = 0;
    uint32_t frameRateNum = 0; ///< frames a second as a fraction; for H.264 half the time scale
    uint32_t frameRateDen = 0;
    bool fixedFrameRate = true; ///< fixed_frame_rate_flag or vui_poc_proportional_to_timing_flag
    /// By seq_parameter_set_id: 1 for video_full_range_flag 0, 2 for 1.
    std::map<uint32_t, uint32_t> fullRangeBySPS;
    uint8_t bitDepth = 0;               ///< of luma
    float pixelAspect = 1.0F;           ///< width of a sample over its height
    uint16_t chromaFormat = 0;          ///< 1 for monochrome, 420, 422 or 444; 0 unknown
    bool hrdPresent = false;            ///< H.264: NAL or VCL HRD parameters were present
    uint8_t cpbRemovalDelayLength = 24; ///< bits, from HRD parameters
    uint8_t dpbOutputDelayLength = 24;  ///< bits, from HRD parameters
    bool picStructPresent = false;      ///< H.264 pic_struct_present_flag
    uint8_t timeOffsetLength = 24;      ///< H.264 time_offset_length, bits
    uint32_t frameType = IOFrame_Unknown;
    uint32_t fieldOrder = IOField_Unknown;
    bool mbAdaptiveFrameField = false; ///< H.264 mb_adaptive_frame_field_flag
    bool deblockingEnabled = true;     ///< false once an IDR slice has shown the deblocking filter off
    uint32_t maxRefFrames = 0;         ///< H.264 max_num_ref_frames
    uint8_t colourPrimaries = 2;       ///< VUI colour description; 2 is "unspecified"
    uint8_t transferCharacteristics = 2;
    uint8_t matrixCoefficients = 2;
    /// HEVC alpha channel SEI: -1 none seen, 1 for alpha_channel_use_idc 0, 2 for 1, 0 for any other.
    int32_t alphaUse = -1;
};

} // namespace IOStream
