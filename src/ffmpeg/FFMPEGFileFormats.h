#pragma once

#include "ffmpeg/FFMPEGCodecs.h"
#include "ffmpeg/FramePointer.h"
#include "ffmpeg/FrameTimes.h"
#include "ffmpeg/InputStream.h"
#include "host/ImageFormat.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace CxFFMPEG {

/// Attributes and tags of the format beside those of `ImageFormat`.
enum FFmpegFormatTag : Tag {
    FFmpegTag_FrameCount = 0x100000cb,   ///< attribute: int32
    FFmpegTag_FrameRate = 0x200000c8,    ///< attribute: frames per second, 0 where it is not told
    FFmpegTag_StoredTime = 0x200000c9,   ///< attribute: a whole number that is stored and has no use here
    FFmpegTag_Zero = 0x100000ca,         ///< attribute: int32, always 0
    FFmpegTag_FirstInteger = 0x10000067, ///< attribute: int32 that nothing sets
    FFmpegTag_Number = 0x20000067,       ///< attribute: the same of a fraction
    FFmpegTag_SecondInteger = 0x1000006d,
    FFmpegTag_ShortInteger = 0x1000006c,
    FFmpegTag_ImagePreparation = 0x100000d0, ///< of a load: the host's; 0 reaches the base as 3
};

/// The host's format class for every movie that FFmpeg reads. It demuxes the file itself and gives any frame
/// in any order. One object serves one tool, one thread at a time. Where memory is short an operation fails.
class FFMPEGFileFormats final : public ImageFormat {
public:
    FFMPEGFileFormats(const Registry* registry, const ScriptVal& value, const TagList& tags);
    ~FFMPEGFileFormats() override;

    size_t ObjectSize() const override;
    /// Knows `FFmpegTag_StoredTime`, beside what the base knows.
    bool SetAttrsTagList(const TagList& tags) override;
    bool CopyAttr(Tag key, void* out) override;
    /// Opens a file, and finds its streams. An open one is closed first.
    /// @return false, with no file open, if FFmpeg can't read it or is not there
    bool OpenFile(const char* path, const TagList& tags) override;
    bool LoadHeaderTagList(const CxID& dataType, const char* path, TagList& tags) override;
    /// Closes the file and the decoder. What was found out of the stream's times stays. True.
    bool CloseFile() override;
    /// Opens a file, unless it is open already, and a decoder for its best video stream, and counts the
    /// frames. The first file's start time and count stay for the object's life. Kept.
    /// @return false, with no decoder open, if there is no file, no such stream, no decoder for it, no frame
    ///         rate or no frame. A file that could be opened stays open
    bool LoadHeaderTagList(const char* path, TagList& tags) override;
    /// Loads frame `frame` (from 0) of the open file, and writes "Decoder" into the image's table "Metadata"
    /// beside what the decoder writes. The frame after the one decoded last is read on; any other one that
    /// was not decoded lately is sought.
    /// @return false if there is no such frame, it can't be decoded, or the base refuses
    bool LoadFrameTagList(uint32_t frame, Image*& image, TagList& tags) override;

    int64_t FrameToTime(int32_t frame) const { return times.FrameToTime(frame); }
    int32_t TimeToFrame(int64_t time) const { return times.TimeToFrame(time); }
    /// Frames of the stream, by the first of these that tells: an earlier count, the container's number of
    /// frames, its duration, and the last time stamp, for which the file is read to its end. 0 before there
    /// is a stream.
    int32_t CountFrames();

private:
    static constexpr int32_t unknownCount = std::numeric_limits<int32_t>::min();
    static constexpr int64_t noTime = -1;

    bool OpenDecoder();
    bool ReadTimes();
    void CloseDecoder();
    FramePointer FindFrame(int32_t frame);
    FramePointer DecodeTo(int32_t frame, std::optional<int32_t>* first);
    FramePointer DecodeNext(AVPacket& packet, int64_t limit, int32_t& packetsPast);
    int64_t TimeOf(const AVFrame& frame);
    bool Jump(int32_t frame, int flags);
    void MoveStart(int64_t time);

    InputStream input;
    FrameTimes times;                    ///< `start` is `AV_NOPTS_VALUE` until a header was loaded
    int32_t frameCount = unknownCount;   ///< of the stream
    std::unique_ptr<FFMPEGCodecs> codec; ///< null without a loaded header
    int64_t lastTime = noTime;           ///< time stamp of the frame decoded last; `noTime`: seek first
    std::multiset<int64_t> waitingTimes; ///< of packets without a frame yet, where those are what tells
    std::string fileName;                ///< path of the open file; empty once opening one failed
    int64_t storedTime = 0;              ///< `FFmpegTag_StoredTime`
    int32_t firstInteger = 0;            ///< `FFmpegTag_FirstInteger`
    float number = 0.0F;                 ///< `FFmpegTag_Number`
    int32_t secondInteger = 0;           ///< `FFmpegTag_SecondInteger`
    int16_t shortInteger = 0;            ///< `FFmpegTag_ShortInteger`
};

/// Announces `FFMPEGFileFormats` to the host until the module is unloaded. Called once, while it is loaded.
void RegisterFFMPEGFileFormats();

} // namespace CxFFMPEG
