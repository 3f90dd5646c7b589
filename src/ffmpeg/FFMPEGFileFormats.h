#pragma once

#include "ffmpeg/EncoderCatalogue.h"
#include "ffmpeg/FFMPEGCodecs.h"
#include "ffmpeg/FFmpegFileWriter.h"
#include "ffmpeg/FramePointer.h"
#include "ffmpeg/FrameTimes.h"
#include "ffmpeg/InputStream.h"
#include "framework/CxAVTypes.h"
#include "host/ImageFormat.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>

struct AudioBlock;

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

/// The host's format class for every movie that FFmpeg reads, and for those that it writes. It demuxes the
/// file itself and gives any frame in any order. One object serves one tool, one thread at a time. No
/// operation throws; where memory is short it fails.
///
/// A save is `AddSaveInputs` and `NotifyChangedSave` for the tool's controls, and then `SetupSave`,
/// `SaveHeaderTagList`, `SaveFrameTagList` for each frame in order, and `CleanupSave`, as often as need be.
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
    /// Ends the file that is being saved, with the frames that the encoder holds back, and closes the one
    /// that is open and the decoder. What was found out of the stream's times stays. True.
    bool CloseFile() override;
    /// Adds the controls of container, encoder, frame rate, data rate, key frames and options, and forgets
    /// those of an earlier call. The encoders come with the first change of the container, which the host is
    /// to send. Null does nothing.
    void AddSaveInputs(Operator* tool) override;
    /// A new container fills the control of encoders and chooses the first one; an encoder is confirmed if
    /// the container has it. Both are told to the document of `tool`, which may be null. The tool that
    /// `AddSaveInputs` was given last has to be alive.
    void NotifyChangedSave(Operator* tool, Input* input, Parameter* value, double time) override;
    /// Reads the controls. The attribute of the frame rate tells the save's from then on. A null request does
    /// nothing. The tool that `AddSaveInputs` was given last has to be alive.
    void SetupSave(Operator* tool, Request* request) override;
    /// Ends the save, and says so on standard error.
    void CleanupSave(Operator* tool) override;
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
    using ImageFormat::SaveHeaderTagList;
    /// Makes a file for images of the size, aspect and fields of `image`, which is the first one or like it,
    /// and for the sound of `AudioTag_Block` if `tags` has one. A save that was not ended is ended first.
    /// @return false, with a save that runs going on, if the path or image is missing or the container or
    ///         encoder chosen by `SetupSave` is unknown; false, with nothing being saved, if the file can't
    ///         be made or the encoder refuses: a file that was made stays, and is empty
    bool SaveHeaderTagList(const char* path, Image* image, TagList& tags) override;
    /// Encodes the next frame, whatever its number, and the sound of `AudioTag_Block` if `tags` has one.
    /// @return false if nothing is being saved, the image is missing, of another size or can't be encoded, or
    ///         the sound can't be written. That a packet of pictures can't be written is not told. Kept
    bool SaveFrameTagList(uint32_t frame, Image* image, TagList& tags) override;

    int64_t FrameToTime(int32_t frame) const { return times.FrameToTime(frame); }
    int32_t TimeToFrame(int64_t time) const { return times.TimeToFrame(time); }
    /// Frames of the stream, by the first of these that tells: an earlier count, the container's number of
    /// frames, its duration, and the last time stamp, for which the file is read to its end. 0 before there
    /// is a stream.
    int32_t CountFrames();

private:
    static constexpr int32_t unknownCount = std::numeric_limits<int32_t>::min();
    static constexpr int64_t noTime = -1;

    /// The controls, which are the tool's; all null without one.
    struct SaveControls {
        Input* container = nullptr;
        Input* encoder = nullptr;
        Input* frameRate = nullptr;
        Input* dataRate = nullptr;
        Input* keyFrames = nullptr;
        Input* options = nullptr;
    };

    bool OpenDecoder();
    bool ReadTimes();
    void CloseDecoder();
    FramePointer FindFrame(int32_t frame);
    FramePointer DecodeTo(int32_t frame, std::optional<int32_t>* first);
    FramePointer DecodeNext(AVPacket& packet, int64_t limit, int32_t& packetsPast);
    int64_t TimeOf(const AVFrame& frame);
    bool Jump(int32_t frame, int flags);
    void MoveStart(int64_t time);
    void ListEncoders(Operator* tool, const CxID& container);
    void ConfirmEncoder(Operator* tool, const CxID& chosen, double time);
    bool OpenStreams(const EncoderEntry& entry, const AudioBlock* audio);
    void CloseWriter();
    void AbandonWriter();

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

    SaveControls controls;
    CxID containerName;                       ///< chosen; empty before `SetupSave`
    CxID encoderName;                         ///< the same
    CxVideoSettings settings;                 ///< of the save; a time code stays for the next one
    EncoderOptions options;                   ///< of the encoder
    std::unique_ptr<FFMPEGCodecs> encoder;    ///< null unless a file is being saved
    std::unique_ptr<FFmpegFileWriter> writer; ///< the same; borrows the encoder's context
};

/// Announces `FFMPEGFileFormats` to the host until the module is unloaded. Called once, while it is loaded.
void RegisterFFMPEGFileFormats();

} // namespace CxFFMPEG
