#pragma once

#include "codecs/wmf/WMFTestSupport.h"

/// A decoder of a track that is open, and an image of the track's size.
class WMFDecode : public WMFTest {
protected:
    WMFDecode() { Open(); }

    void Open() {
        Script().onInput = nullptr;
        ASSERT_EQ(codec_.SetDataSource(&track_), CxAV_OK);
        AllCalls();
        GivesEachSampleAtOnce();
    }
    /// The decoder gives one picture for each sample, of its time.
    static void GivesEachSampleAtOnce() {
        Script().onInput = [](int64_t time) { Script().outputs.push_back(PictureAt(time / ticks)); };
    }
    CxAVError Decode(int32_t frame) { return ::Decode(codec_, frame, image_.get()); }
    CxAVError DecodeSample(Bytes sample, int64_t time, int64_t target) {
        CxDecodeRequest request;
        request.sampleTime = time;
        request.targetTime = target;
        IMFSample* frame = nullptr;
        const CxAVError result =
            codec_.DecodeSample(sample.data(), static_cast<int32_t>(sample.size()), frame, request);
        EXPECT_EQ(codec_.GetLastError(), result);
        EXPECT_EQ(frame != nullptr, result == CxAV_OK);
        if (result == CxAV_OK) {
            EXPECT_EQ(request.frameTime, target);
        }
        codec_.ReleaseDecodedFrame(frame);
        EXPECT_EQ(frame, nullptr);
        return result;
    }

    WMFTrack track_ = H264Track(12);
    CxWMF::WMFCodec codec_{CxAV_DECODE, nullptr};
    ImagePtr image_ = MakeImage(16, 2);
};
