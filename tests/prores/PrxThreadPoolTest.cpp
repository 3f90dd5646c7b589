#include "prores/PrxThreadPool.h"

#include "support/HeapSpy.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <limits>
#include <memory>
#include <numeric>
#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace {

/// What the workers of a test do, and what they were seen to do. The pool's functions take no state of the
/// test's, so this is the process's; each test starts with a new one.
struct Record {
    std::atomic<int32_t> contextsMade = 0;
    std::atomic<int32_t> contextsAlive = 0;
    std::atomic<int32_t> threadsAlive = 0; ///< of those that were asked for a context
    std::atomic<int32_t> threadsAsked = 0;
    int32_t failingContext = -1; ///< the number of the context that can't be made
    int32_t failingThread = -1;  ///< the number of the thread that can't be made
    // Written with the pool's lock held, and read when the pool rests.
    std::vector<std::thread::id> hookCalls;
    std::atomic<bool> inHook = false;
    bool hooksOverlapped = false;
    std::vector<int32_t> threadsAskedAtHooks;
};
std::unique_ptr<Record> record;

struct Context {
    std::thread::id owner = std::this_thread::get_id();
};

/// Lives as long as the thread that has one.
struct LivingThread {
    LivingThread() { ++record->threadsAlive; }
    ~LivingThread() { --record->threadsAlive; }
};

void* MakeContext() {
    thread_local const LivingThread thisThread;
    if (record->contextsMade++ == record->failingContext) return nullptr;
    ++record->contextsAlive;
    return new Context;
}

void FreeContext(void* context) {
    if (context == nullptr) return;
    EXPECT_EQ(static_cast<Context*>(context)->owner, std::this_thread::get_id());
    delete static_cast<Context*>(context);
    --record->contextsAlive;
}

void Hook() {
    record->hooksOverlapped |= record->inHook.exchange(true);
    std::this_thread::yield();
    record->hookCalls.push_back(std::this_thread::get_id());
    record->threadsAskedAtHooks.push_back(record->threadsAsked);
    record->inHook = false;
}
constexpr PrxThreadStartHook hook = Hook;

bool StartThreadUnlessTold(std::thread* thread, PrxThreadEntry entry, void* argument) {
    if (record->threadsAsked++ == record->failingThread) return false;
    return PrxStartThread(thread, entry, argument);
}

struct Job {
    int32_t runs = 0;
    int32_t ticket = -1; ///< jobs that had begun before
    std::thread::id worker;
};
std::atomic<int32_t> tickets;

void RunJob(void* untypedJob, void* context) {
    auto* job = static_cast<Job*>(untypedJob);
    job->ticket = tickets++;
    ++job->runs;
    job->worker = std::this_thread::get_id();
    EXPECT_EQ(static_cast<Context*>(context)->owner, job->worker);
}

constexpr PrxPoolClient client = {MakeContext, FreeContext, RunJob, sizeof(Job)};

struct PoolDeleter {
    void operator()(PrxThreadPool* pool) const { PrxThreadPool::destroy(pool); }
};
using PoolPtr = std::unique_ptr<PrxThreadPool, PoolDeleter>;

PoolPtr MakePool(int32_t count, const PrxPoolClient& poolClient = client) {
    return PoolPtr(PrxThreadPool::create(count, &hook, poolClient, StartThreadUnlessTold));
}

class PrxThreadPoolTest : public testing::Test {
protected:
    PrxThreadPoolTest() {
        record = std::make_unique<Record>();
        tickets = 0;
    }
    std::vector<Job> Run(PrxThreadPool& pool, size_t count) {
        std::vector<Job> jobs(count);
        tickets = 0;
        pool.run(jobs.data(), jobs.size());
        return jobs;
    }
};

// A pool reports what it can't do, or ends the process.
static_assert(noexcept(PrxThreadPool::create(1, nullptr, client)));
static_assert(noexcept(PrxThreadPool::destroy(nullptr)));
static_assert(noexcept(std::declval<PrxThreadPool&>().run(nullptr, 0)));

constexpr int32_t workerCounts[] = {1, 2, 5, 64};

} // namespace

TEST_F(PrxThreadPoolTest, ACountBelow1OrAbove64GivesNoPool) {
    for (const int32_t count : {0, -1, 65, std::numeric_limits<int32_t>::max()})
        EXPECT_EQ(MakePool(count), nullptr);
    EXPECT_EQ(record->threadsAsked, 0);
}

TEST_F(PrxThreadPoolTest, AnEmptyProcessorMaskGivesNoPool) {
    EXPECT_EQ(MakePool(PrxUsableProcessors(8, 0)), nullptr);
}

TEST_F(PrxThreadPoolTest, EveryWorkerIsReadyWhenCreateReturns) {
    for (const int32_t count : workerCounts) {
        record->hookCalls.clear();
        const PoolPtr pool = MakePool(count);
        ASSERT_NE(pool, nullptr);
        EXPECT_EQ(record->contextsAlive, count);
        EXPECT_EQ(record->hookCalls.size(), static_cast<size_t>(count));
    }
}

TEST_F(PrxThreadPoolTest, StandsOnItsOwnCacheLine) {
    const PoolPtr pool = MakePool(1);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(pool.get()) % 64, 0U);
}

TEST_F(PrxThreadPoolTest, TheHookIsCalledOnceInEachWorkerAndNeverInTwoAtOnce) {
    const PoolPtr pool = MakePool(16);
    const std::set<std::thread::id> workers(record->hookCalls.begin(), record->hookCalls.end());
    EXPECT_EQ(workers.size(), 16U);
    EXPECT_FALSE(workers.contains(std::this_thread::get_id()));
    EXPECT_FALSE(record->hooksOverlapped);
    for (const Job& job : Run(*pool, 100))
        EXPECT_TRUE(workers.contains(job.worker));
    EXPECT_EQ(record->hookCalls.size(), 16U);
}

TEST_F(PrxThreadPoolTest, NoHookIsCalledWhileThreadsAreStillBeingMade) {
    for (int round = 0; round < 20; ++round) {
        record->threadsAsked = 0;
        const PoolPtr pool = MakePool(16);
    }
    EXPECT_EQ(record->threadsAskedAtHooks, std::vector<int32_t>(20 * 16, 16));
}

TEST_F(PrxThreadPoolTest, WorksWithoutAHook) {
    constexpr PrxThreadStartHook none = nullptr;
    for (const PrxThreadStartHook* cell : {static_cast<const PrxThreadStartHook*>(nullptr), &none}) {
        const PoolPtr pool(PrxThreadPool::create(2, cell, client));
        ASSERT_NE(pool, nullptr);
        EXPECT_EQ(Run(*pool, 3)[2].runs, 1);
    }
}

TEST_F(PrxThreadPoolTest, RunsEveryJobOnce) {
    for (const int32_t count : workerCounts) {
        const PoolPtr pool = MakePool(count);
        for (const size_t jobCount : {1, 2, 68, 1000}) {
            for (const Job& job : Run(*pool, jobCount))
                EXPECT_EQ(job.runs, 1);
            EXPECT_EQ(tickets, static_cast<int32_t>(jobCount));
        }
    }
}

TEST_F(PrxThreadPoolTest, ABatchWithoutJobsCompletes) {
    for (const int32_t count : workerCounts) {
        const PoolPtr pool = MakePool(count);
        for (int round = 0; round < 100; ++round)
            pool->run(nullptr, 0);
        EXPECT_EQ(tickets, 0);
    }
}

TEST_F(PrxThreadPoolTest, OneWorkerRunsJobsInArrayOrder) {
    const PoolPtr pool = MakePool(1);
    const std::vector<Job> jobs = Run(*pool, 1000);
    for (size_t i = 0; i < jobs.size(); ++i)
        EXPECT_EQ(jobs[i].ticket, static_cast<int32_t>(i));
}

TEST_F(PrxThreadPoolTest, SeveralWorkersTakeJobsInArrayOrder) {
    constexpr int32_t workers = 4;
    const PoolPtr pool = MakePool(workers);
    const std::vector<Job> jobs = Run(*pool, 5000);
    // Each other worker may have taken one earlier job without having begun it.
    for (size_t i = 0; i < jobs.size(); ++i)
        EXPECT_GE(jobs[i].ticket, static_cast<int32_t>(i) - (workers - 1));
}

TEST_F(PrxThreadPoolTest, JobsOfDifferentWorkersRunAtTheSameTime) {
    static std::latch* meeting = nullptr;
    std::latch both(2);
    meeting = &both;
    const PrxPoolClient meetingClient = {MakeContext, FreeContext,
                                         [](void*, void*) { meeting->arrive_and_wait(); }, sizeof(Job)};
    const PoolPtr pool = MakePool(2, meetingClient);
    Run(*pool, 2);
    EXPECT_TRUE(both.try_wait());
}

TEST_F(PrxThreadPoolTest, ABatchEndsWhenItsLastJobHasEndedNotWhenItWasTaken) {
    const PrxPoolClient slowClient = {MakeContext, FreeContext,
                                      [](void* job, void*) {
                                          std::this_thread::sleep_for(std::chrono::milliseconds(20));
                                          ++static_cast<Job*>(job)->runs;
                                      },
                                      sizeof(Job)};
    const PoolPtr pool = MakePool(5, slowClient);
    for (const Job& job : Run(*pool, 7))
        EXPECT_EQ(job.runs, 1);
}

TEST_F(PrxThreadPoolTest, JobsOfAnySizeStandOneBehindTheOther) {
    static std::atomic<int32_t> sum;
    sum = 0;
    const PrxPoolClient byteClient = {MakeContext, FreeContext,
                                      [](void* job, void*) { sum += *static_cast<uint8_t*>(job); }, 1};
    const PoolPtr pool = MakePool(2, byteClient);
    std::vector<uint8_t> jobs(200);
    std::iota(jobs.begin(), jobs.end(), uint8_t{0});
    pool->run(jobs.data(), jobs.size());
    EXPECT_EQ(sum, 199 * 200 / 2);
}

TEST_F(PrxThreadPoolTest, ManyBatchesOfRandomSizesFollowOneAnother) {
    std::mt19937 random = MakeRandom();
    const PoolPtr pool = MakePool(5);
    for (int batch = 0; batch < 3000; ++batch) {
        for (const Job& job : Run(*pool, random() % 12))
            ASSERT_EQ(job.runs, 1);
    }
}

TEST_F(PrxThreadPoolTest, AContextThatCantBeMadeGivesNoPoolAndLeavesNothing) {
    for (int32_t failing = 0; failing < 8; ++failing) {
        record->contextsMade = 0;
        record->failingContext = failing;
        EXPECT_EQ(MakePool(8), nullptr);
        EXPECT_EQ(record->contextsMade, 8);
        EXPECT_EQ(record->contextsAlive, 0);
    }
    EXPECT_EQ(record->threadsAlive, 0);
}

TEST_F(PrxThreadPoolTest, AThreadThatCantBeMadeGivesNoPoolAndLeavesNothing) {
    for (int32_t failing = 0; failing < 8; ++failing) {
        record->threadsAsked = 0;
        record->failingThread = failing;
        EXPECT_EQ(MakePool(8), nullptr);
        EXPECT_EQ(record->threadsAsked, failing + 1);
        EXPECT_EQ(record->contextsAlive, 0);
    }
    EXPECT_EQ(record->threadsAlive, 0);
}

TEST_F(PrxThreadPoolTest, NoMemoryForThePoolOrItsThreadsGivesNoPoolAndStartsNothing) {
    // The pool is the only aligned block, and the array holds its threads.
    for (const Allocation form : {Allocation::Aligned, Allocation::Array}) {
        const NoMemory none(form, 1);
        const PrxThreadPool* pool = PrxThreadPool::create(8, &hook, client, StartThreadUnlessTold);
        EXPECT_EQ(pool, nullptr);
    }
    EXPECT_EQ(record->threadsAsked, 0);
}

TEST_F(PrxThreadPoolTest, APoolCanBeMadeAfterOneThatFailed) {
    record->failingThread = 1;
    EXPECT_EQ(MakePool(2), nullptr);
    const PoolPtr pool = MakePool(2);
    ASSERT_NE(pool, nullptr);
    EXPECT_EQ(Run(*pool, 5)[4].runs, 1);
}

TEST_F(PrxThreadPoolTest, DestroyStopsAllWorkersAndFreesTheirContexts) {
    PrxThreadPool* pool = PrxThreadPool::create(64, &hook, client);
    EXPECT_EQ(record->threadsAlive, 64);
    PrxThreadPool::destroy(pool);
    EXPECT_EQ(record->contextsAlive, 0);
    EXPECT_EQ(record->threadsAlive, 0);
}

TEST_F(PrxThreadPoolTest, DestroyTakesNull) {
    PrxThreadPool::destroy(nullptr);
    EXPECT_EQ(record->contextsAlive, 0);
}

TEST_F(PrxThreadPoolTest, HundredsOfPoolsComeAndGoWithoutATrace) {
    for (int round = 0; round < 400; ++round) {
        const PoolPtr pool = MakePool(1 + round % 5);
        ASSERT_NE(pool, nullptr);
        if (round % 2 == 0) Run(*pool, static_cast<size_t>(round % 9));
    }
    EXPECT_EQ(record->contextsAlive, 0);
    EXPECT_EQ(record->threadsAlive, 0);
}

TEST_F(PrxThreadPoolTest, SeparatePoolsRunAtTheSameTime) {
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 3; ++caller) {
        callers.emplace_back([] {
            const PoolPtr pool(PrxThreadPool::create(2, nullptr, client));
            for (int batch = 0; batch < 200; ++batch) {
                std::vector<Job> jobs(10);
                pool->run(jobs.data(), jobs.size());
                for (const Job& job : jobs)
                    EXPECT_EQ(job.runs, 1);
            }
        });
    }
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(record->contextsAlive, 0);
}
