// Frames in any order through the whole back-end, and samples that are not what they should be.

#include "ffmpeg/FFMPEGCodecs.h"

#include "ffmpeg/CodecTestSupport.h"
#include "framework/CxAVCodecRegistry.h"

#include <utility>

namespace {

using CxFFMPEG::FFMPEGCodecs;

/// Three groups of pictures with B-frames: closed ones, decoded with frame threads, and open ones, decoded
/// with threads for the slices.
struct Stream {
    EncodedTrack track;
    uint32_t fourCC;
};

const std::vector<Stream>& Streams() {
    static const std::vector<Stream> streams = [] {
        std::vector<Stream> made;
        made.push_back({EncodedTrack({.frames = 24, .groupLength = 8, .bFrames = 2}), FourCC("avc1")});
        made.push_back({EncodedTrack({.encoder = "mpeg2video", .frames = 24, .groupLength = 8, .bFrames = 2}),
                        FourCC("xdv7")});
        return made;
    }();
    return streams;
}

class FFMPEGCodecsAccess : public testing::Test {
protected:
    /// The frame that the codec gives when asked for one; -1 if it fails.
    int32_t Get(CxAbstractAVCodec& codec, int32_t frame) {
        Image* target = image.get();
        return codec.GetDecodedFrame(frame, target) == CxAV_OK ? FrameOfImage(*target) : -1;
    }

    ImagePtr image = MakeImage(64, 48);
};

TEST_F(FFMPEGCodecsAccess, TheRegistrysDecoderGivesEveryFrameForwards) {
    for (const Stream& stream : Streams()) {
        EncodedSource source(stream.track, stream.fourCC);
        const std::unique_ptr<CxAbstractAVCodec> codec(CxAVCodecRegistry::CreateDecoder(&source));
        ASSERT_NE(codec, nullptr);
        for (int32_t frame = 0; frame < 24; ++frame)
            ASSERT_EQ(Get(*codec, frame), frame) << stream.track.spec.encoder;
    }
}

TEST_F(FFMPEGCodecsAccess, EveryFrameComesBackwardsToo) {
    for (const Stream& stream : Streams()) {
        EncodedSource source(stream.track, stream.fourCC);
        const auto codec = OpenCodec(source);
        for (int32_t frame = 23; frame >= 0; --frame)
            ASSERT_EQ(Get(*codec, frame), frame) << stream.track.spec.encoder;
    }
}

TEST_F(FFMPEGCodecsAccess, EveryFrameComesInAnyOrder) {
    std::mt19937 random = MakeRandom();
    for (const Stream& stream : Streams()) {
        EncodedSource source(stream.track, stream.fourCC);
        const auto codec = OpenCodec(source);
        for (int request = 0; request < 60; ++request) {
            const auto frame = static_cast<int32_t>(random() % 24);
            ASSERT_EQ(Get(*codec, frame), frame) << stream.track.spec.encoder;
        }
    }
}

TEST_F(FFMPEGCodecsAccess, DamagedSamplesNeitherCrashNorSpoilTheFramesOfOtherGroups) {
    std::mt19937 random = MakeRandom();
    for (const Stream& stream : Streams()) {
        EncodedSource source(stream.track, stream.fourCC);
        for (size_t sample = 8; sample < 15; ++sample) {
            std::vector<uint8_t>& bytes = source.samples[sample].bytes;
            for (uint8_t& byte : bytes)
                byte = static_cast<uint8_t>(random());
        }
        const auto codec = OpenCodec(source);
        WordsOf([&] {
            for (int32_t frame = 8; frame < 16; ++frame)
                Get(*codec, frame);
            ASSERT_EQ(Get(*codec, 2), 2) << stream.track.spec.encoder;
            ASSERT_EQ(Get(*codec, 20), 20) << stream.track.spec.encoder;
        });
    }
}

TEST_F(FFMPEGCodecsAccess, TruncatedSamplesNeitherCrashNorSpoilTheFramesOfOtherGroups) {
    std::mt19937 random = MakeRandom();
    for (const Stream& stream : Streams()) {
        EncodedSource source(stream.track, stream.fourCC);
        for (size_t sample = 8; sample < 15; ++sample) {
            std::vector<uint8_t>& bytes = source.samples[sample].bytes;
            bytes.resize(random() % bytes.size());
            bytes.shrink_to_fit();
        }
        const auto codec = OpenCodec(source);
        WordsOf([&] {
            for (int32_t frame = 8; frame < 16; ++frame)
                Get(*codec, frame);
            ASSERT_EQ(Get(*codec, 0), 0) << stream.track.spec.encoder;
            ASSERT_EQ(Get(*codec, 20), 20) << stream.track.spec.encoder;
        });
    }
}

TEST_F(FFMPEGCodecsAccess, AStreamOfNoiseFailsAndTheDecoderTakesAGoodOneAfterwards) {
    std::mt19937 random = MakeRandom();
    for (const Stream& stream : Streams()) {
        EncodedSource good(stream.track, stream.fourCC);
        EncodedSource noise(stream.track, stream.fourCC);
        for (EncodedSample& sample : noise.samples)
            for (uint8_t& byte : sample.bytes)
                byte = static_cast<uint8_t>(random());
        const auto codec = OpenCodec(noise);
        WordsOf([&] {
            for (int32_t frame = 0; frame < 24; frame += 5)
                Get(*codec, frame);
        });
        // The decoder stays; only what it reads changes.
        codec->getDataSource() = &good;
        codec->Flush();
        std::vector<DecodedFrame> decoded;
        WordsOf([&] { decoded = DecodeAll(*codec, good); });
        EXPECT_EQ(decoded.size(), 24u) << stream.track.spec.encoder;
    }
}

TEST_F(FFMPEGCodecsAccess, ABrokenConfigurationNeitherCrashesNorHangs) {
    std::mt19937 random = MakeRandom();
    for (const Stream& stream : Streams()) {
        EncodedSource source(stream.track, stream.fourCC);
        source.configuration.assign(200, 0);
        for (uint8_t& byte : source.configuration)
            byte = static_cast<uint8_t>(random());
        const auto codec = OpenCodec(source);
        WordsOf([&] { EXPECT_LT(Get(*codec, 3), 24); });
    }
}

TEST_F(FFMPEGCodecsAccess, AfterASampleThatCouldNotBeReadTheNextRequestStartsAgain) {
    for (const Stream& stream : Streams()) {
        EncodedSource source(stream.track, stream.fourCC);
        const std::vector<uint8_t> sample = std::exchange(source.samples[2].bytes, {});
        const auto codec = OpenCodec(source);
        WordsOf([&] { EXPECT_EQ(Get(*codec, 5), -1); });
        source.samples[2].bytes = sample;
        EXPECT_EQ(Get(*codec, 5), 5) << stream.track.spec.encoder;
    }
}

TEST_F(FFMPEGCodecsAccess, AfterAFileThatEndedTooEarlyTheNextRequestStartsAgain) {
    for (const Stream& stream : Streams()) {
        EncodedSource source(stream.track, stream.fourCC);
        std::vector<EncodedSample> samples = source.samples;
        for (size_t sample = 3; sample < samples.size(); ++sample)
            source.samples[sample].bytes = {};
        const auto codec = OpenCodec(source);
        WordsOf([&] { EXPECT_EQ(Get(*codec, 5), -1); });
        source.samples = samples;
        EXPECT_EQ(Get(*codec, 5), 5) << stream.track.spec.encoder;
    }
}

TEST_F(FFMPEGCodecsAccess, ATrackOfNothingFails) {
    EncodedSource source(Streams()[0].track, FourCC("avc1"));
    const auto codec = OpenCodec(source);
    source.samples.assign(1, {});
    Image* target = image.get();
    WordsOf([&] { EXPECT_EQ(codec->GetDecodedFrame(0, target), CxAV_FAILED); });
}

} // namespace
