// Frames for which rate control goes all its way: their bytes depend on the picture alone.

#include "prores/encoder/RateCases.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class EncodeRate : public testing::TestWithParam<RateCase> {
protected:
    /// The case's frame.
    std::vector<uint8_t> EncodeCase(PrxEncoderRef encoder) const {
        InputPicture picture = picture_;
        picture.buffer.baseAddress = picture.bytes.data();
        const CodedFrame frame = Encode(encoder, GetParam().settings, picture.buffer);
        EXPECT_EQ(frame.result, 0);
        return frame.bytes;
    }
    std::vector<uint8_t> EncodeCase(uint32_t workerCount) const {
        return EncodeCase(MakeEncoder(workerCount).get());
    }

    void SetUp() override { picture_ = MakeRateCase(GetParam()); }

private:
    InputPicture picture_;
};

TEST_P(EncodeRate, SearchesForAScaleAndThenGivesSlicesBudgetsInEveryPicture) {
    const std::vector<uint8_t> frame = EncodeCase(1);
    EXPECT_EQ(ReadPictures(frame).size(), GetParam().settings.interlaceMode == 0 ? 1U : 2U);
    EXPECT_TRUE(HasBudgets(GetParam(), frame));
}

TEST(EncodeRateCases, CutPlanesOfSlicesThatAreTooLargeAtTheCoarsestScale) {
    const RateCase& test = rateCases[4];
    const auto frame = Encode(MakeEncoder(2).get(), test.settings, MakeRateCase(test).buffer).bytes;
    const std::vector<CodedSlice> slices = ReadPictures(frame).at(0).slices;
    EXPECT_TRUE(std::ranges::all_of(slices, [](const CodedSlice& slice) { return slice.quantIndex == 224; }));
    EXPECT_GT(CountCutPlanes(test, frame), slices.size());
}

TEST_P(EncodeRate, GivesTheSameBytesForEveryWorkerCountAndRun) {
    const std::vector<uint8_t> expected = EncodeCase(1);
    for (const uint32_t workerCount : {1U, 2U, 5U, 64U}) {
        const EncoderPtr encoder = MakeEncoder(workerCount);
        for (int run = 0; run < 2; ++run)
            ASSERT_EQ(EncodeCase(encoder.get()), expected) << workerCount << " workers, run " << run;
    }
}

TEST_P(EncodeRate, GivesTheSameBytesOnEveryInstructionSet) {
    ASSERT_FALSE(VectorTargets().empty());
    const std::vector<uint8_t> expected = EncodeCase(2);
    for (const int64_t target : VectorTargets()) {
        const ForcedTarget forced(target);
        ASSERT_EQ(EncodeCase(2), expected) << hwy::TargetName(target);
    }
}

INSTANTIATE_TEST_SUITE_P(OfTooMuch, EncodeRate, testing::ValuesIn(rateCases),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
