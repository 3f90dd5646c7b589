#pragma once

#include "media/AvHandles.h"

#include <string>
#include <vector>

/// Properties of the picture as a container or a bitstream tells them, in FFmpeg's numbering.
struct PictureProperties {
    AVFieldOrder fieldOrder = AV_FIELD_UNKNOWN;
    AVColorRange colorRange = AVCOL_RANGE_UNSPECIFIED;
    AVColorSpace colorMatrix = AVCOL_SPC_UNSPECIFIED;
    AVColorPrimaries colorPrimaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic colorTransfer = AVCOL_TRC_UNSPECIFIED;
};

PictureProperties PropertiesOf(const AVCodecParameters& parameters);

/// An open movie file that gives the packets of its video track in decode order.
class Demuxer {
public:
    /// Opens a file and finds its video track. The container is told from the content, never from the name.
    /// @throw ToolError  as `MovieTrackSource::Open`
    explicit Demuxer(const std::string& path);

    AVFormatContext& Format() { return *format; }
    AVStream& Track() { return *track; }
    /// What the container alone says of the picture; `Track` has it together with the bitstream's word.
    const PictureProperties& ContainerProperties() const { return container.properties; }
    /// Samples that the container's own tables list; 0 without such tables.
    int64_t ListedSamples() const { return container.listedSamples; }

    /// Reads the next packet of the track.
    /// @return 0, or a negative result of FFmpeg with `packet` blank
    int Read(AVPacket& packet);
    /// Goes to the packet at `ticks`, or to one before it; the container may miss.
    /// @return false if the container can't seek
    bool Seek(int64_t ticks);

private:
    /// What a container says of a stream before any packet is read.
    struct ContainerWord {
        PictureProperties properties;
        int64_t listedSamples = 0;
    };
    static std::vector<ContainerWord> WordsOnStreams(const AVFormatContext& format);

    AvIo io;
    AvInput format; // reads through `io`, and so goes before it
    AVStream* track = nullptr;
    ContainerWord container;
};
