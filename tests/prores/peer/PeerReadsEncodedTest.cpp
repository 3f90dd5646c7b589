// Frames of the engine's encoder, decoded by the engine and by FFmpeg. The peer rounds to 10 or 12 bits by a
// transform of its own, so pictures are close, not equal; alpha is coded without loss and must be the same.

#include "prores/encoder/RateCases.h"
#include "prores/peer/EnginePicture.h"
#include "prores/peer/PeerDecoder.h"
#include "prores/peer/PictureDifference.h"
#include "support/CameraMaterial.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

struct Size {
    int width;
    int height;
};

void PrintTo(const Size& size, std::ostream* out) { *out << size.width << "x" << size.height; }

/// With all the edges that a picture can have. One row would leave a field without any, which the peer does
/// not take.
constexpr Size smallSizes[] = {{1, 2}, {2, 3}, {17, 17}, {130, 98}, {129, 31}};
constexpr Size largeSizes[] = {{720, 486}, {1281, 721}, {1998, 108}, {4096, 16}};

/// Rounding alone leaves 71 dB between 10 and 16 bits.
constexpr double leastPsnr = 55;

InputPicture MakeCameraInput(const CameraPicture& camera, uint32_t pixelFormat) {
    InputPicture picture;
    const uint32_t rowBytes = PrxGetBytesPerRow(static_cast<uint32_t>(camera.width), pixelFormat, 0);
    picture.bytes = PackCameraPicture(camera, pixelFormat, rowBytes);
    picture.buffer = {picture.bytes.data(), static_cast<int32_t>(rowBytes), pixelFormat, camera.width,
                      camera.height};
    return picture;
}

/// Holds the frame's pictures by both decoders against each other, and returns the worst figure in dB.
double CompareFrame(PrxDecoderRef decoder, const std::vector<uint8_t>& frame, uint32_t codecType,
                    bool hasAlpha) {
    const PeerFrame peer = DecodeFrameByPeer(frame, codecType);
    const bool is444 = peer.log2ChromaWidth == 0;
    const EnginePicture picture(decoder, frame, peer.width, peer.height,
                                is444 ? prxFormatY416 : prxFormatV216);
    EXPECT_EQ(picture.Result(), static_cast<int32_t>(frame.size()));
    EXPECT_EQ(peer.HasAlpha(), hasAlpha);
    if (peer.HasAlpha()) {
        EXPECT_EQ(CountAlphaDifferences(picture, peer), 0U);
    }
    Differences sums;
    AddDifferences(picture, peer, is444, sums);
    return std::min({sums[0].Psnr(), sums[1].Psnr(), sums[2].Psnr()});
}

/// Encodes the picture in all codecs and scannings, with alpha where the codec takes it, and compares what
/// the decoders make of that.
double CompareInAllCodecs(const InputPicture& picture) {
    const EncoderPtr encoder = MakeEncoder(2);
    const DecoderPtr decoder(PrxCreateDecoder(2, nullptr));
    double worst = INFINITY;
    for (const uint32_t codecType : allCodecs) {
        const uint32_t format = picture.buffer.pixelFormat;
        if (!IsTaken(codecType, format)) continue;
        const bool hasAlpha = PrxIs444Codec(codecType) && PrxGetAlphaSampleSize(format) != 0;
        for (const int32_t mode : {0, 1, 2}) {
            SCOPED_TRACE(testing::Message() << std::hex << codecType << " mode " << mode);
            // Some inputs are changed where they are.
            InputPicture input = picture;
            input.buffer.baseAddress = input.bytes.data();
            const CodedFrame frame = Encode(encoder.get(), {codecType, mode, hasAlpha}, input.buffer);
            EXPECT_EQ(frame.result, 0);
            const double psnr = CompareFrame(decoder.get(), frame.bytes, codecType, hasAlpha);
            EXPECT_GE(psnr, leastPsnr);
            worst = std::min(worst, psnr);
        }
    }
    return worst;
}

class PeerReadsEncoded : public testing::TestWithParam<Size> {};
class PeerReadsEncodedSmall : public PeerReadsEncoded {};

TEST_P(PeerReadsEncoded, CameraPicturesLikeTheEngineDoes) {
    CameraPicture camera = MakeCameraPicture(GetParam().width, GetParam().height, 0);
    AddMatte(camera);
    for (const uint32_t format : {prxFormatV216, prxFormatY416, prxFormatB64a}) {
        SCOPED_TRACE(testing::Message() << std::hex << format);
        const double worst = CompareInAllCodecs(MakeCameraInput(camera, format));
        std::cout << std::hex << format << std::dec << ": worst PSNR " << worst << " dB" << std::endl;
    }
}

TEST_P(PeerReadsEncodedSmall, SlopesOfEveryFormatLikeTheEngineDoes) {
    for (const uint32_t format : allInputs) {
        SCOPED_TRACE(testing::Message() << std::hex << format);
        CompareInAllCodecs(MakePicture(format, GetParam().width, GetParam().height, Content::Ramps));
    }
}

TEST(PeerReadsEncodedNoise, OfEveryFormatLikeTheEngineDoes) {
    for (const uint32_t format : allInputs) {
        SCOPED_TRACE(testing::Message() << std::hex << format);
        CompareInAllCodecs(MakePicture(format, 130, 98, Content::Noise));
    }
}

class PeerReadsBudgets : public testing::TestWithParam<RateCase> {};

TEST_P(PeerReadsBudgets, LikeTheEngineDoes) {
    const RateCase& test = GetParam();
    const CodedFrame frame = Encode(MakeEncoder(2).get(), test.settings, MakeRateCase(test).buffer);
    ASSERT_TRUE(HasBudgets(test, frame.bytes));
    const DecoderPtr decoder(PrxCreateDecoder(2, nullptr));
    const bool hasAlpha = test.settings.hasAlpha != 0;
    EXPECT_GE(CompareFrame(decoder.get(), frame.bytes, test.settings.codecType, hasAlpha), leastPsnr);
}

INSTANTIATE_TEST_SUITE_P(OfSlices, PeerReadsBudgets, testing::ValuesIn(rateCases),
                         [](const auto& info) { return std::string(info.param.name); });

std::string NameOf(const testing::TestParamInfo<Size>& info) {
    return std::to_string(info.param.width) + "x" + std::to_string(info.param.height);
}

INSTANTIATE_TEST_SUITE_P(SmallSizes, PeerReadsEncoded, testing::ValuesIn(smallSizes), NameOf);
INSTANTIATE_TEST_SUITE_P(LargeSizes, PeerReadsEncoded, testing::ValuesIn(largeSizes), NameOf);
INSTANTIATE_TEST_SUITE_P(SmallSizes, PeerReadsEncodedSmall, testing::ValuesIn(smallSizes), NameOf);

} // namespace
