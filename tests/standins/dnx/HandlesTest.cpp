// Handles over many frames, and beside each other.

#include "standins/dnx/DNXLibrary.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

constexpr uint32_t width = 270;
constexpr uint32_t height = 130;

Bytes Picture(const PackingRow& packing, uint8_t value) {
    return Bytes(packing.pixelBytes * width * height, value);
}

Outcome<Bytes> DecodeWith(const DecoderPtr& decoder, const Bytes& frame, const PackingRow& packing) {
    Bytes picture = Picture(packing, 0);
    const int32_t error =
        DNX().DecodeFrame(decoder.get(), frame.data(), picture.data(), static_cast<uint32_t>(frame.size()),
                          static_cast<uint32_t>(picture.size()));
    return {error, picture};
}

TEST(Handles, DecodeFramesWhoseCompressionChanges) {
    const Bytes frames[] = {EncodePicture(1271, width, height, v216, Picture(v216, 0x70)).value,
                            EncodePicture(1274, width, height, v216, Picture(v216, 0x60)).value,
                            EncodePicture(1272, width, height, v216, Picture(v216, 0x50)).value};
    const DecoderPtr decoder = MakeDecoder(Information(1271, width, height), Uncompressed(v216)).value;
    for (const Bytes& frame : frames) {
        const Outcome<Bytes> picture = DecodeWith(decoder, frame, v216);
        EXPECT_EQ(picture.error, noError);
        EXPECT_EQ(picture.value, DecodePicture(frame, v216).value);
    }
}

TEST(Handles, DecodeOnBehindAFrameThatDoesNotFit) {
    const Bytes good = EncodePicture(1271, width, height, v216, Picture(v216, 0x70)).value;
    const Bytes rgb = EncodePicture(1270, width, height, a48r, Picture(a48r, 0x60)).value;
    const Bytes small(v216.pixelBytes * 256 * 120, 0x40);
    const Bytes other = EncodePicture(1271, 256, 120, v216, small).value;
    const DecoderPtr decoder = MakeDecoder(Information(1271, width, height), Uncompressed(v216)).value;
    EXPECT_EQ(DecodeWith(decoder, rgb, v216).error, wrongFrameFormat);
    EXPECT_EQ(DecodeWith(decoder, other, v216).error, wrongFrameSize);
    const Outcome<Bytes> picture = DecodeWith(decoder, good, v216);
    EXPECT_EQ(picture.error, noError);
    EXPECT_EQ(picture.value, DecodePicture(good, v216).value);
}

TEST(Handles, EncodeEachPictureAsIfItWereTheFirst) {
    const DNXCompressedParameters compressed = Compressed(1271, width, height);
    const EncoderPtr encoder = MakeEncoder(compressed, Uncompressed(v216)).value;
    for (const uint8_t value : {0x20, 0x80, 0x20, 0xE0}) {
        const Bytes picture = Picture(v216, value);
        const Outcome<Bytes> frame = EncodeWith(encoder, compressed, picture);
        EXPECT_EQ(frame.error, noError);
        EXPECT_EQ(frame.value, EncodePicture(1271, width, height, v216, picture).value);
    }
}

/// Encodes and decodes pictures of its own; counts what goes wrong.
int FailuresOfAWorker(uint8_t value) {
    int failures = 0;
    for (int time = 0; time < 5; ++time) {
        const Bytes picture = Picture(a48r, value);
        const Outcome<Bytes> frame = EncodePicture(1270, width, height, a48r, picture);
        const Outcome<Bytes> decoded = DecodePicture(frame.value, a48r);
        const bool isSame = decoded.error == noError && std::abs(decoded.value[3] - value) <= 1;
        if (frame.error != noError || !isSame) ++failures;
    }
    return failures;
}

TEST(Handles, WorkInParallel) {
    int failures[4] = {};
    std::vector<std::thread> workers;
    for (uint8_t worker = 0; worker < 4; ++worker)
        workers.emplace_back([&failures, worker] {
            failures[worker] = FailuresOfAWorker(static_cast<uint8_t>(0x30 + 0x20 * worker));
        });
    for (std::thread& worker : workers)
        worker.join();
    for (const int count : failures)
        EXPECT_EQ(count, 0);
}

TEST(Handles, OfNoiseEncodeInTheLowestCompression) {
    Bytes picture = Picture(v216, 0);
    for (size_t index = 0; index < picture.size(); ++index)
        picture[index] = static_cast<uint8_t>((index * index * 2654435761u) >> 13);
    const Outcome<Bytes> frame = EncodePicture(1274, width, height, v216, picture);
    EXPECT_EQ(frame.error, noError);
    EXPECT_EQ(DecodePicture(frame.value, v216).error, noError);
}

} // namespace
