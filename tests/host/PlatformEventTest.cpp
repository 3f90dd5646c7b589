#include "host/Platform.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

TEST(PlatformEvent, AnEventThatIsNotSetTimesOut) {
    Platform::Event* const event = Platform::NewEvent(false, false);
    const auto start = Clock::now();
    EXPECT_FALSE(Platform::WaitEvent(event, 30));
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(30));
    EXPECT_FALSE(Platform::WaitEvent(event, 0));
    Platform::DeleteEvent(event);
}

TEST(PlatformEvent, AnEventThatIsResetByAWaitEndsOneWaitOnly) {
    Platform::Event* const event = Platform::NewEvent(false, false);
    Platform::SetEvent(event);
    Platform::SetEvent(event);
    EXPECT_TRUE(Platform::WaitEvent(event, 0));
    EXPECT_FALSE(Platform::WaitEvent(event, 0));
    Platform::DeleteEvent(event);
}

TEST(PlatformEvent, AManualResetEventStaysSet) {
    Platform::Event* const event = Platform::NewEvent(true, false);
    Platform::SetEvent(event);
    EXPECT_TRUE(Platform::WaitEvent(event, 0));
    EXPECT_TRUE(Platform::WaitEvent(event, -1));
    Platform::DeleteEvent(event);
}

TEST(PlatformEvent, AnEventMayBeSetFromTheStart) {
    for (const bool manualReset : {false, true}) {
        Platform::Event* const event = Platform::NewEvent(manualReset, true);
        EXPECT_TRUE(Platform::WaitEvent(event, 0));
        EXPECT_EQ(Platform::WaitEvent(event, 0), manualReset);
        Platform::DeleteEvent(event);
    }
}

TEST(PlatformEvent, AWaitWithoutALimitEndsWhenAnotherThreadSetsTheEvent) {
    Platform::Event* const event = Platform::NewEvent(false, false);
    int written = 0;
    std::jthread setter([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        written = 42;
        Platform::SetEvent(event);
    });
    EXPECT_TRUE(Platform::WaitEvent(event, -1));
    EXPECT_EQ(written, 42);
    setter.join();
    Platform::DeleteEvent(event);
}

TEST(PlatformEvent, TheWokenThreadMayDeleteTheEventAtOnce) {
    for (int i = 0; i < 500; ++i) {
        Platform::Event* const event = Platform::NewEvent(false, false);
        std::jthread setter([event] { Platform::SetEvent(event); });
        ASSERT_TRUE(Platform::WaitEvent(event, -1));
        Platform::DeleteEvent(event);
    }
}

/// Number of waiting threads out of `count` that one `SetEvent` lets go within a short while.
int ThreadsWoken(bool manualReset, int count) {
    Platform::Event* const event = Platform::NewEvent(manualReset, false);
    std::atomic<int> woken = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < count; ++i) {
            threads.emplace_back([&] { woken += Platform::WaitEvent(event, 300) ? 1 : 0; });
        }
        Platform::SetEvent(event);
    }
    Platform::DeleteEvent(event);
    return woken;
}

TEST(PlatformEvent, OneSetLetsGoOneWaiterOrAllOfThem) {
    EXPECT_EQ(ThreadsWoken(false, 4), 1);
    EXPECT_EQ(ThreadsWoken(true, 4), 4);
}

} // namespace
