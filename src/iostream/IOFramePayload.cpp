#include "iostream/IOFramePayload.h"

#include <algorithm>

namespace IOStream {

uint8_t* IOFramePayload::GetData() { return data.data(); }

uint32_t IOFramePayload::GetDataSize() const { return dataSize; }

void IOFramePayload::SetStreamID(uint16_t) {}

uint32_t IOFramePayload::GetFrameType() { return IOFrame_Intra; }

bool IOFramePayload::ScanData() { return true; }

bool IOFramePayload::Grow(uint32_t size) {
    const uint32_t needed = dataSize + size;
    if (needed < size) return false;
    if (data.empty())
        data.resize(std::max(growQuantum, size));
    else if (needed > data.size())
        data.resize(std::max(needed, needed * 2)); // the double wraps at 32 bits: never below what is needed
    return true;
}

void IOMPEG2VideoPayload::SetStreamID(uint16_t value) { info.streamID = value; }

const IOElementaryStreamInfo& IOMPEG2VideoPayload::GetStreamInfo() { return info; }

} // namespace IOStream
