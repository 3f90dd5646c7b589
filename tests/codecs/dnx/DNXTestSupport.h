#pragma once

#include "codecs/DNXCodec.h"
#include "codecs/UncompressedTestSupport.h"
#include "codecs/dnx/scripted/ScriptedDNX.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

inline constexpr uint32_t dnxHD = FourCC("AVdn");
inline constexpr uint32_t dnxHR = FourCC("AVdh");

inline constexpr uint32_t idsOfDNxHD[] = {1235, 1237, 1238, 1241, 1242, 1243, 1250, 1251, 1252, 1253, 1256};
inline constexpr uint32_t idsOfDNxHR[] = {1270, 1271, 1272, 1273, 1274};

/// A test that starts with a script of its own, at whose end every handle must be deleted.
class DNXTest : public testing::Test {
protected:
    DNXTest() { Script() = DNXScript(); }
    ~DNXTest() override {
        EXPECT_EQ(Script().decoders, 0);
        EXPECT_EQ(Script().encoders, 0);
    }
};

/// How often the library was asked for something.
inline int64_t CallsOf(const std::string& function) { return std::ranges::count(Script().calls, function); }

/// What the library says of a progressive frame of 10 bits in 4:2:2.
inline DNXFrameInformation FrameOf(uint32_t compressionId) {
    DNXFrameInformation information = {};
    information.size = sizeof(information);
    information.compressionId = compressionId;
    information.codedBits = 10;
    information.colorFormat = dnxColorYCbCr;
    information.sampling = dnxSampling422;
    information.depth = 10;
    return information;
}

/// What is written to the standard error stream while `call` runs.
template <typename Call>
std::string WordsOf(const Call& call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

/// A track of 4 by 2 pixels, each sample being a number of its own.
inline MemoryTrackSource DNXTrack(std::vector<Bytes> samples = {{1, 2, 3}}) {
    return {dnxHR, 4, 2, std::move(samples)};
}

/// A picture of the least size that is encoded, in one colour.
inline ImagePtr LeastImage(const Pixel& pixel = {65535, 65535, 65535, 65535}) {
    ImagePtr image = MakeImage(240, 120);
    FillWith(*image, pixel);
    return image;
}

inline CxEncodedFrame FrameToEncode(uint32_t compressionId, uint32_t fieldOrder = 1, uint32_t flags = 0) {
    CxEncodedFrame frame;
    frame.codecTag = compressionId;
    frame.fieldOrder = fieldOrder;
    frame.flags = flags;
    return frame;
}

/// Encodes an image, and frees what became of it.
inline CxAVError EncodeOnce(DNXCodec& codec, Image* image, CxEncodedFrame frame) {
    const CxAVError result = codec.EncodeFrame(image, frame);
    if (frame.data != nullptr) Platform::FreeMemAligned(frame.data);
    return result;
}
