// Pictures through the encoder, and back through this library's decoder and FFmpeg's.

#include "standins/mediafoundation/DecoderDriver.h"
#include "standins/mediafoundation/EncoderDriver.h"
#include "standins/mediafoundation/GuardedBuffer.h"
#include "standins/mediafoundation/Surfaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>

namespace {

constexpr size_t count = 24;

class Encode : public testing::Test {
protected:
    std::vector<TimedBytes> Encoded(const EncoderCase& coding) {
        if (!encoder_.SetUp(coding)) return {};
        return encoder_.Encode(Scene(coding.width, coding.height, count));
    }
    /// The nearest that the worst picture of a stream comes to the scene, as the peer decodes it.
    double WorstNearness(const std::vector<TimedBytes>& samples) {
        const std::vector<PeerPicture> decoded = PeerDecode(samples);
        if (decoded.size() != scene_.size()) return 0;
        double worst = 100;
        for (size_t i = 0; i < decoded.size(); ++i)
            worst = std::min(worst, Nearness(decoded[i].samples, scene_[i].samples));
        return worst;
    }

    const std::vector<PeerPicture> scene_ = Scene(96, 80, count);
    EncoderDriver encoder_;
};

size_t SizeOf(const std::vector<TimedBytes>& samples) {
    size_t size = 0;
    for (const TimedBytes& sample : samples)
        size += sample.bytes.size();
    return size;
}

std::vector<size_t> KeysOf(const std::vector<TimedBytes>& samples) {
    std::vector<size_t> keys;
    for (size_t i = 0; i < samples.size(); ++i)
        if (samples[i].isCleanPoint) keys.push_back(i);
    return keys;
}

TEST_F(Encode, KeepsPicturesOfEachProfile) {
    for (const uint32_t profile : {66u, 77u, 100u}) {
        const std::vector<TimedBytes> samples = Encoded({.profile = profile});
        ASSERT_EQ(samples.size(), count) << profile;
        EXPECT_EQ(encoder_.header.at(5), profile);
        EXPECT_GT(WorstNearness(samples), 38) << profile;
    }
}

TEST_F(Encode, GivesWhatTheDecoderDecodesAsThePeerDoes) {
    const std::vector<TimedBytes> samples = Encoded({});
    DecoderDriver decoder(96, 80);
    const std::vector<TimedBytes> pictures = decoder.DecodeAll(samples);
    EXPECT_EQ(TimesOf(pictures), TimesOfFirst(count));
    EXPECT_TRUE(BytesOf(pictures) == SurfacesOf(PeerDecode(samples)));
}

TEST_F(Encode, GivesEachSampleAtOnceWithItsTime) {
    const std::vector<TimedBytes> samples = Encoded({});
    EXPECT_EQ(TimesOf(samples), TimesOfFirst(count));
    for (const TimedBytes& sample : samples)
        EXPECT_EQ(sample.duration, pictureDuration);
}

TEST_F(Encode, TakesPicturesWithoutTimes) {
    ASSERT_TRUE(encoder_.SetUp({}));
    TimedBytes sample;
    EXPECT_EQ(Feed(encoder_.Transform(), {YUY2Of(scene_[0]), {}, {}}), S_OK);
    EXPECT_EQ(TakeOne(encoder_.Transform(), sample), S_OK);
    EXPECT_FALSE(sample.time.has_value() || sample.duration.has_value());
}

TEST_F(Encode, PutsKeyPicturesWhereTheTypeSays) {
    EXPECT_EQ(KeysOf(Encoded({.keyDistance = 10})), (std::vector<size_t>{0, 10, 20}));
    EXPECT_EQ(KeysOf(Encoded({.keyDistance = 1})).size(), count);
    EXPECT_EQ(KeysOf(Encoded({.keyDistance = 0})), std::vector<size_t>{0});
}

TEST_F(Encode, PutsKeyPicturesWhereThePropertySays) {
    EXPECT_EQ(encoder_.SetProperty(keyFrameDistance, 6), S_OK);
    EXPECT_EQ(KeysOf(Encoded({.keyDistance = 10})), (std::vector<size_t>{0, 6, 12, 18}));
}

TEST_F(Encode, BeginsStreamsAtEachKeyPicture) {
    const std::vector<TimedBytes> samples = Encoded({.keyDistance = 10});
    ASSERT_EQ(samples.size(), count);
    EXPECT_EQ(PeerDecode({samples.begin() + 10, samples.end()}).size(), 14u);
    for (const size_t key : {0, 10, 20})
        EXPECT_TRUE(
            std::ranges::equal(encoder_.header, std::span(samples[key].bytes).first(encoder_.header.size())));
}

TEST_F(Encode, TellsTheTypeItsParameterSets) {
    ASSERT_EQ(encoder_.SetOutput({}), S_OK);
    const Bytes& header = encoder_.header;
    ASSERT_GT(header.size(), 10u);
    const Bytes startCode = {0, 0, 0, 1};
    const auto second = std::search(header.begin() + 4, header.end(), startCode.begin(), startCode.end());
    ASSERT_NE(second, header.end());
    EXPECT_TRUE(std::ranges::equal(std::span(header).first(4), startCode));
    EXPECT_EQ(header[4] & 0x1f, 7);
    EXPECT_EQ(second[4] & 0x1f, 8);
    EXPECT_EQ(std::search(second + 4, header.end(), startCode.begin(), startCode.end()), header.end());
    IMFMediaType* current = nullptr;
    ASSERT_EQ(encoder_.Transform().GetOutputCurrentType(0, &current), S_OK);
    EXPECT_EQ(BlobOf(*Ptr<IMFMediaType>(current), MF_MT_MPEG_SEQUENCE_HEADER), header);
}

TEST_F(Encode, HoldsTheBitRate) {
    const std::vector<PeerPicture> scene = Scene(192, 160, 100);
    for (const uint32_t bitRate : {100000u, 400000u}) {
        ASSERT_TRUE(encoder_.SetUp({.width = 192, .height = 160, .bitRate = bitRate, .keyDistance = 50}));
        const double bitsPerSecond = 8.0 * static_cast<double>(SizeOf(encoder_.Encode(scene))) / 4.0;
        EXPECT_GT(bitsPerSecond, 0.4 * bitRate);
        EXPECT_LT(bitsPerSecond, 1.3 * bitRate);
    }
}

TEST_F(Encode, GivesBetterPicturesForMoreQuality) {
    double last = 0;
    for (const uint32_t quality : {10u, 50u, 100u}) {
        EXPECT_EQ(encoder_.SetProperty(rateControlMode, 3), S_OK);
        EXPECT_EQ(encoder_.SetProperty(commonQuality, quality), S_OK);
        const double nearness = WorstNearness(Encoded({.bitRate = 0}));
        EXPECT_GT(nearness, last + 5) << quality;
        last = nearness;
    }
    EXPECT_GT(last, 45);
}

TEST_F(Encode, WorksWithEachEffort) {
    for (const uint32_t effort : {0u, 50u, 100u, 1000u}) {
        EXPECT_EQ(encoder_.SetProperty(qualityVsSpeed, effort), S_OK);
        EXPECT_GT(WorstNearness(Encoded({})), 35) << effort;
    }
}

TEST_F(Encode, TakesEachFormat) {
    const size_t luma = scene_[0].width * scene_[0].height;
    const auto middle = scene_[0].samples.begin() + static_cast<ptrdiff_t>(luma);
    const auto last = middle + static_cast<ptrdiff_t>(luma / 4);
    Bytes nv12(scene_[0].samples.begin(), middle);
    for (size_t i = 0; i < luma / 4; ++i)
        nv12.insert(nv12.end(), {middle[static_cast<ptrdiff_t>(i)], last[static_cast<ptrdiff_t>(i)]});
    Bytes yv12(scene_[0].samples.begin(), middle);
    yv12.insert(yv12.end(), last, scene_[0].samples.end());
    yv12.insert(yv12.end(), middle, last);
    std::vector<Bytes> streams;
    for (const auto& [subtype, bytes] : {std::pair{Subtype("NV12"), nv12},
                                         {Subtype("YV12"), yv12},
                                         {Subtype("IYUV"), scene_[0].samples},
                                         {Subtype("YUY2"), YUY2Of(scene_[0])}}) {
        TimedBytes sample;
        ASSERT_TRUE(encoder_.SetUp({.input = subtype}));
        EXPECT_EQ(Feed(encoder_.Transform(), {bytes, 0, {}}), S_OK);
        EXPECT_EQ(TakeOne(encoder_.Transform(), sample), S_OK);
        streams.push_back(sample.bytes);
    }
    for (const Bytes& stream : streams)
        EXPECT_TRUE(stream == streams.front());
}

TEST_F(Encode, AveragesTheChromaOfTwoRows) {
    EXPECT_EQ(encoder_.SetProperty(rateControlMode, 3), S_OK);
    EXPECT_EQ(encoder_.SetProperty(commonQuality, 100), S_OK);
    ASSERT_TRUE(encoder_.SetUp({}));
    Bytes picture(size_t{2} * 96 * 80, 128);
    for (size_t at = 1; at < picture.size(); at += 2)
        picture[at] = at / 192 % 2 == 0 ? 100 : 141;
    TimedBytes sample;
    EXPECT_EQ(Feed(encoder_.Transform(), {picture, 0, {}}), S_OK);
    EXPECT_EQ(TakeOne(encoder_.Transform(), sample), S_OK);
    const std::vector<PeerPicture> decoded = PeerDecode({sample});
    ASSERT_EQ(decoded.size(), 1u);
    for (size_t at = size_t{96} * 80; at < decoded[0].samples.size(); ++at)
        ASSERT_NEAR(decoded[0].samples[at], 121, 1);
}

TEST_F(Encode, KeepsSizesThatAreNoWholeMacroblocks) {
    const std::vector<TimedBytes> samples = Encoded({.width = 90, .height = 70});
    const std::vector<PeerPicture> decoded = PeerDecode(samples);
    ASSERT_EQ(decoded.size(), count);
    EXPECT_EQ(decoded[0].width, 90u);
    EXPECT_EQ(decoded[0].height, 70u);
    EXPECT_GT(Nearness(decoded[0].samples, Scene(90, 70, 1)[0].samples), 38);
}

TEST_F(Encode, AcceptsNothingBeforeItsOutputIsTaken) {
    ASSERT_TRUE(encoder_.SetUp({}));
    const TimedBytes picture = {YUY2Of(scene_[0]), 0, {}};
    TimedBytes sample;
    DWORD status = 0;
    EXPECT_EQ(TakeOne(encoder_.Transform(), sample), MF_E_TRANSFORM_NEED_MORE_INPUT);
    EXPECT_EQ(Feed(encoder_.Transform(), picture), S_OK);
    EXPECT_EQ(Feed(encoder_.Transform(), picture), MF_E_NOTACCEPTING);
    EXPECT_EQ(encoder_.Transform().GetOutputStatus(&status), S_OK);
    EXPECT_EQ(status, DWORD{MFT_OUTPUT_STATUS_SAMPLE_READY});
    EXPECT_EQ(TakeOne(encoder_.Transform(), sample), S_OK);
    EXPECT_EQ(TakeOne(encoder_.Transform(), sample), MF_E_TRANSFORM_NEED_MORE_INPUT);
}

TEST_F(Encode, KeepsASampleForWhichTheBufferIsTooSmall) {
    ASSERT_TRUE(encoder_.SetUp({}));
    Feed(encoder_.Transform(), {YUY2Of(scene_[0]), 5, {}});
    GuardedBuffer small(OutputBytesOf(encoder_.Transform()) - 1);
    const Ptr<IMFSample> sample = NewSample();
    sample->AddBuffer(&small);
    MFT_OUTPUT_DATA_BUFFER buffer = {};
    buffer.pSample = sample.get();
    DWORD status = 0;
    TimedBytes output;
    EXPECT_EQ(encoder_.Transform().ProcessOutput(0, 1, &buffer, &status), MF_E_BUFFERTOOSMALL);
    EXPECT_EQ(small.locks, 0);
    EXPECT_EQ(TakeOne(encoder_.Transform(), output), S_OK);
    EXPECT_EQ(output.time, 5);
}

TEST_F(Encode, TakesPicturesOfExactlyTheirSize) {
    ASSERT_TRUE(encoder_.SetUp({}));
    Bytes picture = YUY2Of(scene_[0]);
    picture.push_back(0);
    EXPECT_EQ(Feed(encoder_.Transform(), {picture, 0, {}}), E_INVALIDARG);
    picture.pop_back();
    picture.pop_back();
    EXPECT_EQ(Feed(encoder_.Transform(), {picture, 0, {}}), E_INVALIDARG);
    EXPECT_EQ(Feed(encoder_.Transform(), {}), E_INVALIDARG);
    EXPECT_EQ(Feed(encoder_.Transform(), {YUY2Of(scene_[0]), 0, {}}), S_OK);
}

TEST_F(Encode, ReadsNoByteBesideThePicture) {
    ASSERT_TRUE(encoder_.SetUp({.width = 90, .height = 70}));
    GuardedBuffer input(YUY2Of(Scene(90, 70, 1)[0]));
    const Ptr<IMFSample> sample = NewSample();
    sample->AddBuffer(&input);
    EXPECT_EQ(encoder_.Transform().ProcessInput(0, sample.get(), 0), S_OK);
    EXPECT_EQ(input.locks, 0);
}

TEST_F(Encode, HasNothingLeftToDrain) {
    ASSERT_TRUE(encoder_.SetUp({}));
    encoder_.Encode(scene_);
    TimedBytes sample;
    EXPECT_EQ(Tell(encoder_.Transform(), MFT_MESSAGE_COMMAND_DRAIN), S_OK);
    EXPECT_EQ(TakeOne(encoder_.Transform(), sample), MF_E_TRANSFORM_NEED_MORE_INPUT);
}

TEST_F(Encode, DropsASampleThatWasNotTakenWhenItIsFlushed) {
    ASSERT_TRUE(encoder_.SetUp({}));
    TimedBytes sample;
    Feed(encoder_.Transform(), {YUY2Of(scene_[0]), 0, {}});
    EXPECT_EQ(Tell(encoder_.Transform(), MFT_MESSAGE_COMMAND_FLUSH), S_OK);
    EXPECT_EQ(TakeOne(encoder_.Transform(), sample), MF_E_TRANSFORM_NEED_MORE_INPUT);
}

TEST_F(Encode, GivesTheSameBytesEachTime) {
    const std::vector<Bytes> first = BytesOf(Encoded({}));
    EXPECT_TRUE(BytesOf(Encoded({})) == first);
    EncoderDriver other;
    ASSERT_TRUE(other.SetUp({}));
    EXPECT_TRUE(BytesOf(other.Encode(scene_)) == first);
}

TEST(EncoderLife, LeavesNoObjectBehind) {
    {
        EncoderDriver encoder;
        ASSERT_TRUE(encoder.SetUp({}));
        encoder.Encode(Scene(96, 80, 2));
        Feed(encoder.Transform(), {YUY2Of(Scene(96, 80, 1)[0]), 0, {}});
        EXPECT_FALSE(IsLibraryUnused());
    }
    EXPECT_TRUE(IsLibraryUnused());
}

} // namespace
