#include "cameraraw/IOVrelCallback.h"

#include "cameraraw/RawTestSupport.h"
#include "support/VtableSlots.h"

#include <thread>

namespace {

/// Counts its references.
class Product : public IUnknown {
public:
    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }

    ULONG references = 1;
};

/// Keeps user data, and nothing else.
class Job : public RawJob {
public:
    explicit Job(void* data) : data_(data) {}
    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    HRESULT Submit() override { return E_NOTIMPL; }
    HRESULT SetUserData(void*) override { return E_NOTIMPL; }
    HRESULT GetUserData(void** data) override {
        *data = data_;
        return S_OK;
    }

private:
    void* data_;
};

bool IsSet(const RawWait& wait) { return Platform::WaitEvent(wait.event.get(), 0); }

TEST(IOVrelCallback, RefusesEveryInterfaceIUnknownToo) {
    IOVrelCallback callback;
    for (const IID& identifier : {IID_IUnknown, IID_RawExtras}) {
        void* interface = &callback;
        EXPECT_EQ(callback.QueryInterface(identifier, &interface), static_cast<HRESULT>(0x80004005U));
        EXPECT_EQ(interface, nullptr);
    }
    EXPECT_EQ(callback.QueryInterface(IID_IUnknown, nullptr), static_cast<HRESULT>(0x80004005U));
}

TEST(IOVrelCallback, ReferencesToItCountForNothing) {
    IOVrelCallback callback;
    EXPECT_EQ(callback.AddRef(), 1U);
    EXPECT_EQ(callback.AddRef(), 1U);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(callback.Release(), 1U);
}

TEST(IOVrelCallback, AWaitBeginsAsAFailureWithoutAProduct) {
    const RawWait wait;
    EXPECT_EQ(wait.result, static_cast<HRESULT>(0x80004005U));
    EXPECT_FALSE(wait.product);
    EXPECT_EQ(wait.progress, 0.0F);
    EXPECT_FALSE(IsSet(wait));
}

TEST(IOVrelCallback, AReadStoresResultAndProductAndWakesTheCaller) {
    IOVrelCallback callback;
    Product product;
    {
        RawWait wait;
        Job job(&wait);
        callback.ReadFinished(&job, S_FALSE, &product);
        EXPECT_TRUE(IsSet(wait));
        EXPECT_EQ(wait.result, S_FALSE);
        EXPECT_EQ(wait.product.Get(), &product);
        EXPECT_EQ(product.references, 2U);
    }
    EXPECT_EQ(product.references, 1U);
}

TEST(IOVrelCallback, AProcessJobDoesTheSame) {
    IOVrelCallback callback;
    Product product;
    RawWait wait;
    Job job(&wait);
    callback.ProcessFinished(&job, S_OK, &product);
    EXPECT_TRUE(IsSet(wait));
    EXPECT_EQ(wait.result, S_OK);
    EXPECT_EQ(product.references, 2U);
    callback.ProcessFinished(&job, E_FAIL, nullptr);
    EXPECT_EQ(product.references, 1U);
}

TEST(IOVrelCallback, ADecodeJobAndTheLastKindDropAnyProduct) {
    IOVrelCallback callback;
    Product product;
    RawWait wait;
    Job job(&wait);
    for (const auto finished : {&IOVrelCallback::DecodeFinished, &IOVrelCallback::LastFinished}) {
        wait.product = RawPointer<IUnknown>::Share(&product);
        wait.result = S_FALSE;
        (callback.*finished)(&job, E_INVALIDARG);
        EXPECT_TRUE(IsSet(wait));
        EXPECT_EQ(wait.result, E_INVALIDARG);
        EXPECT_FALSE(wait.product);
        EXPECT_EQ(product.references, 1U);
    }
}

TEST(IOVrelCallback, ProgressIsStoredAndWakesNobody) {
    IOVrelCallback callback;
    RawWait wait;
    Job job(&wait);
    callback.Progress(&job, 0.75F);
    EXPECT_EQ(wait.progress, 0.75F);
    EXPECT_FALSE(IsSet(wait));
}

TEST(IOVrelCallback, AJobThatIsNullOrThatNobodyWaitsForIsIgnored) {
    IOVrelCallback callback;
    Product product;
    Job unknown(nullptr);
    for (RawJob* const job : {static_cast<RawJob*>(nullptr), static_cast<RawJob*>(&unknown)}) {
        callback.ReadFinished(job, S_OK, &product);
        callback.DecodeFinished(job, S_OK);
        callback.ProcessFinished(job, S_OK, &product);
        callback.Progress(job, 1.0F);
        callback.LastFinished(job, S_OK);
    }
    EXPECT_EQ(product.references, 1U);
}

TEST(IOVrelCallback, TheThreeNoticesDoNothing) {
    IOVrelCallback callback;
    RawWait wait;
    Job job(&wait);
    callback.JobStarted(&job);
    callback.QueueIdle();
    callback.JobWarning(&job, E_FAIL);
    EXPECT_FALSE(IsSet(wait));
    EXPECT_EQ(wait.result, E_FAIL);
}

TEST(IOVrelCallback, ItsOperationsStandInTheOrderOfTheirSlots) {
    IOVrelCallback callback;
    IRavenlightRawCallback* const interface = &callback;
    Product product;
    RawWait wait;
    Job jobWithData(&wait);
    RawJob* const job = &jobWithData;
    EXPECT_EQ(CallSlot<ULONG>(interface, 1), 1U);
    EXPECT_EQ(CallSlot<ULONG>(interface, 2), 1U);
    CallSlot<void>(interface, 3, job, HRESULT{31}, static_cast<IUnknown*>(&product));
    EXPECT_EQ(wait.result, 31);
    EXPECT_TRUE(wait.product);
    CallSlot<void>(interface, 4, job, HRESULT{41});
    EXPECT_EQ(wait.result, 41);
    EXPECT_FALSE(wait.product);
    CallSlot<void>(interface, 5, job, HRESULT{51}, static_cast<IUnknown*>(&product));
    EXPECT_EQ(wait.result, 51);
    EXPECT_TRUE(wait.product);
    CallSlot<void>(interface, 6, job, 0.25F);
    EXPECT_EQ(wait.progress, 0.25F);
    CallSlot<void>(interface, 7, job, HRESULT{71});
    EXPECT_EQ(wait.result, 71);
    EXPECT_FALSE(wait.product);
}

TEST(IOVrelCallback, AnyNumberOfThreadsMayTellOfTheirJobs) {
    IOVrelCallback callback;
    constexpr int32_t threadCount = 8;
    std::vector<std::thread> threads;
    for (int32_t i = 0; i < threadCount; ++i) {
        threads.emplace_back([&callback, i] {
            RawWait wait;
            Job job(&wait);
            std::thread sdk([&] { callback.DecodeFinished(&job, i); });
            wait.Wait();
            EXPECT_EQ(wait.result, i);
            sdk.join();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace
