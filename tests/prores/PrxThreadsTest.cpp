#include "prores/PrxThreads.h"

#include "support/HeapSpy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <pthread.h>
#include <sched.h>
#include <thread>
#include <unistd.h>

namespace {

/// Gives new threads stacks that no address space can hold, so that the system refuses to make any.
class NoMoreThreads {
public:
    NoMoreThreads() {
        pthread_getattr_default_np(&before_);
        pthread_attr_t huge;
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, size_t{1} << 60);
        pthread_setattr_default_np(&huge);
        pthread_attr_destroy(&huge);
    }
    ~NoMoreThreads() {
        pthread_setattr_default_np(&before_);
        pthread_attr_destroy(&before_);
    }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    pthread_attr_t before_;
};

} // namespace

TEST(PrxThreads, AStartedThreadCallsTheEntryWithItsArgument) {
    bool called = false;
    std::thread thread;
    ASSERT_TRUE(PrxStartThread(
        &thread, [](void* argument) { *static_cast<bool*>(argument) = true; }, &called));
    thread.join();
    EXPECT_TRUE(called);
}

TEST(PrxThreads, AThreadThatTheSystemRefusesIsNoThread) {
    const NoMoreThreads noMoreThreads;
    std::thread thread;
    EXPECT_FALSE(PrxStartThread(
        &thread, [](void*) {}, nullptr));
    EXPECT_FALSE(thread.joinable());
}

TEST(PrxThreads, AThreadWithoutMemoryForItIsNoThread) {
    std::thread thread;
    bool started = true;
    {
        const NoMemory none(Allocation::Single, 1);
        started = PrxStartThread(
            &thread, [](void*) {}, nullptr);
    }
    EXPECT_FALSE(started);
    EXPECT_FALSE(thread.joinable());
}

TEST(PrxThreads, AThreadHasTheNormalPolicyWhateverThatOfItsMaker) {
    int makersPolicy = -1;
    int policy = -1;
    std::thread maker([&] {
        const sched_param normal{};
        sched_setscheduler(0, SCHED_BATCH, &normal);
        makersPolicy = sched_getscheduler(0);
        std::thread thread;
        const bool started = PrxStartThread(
            &thread, [](void* result) { *static_cast<int*>(result) = sched_getscheduler(0); }, &policy);
        if (started) thread.join();
    });
    maker.join();
    EXPECT_EQ(makersPolicy, SCHED_BATCH);
    EXPECT_EQ(policy, SCHED_OTHER);
}

TEST(PrxThreads, TheLesserOfSystemAndAllowedProcessorsIsUsable) {
    EXPECT_EQ(PrxUsableProcessors(8, 3), 3);
    EXPECT_EQ(PrxUsableProcessors(3, 8), 3);
    EXPECT_EQ(PrxUsableProcessors(2048, 2048), 2048);
}

TEST(PrxThreads, ASystemThatReportsNoProcessorsHasOne) {
    EXPECT_EQ(PrxUsableProcessors(0, 8), 1);
    EXPECT_EQ(PrxUsableProcessors(-1, -1), 1);
}

TEST(PrxThreads, AnEmptyAffinityMaskLeavesNoProcessor) { EXPECT_EQ(PrxUsableProcessors(8, 0), 0); }

TEST(PrxThreads, AThreadTiedToOneProcessorCountsOne) {
    int32_t count = 0;
    std::thread tied([&count] {
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(static_cast<size_t>(sched_getcpu()), &one);
        if (sched_setaffinity(0, sizeof(one), &one) == 0) count = PrxProcessorCount();
    });
    tied.join();
    EXPECT_EQ(count, 1);
}

TEST(PrxThreads, TheProcessorCountIsThatOfThisMachineAndProcess) {
    cpu_set_t mask;
    ASSERT_EQ(sched_getaffinity(0, sizeof(mask), &mask), 0);
    const auto online = static_cast<int32_t>(sysconf(_SC_NPROCESSORS_ONLN));
    EXPECT_EQ(PrxProcessorCount(), std::min(online, CPU_COUNT(&mask)));
}
