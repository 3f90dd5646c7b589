// Streams of FFmpeg's encoder through the decoder, held against FFmpeg's decoder.

#include "standins/mediafoundation/DecoderDriver.h"
#include "standins/mediafoundation/Surfaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace {

constexpr size_t width = 96;
constexpr size_t height = 80;
constexpr size_t count = 30;

PeerStream Encoded(const std::string& profile, const std::string& parameters = "") {
    return PeerEncode(Scene(width, height, count), {.profile = profile, .parameters = parameters});
}

/// Decodes a stream, all of whose pictures must come out in order and be the peer's, byte for byte.
void ExpectExact(const PeerStream& stream) {
    DecoderDriver decoder(width, height);
    const std::vector<TimedBytes> outputs = decoder.DecodeAll(stream.samples);
    EXPECT_EQ(TimesOf(outputs), TimesOfFirst(count));
    EXPECT_TRUE(BytesOf(outputs) == SurfacesOf(PeerDecode(stream.samples)));
    EXPECT_EQ(decoder.streamChanges, 0);
}

/// The nearest that the worst picture comes to the peer's, in decibels.
double WorstNearness(const PeerStream& stream) {
    DecoderDriver decoder(width, height);
    const std::vector<TimedBytes> outputs = decoder.DecodeAll(stream.samples);
    EXPECT_EQ(TimesOf(outputs), TimesOfFirst(count));
    const std::vector<Bytes> expected = SurfacesOf(PeerDecode(stream.samples));
    double worst = 100;
    for (size_t i = 0; i < std::min(outputs.size(), expected.size()); ++i)
        worst = std::min(worst, Nearness(outputs[i].bytes, expected[i]));
    return worst;
}

TEST(Decode, GivesBaselineStreamsAsThePeerDoes) { ExpectExact(Encoded("baseline")); }

TEST(Decode, GivesMainStreamsWithoutBPicturesAsThePeerDoes) { ExpectExact(Encoded("main", "bframes=0")); }

TEST(Decode, GivesHighStreamsWithoutBPicturesAsThePeerDoes) { ExpectExact(Encoded("high", "bframes=0")); }

TEST(Decode, GivesBPicturesWithoutSmallPartitionsAsThePeerDoes) {
    ExpectExact(Encoded("main", "bframes=3:partitions=none"));
    ExpectExact(Encoded("main", "bframes=3:b-adapt=0:partitions=none:direct=temporal"));
    ExpectExact(Encoded("high", "bframes=3:b-adapt=0:partitions=i4x4,i8x8:weightb=1:cabac=0"));
}

TEST(Decode, GivesPyramidsOfBPicturesInOrder) {
    ExpectExact(Encoded("high", "bframes=7:b-adapt=0:b-pyramid=normal:partitions=i4x4,i8x8"));
    ExpectExact(Encoded("high", "bframes=16:ref=16:b-adapt=0:b-pyramid=normal:partitions=none"));
}

TEST(Decode, GivesPicturesThatWaitAtTheNextKeyPicture) {
    for (const char* const distance : {"5", "7", "8"})
        ExpectExact(Encoded("high", std::string("bframes=3:b-adapt=0:partitions=none:scenecut=0:keyint=") +
                                        distance));
}

TEST(Decode, GivesStreamsOfOpenGroupsInOrder) {
    ExpectExact(Encoded("high", "bframes=3:b-adapt=0:open-gop=1:keyint=10:partitions=none"));
}

TEST(Decode, GivesPicturesOfSeveralSlices) {
    ExpectExact(Encoded("high", "bframes=3:slices=4:partitions=none"));
}

TEST(Decode, ComesNearThePeerInBPicturesOfSmallPartitions) {
    // The library's motion vectors of such parts differ a little.
    for (const char* const profile : {"main", "high"})
        EXPECT_GT(WorstNearness(Encoded(profile, "bframes=3")), 30);
}

TEST(Decode, TakesPicturesWithoutTimes) {
    PeerStream stream = Encoded("baseline");
    for (TimedBytes& sample : stream.samples)
        sample.time = sample.duration = std::nullopt;
    DecoderDriver decoder(width, height);
    const std::vector<TimedBytes> outputs = decoder.DecodeAll(stream.samples);
    ASSERT_EQ(outputs.size(), count);
    for (const TimedBytes& output : outputs)
        EXPECT_TRUE(!output.time.has_value() && !output.duration.has_value());
}

TEST(Decode, KeepsTimesAndDurationsWithTheirPictures) {
    PeerStream stream = Encoded("high", "bframes=3:b-adapt=0");
    for (TimedBytes& sample : stream.samples)
        sample.duration = *sample.time % 7;
    DecoderDriver decoder(width, height);
    const std::vector<TimedBytes> outputs = decoder.DecodeAll(stream.samples);
    EXPECT_EQ(outputs.size(), count);
    for (const TimedBytes& output : outputs)
        EXPECT_EQ(output.duration, *output.time % 7);
}

TEST(Decode, KeepsTimesOfAnySize) {
    PeerStream stream = Encoded("baseline");
    stream.samples.resize(2);
    stream.samples[0].time = INT64_MIN;
    stream.samples[1].time = INT64_MAX;
    DecoderDriver decoder(width, height);
    EXPECT_EQ(TimesOf(decoder.DecodeAll(stream.samples)), (std::vector<int64_t>{INT64_MIN, INT64_MAX}));
}

TEST(Decode, GivesEachBaselinePictureAtOnce) {
    const PeerStream stream = Encoded("baseline");
    DecoderDriver decoder(width, height);
    for (size_t i = 0; i < count; ++i)
        EXPECT_EQ(TimesOf(decoder.Decode({stream.samples[i]})), std::vector<int64_t>{TimeOf(i)});
    EXPECT_TRUE(decoder.Drain().empty());
}

TEST(Decode, TakesParameterSetsInASampleOfTheirOwn) {
    const PeerStream stream =
        PeerEncode(Scene(width, height, count), {.profile = "baseline", .hasGlobalHeader = true});
    ASSERT_FALSE(stream.header.empty());
    DecoderDriver decoder(width, height);
    EXPECT_TRUE(decoder.Decode({{stream.header, {}, {}}}).empty());
    EXPECT_EQ(TimesOf(decoder.DecodeAll(stream.samples)), TimesOfFirst(count));
}

TEST(Decode, GivesNothingWithoutParameterSets) {
    const PeerStream stream =
        PeerEncode(Scene(width, height, count), {.profile = "baseline", .hasGlobalHeader = true});
    DecoderDriver decoder(width, height);
    EXPECT_TRUE(decoder.DecodeAll(stream.samples).empty());
}

TEST(Decode, GivesWholeMacroblocksWhoseEdgeRepeatsThePicture) {
    const PeerStream stream = PeerEncode(Scene(90, 70, 3), {.profile = "baseline"});
    DecoderDriver decoder(90, 70);
    const std::vector<TimedBytes> outputs = decoder.DecodeAll(stream.samples);
    EXPECT_TRUE(BytesOf(outputs) == SurfacesOf(PeerDecode(stream.samples)));
    EXPECT_EQ(OutputBytesOf(decoder.Transform()), 96u * 80u * 2u);
    EXPECT_EQ(decoder.streamChanges, 0);
}

TEST(Decode, GivesPicturesInEachFormat) {
    const PeerStream stream = PeerEncode(Scene(width, height, 2), {.profile = "baseline"});
    const PeerPicture picture = PeerDecode(stream.samples).back();
    const auto luma = picture.samples.begin();
    const auto cb = luma + width * height;
    const auto cr = cb + width * height / 4;
    Bytes nv12(luma, cb);
    for (size_t i = 0; i < width * height / 4; ++i)
        nv12.insert(nv12.end(), {cb[i], cr[i]});
    Bytes yv12(luma, cb);
    yv12.insert(yv12.end(), cr, picture.samples.end());
    yv12.insert(yv12.end(), cb, cr);
    const auto decoded = [&](const char(&code)[5]) {
        return DecoderDriver(width, height, Subtype(code)).DecodeAll(stream.samples).back().bytes;
    };
    EXPECT_TRUE(decoded("NV12") == nv12);
    EXPECT_TRUE(decoded("YV12") == yv12);
    EXPECT_TRUE(decoded("IYUV") == picture.samples);
    EXPECT_TRUE(decoded("YUY2") == YUY2Of(picture));
}

TEST(Decode, RunsInParallel) {
    const PeerStream stream = Encoded("high", "bframes=3:partitions=none");
    const std::vector<Bytes> expected = SurfacesOf(PeerDecode(stream.samples));
    bool isRight[4] = {};
    std::vector<std::thread> threads;
    for (bool& right : isRight)
        threads.emplace_back([&] {
            DecoderDriver decoder(width, height);
            right = BytesOf(decoder.DecodeAll(stream.samples)) == expected;
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(std::ranges::all_of(isRight, std::identity()));
    EXPECT_TRUE(IsLibraryUnused());
}

} // namespace
