#include "prores/encoder/ColorRamps.h"
#include "support/GuardedBytes.h"
#include "support/TestSupport.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iomanip>

namespace {

struct Case {
    PrxEncodeSettings settings;
    uint32_t pixelFormat;
};

/// Every codec from every format that it takes, progressive and interlaced, with and without alpha.
std::vector<Case> AllCases() {
    std::vector<Case> cases;
    for (const uint32_t codec : allCodecs) {
        for (const uint32_t format : allInputs) {
            if (!IsTaken(codec, format)) continue;
            for (const int32_t interlaceMode : {0, 1, 2}) {
                for (const uint8_t hasAlpha : {0, 1})
                    cases.push_back({{codec, interlaceMode, hasAlpha}, format});
            }
        }
    }
    return cases;
}

/// A picture whose pixels end, or start, at a page that may not be touched.
struct GuardedPicture {
    GuardedPicture(const InputPicture& picture, GuardedBytes::Guard guard)
        : bytes(picture.bytes.size(), guard), buffer(picture.buffer) {
        std::ranges::copy(picture.bytes, bytes.data());
        buffer.baseAddress = bytes.data();
    }

    GuardedBytes bytes;
    PrxPixelBuffer buffer;
};

/// Encodes into memory that ends at a forbidden page right behind the bound. Empty if it is refused.
std::vector<uint8_t> EncodeGuarded(PrxEncoderRef encoder, const Case& test, const PrxPixelBuffer& picture) {
    int32_t capacity = 0;
    PrxGetMaxFrameSize(test.settings.codecType, test.settings.hasAlpha, picture.width, picture.height,
                       &capacity, nullptr);
    const GuardedBytes output(static_cast<size_t>(capacity), GuardedBytes::Guard::Behind);
    int32_t size = 0;
    if (PrxEncodeFrame(encoder, &test.settings, &picture, output.data(), capacity, &size, nullptr) != 0)
        return {};
    return {output.data(), output.data() + size};
}

TEST(EncodePictures, AllSmallSizesFitAndAreReadNowhereOutside) {
    const uint32_t seed = MakeRandom()();
    const EncoderPtr encoder = MakeEncoder();
    const std::vector<Case> cases = AllCases();
    size_t next = seed % cases.size();
    for (int32_t width = 1; width <= 70; ++width) {
        for (int32_t height = 1; height <= 70; ++height) {
            const Case& test = cases[next++ % cases.size()];
            const auto guard = next % 2 == 0 ? GuardedBytes::Guard::Behind : GuardedBytes::Guard::Before;
            const GuardedPicture picture(MakePicture(test.pixelFormat, width, height, Content::Noise,
                                                     seed + static_cast<uint32_t>(width)),
                                         guard);
            const std::vector<uint8_t> frame = EncodeGuarded(encoder.get(), test, picture.buffer);
            ASSERT_FALSE(ReadPictures(frame).empty()) << width << "x" << height << " " << std::hex
                                                      << test.settings.codecType << " " << test.pixelFormat;
        }
    }
}

TEST(EncodePictures, AllCombinationsDecodeToTheirColors) {
    const EncoderPtr encoder = MakeEncoder();
    for (const Case& test : AllCases()) {
        const InputPicture picture = ramps::MakeColors(test.pixelFormat);
        const std::vector<uint8_t> frame = Encode(encoder.get(), test.settings, picture.buffer).bytes;
        const std::vector<ramps::Color> decoded = ramps::Decode(frame);
        ASSERT_FALSE(decoded.empty());
        // Rows that are a field off would show as 1.5.
        EXPECT_LT(ramps::LargestError(decoded, ramps::ColorAt), 1.25)
            << std::hex << test.settings.codecType << " " << test.pixelFormat << ", mode "
            << test.settings.interlaceMode;
    }
}

TEST(EncodePictures, AllCombinationsOfNoiseDecode) {
    const EncoderPtr encoder = MakeEncoder();
    for (const Case& test : AllCases()) {
        const InputPicture picture =
            MakePicture(test.pixelFormat, ramps::width, ramps::height, Content::Noise);
        const std::vector<uint8_t> frame = Encode(encoder.get(), test.settings, picture.buffer).bytes;
        ASSERT_FALSE(ReadPictures(frame).empty());
        ASSERT_FALSE(ramps::Decode(frame).empty());
    }
}

TEST(EncodePictures, RampsComeBackNearlyAsTheyWere) {
    const EncoderPtr encoder = MakeEncoder();
    const DecoderPtr decoder(PrxCreateDecoder(1, nullptr));
    constexpr int32_t width = 160, height = 64;
    for (const int32_t interlaceMode : {0, 1, 2}) {
        InputPicture picture = MakePicture(prxFormatV216, width, height, Content::Flat);
        for (size_t i = 0; i < picture.bytes.size() / 2; ++i) {
            const auto value = static_cast<uint16_t>(8192 + i % 320 * 64 + i / 320 * 256);
            std::memcpy(picture.bytes.data() + 2 * i, &value, 2);
        }
        const std::vector<uint8_t> frame =
            Encode(encoder.get(), {prxCodecApch, interlaceMode, 0}, picture.buffer).bytes;
        std::vector<uint8_t> decoded(picture.bytes.size());
        PrxPixelBuffer target = picture.buffer;
        target.baseAddress = decoded.data();
        ASSERT_GT(
            PrxDecodeFrame(decoder.get(), frame.data(), static_cast<int32_t>(frame.size()), &target, 0, 0),
            0);
        for (size_t i = 0; i < decoded.size(); i += 2) {
            const int32_t difference =
                (decoded[i] | decoded[i + 1] << 8) - (picture.bytes[i] | picture.bytes[i + 1] << 8);
            ASSERT_LE(std::abs(difference), 160) << i; // 2.5 codes of 10 bits
        }
    }
}

TEST(EncodePictures, ANegativeRowSizeDescribesRowsThatGoUpwards) {
    const EncoderPtr encoder = MakeEncoder();
    for (const Case& test : AllCases()) {
        const InputPicture picture = MakePicture(test.pixelFormat, 70, 37, Content::Noise);
        InputPicture upwards = picture;
        const auto rowSize = static_cast<size_t>(picture.buffer.rowBytes);
        for (size_t y = 0; y < 37; ++y)
            std::memcpy(upwards.bytes.data() + (36 - y) * rowSize, picture.bytes.data() + y * rowSize,
                        rowSize);
        const GuardedPicture guarded(upwards, GuardedBytes::Guard::Before);
        PrxPixelBuffer buffer = guarded.buffer;
        buffer.baseAddress += 36 * rowSize;
        buffer.rowBytes = -buffer.rowBytes;
        const std::vector<uint8_t> expected = Encode(encoder.get(), test.settings, picture.buffer).bytes;
        ASSERT_EQ(EncodeGuarded(encoder.get(), test, buffer), expected);
    }
}

TEST(EncodePictures, AnyAddressGivesTheSameBytes) {
    const EncoderPtr encoder = MakeEncoder();
    for (const Case& test : AllCases()) {
        const InputPicture picture = MakePicture(test.pixelFormat, 70, 37, Content::Noise);
        std::vector<uint8_t> moved(picture.bytes.size() + 1);
        std::ranges::copy(picture.bytes, moved.begin() + 1);
        PrxPixelBuffer buffer = picture.buffer;
        buffer.baseAddress = moved.data() + 1;
        const std::vector<uint8_t> shifted = Encode(encoder.get(), test.settings, buffer).bytes;
        ASSERT_EQ(shifted, Encode(encoder.get(), test.settings, picture.buffer).bytes);
    }
}

TEST(EncodePictures, GivesTheSameBytesForEveryWorkerCountAndRun) {
    const std::array<EncoderPtr, 4> encoders = {MakeEncoder(1), MakeEncoder(2), MakeEncoder(5),
                                                MakeEncoder(64)};
    for (const Case& test : AllCases()) {
        const InputPicture picture = MakePicture(test.pixelFormat, 300, 130, Content::Noise);
        InputPicture copy = picture;
        copy.buffer.baseAddress = copy.bytes.data();
        const std::vector<uint8_t> expected = Encode(encoders[0].get(), test.settings, copy.buffer).bytes;
        for (const EncoderPtr& encoder : encoders) {
            std::ranges::copy(picture.bytes, copy.bytes.begin());
            ASSERT_EQ(Encode(encoder.get(), test.settings, copy.buffer).bytes, expected);
        }
    }
}

TEST(EncodePictures, GivesTheSameBytesOnEveryInstructionSet) {
    const EncoderPtr encoder = MakeEncoder(2);
    ASSERT_FALSE(VectorTargets().empty());
    for (const Case& test : AllCases()) {
        const auto encode = [&] {
            const InputPicture picture = MakePicture(test.pixelFormat, 150, 53, Content::Noise);
            return Encode(encoder.get(), test.settings, picture.buffer).bytes;
        };
        const std::vector<uint8_t> expected = encode();
        for (const int64_t target : VectorTargets()) {
            const ForcedTarget forced(target);
            ASSERT_EQ(encode(), expected) << hwy::TargetName(target);
        }
    }
}

TEST(EncodePictures, DoNotDependOnThoseBefore) {
    const EncoderPtr used = MakeEncoder(2);
    const std::vector<Case> cases = AllCases();
    for (size_t i = 0; i < cases.size(); ++i) {
        const auto width = static_cast<int32_t>(1 + i * 37 % 300),
                   height = static_cast<int32_t>(1 + i * 53 % 100);
        const Content content = i % 3 == 0 ? Content::Flat : Content::Noise;
        InputPicture first = MakePicture(cases[i].pixelFormat, width, height, content);
        InputPicture second = MakePicture(cases[i].pixelFormat, width, height, content);
        const EncoderPtr fresh = MakeEncoder();
        ASSERT_EQ(Encode(used.get(), cases[i].settings, first.buffer).bytes,
                  Encode(fresh.get(), cases[i].settings, second.buffer).bytes);
    }
}

TEST(EncodePictures, StayWithinTheBoundAndNearTheTargetOnNoise) {
    const EncoderPtr encoder = MakeEncoder(2);
    for (const uint32_t codec : allCodecs) {
        for (const int32_t interlaceMode : {0, 1}) {
            InputPicture picture = MakePicture(prxFormatB64a, 1280, 720, Content::Noise);
            const Case test{{codec, interlaceMode, 1}, prxFormatB64a};
            const std::vector<uint8_t> frame = EncodeGuarded(encoder.get(), test, picture.buffer);
            ASSERT_FALSE(ReadPictures(frame).empty());
            int32_t colourBound = 0;
            PrxGetMaxFrameSize(codec, 0, 1280, 720, &colourBound, nullptr);
            size_t alphaSize = 0;
            for (const CodedPicture& coded : ReadPictures(frame)) {
                for (const CodedSlice& slice : coded.slices)
                    alphaSize += slice.alphaSize + slice.headerSize - 6;
            }
            EXPECT_LE(frame.size() - alphaSize, static_cast<size_t>(colourBound));
            EXPECT_GT(frame.size() - alphaSize, static_cast<size_t>(colourBound) * 7 / 10);
        }
    }
}

} // namespace
