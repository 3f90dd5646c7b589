// Damaged, cut and invented frames: an error, nothing written, and a decoder that goes on.

#include "standins/dnx/DNXLibrary.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr uint32_t width = 271;
constexpr uint32_t height = 131;
constexpr uint32_t pictureSize = 4 * width * height;

Bytes NoisyFrame() {
    std::mt19937 random(7);
    Bytes picture(pictureSize);
    std::ranges::generate(picture, [&] { return static_cast<uint8_t>(64 + random() % 64); });
    return EncodePicture(1271, width, height, v216, picture).value;
}

class DamagedFrames : public testing::Test {
protected:
    /// Decodes a frame that ends at a page that may not be read into a picture that ends at one too.
    int32_t Decode(const Bytes& frame) {
        const GuardedBytes data(frame.size(), GuardedBytes::Guard::Behind);
        std::ranges::copy(frame, data.begin());
        std::ranges::fill(picture_, uint8_t{0x5A});
        return DNX().DecodeFrame(decoder_.get(), data.data(), picture_.data(),
                                 static_cast<uint32_t>(frame.size()), pictureSize);
    }
    bool IsUntouched() const {
        return std::ranges::all_of(picture_, [](uint8_t byte) { return byte == 0x5A; });
    }
    /// Decodes a frame, which must leave the picture untouched if it fails.
    int32_t DecodeWhole(const Bytes& frame) {
        const int32_t error = Decode(frame);
        EXPECT_TRUE(error == noError || IsUntouched());
        return error;
    }

    const Bytes frame_ = NoisyFrame();
    const DecoderPtr decoder_ = MakeDecoder(Information(1271, width, height), Uncompressed(v216)).value;
    GuardedBytes picture_{pictureSize, GuardedBytes::Guard::Behind};
};

TEST_F(DamagedFrames, AreTheCutOnes) {
    for (const size_t size : {0, 1, 5, 0x2C, 639})
        EXPECT_EQ(DecodeWhole(Bytes(frame_.begin(), frame_.begin() + static_cast<ptrdiff_t>(size))),
                  notAFrame)
            << size;
    for (const size_t size : {640, 641, 1000, 4096})
        EXPECT_EQ(DecodeWhole(Bytes(frame_.begin(), frame_.begin() + static_cast<ptrdiff_t>(size))),
                  damagedFrame)
            << size;
    EXPECT_EQ(DecodeWhole(frame_), noError);
}

TEST_F(DamagedFrames, HaveNoHeaderPrefix) {
    for (const size_t at : {0, 1}) {
        Bytes frame = frame_;
        frame[at] = 1;
        EXPECT_EQ(DecodeWhole(frame), notAFrame);
    }
    for (const uint8_t version : {0, 4, 255}) {
        Bytes frame = frame_;
        frame[4] = version;
        EXPECT_EQ(DecodeWhole(frame), notAFrame);
    }
}

TEST_F(DamagedFrames, HaveHeadersThatEndTooEarlyOrBehindTheFrame) {
    for (const uint32_t size : {0u, 639u, 0xFFFFu}) {
        Bytes frame = frame_;
        frame[2] = static_cast<uint8_t>(size >> 8);
        frame[3] = static_cast<uint8_t>(size);
        EXPECT_EQ(DecodeWhole(frame), notAFrame) << size;
    }
}

TEST_F(DamagedFrames, HaveNoSize) {
    for (const size_t at : {0x18, 0x1A}) {
        Bytes frame = frame_;
        frame[at] = frame[at + 1] = 0;
        EXPECT_EQ(DecodeWhole(frame), notAFrame);
    }
}

TEST_F(DamagedFrames, HaveNoDepth) {
    for (const uint8_t bits : {0x00, 0x80, 0xFF}) {
        Bytes frame = frame_;
        frame[0x21] = bits;
        EXPECT_EQ(DecodeWhole(frame), notAFrame);
    }
}

TEST_F(DamagedFrames, HaveACompressionThatNobodyKnows) {
    Bytes frame = frame_;
    frame[0x28] = 0xFF;
    EXPECT_EQ(DecodeWhole(frame), damagedFrame);
}

TEST_F(DamagedFrames, SayAnotherHeightThanTheirCompressionHas) {
    Bytes picture(vuy2.pixelBytes * 1280 * 720, 0x80);
    Bytes frame = EncodePicture(1252, 1280, 720, vuy2, picture).value;
    const DecoderPtr decoder = MakeDecoder(Information(1252, 1280, 720), Uncompressed(vuy2)).value;
    for (const uint8_t highByte : {0x00, 0x03, 0xFF}) {
        frame.at(0x18) = highByte;
        EXPECT_EQ(DNX().DecodeFrame(decoder.get(), frame.data(), picture.data(),
                                    static_cast<uint32_t>(frame.size()),
                                    static_cast<uint32_t>(picture.size())),
                  wrongFrameSize);
    }
}

TEST_F(DamagedFrames, WithFlippedBitsGiveAnErrorOrAPicture) {
    std::mt19937 random = MakeRandom();
    for (int time = 0; time < 100; ++time) {
        Bytes frame = frame_;
        for (uint32_t flips = 1 + random() % 8; flips > 0; --flips)
            frame[random() % frame.size()] ^= static_cast<uint8_t>(1 << random() % 8);
        DecodeWhole(frame);
    }
    EXPECT_EQ(DecodeWhole(frame_), noError);
}

TEST_F(DamagedFrames, WithADamagedHeaderGiveAnErrorOrAPicture) {
    std::mt19937 random = MakeRandom();
    for (int time = 0; time < 200; ++time) {
        Bytes frame = frame_;
        frame[random() % 0x200] = static_cast<uint8_t>(random());
        DecodeWhole(frame);
    }
    EXPECT_EQ(DecodeWhole(frame_), noError);
}

TEST_F(DamagedFrames, OfRandomBytesBehindTheHeaderGiveAnErrorOrAPicture) {
    std::mt19937 random = MakeRandom();
    for (int time = 0; time < 30; ++time) {
        Bytes frame = frame_;
        std::generate(frame.begin() + 640, frame.end(), [&] { return static_cast<uint8_t>(random()); });
        DecodeWhole(frame);
    }
    EXPECT_EQ(DecodeWhole(frame_), noError);
}

TEST_F(DamagedFrames, OfNothingButRandomBytesAreNone) {
    std::mt19937 random = MakeRandom();
    for (int time = 0; time < 100; ++time) {
        Bytes frame(random() % 3000);
        std::ranges::generate(frame, [&] { return static_cast<uint8_t>(random()); });
        if (!frame.empty()) frame[0] = 0xFF;
        EXPECT_EQ(DecodeWhole(frame), notAFrame);
    }
}

TEST_F(DamagedFrames, AreDescribedWithoutAByteBehindThem) {
    std::mt19937 random = MakeRandom();
    for (int time = 0; time < 300; ++time) {
        const uint32_t size = random() % 1000;
        const GuardedBytes data(size, GuardedBytes::Guard::Behind);
        std::copy_n(frame_.begin(), size, data.begin());
        DNXFrameInformation information = Information(5, 6, 7);
        int32_t type = 9;
        const int32_t error = DNX().GetInfoFromCompressedFrame(data.data(), size, &information, &type);
        EXPECT_EQ(error, size < 640 ? notAFrame : noError);
        EXPECT_EQ(information.width, error == noError ? width : 6u);
        EXPECT_EQ(type, error == noError ? 0 : 9);
    }
}

TEST(GuardedPictures, AreEncodedWithoutAByteBehindThem) {
    for (const auto& [id, packing] : {std::pair{1271u, v216}, {1272u, v216}, {1270u, a48r}, {1271u, a48r}}) {
        const DNXCompressedParameters compressed = Compressed(id, width, height);
        const EncoderPtr encoder = MakeEncoder(compressed, Uncompressed(packing)).value;
        const GuardedBytes picture(packing.pixelBytes * width * height, GuardedBytes::Guard::Behind);
        const GuardedBytes frame(DNX().GetCompressedBufferSize(&compressed), GuardedBytes::Guard::Behind);
        uint32_t written = 0;
        EXPECT_EQ(DNX().EncodeFrame(encoder.get(), picture.data(), frame.data(),
                                    static_cast<uint32_t>(picture.size()),
                                    static_cast<uint32_t>(frame.size()), &written),
                  noError);
        EXPECT_EQ(written, frame.size());
    }
}

TEST(GuardedPictures, AreDecodedWithoutAByteBesideThem) {
    for (const PackingRow& packing : {vuy2, v216, yv8u, yv16, a48r})
        for (const auto guard : {GuardedBytes::Guard::Before, GuardedBytes::Guard::Behind}) {
            const Bytes frame = NoisyFrame();
            const DecoderPtr decoder =
                MakeDecoder(Information(1271, width, height), Uncompressed(packing)).value;
            const GuardedBytes picture(packing.pixelBytes * width * height, guard);
            EXPECT_EQ(DNX().DecodeFrame(decoder.get(), frame.data(), picture.data(),
                                        static_cast<uint32_t>(frame.size()),
                                        static_cast<uint32_t>(picture.size())),
                      noError);
        }
}

} // namespace
