#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

/// A movie as a program without this library reads it: FFmpeg's decoder, and libswscale into packed RGB. Both
/// have as many threads as there are processors. Ends the process on any failure.
class PeerMovie {
public:
    PeerMovie(const std::string& path, AVPixelFormat rgb);

    /// Decodes the next frame, or the first one behind the last, and converts it.
    void Next();

private:
    template <typename T, void (*Free)(T**)>
    struct Release {
        void operator()(T* object) const { Free(&object); }
    };
    struct ReleaseScaler {
        void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
    };

    void Decode();
    void Rewind();
    void OpenScaler(AVPixelFormat rgb);

    std::unique_ptr<AVFormatContext, Release<AVFormatContext, avformat_close_input>> input_;
    std::unique_ptr<AVCodecContext, Release<AVCodecContext, avcodec_free_context>> decoder_;
    std::unique_ptr<AVPacket, Release<AVPacket, av_packet_free>> packet_;
    std::unique_ptr<AVFrame, Release<AVFrame, av_frame_free>> frame_;
    std::unique_ptr<AVFrame, Release<AVFrame, av_frame_free>> picture_;
    std::unique_ptr<SwsContext, ReleaseScaler> scaler_;
    int stream_ = -1;
    bool ended_ = false; ///< the decoder is being drained
};
