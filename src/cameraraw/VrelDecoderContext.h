#pragma once

#include "cameraraw/IOMetadataMap.h"
#include "cameraraw/IOVrelCallback.h"
#include "cameraraw/RavenlightRawAPI.h"
#include "cameraraw/RawPointer.h"
#include "cameraraw/RawSettings.h"
#include "framework/CxAlignedBuffer.h"

#include <QMap>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <mutex>
#include <string>

/// What a clip tells of itself when it opens.
struct RawClipFacts {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t processedWidth = 0; ///< of frame 0; 0 where it is not told
    uint32_t processedHeight = 0;
    uint64_t frameCount = 0;
    float frameRate = -1.0F; ///< frames a second; 0 where the time code alone counts
    std::string timeCode;    ///< of frame 0
};

/// The SDK's objects for one clip at a time. The SDK works by jobs on threads of its own; here a job is
/// submitted and waited for, without a time limit, so that every operation returns when its work is done.
/// One thread at a time. Failures are reported on standard error as cameraraw/RawResult.h says; where memory
/// is short an operation fails too, without a word.
class VrelDecoderContext {
public:
    /// Makes the SDK's codec and tries what it knows of cameras. Without the SDK, or with one that lacks what
    /// is needed, the context has no codec, and each clip fails to open.
    VrelDecoderContext();
    VrelDecoderContext(const VrelDecoderContext&) = delete;
    VrelDecoderContext& operator=(const VrelDecoderContext&) = delete;
    virtual ~VrelDecoderContext();

    /// Opens a clip, in the place of one that is open, and reads all that is known of it. The first clip
    /// configures the codec, once for the context's life.
    /// @param path  UTF-8; null fails
    /// @return false if it can't be opened. If it is no clip none is open then, and what the last one told
    ///         stays; otherwise it may stay half open, until it is released
    bool OpenClip(const char* path);
    /// Closes the clip. What it told of itself stays.
    void ReleaseClip();
    bool IsOpen() const { return static_cast<bool>(clip_); }

    const RawClipFacts& Facts() const { return facts_; }
    const RawClipValues& ClipValues() const { return clipValues_; }
    const RawFrameValues& FrameValues() const { return frameValues_; }

    /// The metadata of the clip with those of its frame 0.
    void GetClipMetadata(QMap<QString, QVariant>& out) const { metadata_.ToMap(out); }
    /// Reads frame `frame` for its metadata, among them its time code as "TimeCode". Without a frame `out` is
    /// empty.
    void GetFrameMetadata(uint64_t frame, QMap<QString, QVariant>& out);

    /// Reads, decodes and processes a frame (from 0), at full size, with the settings that the clip has.
    /// @param output  receives three planes R, G, B of native 16-bit words, `used` bytes in all
    /// @return false if a step failed; `output` holds anything then
    bool DecodeFrame(uint64_t frame, CxAlignedBuffer& output);

    /// Reads frame `frame` into `bitstream`, which is the frame's to the end of its decoding.
    /// @return null on failure, a job that failed among them. Throws std::bad_alloc
    RawPointer<RawFrame> ReadFrame(uint64_t frame, CxAlignedBuffer& bitstream, RawClipReader* reader);
    /// Submits a job and waits for it, unless the SDK refuses it twice: it is not under way afterwards, and
    /// may be run again.
    /// @return the job's result, or `E_FAIL` for a null job or one that is not accepted. Throws
    ///         std::bad_alloc, with no job under way
    static HRESULT RunJob(RawJob* job);
    /// Decodes and processes a frame that was read. Throws std::bad_alloc, with no job under way. A null
    /// frame or settings fail.
    /// @param bitstream  what the frame was read into
    /// @param output     as for `DecodeFrame`
    bool DecodeAndProcess(RawFrame* frame, RawClipSettings* clipSettings, RawFrameSettings* frameSettings,
                          void* bitstream, CxAlignedBuffer& output);

private:
    bool CreateCodec();
    void ReleaseCodec();
    bool Configure();
    RawPointer<RawClip> FindClip(const char* path);
    bool ReadClip();
    bool ReadFacts();
    bool ReadFirstFrame();
    bool ReadSettings(RawFrame& frame);
    std::string TimeCodeOf(uint64_t frame);
    bool DecodeRead(RawFrame& frame, void* bitstream, CxAlignedBuffer& output);
    bool Decode(void* state, void* bitstream, CxAlignedBuffer& decoded);
    bool Process(void* state, void* decoded, void* lutTable, CxAlignedBuffer& output);

    RawPointer<RawCodec> codec_; ///< null without a working SDK
    RawPointer<RawConstants> constants_;
    RawPointer<RawExtras> extras_;
    RawPointer<RawManualFlow> flow_; ///< null until configured
    IOVrelCallback callback_;
    std::mutex configuring_; ///< guards `pipeline_`, `isConfigured_` and `flow_` while they are set
    uint32_t pipeline_ = rawPipelineCpu;
    bool isConfigured_ = false;
    RawPointer<RawClip> clip_;
    RawPointer<RawClipReader> reader_;
    RawClipFacts facts_;
    RawClipValues clipValues_;
    RawFrameValues frameValues_;
    IOMetadataMap metadata_; ///< of the clip
};
