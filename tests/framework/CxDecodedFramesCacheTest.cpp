#include "framework/CxDecodedFramesCache.h"

#include "support/HeapSpy.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>
#include <vector>

namespace {

/// A decoded frame that counts its releases, from any thread.
struct CountedFrame {
    std::atomic<int> releases = 0;
};

using Cache = CxDecodedFramesCache<CountedFrame>;
constexpr auto capacityTold = static_cast<int32_t>(Cache::MAX_GOP_LENGTH);

class CxDecodedFramesCacheTest : public testing::Test {
protected:
    static void Release(CountedFrame*& frame) {
        ++frame->releases;
        frame = nullptr;
    }
    /// Caches frames 0 to `count` - 1 at the times of the same numbers.
    void Fill(Cache& cache, int32_t count) {
        for (int32_t i = 0; i < count; ++i)
            EXPECT_TRUE(cache.CacheDecodedFrame(i, &frames[static_cast<size_t>(i)]));
    }
    /// The frame at a time, or null.
    static CountedFrame* At(Cache& cache, int64_t time) {
        CountedFrame* frame = nullptr;
        const bool isThere = cache.UseCachedFrame(time, frame);
        EXPECT_EQ(isThere, frame != nullptr);
        return frame;
    }

    std::array<CountedFrame, 64> frames;
};

TEST_F(CxDecodedFramesCacheTest, AFullCacheEvictsTheLowestTimeEvenIfItWasUsedLast) {
    Cache cache(Release, 32);
    Fill(cache, 32);
    EXPECT_EQ(At(cache, 0), &frames[0]);
    EXPECT_TRUE(cache.CacheDecodedFrame(32, &frames[32]));
    EXPECT_EQ(At(cache, 0), nullptr);
    EXPECT_EQ(frames[0].releases, 1);
    for (size_t i = 1; i <= 32; ++i)
        EXPECT_EQ(At(cache, static_cast<int64_t>(i)), &frames[i]) << i;
}

TEST_F(CxDecodedFramesCacheTest, ATimeLowerThanAllEvictsTheLowestThatIsThereAndIsTheNextToGo) {
    Cache cache(Release, 3);
    for (size_t i = 0; i < 3; ++i)
        cache.CacheDecodedFrame(static_cast<int64_t>(10 + i), &frames[i]);
    EXPECT_TRUE(cache.CacheDecodedFrame(5, &frames[3]));
    EXPECT_EQ(At(cache, 10), nullptr);
    EXPECT_EQ(At(cache, 5), &frames[3]);
    EXPECT_TRUE(cache.CacheDecodedFrame(20, &frames[4]));
    EXPECT_EQ(At(cache, 5), nullptr);
    EXPECT_EQ(frames[3].releases, 1);
    EXPECT_EQ(At(cache, 11), &frames[1]);
}

TEST_F(CxDecodedFramesCacheTest, ATimeThatIsThereKeepsItsFrameAndTheNewOneStaysWithTheCaller) {
    {
        Cache cache(Release, 2);
        Fill(cache, 2);
        EXPECT_FALSE(cache.CacheDecodedFrame(1, &frames[5]));
        EXPECT_EQ(At(cache, 1), &frames[1]);
        // Nothing was evicted to make room.
        EXPECT_EQ(At(cache, 0), &frames[0]);
    }
    EXPECT_EQ(frames[5].releases, 0);
    EXPECT_EQ(frames[1].releases, 1);
}

TEST_F(CxDecodedFramesCacheTest, TheFrameThatIsThereMayBeAddedAgainAndHasOneOwner) {
    {
        Cache cache(Release, 2);
        Fill(cache, 1);
        EXPECT_TRUE(cache.CacheDecodedFrame(0, &frames[0]));
    }
    EXPECT_EQ(frames[0].releases, 1);
}

TEST_F(CxDecodedFramesCacheTest, ANegativeTimePrintsAWarningAndCachesNothing) {
    {
        Cache cache(Release, 2);
        testing::internal::CaptureStderr();
        EXPECT_FALSE(cache.CacheDecodedFrame(-1, &frames[0]));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "Invalid frame number while caching\n");
        EXPECT_EQ(At(cache, -1), nullptr);
    }
    EXPECT_EQ(frames[0].releases, 0);
}

TEST_F(CxDecodedFramesCacheTest, TimeZeroIsValid) {
    Cache cache(Release, 2);
    EXPECT_TRUE(cache.CacheDecodedFrame(0, &frames[0]));
    EXPECT_EQ(At(cache, 0), &frames[0]);
}

TEST_F(CxDecodedFramesCacheTest, ALookUpInAnEmptyCacheIsFalseAndLeavesTheFrameAsItWas) {
    Cache cache(Release, 2);
    CountedFrame* frame = &frames[7];
    EXPECT_FALSE(cache.UseCachedFrame(0, frame));
    EXPECT_EQ(frame, &frames[7]);
}

TEST_F(CxDecodedFramesCacheTest, AFrameThatWasLookedUpStaysTheCaches) {
    {
        Cache cache(Release, 2);
        Fill(cache, 1);
        EXPECT_EQ(At(cache, 0), At(cache, 0));
    }
    EXPECT_EQ(frames[0].releases, 1);
}

TEST_F(CxDecodedFramesCacheTest, ACapacityBelowOneIs32) {
    for (const int32_t capacity : {0, -1, INT32_MIN}) {
        Cache cache(nullptr, capacity);
        Fill(cache, capacityTold);
        EXPECT_EQ(At(cache, 0), &frames[0]) << capacity;
        cache.CacheDecodedFrame(capacityTold, &frames[32]);
        EXPECT_EQ(At(cache, 0), nullptr) << capacity;
        EXPECT_EQ(At(cache, 1), &frames[1]) << capacity;
    }
}

TEST_F(CxDecodedFramesCacheTest, ACapacityOfOneKeepsTheLastFrame) {
    Cache cache(Release, 1);
    Fill(cache, 3);
    EXPECT_EQ(frames[0].releases, 1);
    EXPECT_EQ(frames[1].releases, 1);
    EXPECT_EQ(At(cache, 2), &frames[2]);
}

TEST_F(CxDecodedFramesCacheTest, ClearCacheReleasesAllFramesInTheOrderOfTheirTimes) {
    std::vector<const CountedFrame*> released;
    Cache cache([&released](CountedFrame*& frame) { released.push_back(frame); }, 8);
    for (const size_t time : {4, 1, 3})
        cache.CacheDecodedFrame(static_cast<int64_t>(time), &frames[time]);
    cache.ClearCache();
    EXPECT_EQ(released, (std::vector<const CountedFrame*>{&frames[1], &frames[3], &frames[4]}));
    EXPECT_EQ(At(cache, 3), nullptr);
    cache.ClearCache();
    EXPECT_EQ(released.size(), 3u);
}

TEST_F(CxDecodedFramesCacheTest, ACacheWithoutADeleterOnlyForgets) {
    {
        Cache cache(nullptr, 2);
        Fill(cache, 3);
        EXPECT_EQ(At(cache, 0), nullptr);
        cache.ClearCache();
        EXPECT_EQ(At(cache, 2), nullptr);
        Fill(cache, 1);
    }
    for (const CountedFrame& frame : frames)
        EXPECT_EQ(frame.releases, 0);
}

TEST_F(CxDecodedFramesCacheTest, AFrameForWhichThereIsNoMemoryStaysWithTheCaller) {
    {
        Cache cache(Release, 2);
        Fill(cache, 1);
        {
            const HeapSpy empty(0);
            EXPECT_FALSE(cache.CacheDecodedFrame(1, &frames[1]));
            EXPECT_TRUE(empty.RanOut());
        }
        EXPECT_EQ(At(cache, 0), &frames[0]);
        EXPECT_EQ(At(cache, 1), nullptr);
        EXPECT_TRUE(cache.CacheDecodedFrame(1, &frames[2]));
    }
    EXPECT_EQ(frames[0].releases, 1);
    EXPECT_EQ(frames[1].releases, 0);
    EXPECT_EQ(frames[2].releases, 1);
}

TEST_F(CxDecodedFramesCacheTest, ThreadsThatShareACacheReleaseEachFrameOnce) {
    std::vector<CountedFrame> shared(2000);
    std::atomic<int> refused = 0;
    {
        Cache cache(Release, 8);
        const auto use = [&](size_t first) {
            for (size_t i = first; i < shared.size(); i += 2) {
                if (!cache.CacheDecodedFrame(static_cast<int64_t>(i * 7 % 500), &shared[i])) {
                    ++refused;
                    ++shared[i].releases;
                }
                CountedFrame* frame = nullptr;
                cache.UseCachedFrame(static_cast<int64_t>(i % 500), frame);
                if (i % 301 == 0) cache.ClearCache();
            }
        };
        std::thread other(use, 1);
        use(0);
        other.join();
    }
    EXPECT_LT(refused, 2000);
    for (const CountedFrame& frame : shared)
        EXPECT_EQ(frame.releases, 1);
}

} // namespace
