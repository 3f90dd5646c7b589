// What encoding costs a picture, by the engine's encoder and decoder.

#include "prores/encoder/EncodeFixture.h"
#include "prores/peer/EnginePicture.h"
#include "prores/peer/PictureDifference.h"
#include "support/CameraMaterial.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

constexpr int width = 1920;
constexpr int height = 1080;
constexpr PrxEncodeSettings hq{prxCodecApch, 0, 0};

using Planes = std::array<std::vector<double>, 3>; ///< luma, Cb, Cr in codes of 10 bits, 4:2:2

/// An encoder, a decoder and a `v216` picture that goes through both.
class Generations {
public:
    Generations(int pictureWidth, int pictureHeight)
        : rowBytes_(PrxGetBytesPerRow(static_cast<uint32_t>(pictureWidth), prxFormatV216, 0)),
          bytes_(size_t{rowBytes_} * static_cast<size_t>(pictureHeight)), buffer_{
                                                                              bytes_.data(),
                                                                              static_cast<int32_t>(rowBytes_),
                                                                              prxFormatV216, pictureWidth,
                                                                              pictureHeight} {}

    void Show(const CameraPicture& camera) {
        const std::vector<uint8_t> packed = PackCameraPicture(camera, prxFormatV216, rowBytes_);
        std::ranges::copy(packed, bytes_.begin());
    }
    void ShowFlat(const std::array<int, 3>& codes) {
        constexpr size_t order[] = {1, 0, 2, 0}; // Cb Y Cr Y
        for (size_t i = 0; i < bytes_.size() / 2; ++i) {
            const int word = codes[order[i % 4]] << 6;
            bytes_[2 * i] = static_cast<uint8_t>(word);
            bytes_[2 * i + 1] = static_cast<uint8_t>(word >> 8);
        }
    }
    /// One generation. Returns the frame's size in bytes.
    size_t EncodeAndDecode(const PrxEncodeSettings& settings) {
        const CodedFrame frame = Encode(encoder_.get(), settings, buffer_);
        EXPECT_EQ(frame.result, 0);
        const auto size = static_cast<int32_t>(frame.bytes.size());
        EXPECT_EQ(PrxDecodeFrame(decoder_.get(), frame.bytes.data(), size, &buffer_, 0, 0), size);
        return frame.bytes.size();
    }
    Planes Codes() const {
        Planes planes;
        for (int y = 0; y < buffer_.height; ++y) {
            const uint8_t* const row = bytes_.data() + size_t{rowBytes_} * static_cast<size_t>(y);
            for (int i = 0; i < 2 * buffer_.width; ++i) {
                const double code = (row[2 * i] | row[2 * i + 1] << 8) / 64.0;
                planes[i % 2 != 0 ? 0 : 1 + static_cast<size_t>(i / 2 % 2)].push_back(code);
            }
        }
        return planes;
    }

private:
    EncoderPtr encoder_ = MakeEncoder(2);
    DecoderPtr decoder_{PrxCreateDecoder(2, nullptr)};
    uint32_t rowBytes_;
    std::vector<uint8_t> bytes_;
    PrxPixelBuffer buffer_;
};

double Psnr(const std::vector<double>& a, const std::vector<double>& b) {
    Difference difference;
    for (size_t i = 0; i < a.size(); ++i)
        difference.Add(a[i], b[i]);
    return difference.Psnr();
}

std::array<double, 3> PsnrOf(const Planes& a, const Planes& b) {
    return {Psnr(a[0], b[0]), Psnr(a[1], b[1]), Psnr(a[2], b[2])};
}

std::string Line(const std::array<double, 3>& psnr) {
    char text[80];
    std::snprintf(text, sizeof(text), "Y %.2f  Cb %.2f  Cr %.2f dB", psnr[0], psnr[1], psnr[2]);
    return text;
}

TEST(EncodedFidelity, OfHqOnCameraMaterialIsAtLeast48Decibels) {
    for (const int32_t mode : {0, 1, 2}) {
        Generations generations(width, height);
        generations.Show(MakeCameraPicture(width, height, mode));
        const Planes source = generations.Codes();
        const size_t size = generations.EncodeAndDecode({prxCodecApch, mode, 0});
        const std::array<double, 3> psnr = PsnrOf(generations.Codes(), source);
        std::cout << "HQ, interlace mode " << mode << ": " << Line(psnr) << " in " << size << " bytes\n";
        EXPECT_GE(std::ranges::min(psnr), 48);
    }
}

TEST(EncodedFidelity, FlatPicturesComeBackExact) {
    Generations generations(144, 80);
    for (const uint32_t codecType : {prxCodecApch, prxCodecApcn, prxCodecApcs, prxCodecApco}) {
        for (int code = 4; code < 1020; code += 3) {
            const std::array<int, 3> codes = {code, 1023 - code, (code * 7) % 1016 + 4};
            generations.ShowFlat(codes);
            generations.EncodeAndDecode({codecType, 0, 0});
            const Planes decoded = generations.Codes();
            for (size_t i = 0; i < 3; ++i)
                for (const double value : decoded[i])
                    ASSERT_EQ(std::lround(value), codes[i])
                        << "component " << i << " of " << std::hex << codecType;
        }
    }
}

/// PSNR of luma, Cb and Cr after each of ten generations at HQ, which are printed too.
std::vector<std::array<double, 3>> TenGenerations(float grain) {
    Generations generations(width, height);
    generations.Show(MakeCameraPicture(width, height, 0, grain));
    const Planes source = generations.Codes();
    std::vector<std::array<double, 3>> curve;
    for (int generation = 1; generation <= 10; ++generation) {
        const size_t size = generations.EncodeAndDecode(hq);
        curve.push_back(PsnrOf(generations.Codes(), source));
        std::cout << "grain " << grain << ", generation " << generation << ": " << Line(curve.back())
                  << " in " << size << " bytes\n";
    }
    return curve;
}

TEST(EncodedFidelity, TenGenerationsOfHqLoseLessThanOneDecibelAfterTheFirst) {
    const auto curve = TenGenerations(2);
    for (size_t i = 0; i < 3; ++i)
        EXPECT_GT(curve.back()[i], curve.front()[i] - 1) << "component " << i;
}

// Where rate control has to choose a coarse scale, its prediction is not made for a picture whose levels have
// all been rounded before, and the second generation may get a coarser one.
TEST(EncodedFidelity, HeavyGrainLosesNothingAfterTheThirdGenerationOfHq) {
    const auto curve = TenGenerations(5);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_GT(curve.back()[i], curve[2][i] - 0.1) << "component " << i;
        EXPECT_GT(curve.back()[i], 48) << "component " << i;
    }
}

} // namespace
