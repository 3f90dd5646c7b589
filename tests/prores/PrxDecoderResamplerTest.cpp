#include "prores/PrxDecoder.h"

#include "prores/DecoderModel.h"
#include "prores/PrxFormats.h"
#include "prores/StreamFrame.h"
#include "prores/TestFrames.h"
#include "prores/TestTarget.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int32_t rowBytes = 1408; // 176 pixels of 8 bytes
using Rows = std::vector<std::vector<uint8_t>>;

/// What the resampler was given, and what the rows held at that time.
struct Call {
    PrxResampleRows given;
    Rows content;
};
std::mutex callsLock;
std::vector<Call> calls;

void KeepRows(const PrxResampleRows& rows) {
    Rows content;
    for (int32_t y = 0; y < rows.rows; ++y) {
        const uint8_t* row = rows.source + y * rows.sourceRowBytes;
        content.emplace_back(row, row + rowBytes);
    }
    const std::lock_guard guard(callsLock);
    calls.push_back({rows, std::move(content)});
}

struct ResamplerCase {
    uint32_t pixelFormat;
    int32_t interlaceMode;
    int32_t mode;
    int32_t lineStep; ///< between rows of one picture in the target
};

class WidthResampler : public testing::TestWithParam<ResamplerCase> {
protected:
    TestTarget MakeTarget() const {
        return TestTarget(GetParam().pixelFormat, destinationWidth, spec.height >> reduction.vShift,
                          rowBytes);
    }
    int32_t DecodeTo(const TestTarget& buffer, const stream::Bytes& frame, PrxWidthResampler resampler) {
        PrxOutputTarget target = buffer.Get();
        target.widthResampler = resampler;
        return decoder.decodeFrame(PieceOf(frame), target, GetParam().mode, false, nullptr);
    }

    const stream::FrameSpec spec = FrameOf(2, GetParam().interlaceMode); // 130 by 99
    const ModelReduction reduction = ReductionOf(GetParam().mode);
    const int32_t sourceWidth = spec.width >> reduction.hShift;
    const int32_t destinationWidth = sourceWidth * 4 / 3;
    PrxDecoder decoder{2, nullptr};
};

TEST_P(WidthResampler, GetsTheFinishedRowsOfEachMacroblockRow) {
    const stream::Bytes frame = stream::BuildFrame(spec);
    const TestTarget plain = MakeTarget();
    ASSERT_GT(DecodeTo(plain, frame, nullptr), 0);
    const TestTarget buffer = MakeTarget();
    calls.clear();
    ASSERT_GT(DecodeTo(buffer, frame, KeepRows), 0);
    std::vector<bool> seen(static_cast<size_t>(buffer.Get().height));
    for (const auto& [given, content] : calls) {
        EXPECT_EQ(given.sourceWidth, sourceWidth);
        EXPECT_EQ(given.destinationWidth, destinationWidth);
        EXPECT_EQ(given.source, given.destination);
        EXPECT_EQ(given.sourceRowBytes, GetParam().lineStep * rowBytes);
        EXPECT_EQ(given.destinationRowBytes, GetParam().lineStep * rowBytes);
        const ptrdiff_t offset = given.source - buffer.Get().baseAddress;
        EXPECT_EQ(offset % rowBytes, 0);
        auto line = static_cast<int32_t>(offset / rowBytes);
        for (const std::vector<uint8_t>& row : content) {
            EXPECT_EQ(row, plain.Row(line)) << line;
            seen[static_cast<size_t>(line)] = true;
            line += GetParam().lineStep;
        }
    }
    EXPECT_EQ(seen, std::vector<bool>(seen.size(), true));
    EXPECT_EQ(buffer.Bytes(), plain.Bytes());
}

TEST_P(WidthResampler, GetsRowsOfWhichNothingWasDecodedToo) {
    const stream::Bytes good = stream::BuildFrame(spec);
    stream::FrameSpec damaged = spec;
    damaged.editSlice = [](const stream::SlicePlace& place, stream::Bytes& slice) {
        if (place.mbY == 0) slice[0] = 0;    // refused
        if (place.mbY == 1) slice.resize(0); // empty
    };
    calls.clear();
    ASSERT_GT(DecodeTo(MakeTarget(), good, KeepRows), 0);
    const size_t goodCalls = calls.size();
    calls.clear();
    ASSERT_GT(DecodeTo(MakeTarget(), stream::BuildFrame(damaged), KeepRows), 0);
    EXPECT_EQ(calls.size(), goodCalls);
}

std::string NameOf(const testing::TestParamInfo<ResamplerCase>& info) {
    const char* const scans[] = {"Progressive", "TopFirst", "BottomFirst"};
    std::string name;
    for (int shift = 24; shift >= 0; shift -= 8)
        name += static_cast<char>(info.param.pixelFormat >> shift);
    return name + scans[info.param.interlaceMode] + "Mode" + std::to_string(info.param.mode);
}

constexpr ResamplerCase routes[] = {
    {prxFormat2vuy, 0, 1, 1}, {prxFormatB64a, 0, 1, 1}, {prxFormatV210, 0, 1, 1}, {prxFormatY416, 0, 1, 1},
    {prxFormat2vuy, 0, 6, 1}, {prxFormatB64a, 0, 6, 1}, {prxFormatB64a, 1, 1, 2}, {prxFormatV210, 2, 1, 2},
    {prxFormatY416, 2, 1, 2}, {prxFormat2vuy, 2, 2, 1},
};
INSTANTIATE_TEST_SUITE_P(Routes, WidthResampler, testing::ValuesIn(routes), NameOf);

} // namespace
