#include "prores/PrxDecoder.h"

#include "prores/PrxFormats.h"
#include "prores/StreamFrame.h"
#include "prores/TestFrames.h"
#include "prores/TestTarget.h"
#include "support/GuardedBytes.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

/// Decodes `frame` from pieces of the given sizes, each in memory of its own.
std::vector<uint8_t> DecodePieces(PrxDecoder& decoder, const stream::Bytes& frame,
                                  const std::vector<size_t>& sizes, const stream::FrameSpec& spec) {
    std::vector<std::unique_ptr<GuardedBytes>> memory;
    std::vector<PrxBufferPiece> pieces(sizes.size());
    size_t offset = 0;
    for (size_t i = 0; i < sizes.size(); ++i) {
        memory.push_back(std::make_unique<GuardedBytes>(sizes[i], GuardedBytes::Guard::Behind));
        std::copy_n(frame.begin() + static_cast<ptrdiff_t>(offset), sizes[i], memory[i]->data());
        pieces[i] = {memory[i]->data(), sizes[i], i + 1 < sizes.size() ? &pieces[i + 1] : nullptr};
        offset += sizes[i];
    }
    const TestTarget target(prxFormatB64a, spec);
    EXPECT_EQ(decoder.decodeFrame(pieces[0], target.Get(), 1, false, nullptr),
              static_cast<int32_t>(frame.size()));
    return target.Bytes();
}

stream::FrameSpec SmallFrame() {
    stream::FrameSpec spec = FrameOf(2, 0, 2);
    spec.width = 48;
    spec.height = 32;
    spec.log2SliceMbWidth = 1;
    return spec;
}

TEST(InputInPieces, CutAnywhereGivesTheSamePicture) {
    const stream::FrameSpec spec = SmallFrame();
    const stream::Bytes frame = stream::BuildFrame(spec);
    PrxDecoder decoder(1, nullptr);
    const std::vector<uint8_t> expected = DecodePieces(decoder, frame, {frame.size()}, spec);
    for (size_t cut = 0; cut <= frame.size(); ++cut) {
        ASSERT_EQ(DecodePieces(decoder, frame, {cut, frame.size() - cut}, spec), expected) << cut;
    }
}

TEST(InputInPieces, OfOneByteEachWithEmptyOnesBetweenGivesTheSamePicture) {
    const stream::FrameSpec spec = SmallFrame();
    const stream::Bytes frame = stream::BuildFrame(spec);
    PrxDecoder decoder(2, nullptr);
    const std::vector<uint8_t> expected = DecodePieces(decoder, frame, {frame.size()}, spec);
    const TestTarget target(prxFormatB64a, spec);
    std::vector<PrxBufferPiece> pieces(2 * frame.size());
    for (size_t i = 0; i < frame.size(); ++i) {
        pieces[2 * i] = {nullptr, 0, &pieces[2 * i + 1]};
        pieces[2 * i + 1] = {&frame[i], 1, i + 1 < frame.size() ? &pieces[2 * i + 2] : nullptr};
    }
    ASSERT_GT(decoder.decodeFrame(pieces[0], target.Get(), 1, false, nullptr), 0);
    EXPECT_EQ(target.Bytes(), expected);
}

} // namespace
