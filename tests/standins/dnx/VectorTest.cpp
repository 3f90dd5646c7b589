// Every instruction set of this machine gives the same pictures, also at widths that no vector divides.

#include "standins/dnx/Peer.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <random>

namespace {

constexpr uint32_t height = 120;

/// Decodes with one instruction set into a picture that begins `offset` bytes behind an even address. At odd
/// ones pixels are written without vectors.
Bytes DecodedWith(int64_t target, const Bytes& frame, uint32_t width, size_t offset = 0) {
    const ForcedTarget forced(target);
    const Outcome<DecoderPtr> decoder = MakeDecoder(Information(1235, width, height), Uncompressed(a48r));
    EXPECT_EQ(decoder.error, noError);
    const size_t size = size_t{8} * width * height;
    Bytes picture(size + offset);
    const int32_t error = DNX().DecodeFrame(decoder.value.get(), frame.data(), picture.data() + offset,
                                            static_cast<uint32_t>(frame.size()), static_cast<uint32_t>(size));
    EXPECT_EQ(error, noError);
    picture.erase(picture.begin(), picture.begin() + static_cast<ptrdiff_t>(offset));
    return picture;
}

/// A frame of 4:2:2 whose samples are noise over all codes, so that colours pass both limits.
Bytes NoisyFrame(uint32_t width) {
    std::mt19937 random(width);
    const PeerPlanes planes = MakePlanes(AV_PIX_FMT_YUV422P10LE, width, height, [&](int, size_t, size_t) {
        return static_cast<uint16_t>(4 + random() % 1016);
    });
    constexpr int profileOfHqx = 4;
    return PeerEncode(planes, profileOfHqx);
}

TEST(Vectors, OfEveryInstructionSetGiveTheSameRgbAsNone) {
    const std::vector<int64_t> targets = VectorTargets();
    ASSERT_FALSE(targets.empty());
    for (const uint32_t width : {256U, 257U, 261U, 266U, 271U}) {
        const Bytes frame = NoisyFrame(width);
        const Bytes scalar = DecodedWith(targets.front(), frame, width, 1);
        for (const int64_t target : targets)
            EXPECT_EQ(DecodedWith(target, frame, width), scalar) << width << " " << hwy::TargetName(target);
    }
}

} // namespace
