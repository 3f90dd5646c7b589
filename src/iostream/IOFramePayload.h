#pragma once

#include "iostream/IOElementaryStreamInfo.h"

#include <cstdint>
#include <vector>

namespace IOStream {

/// A growing byte buffer with the compressed data of one frame or one stream header. It only grows; an object
/// is used by one thread.
class IOFramePayload {
public:
    virtual ~IOFramePayload() = default;
    /// The bytes, `GetDataSize` of them; valid until more are appended.
    virtual uint8_t* GetData();
    virtual uint32_t GetDataSize() const;
    /// Tells which stream the data belongs to; nothing in this class keeps it.
    virtual void SetStreamID(uint16_t value);
    /// `IOFrameType` of the frame; here always intra.
    virtual uint32_t GetFrameType();
    /// Looks at what was appended since the last call.
    /// @return false if the data is damaged
    virtual bool ScanData();

protected:
    /// Makes room for `size` more bytes: at first for `growQuantum` at least, later for twice what is needed,
    /// in 32 bits.
    /// @return false if the buffer would pass what 32 bits count; it is left as it is then
    bool Grow(uint32_t size);

    uint32_t growQuantum = 16384; ///< least size of the first allocation
    std::vector<uint8_t> data;    ///< storage; its size is the capacity in use
    uint32_t dataSize = 0;        ///< valid bytes in `data`
};

/// A payload with what is known of its stream. It has no parser of its own and accepts any bytes.
class IOMPEG2VideoPayload : public IOFramePayload {
public:
    void SetStreamID(uint16_t value) override;
    /// What is known of the stream, after a look at all data; valid as long as the object.
    virtual const IOElementaryStreamInfo& GetStreamInfo();
    /// Writes the stream's configuration record.
    /// @param out     receives the record; may hold an earlier one
    /// @param fourCC  receives the record's tag, first character highest, if the result is true
    /// @return whether there is a record
    virtual bool GetConfigRecord(std::vector<uint8_t>& out, uint32_t& fourCC) = 0;

protected:
    IOElementaryStreamInfo info; ///< what is known so far
};

} // namespace IOStream
