#include "prores/encoder/EncodeFixture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace {

constexpr PrxEncodeSettings hq{prxCodecApch, 0, 0};

uint32_t Option(const char* name) {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | static_cast<uint8_t>(name[i]);
    return value;
}

int32_t SetOption(PrxEncoderRef encoder, const char* name, int32_t value) {
    return PrxSetEncoderOption(encoder, Option(name), 4, &value);
}

TEST(EncoderOptions, KeepAColourMatrixOf1And6And9) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture low = MakePicture(prxFormatV216, 16, 719, Content::Flat);
    const InputPicture high = MakePicture(prxFormatV216, 16, 720, Content::Flat);
    for (const int32_t matrix : {1, 6, 9}) {
        ASSERT_EQ(SetOption(encoder.get(), "fmat", matrix), 0);
        EXPECT_EQ(ReadHeader(Encode(encoder.get(), hq, low.buffer).bytes).matrixCoefficients, matrix);
        EXPECT_EQ(ReadHeader(Encode(encoder.get(), hq, high.buffer).bytes).matrixCoefficients, matrix);
    }
}

TEST(EncoderOptions, ReplaceAnotherColourMatrixBy6Below720RowsAndBy1FromThereOn) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture low = MakePicture(prxFormatV216, 16, 719, Content::Flat);
    const InputPicture high = MakePicture(prxFormatV216, 16, 720, Content::Flat);
    for (const int32_t matrix : {0, 2, 5, 1000}) {
        ASSERT_EQ(SetOption(encoder.get(), "fmat", matrix), 0);
        EXPECT_EQ(ReadHeader(Encode(encoder.get(), hq, low.buffer).bytes).matrixCoefficients, 6);
        EXPECT_EQ(ReadHeader(Encode(encoder.get(), hq, high.buffer).bytes).matrixCoefficients, 1);
    }
}

TEST(EncoderOptions, SetTheirFieldsInAllFramesToCome) {
    const EncoderPtr encoder = MakeEncoder();
    const InputPicture picture = MakePicture(prxFormatV216, 16, 16, Content::Flat);
    EXPECT_EQ(SetOption(encoder.get(), "fasp", 3), 0);
    EXPECT_EQ(SetOption(encoder.get(), "ffps", 8), 0);
    EXPECT_EQ(SetOption(encoder.get(), "fcol", 9), 0);
    EXPECT_EQ(SetOption(encoder.get(), "fxfr", 16), 0);
    for (int i = 0; i < 2; ++i) {
        const CodedFrame frame = Encode(encoder.get(), hq, picture.buffer);
        EXPECT_EQ(frame.bytes[21], 0x38);
        EXPECT_EQ(ReadHeader(frame.bytes).colorPrimaries, 9);
        EXPECT_EQ(ReadHeader(frame.bytes).transferCharacteristic, 16);
    }
}

TEST(EncoderOptions, RefuseValuesOutOfRangeAndChangeNothing) {
    const EncoderPtr encoder = MakeEncoder();
    ASSERT_EQ(SetOption(encoder.get(), "fasp", 2), 0);
    ASSERT_EQ(SetOption(encoder.get(), "ffps", 8), 0);
    EXPECT_EQ(SetOption(encoder.get(), "fasp", 4), -50);
    EXPECT_EQ(SetOption(encoder.get(), "fasp", -1), -50);
    EXPECT_EQ(SetOption(encoder.get(), "ffps", 9), -50);
    EXPECT_EQ(SetOption(encoder.get(), "ffps", -1), -50);
    const InputPicture picture = MakePicture(prxFormatV216, 16, 16, Content::Flat);
    EXPECT_EQ(Encode(encoder.get(), hq, picture.buffer).bytes[21], 0x28);
}

TEST(EncoderOptions, RefuseNegativeColours) {
    const EncoderPtr encoder = MakeEncoder();
    for (const char* name : {"fcol", "fmat", "fxfr"}) {
        EXPECT_EQ(SetOption(encoder.get(), name, -1), -50);
        EXPECT_EQ(SetOption(encoder.get(), name, 0), 0);
        EXPECT_EQ(SetOption(encoder.get(), name, std::numeric_limits<int32_t>::max()), 0);
    }
}

TEST(EncoderOptions, TestNullThenSizeThenNameThenRange) {
    const EncoderPtr encoder = MakeEncoder();
    const int32_t bad = -1;
    EXPECT_EQ(PrxSetEncoderOption(nullptr, Option("fasp"), 4, &bad), -50);
    EXPECT_EQ(PrxSetEncoderOption(encoder.get(), Option("xxxx"), 3, nullptr), -50);
    EXPECT_EQ(PrxSetEncoderOption(encoder.get(), Option("xxxx"), 3, &bad), -2184);
    EXPECT_EQ(PrxSetEncoderOption(encoder.get(), Option("xxxx"), 4, &bad), -2195);
    EXPECT_EQ(PrxSetEncoderOption(encoder.get(), Option("fasp"), 8, &bad), -2184);
    EXPECT_EQ(PrxSetEncoderOption(encoder.get(), Option("fasp"), 4, &bad), -50);
}

TEST(EncoderOptions, TakeAValueAtAnyAddress) {
    const EncoderPtr encoder = MakeEncoder();
    uint8_t bytes[5] = {};
    const int32_t value = 3;
    std::memcpy(bytes + 1, &value, 4);
    EXPECT_EQ(PrxSetEncoderOption(encoder.get(), Option("fasp"), 4, bytes + 1), 0);
}

} // namespace
