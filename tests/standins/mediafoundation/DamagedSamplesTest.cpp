// Cut, changed and invented samples, and streams that OpenH264 doesn't decode.

#include "standins/mediafoundation/DecoderDriver.h"
#include "standins/mediafoundation/GuardedBuffer.h"
#include "standins/mediafoundation/Surfaces.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

constexpr size_t width = 96;
constexpr size_t height = 80;
constexpr size_t groupSize = 8;

class DamagedSamples : public testing::Test {
protected:
    /// Feeds a sample from memory that ends at a page that may not be read, and takes what comes out into
    /// such memory.
    void Decode(const TimedBytes& timed) {
        GuardedBuffer input(timed.bytes);
        const Ptr<IMFSample> sample = NewSample();
        sample->AddBuffer(&input);
        if (timed.time) sample->SetSampleTime(*timed.time);
        EXPECT_EQ(decoder_.Transform().ProcessInput(0, sample.get(), 0), S_OK);
        EXPECT_EQ(input.locks, 0);
        EXPECT_EQ(input.references, 2);
        for (;;) {
            const HRESULT result = Take();
            if (result == MF_E_TRANSFORM_STREAM_CHANGE)
                decoder_.SetOutput(MFVideoFormat_YUY2);
            else if (FAILED(result))
                return;
        }
    }
    HRESULT Take() {
        GuardedBuffer output(OutputBytesOf(decoder_.Transform()));
        const Ptr<IMFSample> sample = NewSample();
        sample->AddBuffer(&output);
        MFT_OUTPUT_DATA_BUFFER buffer = {};
        buffer.pSample = sample.get();
        DWORD status = 0;
        const HRESULT result = decoder_.Transform().ProcessOutput(0, 1, &buffer, &status);
        if (SUCCEEDED(result)) times_.push_back(ContentOf(*sample).time.value_or(-1));
        return result;
    }
    /// Each picture that came out has a time of its own among those that went in.
    void ExpectTimesOfTheStream() {
        const std::set<int64_t> different(times_.begin(), times_.end());
        EXPECT_EQ(different.size(), times_.size());
        for (const int64_t time : different)
            EXPECT_TRUE(time % pictureDuration == 0 && time >= TimeOf(0) && time <= TimeOf(3 * groupSize));
        times_.clear();
    }
    /// The last group of the stream decodes as if nothing had been before.
    void ExpectRecovery() {
        const auto last = stream_.samples.end() - groupSize;
        decoder_.Drain();
        decoder_.SetInput(width, height);
        decoder_.SetOutput(MFVideoFormat_YUY2);
        const std::vector<TimedBytes> outputs = decoder_.DecodeAll({last, stream_.samples.end()});
        EXPECT_TRUE(BytesOf(outputs) == lastPictures_);
    }

    const PeerStream stream_ = PeerEncode(
        Scene(width, height, 3 * groupSize),
        {.profile = "high", .parameters = "bframes=2:b-adapt=0:partitions=none:keyint=8:scenecut=0"});
    const std::vector<Bytes> lastPictures_ =
        SurfacesOf(PeerDecode({stream_.samples.end() - groupSize, stream_.samples.end()}));
    DecoderDriver decoder_{width, height};
    std::vector<int64_t> times_;
    std::mt19937 random_ = MakeRandom();
};

TEST_F(DamagedSamples, WithFlippedBitsGiveAPictureOrNone) {
    for (int time = 0; time < 10; ++time) {
        for (TimedBytes sample : stream_.samples) {
            for (uint32_t flips = random_() % 4; flips > 0; --flips)
                sample.bytes[random_() % sample.bytes.size()] ^= static_cast<uint8_t>(1 << random_() % 8);
            Decode(sample);
        }
        Tell(decoder_.Transform(), MFT_MESSAGE_COMMAND_FLUSH);
        ExpectTimesOfTheStream();
    }
    ExpectRecovery();
}

TEST_F(DamagedSamples, ThatWereCutGiveAPictureOrNone) {
    for (int time = 0; time < 10; ++time) {
        for (TimedBytes sample : stream_.samples) {
            if (random_() % 3 == 0) sample.bytes.resize(random_() % sample.bytes.size());
            Decode(sample);
        }
        Tell(decoder_.Transform(), MFT_MESSAGE_COMMAND_FLUSH);
        ExpectTimesOfTheStream();
    }
    ExpectRecovery();
}

TEST_F(DamagedSamples, ThatAreMissingLeaveTheOthersTheirTimes) {
    for (int time = 0; time < 10; ++time) {
        for (const TimedBytes& sample : stream_.samples)
            if (random_() % 3 != 0) Decode(sample);
        Tell(decoder_.Transform(), MFT_MESSAGE_COMMAND_FLUSH);
        ExpectTimesOfTheStream();
    }
    ExpectRecovery();
}

TEST_F(DamagedSamples, WithDamagedParameterSetsGiveAPictureOrNone) {
    for (int time = 0; time < 20; ++time) {
        TimedBytes key = stream_.samples.front();
        key.bytes[random_() % 60] = static_cast<uint8_t>(random_());
        Decode(key);
        for (size_t i = 1; i < groupSize; ++i)
            Decode(stream_.samples[i]);
        Tell(decoder_.Transform(), MFT_MESSAGE_COMMAND_FLUSH);
        times_.clear();
    }
    ExpectRecovery();
}

TEST_F(DamagedSamples, OfRandomBytesGiveNothing) {
    for (int time = 0; time < 100; ++time) {
        Bytes bytes(random_() % 500);
        std::ranges::generate(bytes, [&] { return static_cast<uint8_t>(random_()); });
        Decode({bytes, TimeOf(0), {}});
    }
    EXPECT_TRUE(times_.empty());
    ExpectRecovery();
}

TEST_F(DamagedSamples, OfNothingAreTaken) {
    Decode({});
    Decode({{0}, {}, {}});
    Decode({{0, 0, 1}, {}, {}});
    Decode({{0, 0, 0, 1, 0x65}, {}, {}});
    EXPECT_TRUE(times_.empty());
    ExpectRecovery();
}

TEST_F(DamagedSamples, DoNotHarmTheNextGroup) {
    std::vector<TimedBytes> samples = stream_.samples;
    for (size_t i = 1; i < 2 * groupSize; ++i)
        std::ranges::fill(samples[i].bytes.begin() + 5, samples[i].bytes.end(), uint8_t{0x55});
    std::vector<TimedBytes> outputs = decoder_.DecodeAll(samples);
    ASSERT_GE(outputs.size(), groupSize);
    outputs.erase(outputs.begin(), outputs.end() - groupSize);
    EXPECT_TRUE(BytesOf(outputs) == lastPictures_);
}

TEST_F(DamagedSamples, MayHaveManyParameterSets) {
    for (uint32_t number = 0; number < 1000; ++number) {
        Bytes set = {0, 0, 0, 1, 0x68};
        for (int byte = 0; byte < 4; ++byte)
            set.push_back(static_cast<uint8_t>(0x80 | number >> 7 * byte));
        Decode({set, {}, {}});
    }
    EXPECT_TRUE(times_.empty());
    ExpectRecovery();
}

TEST(UnsupportedStreams, GiveNothing) {
    for (const PeerCoding& coding : {PeerCoding{.profile = "high10", .format = "yuv420p10le"},
                                     PeerCoding{.profile = "high422", .format = "yuv422p"},
                                     PeerCoding{.profile = "high444", .format = "yuv444p"},
                                     PeerCoding{.profile = "high", .parameters = "interlaced=1:tff=1"},
                                     PeerCoding{.profile = "high444", .parameters = "qp=0"}}) {
        const PeerStream stream = PeerEncode(Scene(width, height, 5), coding);
        ASSERT_EQ(stream.samples.size(), 5u) << coding.profile;
        DecoderDriver decoder(width, height);
        EXPECT_TRUE(decoder.DecodeAll(stream.samples).empty()) << coding.profile << coding.parameters;
    }
}

TEST(UnsupportedStreams, LeaveTheDecoderUsable) {
    const PeerStream deep =
        PeerEncode(Scene(width, height, 5), {.profile = "high10", .format = "yuv420p10le"});
    const PeerStream plain = PeerEncode(Scene(width, height, 5), {.profile = "baseline"});
    DecoderDriver decoder(width, height);
    decoder.Decode(deep.samples);
    EXPECT_TRUE(BytesOf(decoder.DecodeAll(plain.samples)) == SurfacesOf(PeerDecode(plain.samples)));
}

} // namespace
