#pragma once

#include "media/AvHandles.h"
#include "media/FrameTable.h"

/// Reads from the packets of a track what only the bitstream tells.
class PictureParser {
public:
    /// A codec without a parser makes a parser that finds nothing.
    explicit PictureParser(const AVCodecParameters& parameters);

    /// Reads one packet; packets come in decode order. For H.264 and HEVC the entry's picture order is
    /// filled.
    void Parse(const AVPacket& packet, SampleEntry& entry);

    /// Of the last packet that told it; 0 or unknown before.
    int CodedWidth() const { return codedWidth; }
    int CodedHeight() const { return codedHeight; }
    AVFieldOrder FieldOrder() const { return fieldOrder; }

private:
    AvParser parser;
    AvCodecContext context;
    bool tellsOrder = false;
    int codedWidth = 0;
    int codedHeight = 0;
    AVFieldOrder fieldOrder = AV_FIELD_UNKNOWN;
};
