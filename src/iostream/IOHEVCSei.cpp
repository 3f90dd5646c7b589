#include "iostream/IOHEVCNALPayload.h"

// Supplemental enhancement information (ISO/IEC 23008-2, 7.3.5 and annex D).

namespace IOStream {

namespace {

enum SEIType : uint32_t { SEI_PicTiming = 1, SEI_AlphaChannelInfo = 165 };

/// payloadType or payloadSize: the sum of bytes up to the first that is not 255.
uint32_t ReadExtendedByte(BitBuffer& reader) {
    uint32_t sum = 0;
    uint32_t byte = 255;
    while (byte == 255) {
        byte = reader.ReadBits(8);
        sum += byte;
    }
    return sum;
}

} // namespace

bool IOHEVCNALPayload::ParseSEI(const uint8_t* payload, uint32_t size, bool interpret) {
    BitBuffer reader(payload, size);
    const uint32_t type = ReadExtendedByte(reader);
    ReadExtendedByte(reader); // payloadSize bounds nothing: a message is read as its type has it
    if (!interpret) return true;
    if (type == SEI_PicTiming)
        ParsePicTiming(reader);
    else if (type == SEI_AlphaChannelInfo)
        ParseAlphaChannelInfo(reader);
    return true; // further messages of the unit are not read: kept
}

/// pic_timing (D.2.3), of which pic_struct (table D.2) tells the field order.
void IOHEVCNALPayload::ParsePicTiming(BitBuffer& reader) {
    if (!frameFieldInfoPresent) return;
    switch (reader.ReadBits(4)) {
    case 0: info.fieldOrder = IOField_Progressive; break;
    case 1:
    case 3:
    case 5:
    case 9:
    case 11: info.fieldOrder = IOField_TopFirst; break;
    case 2:
    case 4:
    case 6:
    case 10:
    case 12: info.fieldOrder = IOField_BottomFirst; break;
    default: break; // frame doubling and tripling, reserved values
    }
}

/// alpha_channel_info (F.14.2.8), as far as the use of the channel.
void IOHEVCNALPayload::ParseAlphaChannelInfo(BitBuffer& reader) {
    const bool isCancelled = reader.ReadBit() != 0;
    if (isCancelled) return;
    const uint32_t use = reader.ReadBits(3);
    info.alphaUse = use < 2 ? static_cast<int32_t>(use) + 1 : 0;
}

} // namespace IOStream
