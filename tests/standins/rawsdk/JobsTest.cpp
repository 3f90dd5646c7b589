// Jobs, the threads that do them, and the callback that they tell.

#include "standins/rawsdk/RawSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <set>

namespace {

/// A session with a clip of four frames.
class Jobs : public testing::Test {
protected:
    Jobs() {
        WriteClip(folder_ / "clip.vrel", SizedClip(37, 130), std::vector<rawsdk::FrameProperties>(4));
        EXPECT_EQ(session_.Open(folder_ / "clip.vrel"), S_OK);
        session_.bitstream.assign(Bound(), 0);
    }

    uint32_t Bound() {
        uint32_t bound = 0;
        EXPECT_EQ(session_.reader->GetBitstreamBound(&bound), S_OK);
        return bound;
    }
    Held<RawJob> ReadJob(uint64_t frame) {
        Held<RawJob> job;
        session_.reader->CreateReadJob(frame, session_.bitstream.data(), Bound(), job.Receive());
        return job;
    }
    void Fail(const std::string& call, uint32_t times, HRESULT result) {
        SdkControl().Add({call, 0, times, result});
    }

    TemporaryFolder folder_;
    RawSession session_;
};

TEST_F(Jobs, TurnAFrameIntoAPicture) { EXPECT_EQ(session_.Decode(2).size(), 37u * 130 * 3); }

TEST_F(Jobs, GiveTheSamePictureOfAFrameInAnyOrder) {
    const std::vector<uint64_t> order = {3, 0, 2, 0, 1, 3};
    std::vector<Words> pictures(4);
    for (const uint64_t frame : order) {
        const Words picture = session_.Decode(frame);
        ASSERT_FALSE(picture.empty());
        if (!pictures[frame].empty()) {
            EXPECT_EQ(picture, pictures[frame]);
        }
        pictures[frame] = picture;
    }
    EXPECT_EQ(std::set<Words>(pictures.begin(), pictures.end()).size(), 4u);
}

TEST_F(Jobs, RunOnThreadsOfTheLibrary) {
    const Held<RawJob> job = ReadJob(0);
    EXPECT_NE(session_.Run(job.Get()).thread, std::this_thread::get_id());
}

TEST_F(Jobs, ThatReadHaveTheFrameForTheirProduct) {
    const Finished finished = session_.Read(1);
    EXPECT_EQ(finished.kind, "read");
    EXPECT_EQ(finished.result, S_OK);
    ASSERT_TRUE(finished.product);
    EXPECT_TRUE(Query<RawFrameSize>(finished.product.Get(), IID_RawFrameSize));
}

TEST_F(Jobs, KeepTheUserDataThatTheyAreGiven) {
    const Held<RawJob> job = ReadJob(0);
    void* data = &session_;
    EXPECT_EQ(job->GetUserData(&data), S_OK);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(job->SetUserData(this), S_OK);
    EXPECT_EQ(job->GetUserData(&data), S_OK);
    EXPECT_EQ(data, this);
    EXPECT_EQ(job->GetUserData(nullptr), E_POINTER);
}

TEST_F(Jobs, CanBeSubmittedAgainOnceTheyHaveFinished) {
    const Held<RawJob> job = ReadJob(0);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(session_.Run(job.Get()).result, S_OK);
}

TEST_F(Jobs, CanNotBeSubmittedWhileTheyWait) {
    SdkControl().DelayJobs(20);
    const Held<RawJob> job = ReadJob(0);
    EXPECT_EQ(job->Submit(), S_OK);
    EXPECT_EQ(job->Submit(), E_UNEXPECTED);
    EXPECT_EQ(session_.callback.Wait().result, S_OK);
}

TEST_F(Jobs, CanBeMany) {
    std::vector<Held<RawJob>> jobs;
    std::vector<std::vector<uint8_t>> buffers(40, std::vector<uint8_t>(Bound()));
    for (size_t i = 0; i < buffers.size(); ++i) {
        Held<RawJob>& job = jobs.emplace_back();
        session_.reader->CreateReadJob(i % 4, buffers[i].data(), Bound(), job.Receive());
        EXPECT_EQ(job->Submit(), S_OK);
    }
    for (size_t i = 0; i < buffers.size(); ++i)
        EXPECT_EQ(session_.callback.Wait().result, S_OK);
    EXPECT_EQ(buffers[0], buffers[4]);
}

TEST_F(Jobs, TellTheirBeginningTheirStagesAndThatNothingIsLeft) {
    session_.Decode(0);
    // The threads have told everything once the codec is gone.
    session_.flow.Release();
    session_.codec.Release();
    const std::vector<std::string> notices = session_.callback.Notices();
    EXPECT_EQ(std::ranges::count(notices, "started"), 3);
    EXPECT_EQ(std::ranges::count(notices, "progress"), 2);
    EXPECT_EQ(std::ranges::count(notices, "idle"), 3);
    EXPECT_EQ(session_.factory->CreateCodec(session_.codec.Receive()), S_OK);
}

TEST_F(Jobs, TellNobodyWithoutACallback) {
    EXPECT_EQ(session_.codec->SetCallback(nullptr), S_OK);
    const Held<RawJob> job = ReadJob(0);
    EXPECT_EQ(job->Submit(), S_OK);
    session_.reader.Release();
    session_.settings.Release();
    session_.clip.Release();
}

TEST_F(Jobs, AreFinishedBeforeTheCodecIsGone) {
    SdkControl().DelayJobs(10);
    const Held<RawJob> job = ReadJob(0);
    EXPECT_EQ(job->Submit(), S_OK);
    session_.flow.Release();
    session_.codec.Release();
    EXPECT_EQ(session_.callback.Wait().result, S_OK);
    EXPECT_EQ(session_.factory->CreateCodec(session_.codec.Receive()), S_OK);
}

TEST_F(Jobs, CanNotBeSubmittedOnceTheCodecIsGone) {
    const Held<RawJob> job = ReadJob(0);
    session_.flow.Release();
    session_.codec.Release();
    EXPECT_EQ(job->Submit(), E_UNEXPECTED);
    EXPECT_EQ(job->Submit(), E_UNEXPECTED);
    EXPECT_EQ(session_.factory->CreateCodec(session_.codec.Receive()), S_OK);
}

TEST_F(Jobs, MayBeReleasedWhileTheyRun) {
    SdkControl().DelayJobs(10);
    EXPECT_EQ(ReadJob(0)->Submit(), S_OK);
    EXPECT_EQ(session_.callback.Wait().result, S_OK);
}

TEST_F(Jobs, AreLateIfTheyAreToBe) {
    SdkControl().DelayJobs(30);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(session_.Read(0).result, S_OK);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
}

TEST_F(Jobs, FailIfTheyAreToAndThenNoMore) {
    Fail("DecodeJob.Run", 2, E_UNEXPECTED);
    for (const HRESULT expected : {E_UNEXPECTED, E_UNEXPECTED, S_OK}) {
        session_.Decode(0);
        EXPECT_EQ(session_.failure, expected);
    }
}

TEST_F(Jobs, HaveNoProductIfTheyFail) {
    Fail("ReadJob.Run", 1, E_FAIL);
    const Finished finished = session_.Read(0);
    EXPECT_EQ(finished.result, E_FAIL);
    EXPECT_FALSE(finished.product);
}

TEST_F(Jobs, HaveNoProductIfTheyAreToSucceedAndGiveNothing) {
    Fail("ReadJob.Run", 1, S_OK);
    const Finished finished = session_.Read(0);
    EXPECT_EQ(finished.result, S_OK);
    EXPECT_FALSE(finished.product);
}

/// Submits a job again, once, from where it is told to have finished.
class SubmittingAgain final : public IRavenlightRawCallback {
public:
    HRESULT QueryInterface(REFIID, void**) override { return E_FAIL; }
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    void ReadFinished(RawJob* job, HRESULT, IUnknown*) override {
        if (++times == 1) job->Submit();
    }
    void DecodeFinished(RawJob*, HRESULT) override {}
    void ProcessFinished(RawJob*, HRESULT, IUnknown*) override {}
    void Progress(RawJob*, float) override {}
    void LastFinished(RawJob*, HRESULT) override {}
    void JobStarted(RawJob*) override {}
    void QueueIdle() override {}
    void JobWarning(RawJob*, HRESULT) override {}

    std::atomic<int> times = 0;
};

TEST_F(Jobs, CanBeSubmittedFromTheCallback) {
    SubmittingAgain callback;
    session_.codec->SetCallback(&callback);
    const Held<RawJob> job = ReadJob(0);
    EXPECT_EQ(job->Submit(), S_OK);
    while (callback.times < 2)
        std::this_thread::yield();
    EXPECT_EQ(session_.codec->SetCallback(nullptr), S_OK);
}

/// Takes itself away from where it is told of a job.
class LeavingCallback final : public IRavenlightRawCallback {
public:
    explicit LeavingCallback(RawCodec* codec) : codec_(codec) {}
    HRESULT QueryInterface(REFIID, void**) override { return E_FAIL; }
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    void ReadFinished(RawJob*, HRESULT, IUnknown*) override { left = codec_->SetCallback(nullptr) == S_OK; }
    void DecodeFinished(RawJob*, HRESULT) override {}
    void ProcessFinished(RawJob*, HRESULT, IUnknown*) override {}
    void Progress(RawJob*, float) override {}
    void LastFinished(RawJob*, HRESULT) override {}
    void JobStarted(RawJob*) override {}
    void QueueIdle() override {}
    void JobWarning(RawJob*, HRESULT) override {}

    std::atomic<bool> left = false;

private:
    RawCodec* codec_;
};

TEST_F(Jobs, LetTheCallbackTakeItselfAway) {
    LeavingCallback callback(session_.codec.Get());
    session_.codec->SetCallback(&callback);
    const Held<RawJob> job = ReadJob(0);
    EXPECT_EQ(job->Submit(), S_OK);
    while (!callback.left)
        std::this_thread::yield();
}

} // namespace
