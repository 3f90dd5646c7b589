#pragma once

#include "codecs/wmf/WMFTestSupport.h"

/// 25 frames a second of 16 by 2 pixels, in milliseconds, at a bit rate.
inline CxVideoSettings EncoderSettings() {
    CxVideoSettings settings;
    settings.width = 16;
    settings.height = 2;
    settings.timeScale = 1000;
    settings.frameDuration = 40;
    settings.bitRate = 8000000;
    settings.fieldOrder = 1;
    return settings;
}

/// What the encoder gives for an image, at a time of its own in milliseconds.
inline MFOutput SampleAt(int64_t time, Bytes bytes = {0, 0, 0, 1, 0x65, 0x88}) {
    return {.time = (100000 + time) * ticks, .duration = 40 * ticks, .bytes = std::move(bytes)};
}

class WMFEncode : public WMFTest {
protected:
    WMFEncode() {
        Script().inputTypes = {MFVideoFormat_YUY2};
        Script().outputTypes = {MFVideoFormat_H264};
        AllCalls();
    }

    CxAVError Configure(CxVideoSettings settings = EncoderSettings()) {
        const CxAVError result = codec_.SetEncoderSettings(settings);
        EXPECT_EQ(codec_.GetLastError(), result);
        record_ = settings.extraData;
        return result;
    }
    /// Encodes the image, or drains; the sample is empty if there is none.
    CxAVError Encode(Image* image, Bytes* sample = nullptr) {
        frame_.data = reinterpret_cast<uint8_t*>(1);
        frame_.size = 1;
        const CxAVError result = codec_.EncodeFrame(image, frame_);
        EXPECT_EQ(frame_.data != nullptr, frame_.size != 0);
        if (frame_.data == nullptr) return result;
        if (sample != nullptr) sample->assign(frame_.data, frame_.data + frame_.size);
        Platform::FreeMemAligned(frame_.data);
        return result;
    }
    /// The properties that the encoder is set.
    static Calls Properties() {
        Calls calls = AllCalls();
        std::erase_if(calls, [](const std::string& call) { return !call.starts_with("SetValue"); });
        return calls;
    }
    static bool Asked(const std::string& call) { return std::ranges::count(Script().calls, call) == 1; }

    CxWMF::WMFCodec codec_{CxAV_ENCODE, nullptr};
    ImagePtr image_ = MakeImage(16, 2);
    CxEncodedFrame frame_;
    Bytes record_;
};
