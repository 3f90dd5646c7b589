// Jobs, and the frames that come of them.

#include "cameraraw/VrelDecoderContext.h"

#include "cameraraw/RawTestSupport.h"

#include <cstring>

namespace {

class VrelDecoderContextJobs : public RawTest {
protected:
    VrelDecoderContextJobs() {
        EXPECT_TRUE(context.OpenClip("clip.vrel"));
        JoinThreads();
    }

    /// Decodes a frame, and looks at all of its samples.
    void ExpectFrame(uint64_t frame) {
        CxAlignedBuffer output;
        ASSERT_TRUE(context.DecodeFrame(frame, output));
        ASSERT_EQ(output.used, 48);
        for (uint32_t word = 0; word < 24; ++word) {
            uint16_t sample = 0;
            std::memcpy(&sample, static_cast<uint8_t*>(output.data) + size_t{word} * 2, 2);
            EXPECT_EQ(sample, ScriptedSample(frame, word / 8, word % 8));
        }
    }
    std::string WordsOfAFailure() {
        return WordsOf([&] {
            CxAlignedBuffer output;
            EXPECT_FALSE(context.DecodeFrame(0, output));
        });
    }

    VrelDecoderContext context;
};

TEST_F(VrelDecoderContextJobs, AFrameIsReadDecodedAndProcessed) {
    TakeCalls();
    ExpectFrame(1);
    EXPECT_EQ(TakeCalls(), DecodeCalls(1));
}

TEST_F(VrelDecoderContextJobs, FramesComeInAnyOrder) {
    for (const uint64_t frame : {2, 0, 1, 1, 0, 2})
        ExpectFrame(frame);
}

TEST_F(VrelDecoderContextJobs, TheEndOfAJobIsToldFromAnyThreadAtAnyTime) {
    for (const Finish finish : {Finish::InsideSubmit, Finish::OnThread, Finish::Late}) {
        Script().finish = finish;
        ExpectFrame(2);
    }
}

TEST_F(VrelDecoderContextJobs, ThePictureOfAProcessJobIsReleased) {
    Script().hasPicture = true;
    ExpectFrame(0);
}

TEST_F(VrelDecoderContextJobs, JobsAndTheFrameAreReleasedBeforeTheClip) {
    Script().finish = Finish::InsideSubmit;
    ExpectFrame(0);
    const int before = Script().objects;
    ExpectFrame(1);
    EXPECT_EQ(Script().objects, before);
}

TEST_F(VrelDecoderContextJobs, ANullJobFailsAndWaitsForNothing) {
    TakeCalls();
    EXPECT_EQ(
        WordsOf([] { EXPECT_EQ(VrelDecoderContext::RunJob(nullptr), static_cast<HRESULT>(0x80004005U)); }),
        "");
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(VrelDecoderContextJobs, ADecodeJobThatFailsIsSubmittedTwiceAndTheTextCarriesTheSecondResult) {
    TakeCalls();
    Script().decodeResults = {E_FAIL, static_cast<HRESULT>(0x8000beefU)};
    EXPECT_EQ(WordsOfAFailure(), "Vrel (WaitForDecodeJob) HRESULT = 0x8000beef");
    const Calls calls = TakeCalls();
    EXPECT_EQ(std::ranges::count(calls, "RawManualFlow.CreateDecodeJob"), 1);
    EXPECT_EQ(std::ranges::count(calls, "RawJob.Submit decode"), 2);
    EXPECT_EQ(std::ranges::count(calls, "RawManualFlow.CreateProcessJob"), 0);
    ExpectFrame(0);
}

TEST_F(VrelDecoderContextJobs, ADecodeJobThatFailsOnceFailsTheFrameAndReports0) {
    Script().decodeResults = {E_FAIL};
    EXPECT_EQ(WordsOfAFailure(), "Vrel (WaitForDecodeJob) HRESULT = 0x0");
}

TEST_F(VrelDecoderContextJobs, AProcessJobThatFailsIsSubmittedTwiceToo) {
    TakeCalls();
    Script().processResults = {E_FAIL, S_FALSE};
    EXPECT_EQ(WordsOfAFailure(), "Vrel (WaitForCPUProcessJob) HRESULT = 0x1");
    EXPECT_EQ(std::ranges::count(TakeCalls(), "RawJob.Submit process"), 2);
    ExpectFrame(0);
}

TEST_F(VrelDecoderContextJobs, AReadThatFailsIsTriedOnceAndShowsAsAFrameThatIsMissing) {
    TakeCalls();
    Script().hasFrame = false;
    Script().readResult = E_FAIL;
    EXPECT_EQ(WordsOfAFailure(), "Vrel NULL pointer");
    EXPECT_EQ(TakeCalls(), ReadCalls(0));
}

TEST_F(VrelDecoderContextJobs, AReadThatGivesAFrameHasSucceededWhateverItsResult) {
    Script().readResult = E_FAIL;
    ExpectFrame(0);
}

TEST_F(VrelDecoderContextJobs, AReadThatIsAcceptedWithAPositiveResultIsWaitedFor) {
    Script().submitResult = S_FALSE;
    CxAlignedBuffer bitstream;
    RawPointer<RawClip> clip;
    // The same reader that the context has, got anew.
    RawPointer<RawClipReader> reader;
    RawPointer<RawCodec> codec;
    ASSERT_EQ(CreateRawFactory()->CreateCodec(codec.Receive()), S_OK);
    ASSERT_EQ(codec->OpenClip(nullptr, clip.Receive()), S_OK);
    ASSERT_EQ(QueryRaw(clip.Get(), IID_RawClipReader, reader), S_OK);
    EXPECT_TRUE(context.ReadFrame(0, bitstream, reader.Get()));
    EXPECT_EQ(bitstream.capacity, 16);
}

TEST_F(VrelDecoderContextJobs, AJobThatIsRefusedTwiceIsRunASecondTimeAsAWhole) {
    for (const char* const call : {"RawJob.SetUserData decode", "RawJob.Submit decode"}) {
        Script().nextFailure = static_cast<HRESULT>(0x80040001U);
        Script().failing = {{call, 2}};
        EXPECT_EQ(WordsOfAFailure(), "Vrel HRESULT = 0x80040002Vrel (WaitForDecodeJob) HRESULT = 0x0")
            << call;
        ExpectFrame(0);
    }
}

TEST_F(VrelDecoderContextJobs, JobsThatAreAcceptedWithAPositiveResultAreReportedAndWaitedFor) {
    Script().submitResult = S_FALSE;
    Script().finish = Finish::Late;
    TakeCalls();
    EXPECT_EQ(WordsOf([&] { ExpectFrame(1); }), "Vrel HRESULT = 0x1Vrel HRESULT = 0x1");
    EXPECT_EQ(TakeCalls(), DecodeCalls(1)) << "each is submitted once";
}

/// A job that gives these results of its submissions, and has finished before an accepted one returns.
class SubmittedJob : public RawJob {
public:
    SubmittedJob(IRavenlightRawCallback& callback, std::vector<HRESULT> results)
        : callback_(callback), results_(std::move(results)) {}
    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    HRESULT Submit() override {
        const HRESULT result = results_.at(submits++);
        if (result >= 0) callback_.DecodeFinished(this, S_OK);
        return result;
    }
    HRESULT SetUserData(void* data) override {
        data_ = data;
        return S_OK;
    }
    HRESULT GetUserData(void** data) override {
        *data = data_;
        return S_OK;
    }

    size_t submits = 0;

private:
    IRavenlightRawCallback& callback_;
    std::vector<HRESULT> results_;
    void* data_ = nullptr;
};

TEST(RunJob, AJobThatIsNeverAcceptedFailsAfterTwoTries) {
    IOVrelCallback callback;
    SubmittedJob job(callback, {E_INVALIDARG, static_cast<HRESULT>(0x8000beefU)});
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(VrelDecoderContext::RunJob(&job), E_FAIL); }),
              "Vrel HRESULT = 0x8000beef");
    EXPECT_EQ(job.submits, 2U);
}

TEST(RunJob, AJobThatIsAcceptedAtTheSecondTryIsReportedAndWaitedFor) {
    IOVrelCallback callback;
    SubmittedJob plain(callback, {E_INVALIDARG, S_OK});
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(VrelDecoderContext::RunJob(&plain), S_OK); }), "Vrel HRESULT = 0x0");
    SubmittedJob positive(callback, {E_INVALIDARG, S_FALSE});
    EXPECT_EQ(WordsOf([&] { EXPECT_EQ(VrelDecoderContext::RunJob(&positive), S_OK); }), "Vrel HRESULT = 0x1");
}

TEST(RunJob, AJobThatIsUnderWayIsNotSubmittedAgain) {
    IOVrelCallback callback;
    for (const HRESULT next : {E_FAIL, S_OK}) {
        SubmittedJob job(callback, {S_FALSE, next});
        EXPECT_EQ(WordsOf([&] { EXPECT_EQ(VrelDecoderContext::RunJob(&job), S_OK); }), "Vrel HRESULT = 0x1");
        EXPECT_EQ(job.submits, 1U);
    }
}

TEST_F(VrelDecoderContextJobs, ALutGoesToTheProcessJob) {
    Script().attributes = {{rawLutMode, "Embedded"}};
    Script().luts = {{"Embedded", true}};
    ExpectFrame(0);
    EXPECT_NE(Script().lutTable, nullptr);
}

TEST_F(VrelDecoderContextJobs, ALutThatCantBeReadDecodesWithoutATableAndWithoutAWord) {
    Script().attributes = {{rawLutMode, "Embedded"}};
    Script().luts = {{"Embedded", true}};
    for (const char* const call : {"RawClipSettings.GetLut", "RawLut.GetTable"}) {
        Script().failing = {{call, 1}};
        EXPECT_EQ(WordsOf([&] { ExpectFrame(0); }), "") << call;
        EXPECT_EQ(Script().lutTable, nullptr) << call;
    }
}

TEST_F(VrelDecoderContextJobs, AFrameOfNoProcessedSizeReportsTheValue1) {
    Script().processedWidth = Script().processedHeight = 0;
    EXPECT_EQ(WordsOfAFailure(), "Vrel HRESULT = 0x1");
    Script().processedWidth = 4;
    EXPECT_EQ(WordsOfAFailure(), "Vrel HRESULT = 0x1");
}

TEST_F(VrelDecoderContextJobs, ABitstreamWithoutABufferIsReported) {
    for (const uint32_t bad : {0U, 0x80000000U, 0xFFFFFFFFU}) {
        Script().bitstreamBound = bad;
        EXPECT_EQ(WordsOfAFailure(), "Vrel NULL pointerVrel NULL pointer") << bad;
    }
    Script().bitstreamBound = 16;
    ExpectFrame(0);
}

TEST_F(VrelDecoderContextJobs, AStateOrDecodedDataBeyondABufferFailWithoutAWord) {
    for (uint32_t ScriptedRaw::*const size : {&ScriptedRaw::stateSize, &ScriptedRaw::decodedSize}) {
        const uint32_t usable = Script().*size;
        for (const uint32_t bad : {0x80000000U, 0xFFFFFFFFU}) {
            Script().*size = bad;
            EXPECT_EQ(WordsOfAFailure(), "") << bad;
        }
        Script().*size = usable;
        ExpectFrame(0);
    }
}

TEST_F(VrelDecoderContextJobs, AStateOrDecodedDataOfNoBytesIsTheSdksToJudge) {
    Script().decodedSize = 0;
    ExpectFrame(0);
    Script().stateSize = 0;
    EXPECT_EQ(WordsOfAFailure(), "Vrel HRESULT = 0x80070057");
}

TEST_F(VrelDecoderContextJobs, AnOutputThatCantBeUsedReportsTheValue1) {
    for (const uint32_t bad : {0U, 0x80000000U, 0xFFFFFFFFU}) {
        Script().processedSize = bad;
        EXPECT_EQ(WordsOfAFailure(), "Vrel HRESULT = 0x1") << bad;
    }
    Script().processedSize.reset();
    ExpectFrame(0);
}

TEST_F(VrelDecoderContextJobs, WithoutAClipAFrameFailsAndIsReported) {
    context.ReleaseClip();
    TakeCalls();
    EXPECT_EQ(WordsOfAFailure(), "Vrel NULL pointerVrel NULL pointer");
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(VrelDecoderContextJobs, WithoutAFlowNothingIsDecoded) {
    VrelDecoderContext fresh;
    CxAlignedBuffer output;
    EXPECT_EQ(
        WordsOf([&] { EXPECT_FALSE(fresh.DecodeAndProcess(nullptr, nullptr, nullptr, nullptr, output)); }),
        "Vrel NULL pointer");
}

TEST_F(VrelDecoderContextJobs, ANullFrameOrSettingsAreReportedAndNothingIsDecoded) {
    TakeCalls();
    CxAlignedBuffer output;
    EXPECT_EQ(
        WordsOf([&] { EXPECT_FALSE(context.DecodeAndProcess(nullptr, nullptr, nullptr, nullptr, output)); }),
        "Vrel NULL pointer");
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(VrelDecoderContextJobs, AThousandFramesLeaveNothingBehind) {
    Script().finish = Finish::InsideSubmit;
    CxAlignedBuffer output;
    const int before = Script().objects;
    for (uint64_t frame = 0; frame < 1000; ++frame)
        ASSERT_TRUE(context.DecodeFrame(frame % 3, output));
    EXPECT_EQ(Script().objects, before);
}

} // namespace
