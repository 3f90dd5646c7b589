// Frames of a track in any order: where decoding starts, which frames the cache keeps, and the track's end.

#include "codecs/wmf/WMFDecodeSupport.h"

namespace {

using CxWMF::WMFCodec;

class WMFFrames : public WMFDecode {
protected:
    /// A sample that the decoder has read gives these pictures; the wanted one is of a time that none has.
    void DecodeInto(std::deque<MFOutput> pictures) {
        Script().onInput = nullptr;
        Script().outputs = std::move(pictures);
        EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, -1), CxAV_NEED_MORE_DATA);
        EXPECT_TRUE(Script().outputs.empty());
    }
    /// Pictures of consecutive frames.
    static std::deque<MFOutput> Pictures(int64_t count) {
        std::deque<MFOutput> pictures;
        for (int64_t i = 0; i < count; ++i)
            pictures.push_back(PictureAt(40 * i));
        return pictures;
    }
    IMFSample* Cached(int64_t time) {
        IMFSample* frame = nullptr;
        const bool isFound = codec_.FindCachedFrame(time, frame);
        EXPECT_EQ(isFound, frame != nullptr);
        return frame;
    }
    /// References that are held to a frame.
    static ULONG References(IMFSample* frame) {
        frame->AddRef();
        return frame->Release();
    }
};

TEST_F(WMFFrames, TheFirstRequestFlushesAFreshDecoder) {
    EXPECT_EQ(Decode(0), CxAV_OK);
    EXPECT_EQ(TransformCalls(),
              (Calls{"ProcessMessage FLUSH 0", "ProcessInput 7 0000000100", "GetOutputStreamInfo 9",
                     "ProcessOutput 0 1 9", "ProcessOutput 0 1 9"}));
}

TEST_F(WMFFrames, SequentialFramesGoOnWithoutAFlush) {
    track_.keyDistance = 12;
    EXPECT_EQ(Decode(0), CxAV_OK);
    AllCalls();
    EXPECT_EQ(Decode(1), CxAV_OK);
    EXPECT_EQ(TransformCalls(),
              (Calls{"ProcessInput 7 0000000101 at 400000 for 10000000", "GetOutputStreamInfo 9",
                     "ProcessOutput 0 1 9", "ProcessOutput 0 1 9"}));
}

TEST_F(WMFFrames, ASeekFlushesAndStartsAgainAtTheKeySample) {
    track_.keyDistance = 4;
    EXPECT_EQ(Decode(0), CxAV_OK);
    AllCalls();
    EXPECT_EQ(Decode(9), CxAV_OK);
    EXPECT_EQ(TransformCalls(),
              (Calls{"ProcessMessage FLUSH 0", "ProcessInput 7 0000000108 at 3200000 for 10000000",
                     "GetOutputStreamInfo 9", "ProcessOutput 0 1 9", "ProcessOutput 0 1 9",
                     "ProcessInput 7 0000000109 at 3600000 for 10000000", "GetOutputStreamInfo 9",
                     "ProcessOutput 0 1 9", "ProcessOutput 0 1 9"}));
}

TEST_F(WMFFrames, TheLastFrameStartsAgainOnceItIsEvicted) {
    track_.keyDistance = 12;
    EXPECT_EQ(Decode(0), CxAV_OK);
    EXPECT_EQ(Decode(1), CxAV_OK);
    // More frames than the cache holds push it out, as those of a picture that failed may.
    std::deque<MFOutput> pictures = Pictures(34);
    pictures.erase(pictures.begin(), pictures.begin() + 2);
    DecodeInto(pictures);
    EXPECT_EQ(Cached(40), nullptr);
    AllCalls();
    GivesEachSampleAtOnce();
    EXPECT_EQ(Decode(1), CxAV_OK);
    const Calls calls = TransformCalls();
    EXPECT_EQ(Calls(calls.begin(), calls.begin() + 2),
              (Calls{"ProcessMessage FLUSH 0", "ProcessInput 7 0000000100"}));
}

TEST_F(WMFFrames, EachFrameOfATrackIsThatOfItsNumberInAnyOrder) {
    std::mt19937 random = MakeRandom();
    track_.keyDistance = 5;
    Script().onInput = [](int64_t time) {
        const int64_t frame = time / ticks;
        Script().outputs.push_back(PictureAt(frame, static_cast<uint8_t>(16 + frame / 40 * 10)));
    };
    for (int i = 0; i < 60; ++i) {
        const auto frame = static_cast<int32_t>(random() % 12);
        ASSERT_EQ(Decode(frame), CxAV_OK) << frame;
        EXPECT_NEAR(PixelAt(*image_, 0, 0).G, 65535.0 * frame * 10 / 219, 40) << frame;
    }
}

TEST_F(WMFFrames, CodecsOfOneTrackWorkSideBySide) {
    WMFCodec other(CxAV_DECODE, nullptr);
    ASSERT_EQ(other.SetDataSource(&track_), CxAV_OK);
    Script().outputs.clear();
    for (const int32_t frame : {0, 3}) {
        EXPECT_EQ(Decode(frame), CxAV_OK);
        EXPECT_EQ(::Decode(other, frame, image_.get()), CxAV_OK);
    }
}

TEST_F(WMFFrames, FramesOnTheWayAreCached) {
    Script().onInput = [](int64_t time) {
        if (time == 80 * ticks) Script().outputs = {PictureAt(0), PictureAt(80), PictureAt(40)};
    };
    track_.keyDistance = 12;
    EXPECT_EQ(Decode(2), CxAV_OK);
    AllCalls();
    for (const int32_t frame : {0, 1, 2})
        EXPECT_EQ(Decode(frame), CxAV_OK) << frame;
    EXPECT_EQ(TransformCalls(), Calls());
}

TEST_F(WMFFrames, TheCacheKeeps32AndReleasesTheOneOfTheLowestTime) {
    const int before = Script().objects;
    DecodeInto(Pictures(33));
    EXPECT_EQ(Cached(0), nullptr);
    for (int64_t i = 1; i < 33; ++i) {
        ASSERT_NE(Cached(40 * i), nullptr) << i;
        EXPECT_EQ(References(Cached(40 * i)), 1U) << i;
    }
    // Each a sample and its buffer.
    EXPECT_EQ(Script().objects, before + 2 * 32);
    codec_.ClearCachedFrames();
    EXPECT_EQ(Script().objects, before);
}

TEST_F(WMFFrames, AFrameOfATimeThatIsCachedLeavesTheOneThatIsThere) {
    const int before = Script().objects;
    DecodeInto({PictureAt(40)});
    IMFSample* const first = Cached(40);
    DecodeInto({PictureAt(40)});
    EXPECT_EQ(Cached(40), first);
    EXPECT_EQ(References(first), 1U);
    codec_.ClearCachedFrames();
    EXPECT_EQ(Script().objects, before);
}

TEST_F(WMFFrames, AFrameWithoutATimeIsCachedAsThatOfTime0) {
    DecodeInto({MFOutput{.bytes = {1}}});
    EXPECT_NE(Cached(0), nullptr);
}

TEST_F(WMFFrames, WithoutACacheOthersThanTheWantedOneAreReleased) {
    codec_.ReleaseFrameCache();
    const int before = Script().objects;
    Script().onInput = [](int64_t) { Script().outputs = Pictures(3); };
    EXPECT_EQ(DecodeSample({0, 0, 0, 1, 0x65}, 40, 40), CxAV_OK);
    EXPECT_EQ(Script().objects, before);
}

TEST_F(WMFFrames, TheLastFrameComesOutOfADrain) {
    track_ = H264Track(3);
    track_.keyDistance = 3;
    std::deque<MFOutput> held;
    Script().onInput = [&held](int64_t time) { held.push_back(PictureAt(time / ticks, 235)); };
    Script().onMessage = [&held](MFT_MESSAGE_TYPE message) {
        if (message == MFT_MESSAGE_COMMAND_DRAIN) Script().outputs = std::exchange(held, {});
    };
    EXPECT_EQ(Decode(2), CxAV_OK);
    EXPECT_NEAR(PixelAt(*image_, 0, 0).G, 65535, 2);
    const Calls calls = TransformCalls();
    EXPECT_EQ(
        Calls(calls.end() - 7, calls.end()),
        (Calls{"ProcessMessage END_OF_STREAM 0", "ProcessMessage DRAIN 0", "GetOutputStreamInfo 9",
               "ProcessOutput 0 1 9", "ProcessOutput 0 1 9", "ProcessOutput 0 1 9", "ProcessOutput 0 1 9"}));
}

TEST_F(WMFFrames, TimesThatNeverMatchEnd32SamplesPastTheFrameAndTheDecoderStartsAfresh) {
    track_ = H264Track(80);
    track_.keyDistance = 80;
    Script().onInput = [](int64_t time) { Script().outputs = {PictureAt(time / ticks + 1)}; };
    EXPECT_EQ(Decode(2), CxAV_NEED_MORE_DATA);
    const Calls calls = TransformCalls();
    // Up to the sample after the last one that may still hold it.
    EXPECT_EQ(std::ranges::count_if(calls, [](const auto& call) { return call.starts_with("ProcessInput"); }),
              2 + 32 + 2);
    EXPECT_EQ(calls.back(), "ProcessMessage FLUSH 0");

    GivesEachSampleAtOnce();
    EXPECT_EQ(Decode(2), CxAV_OK);
    const Calls again = TransformCalls();
    EXPECT_EQ(Calls(again.begin(), again.begin() + 2),
              (Calls{"ProcessMessage FLUSH 0", "ProcessInput 7 0000000100"}));
}

TEST_F(WMFFrames, TimesThatNeverMatchEndWithTheTrackAndTheDecoderStartsAfresh) {
    track_ = H264Track(3);
    track_.keyDistance = 3;
    Script().onInput = [](int64_t time) { Script().outputs = {PictureAt(time / ticks + 1)}; };
    EXPECT_EQ(Decode(1), CxAV_INVALID_STATE);
    EXPECT_EQ(std::ranges::count(AllCalls(), "ProcessMessage DRAIN 0"), 1);

    GivesEachSampleAtOnce();
    EXPECT_EQ(Decode(1), CxAV_OK);
    EXPECT_EQ(TransformCalls().front(), "ProcessMessage FLUSH 0");
}

} // namespace
