#pragma once

#include <cstdint>

namespace dnx {

/// What the library's functions return.
enum class Error : int32_t {
    None = 0,
    NoCodec = -1,
    NullArgument = -2,
    RecordSize = -3,
    OutOfMemory = -4,
    NotAFrame = -5,
    UnknownCompression = -6,
    PictureSize = -7,
    Alpha = -8,
    FrameStructure = -9,
    PictureFormat = -10,
    FrameFormat = -11,
    FrameSize = -12,
    PictureBuffer = -13,
    FrameBuffer = -14,
    DamagedFrame = -15,
    EncodingFailed = -16,
    ConstantLuminance = -17,
};

/// The text for an error code; another one for codes that the library doesn't give. At most
/// `dnxErrorTextSize` bytes with its zero. Any thread.
const char* ErrorText(int32_t error);

} // namespace dnx
