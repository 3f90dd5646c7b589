#pragma once

#include "framework/CxAbstractAVCodec.h"
#include "media/MovieTrackInfo.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// The video track of a movie file, as the codecs of the registry read it.
///
/// Opening reads the whole track once, and the table of samples and frames is what that pass found; nothing
/// is computed from a rate. Samples stand in decode order, frames in presentation order. A sample that an
/// edit list hides is a sample, since decoders need it, and no frame; so is one at the start of a cut file
/// that can't be decoded.
///
/// Times are milliseconds, rounded to nearest from the file's exact times. Each sample has a time of its own,
/// rising in presentation order: where rounding would give two the same, the later one moves up by 1. A file
/// whose first decode or presentation time is 0 or less has all its times moved up together so that the
/// earliest is 1, because sequential decoders take times of 0 and less as unknown. `GetFrameTicks` gives the
/// file's own times.
///
/// One thread at a time may use a source.
class MovieTrackSource : public CxAbstractDataSource {
public:
    /// Opens a file and reads its frame table.
    ///
    /// A file that breaks off opens with what can be read of it, and `Info().damage` says so.
    /// @throw ToolError  `CannotOpen`: missing or unreadable, or no regular file; `Damaged`: not a movie, or
    ///                   nothing of its track can be read; `Unsupported`: no video track, or a container or a
    ///                   size that is not read
    static std::unique_ptr<MovieTrackSource> Open(const std::string& path);
    ~MovieTrackSource() override;
    MovieTrackSource(const MovieTrackSource&) = delete;
    MovieTrackSource& operator=(const MovieTrackSource&) = delete;

    const MovieTrackInfo& Info() const;
    int32_t GetFrameCount() const;
    /// Presentation time of a frame as the file has it, in units of `GetTimeBase` seconds; 0 for a frame that
    /// isn't there.
    int64_t GetFrameTicks(int32_t frame) const;
    Rational GetTimeBase() const;

    int32_t GetWidth() override;
    int32_t GetHeight() override;
    /// Past the last sample: later than every sample, one frame duration on for each further index. -1 for a
    /// negative index.
    int64_t GetSampleTime(int32_t sample) override;
    int32_t GetSampleCount() override;
    int32_t GetMaxSampleSize() override;
    /// Returns memory of the source, never `buffer`, and so needs no capacity. Samples of the uncompressed
    /// codes come with rows of `PixelConvert::CalcRowBytes`, top row first, however the file stores them; one
    /// too short for its picture is null. In-order reads do not seek. Null too if the file has changed since
    /// it was opened.
    uint8_t* ReadSample(int32_t sample, uint8_t* buffer, int32_t& size) override;
    const std::vector<uint8_t>* GetCodecPrivateData() override;
    uint32_t GetFourCC() override;
    int32_t GetSampleForFrame(int32_t frame) override;
    int32_t GetFieldOrder() override;
    int32_t GetColorRange() override;
    int32_t GetColorMatrix() override;
    int32_t GetColorPrimaries() override;
    int32_t GetReserved() override;
    /// The last key sample at or before `sample` or, for a sample that is presented before that one, the key
    /// sample before: pictures of both groups may be needed then. 0 if there is none.
    int32_t GetKeySample(int32_t sample) override;
    int64_t GetDecodeTime(int32_t sample) override;
    /// The inverse of `GetSampleTime` for every frame; -1 for any other time.
    int32_t GetFrameForTime(int64_t time) override;

private:
    struct State;
    explicit MovieTrackSource(std::unique_ptr<State> opened);

    std::unique_ptr<State> state;
};
