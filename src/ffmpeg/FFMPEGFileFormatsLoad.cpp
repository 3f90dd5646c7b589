// The frame loop of FFMPEGFileFormats.

#include "ffmpeg/FFMPEGFileFormats.h"
#include "framework/ImageMetadata.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace CxFFMPEG {

namespace {

/// Frames past the wanted one, beside those that the decoder holds back, after which it is missing.
constexpr int32_t mostFramesPast = 30;

/// Pictures that may be decoded before one that is presented earlier.
constexpr int32_t mostReordered = 16;

/// Sum that wraps around.
int32_t FramesAfter(int32_t frame, int32_t distance) {
    return static_cast<int32_t>(static_cast<uint32_t>(frame) + static_cast<uint32_t>(distance));
}

} // namespace

bool FFMPEGFileFormats::LoadFrameTagList(uint32_t frame, Image*& image, TagList& tags) try {
    TagList prepared = tags;
    if (tags.GetLong(FFmpegTag_ImagePreparation, 1) == 0) prepared.Set(FFmpegTag_ImagePreparation, 3, false);
    if (!ImageFormat::LoadFrameTagList(frame, image, prepared) || codec == nullptr) return false;
    if (image != nullptr) MetadataTable(*image).FindKey("Decoder") = codec->GetName().c_str();
    if (!std::in_range<int32_t>(frame)) return false;
    const auto number = static_cast<int32_t>(frame);
    AVFrame* cached = nullptr;
    if (codec->FindCachedFrame(number, cached)) return codec->ConvertFrameToImage(cached, image);
    const FramePointer decoded = FindFrame(number);
    return decoded != nullptr && codec->ConvertFrameToImage(decoded.get(), image);
} catch (...) {
    return false;
}

/// Decodes up to a frame, from where the decoder stands or from the last place before the frame that the file
/// lets it begin at. That may be past the frame, where the file's index tells times of decoding or there is
/// no index; and a decoder may keep back some of its first pictures. So places further back are tried then.
/// @return null if the frame can't be had
FramePointer FFMPEGFileFormats::FindFrame(int32_t frame) {
    if (lastTime != noTime && times.IsNext(frame, lastTime)) {
        FramePointer decoded = DecodeTo(frame, nullptr);
        if (decoded != nullptr || frame >= frameCount) return decoded;
    }
    for (int64_t back = 0; back <= frame; back = std::max<int64_t>(mostReordered, 4 * back)) {
        if (!Jump(static_cast<int32_t>(frame - back), AVSEEK_FLAG_BACKWARD)) {
            if (back == 0) return nullptr;
            break;
        }
        input.PassToKeyPicture();
        std::optional<int32_t> first;
        FramePointer decoded = DecodeTo(frame, &first);
        if (decoded != nullptr || (first && int64_t{*first} + mostReordered <= frame)) return decoded;
    }
    // The first packet is decoded before it is presented.
    return Jump(-mostReordered, 0) ? DecodeTo(frame, nullptr) : nullptr;
}

/// Makes the decoder begin anew at a frame, or at the place next to it that the file has.
bool FFMPEGFileFormats::Jump(int32_t frame, int flags) {
    lastTime = noTime;
    waitingTimes.clear();
    codec->ClearCachedFrames();
    codec->Flush();
    if (input.Seek(FrameToTime(frame), flags)) return true;
    CorvexDoc* const document = GetDoc();
    document->PrintF(60, "Seeking failed\n");
    return false;
}

/// Decodes on until a frame comes out. The frames on the way to it go into the cache.
/// @param first  out: the number of the first frame that comes out, if one does. One past the wanted frame
///               ends the decoding. Null: it does not
/// @return null if the stream ended, or passed the frame so far that it is missing
FramePointer FFMPEGFileFormats::DecodeTo(int32_t frame, std::optional<int32_t>* first) {
    const int32_t ahead = mostFramesPast + std::max(codec->GetLookAhead(), 1);
    const int64_t limit = FrameToTime(FramesAfter(frame, ahead));
    int32_t packetsPast = ahead;
    std::optional<int32_t> previous;
    if (lastTime != noTime) previous = TimeToFrame(lastTime);
    // Stays so until the frame is there: what else is read is lost, be it for a failure or want of memory.
    lastTime = noTime;
    const PacketPointer packet(FFmpeg().av_packet_alloc());
    while (FramePointer decoded = packet != nullptr ? DecodeNext(*packet, limit, packetsPast) : nullptr) {
        const int64_t time = TimeOf(*decoded);
        if (time == AV_NOPTS_VALUE) {
            // Where pictures have no times there is no place that leads to the frame.
            if (first != nullptr && !*first) *first = std::numeric_limits<int32_t>::min();
            continue;
        }
        MoveStart(time);
        const int32_t number = TimeToFrame(time);
        // Of two pictures of one number the first is the frame, in whatever order frames are asked for.
        if (std::exchange(previous, number) == number) continue;
        if (number == frame) {
            lastTime = time;
            return decoded;
        }
        if (time >= limit) break;
        if (first != nullptr && !*first) *first = number;
        if (first != nullptr && **first > frame) break;
        codec->CacheDecodedFrame(number, decoded.release());
    }
    return nullptr;
}

/// Feeds packets until a frame comes out.
/// @param packet       one to read into
/// @param packetsPast  in, out: packets past the limit that may still be fed: behind a gap in the stream they
///                     bring out the frames before it, which the decoder holds back
/// @return null at the end, after a failure, or with a packet past the limit too many
FramePointer FFMPEGFileFormats::DecodeNext(AVPacket& packet, int64_t limit, int32_t& packetsPast) {
    FramePointer decoded;
    CxAVError result = CxAV_NEED_MORE_DATA;
    // At the end of the file the packet is empty, which drains the decoder.
    for (bool isEnd = false; result == CxAV_NEED_MORE_DATA && !isEnd;) {
        isEnd = !input.Read(packet);
        if (packet.pts > limit && --packetsPast < 0) break;
        if (input.HasDecodingTimes() && !isEnd) waitingTimes.insert(packet.pts);
        AVFrame* frame = decoded.release();
        result = codec->DecodePacket(&packet, frame);
        decoded.reset(frame);
    }
    return result == CxAV_OK ? std::move(decoded) : nullptr;
}

/// Time stamp of a frame that came out.
int64_t FFMPEGFileFormats::TimeOf(const AVFrame& frame) {
    if (waitingTimes.empty()) return frame.best_effort_timestamp;
    return waitingTimes.extract(waitingTimes.begin()).value();
}

/// Moves the start to a frame before it, as containers may tell it too late. Frame numbers are others from
/// then on, those of the cached frames too. The count stays. Kept.
void FFMPEGFileFormats::MoveStart(int64_t time) {
    if (time <= 0 || time >= times.start) return;
    times.start = time;
    codec->ClearCachedFrames();
}

} // namespace CxFFMPEG
