#include "prores/DecoderModel.h"
#include "prores/PrxDecoder.h"
#include "prores/StreamFrame.h"
#include "prores/TestFrames.h"
#include "prores/TestTarget.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

// Whole pictures against a plain composition of the stages.

namespace {

/// Whether the decoded picture equals the model's in every byte of the target, untouched ones included.
testing::AssertionResult EqualsModel(PrxDecoder& decoder, const stream::FrameSpec& spec, uint32_t format,
                                     int32_t mode, bool ignoreAlpha = false) {
    const ModelReduction reduction = ReductionOf(mode);
    const TestTarget decoded(format, spec, reduction.hShift, reduction.vShift);
    const TestTarget expected(format, spec, reduction.hShift, reduction.vShift);
    const stream::Bytes frame = stream::BuildFrame(spec);
    const int32_t result = Decode(decoder, frame, decoded, mode, ignoreAlpha);
    if (result != static_cast<int32_t>(frame.size())) {
        return testing::AssertionFailure() << "returned " << result;
    }
    ModelDecode(spec, expected.Get(), mode, ignoreAlpha);
    const std::vector<uint8_t> have = decoded.Bytes();
    const std::vector<uint8_t> want = expected.Bytes();
    for (size_t i = 0; i < have.size(); ++i) {
        if (have[i] != want[i]) {
            return testing::AssertionFailure()
                   << std::hex << "format " << format << std::dec << " mode " << mode << ": row "
                   << i / static_cast<size_t>(decoded.Get().rowBytes) << " byte "
                   << i % static_cast<size_t>(decoded.Get().rowBytes) << " is " << int{have[i]} << ", not "
                   << int{want[i]};
        }
    }
    return testing::AssertionSuccess();
}

class DecoderPicture : public testing::TestWithParam<std::tuple<int32_t, int32_t, int32_t>> {
protected:
    const stream::FrameSpec& Frame() const { return frame_; }
    PrxDecoder decoder{2, nullptr};

private:
    stream::FrameSpec frame_ =
        FrameOf(std::get<0>(GetParam()), std::get<1>(GetParam()), std::get<2>(GetParam()));
};

TEST_P(DecoderPicture, AtFullSizeEqualsTheModelInEveryFormat) {
    for (const uint32_t format : TargetFormats(Frame().chromaFormat)) {
        EXPECT_TRUE(EqualsModel(decoder, Frame(), format, 1));
    }
}

TEST_P(DecoderPicture, WithoutItsAlphaEqualsTheModelInEveryFormat) {
    for (const uint32_t format : TargetFormats(Frame().chromaFormat)) {
        EXPECT_TRUE(EqualsModel(decoder, Frame(), format, 1, true));
    }
}

TEST_P(DecoderPicture, ReducedEqualsTheModelInFormatsWithReducedWriters) {
    const bool progressive = Frame().interlaceMode == 0;
    for (const uint32_t format : {prxFormat2vuy, prxFormatR408, prxFormatY408}) {
        for (int32_t mode = 2; mode <= 11; ++mode) {
            if (progressive && mode >= 3 && mode <= 5) continue;
            EXPECT_TRUE(EqualsModel(decoder, Frame(), format, mode));
        }
    }
}

TEST_P(DecoderPicture, OfOneFieldAtFullDetailEqualsTheModelInEveryFormat) {
    if (Frame().interlaceMode == 0) {
        // A progressive frame has no field to decode.
        const TestTarget target(prxFormatV216, Frame());
        for (int32_t mode = 3; mode <= 5; ++mode)
            EXPECT_EQ(Decode(decoder, stream::BuildFrame(Frame()), target, mode), -3);
        EXPECT_TRUE(target.Untouched());
        return;
    }
    for (const uint32_t format : TargetFormats(Frame().chromaFormat)) {
        for (int32_t mode = 2; mode <= 5; ++mode) {
            EXPECT_TRUE(EqualsModel(decoder, Frame(), format, mode));
        }
    }
}

/// Whether nothing was written behind the first `used` bytes of any row.
bool RowEndsUntouched(const TestTarget& target, int32_t used) {
    for (int32_t y = 0; y < target.Get().height; ++y) {
        const ptrdiff_t row = ptrdiff_t{y} * target.Get().rowBytes;
        if (!target.Untouched(static_cast<size_t>(row + used),
                              static_cast<size_t>(row + target.Get().rowBytes)))
            return false;
    }
    return true;
}

TEST_P(DecoderPicture, ReducedInOtherFormatsStaysInItsRowsAndIsTheSameEachTime) {
    constexpr int32_t gap = 300; // more than a full-size macroblock of any format

    const stream::Bytes frame = stream::BuildFrame(Frame());
    const bool progressive = Frame().interlaceMode == 0;
    PrxDecoder other(5, nullptr);
    for (const uint32_t format : TargetFormats(Frame().chromaFormat)) {
        for (int32_t mode = 2; mode <= 11; ++mode) {
            if (progressive && mode >= 3 && mode <= 5) continue;
            const ModelReduction reduction = ReductionOf(mode);
            const int32_t used = LeastRowBytes(format, Frame().width, reduction.hShift);
            const auto makeTarget = [&] {
                return TestTarget(format, Frame().width >> reduction.hShift,
                                  Frame().height >> reduction.vShift, used + gap);
            };
            const TestTarget once = makeTarget();
            const TestTarget again = makeTarget();
            const TestTarget full(format, Frame());
            ASSERT_GT(Decode(other, frame, full), 0); // leaves something in the workers' buffers
            EXPECT_EQ(Decode(decoder, frame, once, mode), static_cast<int32_t>(frame.size()));
            EXPECT_EQ(Decode(other, frame, again, mode), static_cast<int32_t>(frame.size()));
            EXPECT_EQ(once.Bytes(), again.Bytes()) << std::hex << format << " mode " << mode;
            EXPECT_TRUE(RowEndsUntouched(once, used)) << std::hex << format << " mode " << mode;
        }
    }
}

TEST_P(DecoderPicture, IsTheSameForAnyNumberOfWorkers) {
    const stream::Bytes frame = stream::BuildFrame(Frame());
    PrxDecoder one(1, nullptr);
    for (const int32_t workers : {2, 5, 64}) {
        PrxDecoder several(workers, nullptr);
        for (const uint32_t format : TargetFormats(Frame().chromaFormat)) {
            const TestTarget expected(format, Frame());
            const TestTarget target(format, Frame());
            ASSERT_EQ(Decode(one, frame, expected), static_cast<int32_t>(frame.size()));
            ASSERT_EQ(Decode(several, frame, target), static_cast<int32_t>(frame.size()));
            EXPECT_EQ(target.Bytes(), expected.Bytes()) << std::hex << format << " " << workers;
        }
    }
}

TEST_P(DecoderPicture, IsTheSameForEachInstructionSet) {
    const stream::Bytes frame = stream::BuildFrame(Frame());
    ASSERT_FALSE(VectorTargets().empty());
    for (const uint32_t format : TargetFormats(Frame().chromaFormat)) {
        for (const int32_t mode : {1, 2, 6, 7, 8, 9, 10, 11}) {
            const ModelReduction reduction = ReductionOf(mode);
            // What the machine's own choice gives equals the model's picture in the tests above.
            const TestTarget expected(format, Frame(), reduction.hShift, reduction.vShift);
            ASSERT_GT(Decode(decoder, frame, expected, mode), 0);
            for (const int64_t instructions : VectorTargets()) {
                const ForcedTarget forced(instructions);
                const TestTarget target(format, Frame(), reduction.hShift, reduction.vShift);
                ASSERT_GT(Decode(decoder, frame, target, mode), 0);
                EXPECT_EQ(target.Bytes(), expected.Bytes())
                    << std::hex << format << " mode " << mode << " " << hwy::TargetName(instructions);
            }
        }
    }
}

std::string NameOf(const testing::TestParamInfo<DecoderPicture::ParamType>& info) {
    const auto [chromaFormat, interlaceMode, alphaType] = info.param;
    const char* const scans[] = {"Progressive", "TopFirst", "BottomFirst"};
    const char* const alphas[] = {"NoAlpha", "Alpha8", "Alpha16", "UnknownAlpha"};
    return std::string(chromaFormat == 3 ? "444" : "422") + scans[interlaceMode] + alphas[alphaType];
}

INSTANTIATE_TEST_SUITE_P(Streams, DecoderPicture,
                         testing::Combine(testing::Values(2, 3), testing::Values(0, 1, 2),
                                          testing::Values(0, 1, 2, 3)),
                         NameOf);

TEST(DecoderPictureForms, ShortFormEqualsTheModel) {
    for (const int32_t interlaceMode : {0, 1, 2}) {
        stream::FrameSpec spec = FrameOf(2, interlaceMode, 0);
        spec.shortForm = true;
        PrxDecoder decoder(1, nullptr);
        EXPECT_TRUE(EqualsModel(decoder, spec, prxFormatV216, 1));
    }
}

TEST(DecoderPictureForms, QuantisationMatricesOfTheFrameCount) {
    stream::FrameSpec spec = FrameOf(3, 0, 0);
    PrxDecoder decoder(1, nullptr);
    spec.chromaMatrix.emplace();
    for (size_t i = 0; i < 64; ++i)
        (*spec.chromaMatrix)[i] = static_cast<uint8_t>(2 + i);
    EXPECT_TRUE(EqualsModel(decoder, spec, prxFormatY416, 1));
    spec.lumaMatrix.emplace();
    spec.lumaMatrix->fill(9);
    EXPECT_TRUE(EqualsModel(decoder, spec, prxFormatY416, 1));
    spec.chromaMatrix.reset(); // then it is luma's
    EXPECT_TRUE(EqualsModel(decoder, spec, prxFormatY416, 1));
}

TEST(DecoderPictureForms, QuantisationMatricesOfTheFrameBeforeDoNotCount) {
    stream::FrameSpec spec = FrameOf(2);
    spec.height = 16;
    spec.quantIndex = [](const stream::SlicePlace&) { return 3; };
    PrxDecoder decoder(1, nullptr);
    EXPECT_TRUE(EqualsModel(decoder, spec, prxFormatV216, 1));
    spec.lumaMatrix.emplace();
    spec.lumaMatrix->fill(9);
    EXPECT_TRUE(EqualsModel(decoder, spec, prxFormatV216, 1));
}

TEST(DecoderPictureForms, SlicesOfAnyWidthGiveTheSamePicture) {
    for (int32_t log2Width = 0; log2Width <= 3; ++log2Width) {
        stream::FrameSpec spec = FrameOf(2, 0, 2);
        spec.width = 16 * 15 + 3;
        spec.log2SliceMbWidth = log2Width;
        PrxDecoder decoder(2, nullptr);
        EXPECT_TRUE(EqualsModel(decoder, spec, prxFormatV216, 1));
        EXPECT_TRUE(EqualsModel(decoder, spec, prxFormatB64a, 1));
        EXPECT_TRUE(EqualsModel(decoder, spec, prxFormatY416, 1));
    }
}

TEST(DecoderPictureForms, SizesThatAreNoMultipleOfAMacroblockEqualTheModel) {
    PrxDecoder decoder(2, nullptr);
    for (const auto& [width, height] : {std::pair{1, 1}, {17, 17}, {16, 15}, {33, 2}, {127, 31}, {720, 18}}) {
        stream::FrameSpec spec = FrameOf(2, 0, 1);
        spec.width = width;
        spec.height = height;
        for (const uint32_t format : TargetFormats(2)) {
            EXPECT_TRUE(EqualsModel(decoder, spec, format, 1)) << width << "x" << height;
        }
    }
}

TEST(DecoderPictureForms, ColourMatrixComesFromTheHeaderOrTheHeight) {
    PrxDecoder decoder(1, nullptr);
    for (const int32_t height : {719, 720}) {
        for (const int32_t matrix : {0, 1, 2, 6, 9, 10}) {
            stream::FrameSpec spec = FrameOf(3, 0, 0);
            spec.width = 20;
            spec.height = height;
            spec.matrixCoefficients = matrix;
            EXPECT_TRUE(EqualsModel(decoder, spec, prxFormatBgra, 1)) << height << " " << matrix;
        }
    }
}

TEST(DecoderPictureForms, ExtremeCoefficientsEqualTheModel) {
    PrxDecoder decoder(2, nullptr);
    for (const int32_t chromaFormat : {2, 3}) {
        stream::FrameSpec spec = FrameOf(chromaFormat, 0, 0);
        spec.coefficients = Kept(stream::ExtremePicture(3));
        spec.quantIndex = [](const stream::SlicePlace& place) { return 1 + place.index * 37 % 224; };
        for (const uint32_t format : TargetFormats(chromaFormat)) {
            EXPECT_TRUE(EqualsModel(decoder, spec, format, 1));
        }
        for (int32_t mode = 6; mode <= 11; ++mode) {
            EXPECT_TRUE(EqualsModel(decoder, spec, prxFormatR408, mode));
        }
    }
}

} // namespace
