// When the decoder takes samples and gives pictures, and what draining and flushing do.

#include "standins/mediafoundation/DecoderDriver.h"
#include "standins/mediafoundation/Surfaces.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr size_t width = 96;
constexpr size_t height = 80;

class DecoderFlow : public testing::Test {
protected:
    const PeerStream stream_ = PeerEncode(
        Scene(width, height, 20), {.profile = "high",
                                   .parameters = "bframes=3:b-adapt=0:partitions=none:keyint=10:scenecut=0",
                                   .hasGlobalHeader = true});
    const PeerStream baseline_ = PeerEncode(Scene(width, height, 4), {.profile = "baseline"});

    void SetUp() override { decoder_.Decode({{stream_.header, {}, {}}}); }
    std::vector<TimedBytes> Samples(size_t from, size_t to) const {
        const auto begin = stream_.samples.begin();
        return {begin + static_cast<ptrdiff_t>(from), begin + static_cast<ptrdiff_t>(to)};
    }

    DecoderDriver decoder_{width, height};
    IMFTransform& transform_ = decoder_.Transform();
};

TEST_F(DecoderFlow, WantsMoreInputWhereThereIsNoOutput) {
    TimedBytes output;
    EXPECT_EQ(TakeOne(transform_, output), MF_E_TRANSFORM_NEED_MORE_INPUT);
    EXPECT_EQ(Feed(transform_, stream_.samples[0]), S_OK);
    EXPECT_EQ(TakeOne(transform_, output), MF_E_TRANSFORM_NEED_MORE_INPUT);
}

TEST_F(DecoderFlow, AcceptsNothingBeforeItsOutputIsTaken) {
    DWORD status = 1;
    TimedBytes output;
    EXPECT_EQ(Feed(transform_, baseline_.samples[0]), S_OK);
    EXPECT_EQ(Feed(transform_, baseline_.samples[1]), MF_E_NOTACCEPTING);
    EXPECT_EQ(transform_.GetInputStatus(0, &status), S_OK);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(transform_.GetOutputStatus(&status), S_OK);
    EXPECT_EQ(status, DWORD{MFT_OUTPUT_STATUS_SAMPLE_READY});
    EXPECT_EQ(TakeOne(transform_, output), S_OK);
    EXPECT_EQ(Feed(transform_, baseline_.samples[1]), S_OK);
}

TEST_F(DecoderFlow, KeepsAPictureForWhichTheBufferIsTooSmall) {
    Feed(transform_, baseline_.samples[0]);
    const Ptr<IMFSample> sample = NewSample();
    sample->AddBuffer(NewBuffer(OutputBytesOf(transform_) - 1).get());
    MFT_OUTPUT_DATA_BUFFER buffer = {};
    buffer.pSample = sample.get();
    DWORD status = 0;
    TimedBytes output;
    EXPECT_EQ(transform_.ProcessOutput(0, 1, &buffer, &status), MF_E_BUFFERTOOSMALL);
    EXPECT_EQ(TakeOne(transform_, output), S_OK);
    EXPECT_EQ(output.time, TimeOf(0));
}

TEST_F(DecoderFlow, RefusesOutputsItDoesNotHave) {
    Feed(transform_, baseline_.samples[0]);
    const Ptr<IMFSample> sample = NewSample();
    MFT_OUTPUT_DATA_BUFFER buffer = {};
    DWORD status = 0;
    EXPECT_EQ(transform_.ProcessOutput(0, 1, &buffer, &status), E_INVALIDARG);
    buffer.pSample = sample.get();
    EXPECT_EQ(transform_.ProcessOutput(0, 2, &buffer, &status), E_INVALIDARG);
    EXPECT_TRUE(FAILED(transform_.ProcessOutput(0, 1, &buffer, &status)));
    buffer.dwStreamID = 1;
    EXPECT_EQ(transform_.ProcessOutput(0, 1, &buffer, &status), MF_E_INVALIDSTREAMNUMBER);
}

TEST_F(DecoderFlow, TakesSamplesOfSeveralBuffers) {
    const TimedBytes& whole = baseline_.samples[0];
    const Ptr<IMFSample> sample = SampleOf({Bytes(whole.bytes.begin(), whole.bytes.begin() + 10), 5, {}});
    IMFMediaBuffer* rest = nullptr;
    SampleOf({Bytes(whole.bytes.begin() + 10, whole.bytes.end()), {}, {}})->GetBufferByIndex(0, &rest);
    sample->AddBuffer(rest);
    rest->Release();
    TimedBytes output;
    EXPECT_EQ(transform_.ProcessInput(0, sample.get(), 0), S_OK);
    EXPECT_EQ(TakeOne(transform_, output), S_OK);
    EXPECT_EQ(output.time, 5);
}

TEST_F(DecoderFlow, GivesWhatWaitsWhenItIsDrained) {
    const size_t before = decoder_.Decode(stream_.samples).size();
    EXPECT_LT(before, stream_.samples.size());
    EXPECT_EQ(before + decoder_.Drain().size(), stream_.samples.size());
    EXPECT_TRUE(decoder_.Drain().empty());
}

TEST_F(DecoderFlow, BeginsAtAnyKeySampleWhenItWasDrained) {
    decoder_.DecodeAll(Samples(0, 7));
    const std::vector<TimedBytes> outputs = decoder_.DecodeAll(Samples(10, 20));
    EXPECT_EQ(outputs.size(), 10u);
    EXPECT_EQ(outputs.front().time, TimeOf(10));
}

TEST_F(DecoderFlow, GivesNothingOfBeforeWhenItWasFlushed) {
    decoder_.Decode(Samples(0, 7));
    EXPECT_EQ(Tell(transform_, MFT_MESSAGE_COMMAND_FLUSH), S_OK);
    EXPECT_TRUE(decoder_.Drain().empty());
}

TEST_F(DecoderFlow, DropsPicturesThatWereNotTakenWhenItIsFlushed) {
    TimedBytes output;
    Feed(transform_, baseline_.samples[0]);
    Tell(transform_, MFT_MESSAGE_COMMAND_FLUSH);
    EXPECT_EQ(TakeOne(transform_, output), MF_E_TRANSFORM_NEED_MORE_INPUT);
}

TEST_F(DecoderFlow, BeginsAtAnyKeySampleWhenItWasFlushed) {
    std::vector<TimedBytes> whole = stream_.samples;
    whole.front().bytes.insert(whole.front().bytes.begin(), stream_.header.begin(), stream_.header.end());
    const std::vector<Bytes> expected = SurfacesOf(PeerDecode(whole));
    for (const size_t key : {10, 0, 10, 10, 0}) {
        const std::vector<TimedBytes> outputs = decoder_.Decode(Samples(key, key + 7));
        ASSERT_GT(outputs.size(), 3u);
        for (size_t i = 0; i < outputs.size(); ++i) {
            EXPECT_EQ(outputs[i].time, TimeOf(key + i));
            EXPECT_TRUE(outputs[i].bytes == expected[key + i]);
        }
        Tell(transform_, MFT_MESSAGE_COMMAND_FLUSH);
    }
}

TEST_F(DecoderFlow, GivesTheKeyPictureOfAnOpenGroupAtWhichItBegins) {
    const PeerStream open =
        PeerEncode(Scene(width, height, 20),
                   {.profile = "high",
                    .parameters = "bframes=3:b-adapt=0:open-gop=1:keyint=10:scenecut=0:partitions=none"});
    const auto key = std::find_if(open.samples.begin() + 1, open.samples.end(),
                                  [](auto& one) { return one.isCleanPoint; });
    ASSERT_NE(key, open.samples.end());
    const std::vector<Bytes> expected = SurfacesOf(PeerDecode(open.samples));
    decoder_.Decode(open.samples);
    Tell(transform_, MFT_MESSAGE_COMMAND_FLUSH);
    const std::vector<TimedBytes> outputs = decoder_.DecodeAll({key, open.samples.end()});
    ASSERT_FALSE(outputs.empty());
    EXPECT_EQ(outputs.front().time, key->time);
    EXPECT_TRUE(outputs.front().bytes == expected[static_cast<size_t>(*key->time / pictureDuration - 1)]);
}

TEST_F(DecoderFlow, ForgetsParameterSetsWithANewInputType) {
    decoder_.SetInput(width, height);
    decoder_.SetOutput(MFVideoFormat_YUY2);
    EXPECT_TRUE(decoder_.DecodeAll(Samples(0, 10)).empty());
}

TEST_F(DecoderFlow, TakesMessagesOfStreaming) {
    for (const MFT_MESSAGE_TYPE message :
         {MFT_MESSAGE_NOTIFY_BEGIN_STREAMING, MFT_MESSAGE_NOTIFY_START_OF_STREAM,
          MFT_MESSAGE_NOTIFY_END_OF_STREAM, MFT_MESSAGE_NOTIFY_END_STREAMING, MFT_MESSAGE_COMMAND_FLUSH})
        EXPECT_EQ(Tell(transform_, message), S_OK);
    EXPECT_EQ(Tell(transform_, MFT_MESSAGE_SET_D3D_MANAGER), E_NOTIMPL);
}

TEST_F(DecoderFlow, KeepsNoSampleOfTheCallers) {
    IMFSample* const sample = SampleOf(stream_.samples[0]).release();
    transform_.ProcessInput(0, sample, 0);
    EXPECT_EQ(sample->Release(), 0u);
}

TEST(DecoderLife, LeavesNoObjectBehind) {
    const PeerStream stream = PeerEncode(Scene(width, height, 5), {.profile = "high"});
    {
        DecoderDriver decoder(width, height);
        decoder.Decode(stream.samples);
        Tell(decoder.Transform(), MFT_MESSAGE_COMMAND_DRAIN);
        EXPECT_FALSE(IsLibraryUnused());
    }
    EXPECT_TRUE(IsLibraryUnused());
}

} // namespace
