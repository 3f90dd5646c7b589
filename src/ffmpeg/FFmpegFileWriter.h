#pragma once

#include "ffmpeg/EncoderCatalogue.h"
#include "ffmpeg/FFmpegHandles.h"
#include "framework/CxAVTypes.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CxFFMPEG {

/// What a file is opened as.
struct FileDescription {
    std::string path;
    int32_t frameRate = 0; ///< numerator of the frame rate; carried
    std::string reelName;  ///< written into the video stream's metadata unless empty
};

/// Sound to be written.
struct AudioDescription {
    std::string format;            ///< "lpcm"; any other is refused
    int32_t sampleRate = 0;        ///< per second
    int32_t channels = 0;          ///< interleaved
    int32_t bitsPerSample = 0;     ///< 16 and 24: little-endian words; 32: floats; any other: unsigned bytes
    int64_t timeCodeFrames = 0;    ///< time code of the first sample, for a file without pictures
    AVRational rate = {1, 1};      ///< frames per second of that time code
    std::vector<uint8_t> reserved; ///< empty
};

/// Writes one movie file with FFmpeg's muxers: a stream of pictures and at most one of sound. The header goes
/// out with the first packet of either. One thread at a time.
class FFmpegFileWriter {
public:
    /// Makes a writer and opens its file; null if that fails.
    static std::unique_ptr<FFmpegFileWriter> Create(const FileDescription& file,
                                                    const ContainerEntry* container);

    FFmpegFileWriter() = default;
    FFmpegFileWriter(const FFmpegFileWriter&) = delete;
    FFmpegFileWriter& operator=(const FFmpegFileWriter&) = delete;
    /// Closes.
    virtual ~FFmpegFileWriter();

    /// Makes the file, empty, and closes one that is open. False, with no file open, if the container is
    /// unknown or the file can't be made.
    virtual bool Open(const std::string& path, const std::string& reelName, const ContainerEntry* container);
    /// Ends the file, whose end is written if its header was, and forgets the streams. True.
    virtual bool Close();
    /// Adds the stream of pictures.
    /// @param settings  `value5` is the address of the open encoder's context, which outlives the writer's
    ///                  use of it; rate and time code are read
    virtual bool AddVideoStream(CxVideoSettings& settings, const EncoderEntry& entry);
    /// Adds the stream of sound. False if it can't be, there is no encoder for it, or that refuses it.
    virtual bool AddAudioStream(const AudioDescription& audio);
    /// Writes a packet of the encoder, whose times and stream index become the stream's; one without a
    /// duration lasts a frame. The packet stays the caller's, and may have lost its content.
    /// @return false without a stream of pictures, and if it can't be written
    virtual bool WriteVideoPacket(AVPacket* packet);
    /// Writes the next samples of a stream of sound.
    /// @param track  of `AddAudioStream`, from 0
    /// @param size   bytes at `data`, which stay the caller's; whole samples of all channels
    /// @return false if there is no such stream, or they can't be written
    virtual bool WriteAudioData(int32_t track, void* data, uint32_t size);

private:
    struct Track {
        AVStream* stream = nullptr; ///< the muxer's
        int64_t nextTime = 0;       ///< samples written
        AVRational rate = {0, 1};   ///< frames per second
    };
    struct OutputDeleter {
        void operator()(AVFormatContext* context) const;
    };

    bool IsOpen() const { return output != nullptr && output->pb != nullptr; }
    bool WriteHeader();
    bool Write(AVPacket& packet);
    bool WritePicture(AVPacket& packet);
    void SetTimeCode(AVRational rate, int64_t frames);
    bool OpenAudioEncoder(const AVCodec& encoder, const AudioDescription& audio);

    std::unique_ptr<AVFormatContext, OutputDeleter> output;
    const AVCodecContext* videoContext = nullptr; ///< the encoder's owner's
    CodecContextPointer audioContext;
    std::vector<Track> videoTracks;
    std::vector<Track> audioTracks;
    std::optional<bool> isHeaderWritten; ///< the outcome of the one attempt; none before it
    std::string reelName;
};

} // namespace CxFFMPEG
