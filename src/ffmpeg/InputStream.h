#pragma once

#include "ffmpeg/FFmpegHandles.h"

#include <cstdint>

namespace CxFFMPEG {

/// An open movie and the one stream of it that is read. Opening comes first, then the choice of the stream,
/// and then all else. One thread at a time.
class InputStream {
public:
    /// Opens a file and looks through its streams. One that is open is closed before.
    /// @return false, with nothing open, if FFmpeg can't read it or is not there
    bool Open(const char* path);
    /// Closes the file. Closing twice is fine.
    void Close();
    bool IsOpen() const { return file != nullptr; }

    /// Chooses the best stream of pictures, and lets FFmpeg pass over all others from now on.
    /// @return whether there is one; if not, that is said on standard error, and nothing is chosen
    bool ChooseVideo();
    /// The chosen stream, which is the file's; null before the choice.
    AVStream* Stream() const { return stream; }
    /// Whether the packets' presentation times are in the order of decoding, though the pictures are not. So
    /// the earliest time of the packets that a decoder has got is that of the picture that it gives.
    bool HasDecodingTimes() const { return hasDecodingTimes; }

    /// Moves to a time stamp of the stream, with `AVSEEK_FLAG_`s.
    bool Seek(int64_t time, int flags);
    /// Passes over all packets up to the next one from which on a decoder can begin.
    void PassToKeyPicture() { isKeyWanted = true; }
    /// Reads the stream's next packet. Once one can't be read there are no more before the next `Seek`.
    /// @param packet  a packet, whose content is released first; empty at the end
    /// @return false at the end
    bool Read(AVPacket& packet);

    /// The first presentation time, by the container or by its first packets; `AV_NOPTS_VALUE` if neither
    /// tells one.
    int64_t FindFirstTime();
    /// The last presentation time from a place on to the end, for which all that lies between is read; from
    /// `least` on if there is none.
    /// @param place  where to begin, or the last key picture before that
    /// @return at least `least`
    int64_t FindLastTime(int64_t place, int64_t least);

private:
    bool IsReorderedAvi() const;
    int64_t ReadFirstTime(AVPacket& packet);
    int64_t ReadLeastTime(AVPacket& packet);
    int64_t ReadLastTime(AVPacket& packet);

    InputPointer file;
    int32_t index = 0;             ///< of the chosen stream
    AVStream* stream = nullptr;    ///< the chosen stream
    bool hasDecodingTimes = false; ///< see `HasDecodingTimes`
    bool isKeyWanted = false;      ///< packets are passed over up to a key picture
    bool isAtEnd = false;          ///< a packet could not be read since the last `Seek`
};

} // namespace CxFFMPEG
