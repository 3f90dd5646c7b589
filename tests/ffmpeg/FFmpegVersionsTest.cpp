#include "ffmpeg/FFmpegVersions.h"

#include "ffmpeg/FFmpegHandles.h"
#include "ffmpeg/FFmpegSpy.h"

#include <gtest/gtest.h>

#include <deque>
#include <vector>

namespace {

using namespace CxFFMPEG;

/// Takes the place of an encoder during its life: it makes a packet of each frame at once, and takes no frame
/// while it holds as many packets as there is room for.
class FullEncoder {
public:
    FullEncoder()
        : send_(&FFmpegFunctions::avcodec_send_frame, Send),
          receive_(&FFmpegFunctions::avcodec_receive_packet, Receive) {
        held.clear();
        room = 1;
        isEnded = false;
    }

    static inline std::deque<int64_t> held; ///< times of packets that wait
    static inline size_t room = 1;
    static inline bool isEnded = false;
    static inline int receiveResult = 0; ///< given instead of a packet, if negative

private:
    static int Send(AVCodecContext*, const AVFrame* frame) {
        if (isEnded) return AVERROR_EOF;
        if (held.size() >= room) return AVERROR(EAGAIN);
        if (frame != nullptr) held.push_back(frame->pts);
        isEnded = frame == nullptr;
        return 0;
    }
    static int Receive(AVCodecContext*, AVPacket* packet) {
        if (receiveResult < 0) return receiveResult;
        if (held.empty()) return isEnded ? AVERROR_EOF : AVERROR(EAGAIN);
        packet->pts = held.front();
        held.pop_front();
        return 0;
    }

    ReplacedFunction<decltype(avcodec_send_frame)> send_;
    ReplacedFunction<decltype(avcodec_receive_packet)> receive_;
};

class EncodeVideoCall : public testing::Test {
protected:
    EncodeVideoCall() { FullEncoder::receiveResult = 0; }
    ~EncodeVideoCall() override { av_frame_free(&frame); }

    /// Time of the packet that comes for a frame, or -1 for none. A negative time drains.
    int64_t Encode(int64_t time) {
        frame->pts = time;
        result = EncodeVideo(nullptr, packet.get(), time >= 0 ? frame : nullptr, gotPacket);
        return gotPacket ? packet->pts : -1;
    }

    const FullEncoder encoder;
    const PacketPointer packet{av_packet_alloc()};
    AVFrame* frame = av_frame_alloc();
    bool gotPacket = false;
    int result = 0;
};

TEST_F(EncodeVideoCall, AnEncoderThatIsFullGivesAPacketAndThenTakesTheFrame) {
    FullEncoder::held = {100};
    std::vector<int64_t> times;
    for (const int64_t time : {200, 300, 400, -1, -1, -1}) {
        times.push_back(Encode(time));
        EXPECT_EQ(result, 0) << time;
    }
    EXPECT_EQ(times, std::vector<int64_t>({100, 200, 300, 400, -1, -1})) << "none is lost";
}

TEST_F(EncodeVideoCall, AnEncoderThatTakesNothingAndGivesNothingFails) {
    FullEncoder::room = 0;
    EXPECT_EQ(Encode(100), -1);
    EXPECT_EQ(result, AVERROR(EAGAIN));
}

TEST_F(EncodeVideoCall, AFullEncoderThatCannotGiveItsPacketFails) {
    FullEncoder::held = {100};
    FullEncoder::receiveResult = AVERROR(ENOMEM);
    EXPECT_EQ(Encode(200), -1);
    EXPECT_EQ(result, AVERROR(ENOMEM));
}

TEST_F(EncodeVideoCall, ADrainedEncoderIsNoError) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Encode(-1), -1);
        EXPECT_EQ(result, 0);
    }
}

} // namespace
