#include "host/Image.h"

#include <gtest/gtest.h>
#include <tbb/global_control.h>
#include <tbb/task_arena.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

class ImageMultiProcess : public testing::Test {
protected:
    ~ImageMultiProcess() override { Image::Free(image); }

    Image* image = Image::Allocate(4, 4, ImageData_RGBA8);
};

void CountCall(Image*, void* context, int) { ++*static_cast<std::atomic<int>*>(context); }

TEST_F(ImageMultiProcess, ACountOfZeroRunsNothing) {
    std::atomic<int> calls = 0;
    EXPECT_TRUE(image->DoMultiProcess(CountCall, &calls, 0, nullptr, false));
    EXPECT_EQ(calls, 0);
}

TEST_F(ImageMultiProcess, ANegativeCountRunsNothing) {
    std::atomic<int> calls = 0;
    EXPECT_TRUE(image->DoMultiProcess(CountCall, &calls, -5, nullptr, false));
    EXPECT_EQ(calls, 0);
}

TEST_F(ImageMultiProcess, EachIndexRunsOnceAndItsWritesAreVisibleAfterwards) {
    for (const int count : {1, 2, 3, 1000, 4321}) {
        std::vector<int> calls(count, 0);
        const auto countIndex = [](Image*, void* context, int index) {
            ++(*static_cast<std::vector<int>*>(context))[index];
        };
        EXPECT_TRUE(image->DoMultiProcess(countIndex, &calls, count, nullptr, false));
        EXPECT_EQ(calls, std::vector<int>(count, 1));
    }
}

TEST_F(ImageMultiProcess, TheImageAndTheContextArePassedOn) {
    Image* seen = nullptr;
    const auto storeImage = [](Image* given, void* context, int) { *static_cast<Image**>(context) = given; };
    image->DoMultiProcess(storeImage, &seen, 1, nullptr, false);
    EXPECT_EQ(seen, image);
}

/// Two indices that each wait for the other one to have begun.
struct Meeting {
    std::atomic<int> arrived = 0;
    std::atomic<int> met = 0;

    static void Wait(Image*, void* context, int) {
        Meeting& meeting = *static_cast<Meeting*>(context);
        ++meeting.arrived;
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (meeting.arrived < 2 && std::chrono::steady_clock::now() < limit)
            std::this_thread::yield();
        if (meeting.arrived >= 2) ++meeting.met;
    }
};

TEST_F(ImageMultiProcess, IndicesRunAtTheSameTime) {
    const tbb::global_control twoThreads(tbb::global_control::max_allowed_parallelism, 2);
    tbb::task_arena arena(2);
    Meeting meeting;
    arena.execute([&] { image->DoMultiProcess(Meeting::Wait, &meeting, 2, nullptr, false); });
    EXPECT_EQ(meeting.met, 2);
}

struct ThreadLog {
    std::mutex lock;
    std::set<std::thread::id> threads; ///< guarded by `lock`

    static void Note(Image*, void* context, int) {
        ThreadLog& log = *static_cast<ThreadLog*>(context);
        const std::lock_guard guard(log.lock);
        log.threads.insert(std::this_thread::get_id());
    }
};

TEST_F(ImageMultiProcess, ACallersArenaOfOneThreadKeepsItOnTheCallingThread) {
    ThreadLog log;
    tbb::task_arena arena(1);
    arena.execute([&] { image->DoMultiProcess(ThreadLog::Note, &log, 2000, nullptr, false); });
    EXPECT_EQ(log.threads, std::set{std::this_thread::get_id()});
}

TEST_F(ImageMultiProcess, AGlobalLimitOfOneThreadKeepsItOnTheCallingThread) {
    const tbb::global_control oneThread(tbb::global_control::max_allowed_parallelism, 1);
    ThreadLog log;
    image->DoMultiProcess(ThreadLog::Note, &log, 2000, nullptr, false);
    EXPECT_EQ(log.threads, std::set{std::this_thread::get_id()});
}

/// An outer row that holds a lock of its thread while it runs an inner loop.
struct Nesting {
    std::atomic<bool> reentered = false;

    static void Outer(Image* image, void* context, int) {
        static thread_local bool inside = false;
        Nesting& nesting = *static_cast<Nesting*>(context);
        if (inside) nesting.reentered = true;
        inside = true;
        std::atomic<int> calls = 0;
        image->DoMultiProcess(CountCall, &calls, 64, nullptr, false);
        inside = false;
    }
};

TEST_F(ImageMultiProcess, AWaitingThreadTakesNoOtherRowOfAnOuterLoop) {
    Nesting nesting;
    image->DoMultiProcess(Nesting::Outer, &nesting, 500, nullptr, false);
    EXPECT_FALSE(nesting.reentered);
}

/// Two indices of which the first throws as soon as the second one runs, and this one then takes its time.
struct Failing {
    std::atomic<bool> secondRuns = false;
    std::atomic<bool> firstThrows = false;
    bool secondEnded = false;

    static void Run(Image*, void* context, int index) {
        Failing& failing = *static_cast<Failing*>(context);
        const std::atomic<bool>& awaited = index == 0 ? failing.secondRuns : failing.firstThrows;
        (index == 0 ? failing.firstThrows : failing.secondRuns) = true;
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!awaited && std::chrono::steady_clock::now() < limit)
            std::this_thread::yield();
        if (index == 0) throw std::runtime_error("row 0");
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        failing.secondEnded = true;
    }
};

TEST_F(ImageMultiProcess, AnExceptionReachesTheCallerAfterTheRunningRowsHaveEnded) {
    const tbb::global_control twoThreads(tbb::global_control::max_allowed_parallelism, 2);
    tbb::task_arena arena(2);
    Failing failing;
    std::string reason;
    arena.execute([&] {
        try {
            image->DoMultiProcess(Failing::Run, &failing, 2, nullptr, false);
        } catch (const std::runtime_error& error) {
            reason = error.what();
        }
    });
    EXPECT_EQ(reason, "row 0");
    EXPECT_TRUE(failing.secondEnded);
}

TEST_F(ImageMultiProcess, OfSeveralExceptionsOneReachesTheCallerAndTheNextLoopRuns) {
    const auto fail = [](Image*, void*, int) { throw std::runtime_error("row"); };
    for (int i = 0; i < 50; ++i)
        EXPECT_THROW(image->DoMultiProcess(fail, nullptr, 200, nullptr, false), std::runtime_error);
    std::atomic<int> calls = 0;
    EXPECT_TRUE(image->DoMultiProcess(CountCall, &calls, 200, nullptr, false));
    EXPECT_EQ(calls, 200);
}

TEST_F(ImageMultiProcess, AfterAnExceptionNoFurtherRowBegins) {
    const tbb::global_control oneThread(tbb::global_control::max_allowed_parallelism, 1);
    std::atomic<int> calls = 0;
    const auto failFirst = [](Image*, void* context, int) {
        ++*static_cast<std::atomic<int>*>(context);
        throw std::runtime_error("row");
    };
    EXPECT_THROW(image->DoMultiProcess(failFirst, &calls, 1000, nullptr, false), std::runtime_error);
    EXPECT_EQ(calls, 1);
}

TEST_F(ImageMultiProcess, SeveralThreadsMayRunLoopsAtOnce) {
    std::atomic<int> calls = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int loop = 0; loop < 20; ++loop)
                image->DoMultiProcess(CountCall, &calls, 50, nullptr, false);
        });
    }
    threads.clear();
    EXPECT_EQ(calls, 4 * 20 * 50);
}

} // namespace
