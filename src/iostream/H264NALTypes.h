#pragma once

#include <cstdint>

namespace IOStream {

/// nal_unit_type of H.264 (ISO/IEC 14496-10, table 7-1), as far as anything here looks at it.
enum H264NALType : uint8_t {
    H264NAL_Slice = 1,
    H264NAL_IDRSlice = 5,
    H264NAL_SPS = 7,
    H264NAL_PPS = 8,
    H264NAL_AccessUnitDelimiter = 9,
    H264NAL_EndOfSequence = 10
};

} // namespace IOStream
