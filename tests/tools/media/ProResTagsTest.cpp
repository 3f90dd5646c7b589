// Colour tags inside ProRes frames.

#include "media/ProResTags.h"

#include "framework/CxAVTypes.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr size_t primariesPlace = 22;
constexpr size_t transferPlace = 23;
constexpr uint8_t fill = 0x5a;

/// The start of a frame, with a header of this size.
std::vector<uint8_t> FrameStart(uint8_t headerSize = 148, size_t size = 28) {
    std::vector<uint8_t> frame(size, fill);
    const std::vector<uint8_t> start = {0,   0, 0,         static_cast<uint8_t>(size), 'i', 'c', 'p',
                                        'f', 0, headerSize};
    std::copy_n(start.begin(), std::min(size, start.size()), frame.begin());
    return frame;
}

std::vector<uint8_t> Tagged(int primaries, int transfer) {
    MovieTrackSettings settings;
    settings.colorPrimaries = primaries;
    settings.colorTransfer = transfer;
    std::vector<uint8_t> frame = FrameStart();
    TagProResFrame(settings, frame);
    return frame;
}

} // namespace

TEST(ProResTags, BelongToTheSixCodesAlone) {
    for (const uint32_t code :
         {FourCC("apch"), FourCC("apcn"), FourCC("apcs"), FourCC("apco"), FourCC("ap4h"), FourCC("ap4x")})
        EXPECT_TRUE(IsProRes(code));
    for (const uint32_t code : {FourCC("v210"), FourCC("apch") + 1, 0U, 24U})
        EXPECT_FALSE(IsProRes(code));
}

TEST(ProResTags, TheMatrixIsThatOfBt601Below720Rows) {
    EXPECT_EQ(ProResMatrix(1), 6);
    EXPECT_EQ(ProResMatrix(719), 6);
    EXPECT_EQ(ProResMatrix(720), 1);
    EXPECT_EQ(ProResMatrix(2160), 1);
}

TEST(ProResTags, TwoBytesOfTheFrameChangeAndNoOther) {
    std::vector<uint8_t> expected = FrameStart();
    expected[primariesPlace] = 9;
    expected[transferPlace] = 16;
    EXPECT_EQ(Tagged(9, 16), expected);
}

TEST(ProResTags, PrimariesWithoutACodeAreNotTold) {
    for (const int known : {1, 5, 6, 9, 11, 12})
        EXPECT_EQ(Tagged(known, 1)[primariesPlace], known);
    for (const int unknown : {0, 2, 3, 4, 7, 8, 10, 22, 256 + 9, -1})
        EXPECT_EQ(Tagged(unknown, 1)[primariesPlace], 2) << unknown;
}

TEST(ProResTags, TransferFunctionsWithoutACodeAreNotTold) {
    for (const int known : {1, 16, 18})
        EXPECT_EQ(Tagged(1, known)[transferPlace], known);
    for (const int unknown : {0, 2, 4, 8, 13, 17, 256 + 16, -1})
        EXPECT_EQ(Tagged(1, unknown)[transferPlace], 2) << unknown;
}

TEST(ProResTags, OtherNamesOfTheTransferFunctionOfBt709GetItsCode) {
    for (const int same : {6, 14, 15})
        EXPECT_EQ(Tagged(1, same)[transferPlace], 1) << same;
}

TEST(ProResTags, AFrameWithoutAWholeHeaderStaysAsItIs) {
    std::vector<std::vector<uint8_t>> frames = {{}, FrameStart(148, 9), FrameStart(148, 27), FrameStart(19)};
    frames.push_back(FrameStart());
    frames.back()[4] = 'j';
    for (const std::vector<uint8_t>& frame : frames) {
        std::vector<uint8_t> tagged = frame;
        TagProResFrame({}, tagged);
        EXPECT_EQ(tagged, frame);
    }
}
