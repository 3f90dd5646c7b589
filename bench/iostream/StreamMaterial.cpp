#include "StreamMaterial.h"

#include "iostream/UnitScan.h"
#include "support/CameraMaterial.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr int32_t width = 1920;
constexpr int32_t height = 1080;
constexpr int32_t pictureCount = 8;
constexpr size_t streamSize = 200000000;

struct FreeContext {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using Encoder = std::unique_ptr<AVCodecContext, FreeContext>;
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

/// The benchmarks have no other way on without their material.
void Require(bool condition) {
    if (!condition) std::abort();
}

Encoder OpenEncoder() {
    av_log_set_level(AV_LOG_ERROR);
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    Require(codec != nullptr);
    Encoder encoder(avcodec_alloc_context3(codec));
    encoder->width = width;
    encoder->height = height;
    encoder->pix_fmt = AV_PIX_FMT_YUV420P;
    encoder->time_base = {1, 25};
    encoder->slices = 8;
    av_opt_set(encoder->priv_data, "preset", "ultrafast", 0);
    av_opt_set(encoder->priv_data, "qp", "12", 0);
    Require(avcodec_open2(encoder.get(), codec, nullptr) == 0);
    return encoder;
}

void FillPlane(const AVFrame& frame, int plane, const std::vector<uint16_t>& samples, int32_t step) {
    for (int32_t row = 0; row < height / step; ++row) {
        for (int32_t column = 0; column < width / step; ++column) {
            const auto place = static_cast<size_t>(row * step * width + column * step);
            frame.data[plane][row * frame.linesize[plane] + column] =
                static_cast<uint8_t>(samples[place] >> 2);
        }
    }
}

Frame MakeFrame(int32_t index) {
    Frame frame(av_frame_alloc());
    frame->width = width;
    frame->height = height;
    frame->format = AV_PIX_FMT_YUV420P;
    frame->pts = index;
    Require(av_frame_get_buffer(frame.get(), 0) == 0);
    const CameraPicture picture = MakeCameraPicture(width, height, index);
    FillPlane(*frame, 0, picture.luma, 1);
    FillPlane(*frame, 1, picture.cb, 2);
    FillPlane(*frame, 2, picture.cr, 2);
    return frame;
}

/// Takes what the encoder has ready.
void TakePackets(AVCodecContext* encoder, std::vector<Bytes>& packets) {
    const std::unique_ptr<AVPacket, FreePacket> packet(av_packet_alloc());
    while (avcodec_receive_packet(encoder, packet.get()) == 0) {
        packets.emplace_back(packet->data, packet->data + packet->size);
        av_packet_unref(packet.get());
    }
}

std::vector<Bytes> EncodePictures() {
    const Encoder encoder = OpenEncoder();
    std::vector<Bytes> packets;
    for (int32_t index = 0; index < pictureCount; ++index) {
        Require(avcodec_send_frame(encoder.get(), MakeFrame(index).get()) == 0);
        TakePackets(encoder.get(), packets);
    }
    Require(avcodec_send_frame(encoder.get(), nullptr) == 0);
    TakePackets(encoder.get(), packets);
    Require(!packets.empty());
    return packets;
}

/// Lays samples one behind the other.
class Track {
public:
    void Add(std::span<const uint8_t> bytes) { storage_.insert(storage_.end(), bytes.begin(), bytes.end()); }
    void EndSample() { ends_.push_back(storage_.size()); }
    size_t Size() const { return storage_.size(); }
    StreamMaterial Finish() {
        const size_t size = storage_.size();
        storage_.resize(size + AV_INPUT_BUFFER_PADDING_SIZE);
        StreamMaterial material = {std::move(storage_), {}, {}};
        material.data = {material.storage.data(), size};
        size_t begin = 0;
        for (const size_t end : ends_) {
            material.samples.push_back(material.data.subspan(begin, end - begin));
            begin = end;
        }
        return material;
    }

private:
    std::vector<uint8_t> storage_;
    std::vector<size_t> ends_;
};

void AddWithLength(Track& track, std::span<const uint8_t> unit, uint32_t lengthSize) {
    for (uint32_t byte = lengthSize; byte-- > 0;) {
        const auto value = static_cast<uint8_t>(unit.size() >> 8 * byte);
        track.Add({&value, 1});
    }
    track.Add(unit);
}

} // namespace

const StreamMaterial& ByteStream() {
    static const StreamMaterial stream = [] {
        const std::vector<Bytes> packets = EncodePictures();
        Track track;
        for (size_t i = 0; track.Size() < streamSize; ++i) {
            track.Add(packets[i % packets.size()]);
            track.EndSample();
        }
        return track.Finish();
    }();
    return stream;
}

StreamMaterial LengthPrefixedSamples(uint32_t lengthSize) {
    Track track;
    for (const std::span<uint8_t> sample : ByteStream().samples) {
        const uint8_t* unit = nullptr;
        uint32_t scanned = 0;
        const auto size = static_cast<uint32_t>(sample.size());
        IOStream::VisitUnits(sample.data(), scanned, size, [&](IOStream::StartCode found, uint8_t) {
            if (unit != nullptr) AddWithLength(track, {unit, sample.data() + found.place}, lengthSize);
            unit = sample.data() + found.place + found.length;
        });
        AddWithLength(track, {unit, sample.data() + size}, lengthSize);
        track.EndSample();
    }
    return track.Finish();
}
