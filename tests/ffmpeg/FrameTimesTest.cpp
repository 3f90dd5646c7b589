#include "ffmpeg/FrameTimes.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numeric>

namespace {

using CxFFMPEG::FrameTimes;

constexpr auto lowest32 = std::numeric_limits<int32_t>::min();
constexpr auto highest32 = std::numeric_limits<int32_t>::max();
constexpr auto lowest64 = std::numeric_limits<int64_t>::min();
constexpr auto highest64 = std::numeric_limits<int64_t>::max();

constexpr std::array<AVRational, 8> rates = {
    {{24000, 1001}, {24, 1}, {25, 1}, {30000, 1001}, {30, 1}, {50, 1}, {60000, 1001}, {25, 2}}};

/// Whether the time stamps of a stream are decided by comparing times: the frame begins after the last one
/// and not more than one frame later.
bool IsNextByTime(const FrameTimes& times, int32_t frame, int64_t last) {
    const int64_t target = times.FrameToTime(frame);
    return target > last && target <= last + times.FrameToTime(1) - times.start;
}

/// A random stream in which every frame lasts a whole number of units.
FrameTimes RandomExactTimes(std::mt19937& random) {
    const auto number = [&](int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(random);
    };
    FrameTimes times;
    times.frameRate = rates[static_cast<size_t>(number(0, rates.size() - 1))];
    times.timeBase = {1, times.frameRate.num * number(1, 40)};
    times.start = number(-100'000, 1'000'000);
    return times;
}

TEST(FrameTimes, Frame0StartsAtTheStartTime) {
    const FrameTimes times = {.timeBase = {1, 1000}, .frameRate = {25, 1}, .start = 1000};
    EXPECT_EQ(times.FrameToTime(0), 1000);
    EXPECT_EQ(times.TimeToFrame(1000), 0);
}

TEST(FrameTimes, AFrameOf2997Lasts1001UnitsOfA30000th) {
    const FrameTimes times = {.timeBase = {1, 30000}, .frameRate = {30000, 1001}, .start = 5};
    EXPECT_EQ(times.FrameToTime(1) - times.start, 1001);
    EXPECT_EQ(times.FrameToTime(1000), 5 + 1001000);
}

TEST(FrameTimes, ATimeBelongsToTheNearestFrame) {
    const FrameTimes times = {.timeBase = {1, 30000}, .frameRate = {30000, 1001}, .start = 0};
    EXPECT_EQ(times.TimeToFrame(500), 0);
    EXPECT_EQ(times.TimeToFrame(501), 1);
    EXPECT_EQ(times.TimeToFrame(1501), 1);
    EXPECT_EQ(times.TimeToFrame(1502), 2);
    EXPECT_EQ(times.TimeToFrame(-500), 0);
    EXPECT_EQ(times.TimeToFrame(-501), -1);
}

TEST(FrameTimes, TimesOfFramesAreRoundedTowardsTheStart) {
    const FrameTimes times = {.timeBase = {1, 1000}, .frameRate = {24000, 1001}, .start = 10};
    EXPECT_EQ(times.FrameToTime(1), 10 + 41);
    EXPECT_EQ(times.FrameToTime(3), 10 + 125);
    EXPECT_EQ(times.FrameToTime(-1), 10 - 41);
    EXPECT_EQ(times.FrameToTime(-3), 10 - 125);
}

TEST(FrameTimes, EveryFrameOfAnExactTimeBaseComesBackFromItsTime) {
    std::mt19937 random = MakeRandom();
    for (int i = 0; i < 2000; ++i) {
        const FrameTimes times = RandomExactTimes(random);
        const auto frame = static_cast<int32_t>(random() % 200'000);
        EXPECT_EQ(times.TimeToFrame(times.FrameToTime(frame)), frame);
    }
}

TEST(FrameTimes, EveryFrameOfACoarseTimeBaseComesBackFromItsRoundedTime) {
    for (const AVRational rate : rates)
        for (const int32_t unitsPerSecond : {1000, 90000})
            for (int32_t frame = 0; frame < 20'000; frame += 7) {
                const FrameTimes times = {.timeBase = {1, unitsPerSecond}, .frameRate = rate};
                EXPECT_EQ(times.TimeToFrame(times.FrameToTime(frame)), frame);
            }
}

TEST(FrameTimes, OnExactTimeBasesTheNextFrameIsTheOneThatTheTimesSay) {
    std::mt19937 random = MakeRandom();
    for (int i = 0; i < 5000; ++i) {
        const FrameTimes times = RandomExactTimes(random);
        const auto last = static_cast<int32_t>(random() % 200'000);
        const int32_t frame = last + static_cast<int32_t>(random() % 7) - 3;
        const int64_t time = times.FrameToTime(last);
        EXPECT_EQ(times.IsNext(frame, time), IsNextByTime(times, frame, time)) << frame - last;
        EXPECT_EQ(times.IsNext(frame, time), frame == last + 1);
    }
}

/// How a muxer may round the time of a frame.
enum class Rounding { Down, Nearest, Up };

/// Frames of a playback from the beginning that are not the next one, by times that a muxer has rounded.
int JumpsInPlayback(const FrameTimes& times, Rounding rounding) {
    int jumps = 0;
    int64_t last = times.start;
    for (int32_t frame = 1; frame < 20'000; ++frame) {
        jumps += times.IsNext(frame, last) ? 0 : 1;
        const int64_t units = int64_t{frame} * times.frameRate.den * times.timeBase.den;
        const int64_t extra = rounding == Rounding::Down      ? 0
                              : rounding == Rounding::Nearest ? times.frameRate.num / 2
                                                              : times.frameRate.num - 1;
        last = times.start + (units + extra) / times.frameRate.num;
    }
    return jumps;
}

TEST(FrameTimes, PlaybackOf23976NeverJumpsWhateverTheTimeBaseAndItsRounding) {
    for (const int32_t unitsPerSecond : {1000, 90000})
        for (const Rounding rounding : {Rounding::Down, Rounding::Nearest, Rounding::Up}) {
            const FrameTimes times = {
                .timeBase = {1, unitsPerSecond}, .frameRate = {24000, 1001}, .start = 83};
            EXPECT_EQ(JumpsInPlayback(times, rounding), 0) << unitsPerSecond;
        }
}

TEST(FrameTimes, NoFrameIsNextAfterTheHighestNumber) {
    const FrameTimes times = {.timeBase = {1, 1}, .frameRate = {1, 1}};
    EXPECT_FALSE(times.IsNext(lowest32, highest32));
    EXPECT_TRUE(times.IsNext(highest32, highest32 - 1));
}

TEST(FrameTimes, TheDenominatorOfAFramesTimeHas32Bits) {
    // 2^20 by 2^12 is 2^32, which 32 bits take for 0.
    const FrameTimes gone = {.timeBase = {1 << 12, 1000}, .frameRate = {1 << 20, 1}, .start = 7};
    EXPECT_EQ(gone.FrameToTime(1'000'000), 7);
    // 3 * 2^30 becomes -2^30.
    const FrameTimes negative = {.timeBase = {3, 1000}, .frameRate = {1 << 30, 1}, .start = 7};
    EXPECT_EQ(negative.FrameToTime(1 << 30), 7 - 1000);
}

TEST(FrameTimes, TheNumeratorOfAFramesTimeHas64Bits) {
    const FrameTimes times = {.timeBase = {1, 90000}, .frameRate = {24000, 1001}};
    EXPECT_EQ(times.FrameToTime(0x20000000), int64_t{0x20000000} * 1001 * 90000 / 24000);
}

TEST(FrameTimes, ARateOrTimeBaseOf0HasNoTimesAndNoFrames) {
    for (const AVRational broken : {AVRational{0, 1}, AVRational{1, 0}, AVRational{0, 0}}) {
        const FrameTimes withoutRate = {.timeBase = {1, 25}, .frameRate = broken, .start = 9};
        const FrameTimes withoutBase = {.timeBase = broken, .frameRate = {25, 1}, .start = 9};
        for (const FrameTimes& times : {withoutRate, withoutBase}) {
            EXPECT_EQ(times.FrameToTime(100), 9);
            EXPECT_EQ(times.TimeToFrame(109), 0);
            EXPECT_EQ(times.FramesIn(100), 0);
        }
    }
}

TEST(FrameTimes, NumbersPastTheRangeOfFramesAreTheLastThatThereAre) {
    const FrameTimes times = {.timeBase = {1, 1}, .frameRate = {25, 1}};
    EXPECT_EQ(times.TimeToFrame(int64_t{1} << 40), highest32);
    EXPECT_EQ(times.TimeToFrame(-(int64_t{1} << 40)), lowest32);
}

TEST(FrameTimes, SoundIsReckonedInSamples) {
    const FrameTimes times = {
        .timeBase = {1, 48000}, .frameRate = {0, 0}, .start = 100, .channels = 2, .sampleRate = 48000};
    EXPECT_EQ(times.FrameToTime(480), 100 + 480);
    EXPECT_EQ(times.TimeToFrame(100 + 48000), 48000);
    const FrameTimes coarse = {
        .timeBase = {1, 1000}, .frameRate = {25, 1}, .start = 0, .channels = 1, .sampleRate = 44100};
    EXPECT_EQ(coarse.FrameToTime(441), 10);
    EXPECT_EQ(coarse.TimeToFrame(10), 441);
    EXPECT_EQ(coarse.TimeToFrame(-10), -441);
}

TEST(FrameTimes, TimesOfSoundAreReckonedIn32Bits) {
    const FrameTimes times = {
        .timeBase = {1, 1 << 20}, .frameRate = {25, 1}, .start = 50, .channels = 1, .sampleRate = 1};
    EXPECT_EQ(times.FrameToTime(1 << 12), 50);
    EXPECT_EQ(times.FrameToTime(1 << 11), 50 + int64_t{lowest32});
}

TEST(FrameTimes, SoundWithoutARateHasNoTimes) {
    const FrameTimes times = {
        .timeBase = {1, 0}, .frameRate = {25, 1}, .start = 50, .channels = 1, .sampleRate = 0};
    EXPECT_EQ(times.FrameToTime(10), 50);
    EXPECT_EQ(times.TimeToFrame(1000), 0);
}

TEST(FrameTimes, AQuotientThatDoesNotFitWrapsAround) {
    const FrameTimes picture = {.timeBase = {-1, lowest32}, .frameRate = {1, lowest32}, .start = 0};
    EXPECT_EQ(picture.FrameToTime(-2), lowest64);
    const FrameTimes sound = {
        .timeBase = {-1, lowest32}, .frameRate = {1, 1}, .start = 3, .channels = 1, .sampleRate = 1};
    EXPECT_EQ(sound.FrameToTime(1), 3 + int64_t{lowest32});
}

/// A number that is often one of those at the ends of the range.
int32_t RandomExtreme(std::mt19937& random) {
    constexpr std::array<int32_t, 8> ends = {0,   1, -1, lowest32, lowest32 + 1, highest32, highest32 - 1,
                                             1001};
    return random() % 3 != 0 ? ends[random() % ends.size()] : static_cast<int32_t>(random());
}

__extension__ using Wide = __int128;

int64_t Low64(Wide number) { return static_cast<int64_t>(static_cast<uint64_t>(number)); }
int32_t Low32(Wide number) { return static_cast<int32_t>(static_cast<uint32_t>(number)); }
Wide WideQuotient(Wide a, Wide b) { return b == 0 ? 0 : a / b; }

/// What `FrameToTime` gives, worked out with so many bits that only what is told wraps around.
int64_t ModelOfFrameToTime(const FrameTimes& times, int32_t frame) {
    const Wide base = times.timeBase.den;
    if (times.channels >= 1) {
        const Wide rate = Low32(Wide{times.sampleRate} * times.timeBase.num);
        return Low64(Low32(WideQuotient(Low32(base * frame), rate)) + Wide{times.start});
    }
    const Wide rate = Low32(Wide{times.frameRate.num} * times.timeBase.num);
    return Low64(WideQuotient(Low64(Wide{times.frameRate.den} * base * frame), rate) + times.start);
}

FrameTimes RandomExtremeTimes(std::mt19937& random) {
    const auto any = [&] { return RandomExtreme(random); };
    return {.timeBase = {any(), any()},
            .frameRate = {any(), any()},
            .start = random() % 4 == 0 ? (random() % 2 == 0 ? lowest64 : highest64) : int64_t{any()} * any(),
            .channels = any(),
            .sampleRate = any()};
}

TEST(FrameTimes, NoValueIsTooMuchForTheTimeOfAFrame) {
    std::mt19937 random = MakeRandom();
    for (int i = 0; i < 50'000; ++i) {
        const FrameTimes times = RandomExtremeTimes(random);
        const int32_t frame = RandomExtreme(random);
        EXPECT_EQ(times.FrameToTime(frame), ModelOfFrameToTime(times, frame));
    }
}

TEST(FrameTimes, NoValueIsTooMuchForTheFrameOfATime) {
    std::mt19937 random = MakeRandom();
    for (int i = 0; i < 50'000; ++i) {
        FrameTimes times = RandomExtremeTimes(random);
        const int64_t time = RandomExtremeTimes(random).start;
        const Wide units = Low64(Wide{time} - times.start);
        times.channels = 1;
        EXPECT_EQ(times.TimeToFrame(time),
                  Low32(WideQuotient(Low64(Wide{times.timeBase.num} * Low64(units * times.sampleRate)),
                                     times.timeBase.den)));
        times.channels = 0;
        EXPECT_EQ(times.TimeToFrame(time), times.FramesIn(Low64(units)));
    }
}

TEST(FrameTimes, ADurationHasTheNearestNumberOfFrames) {
    const FrameTimes times = {.timeBase = {1, 90000}, .frameRate = {24000, 1001}, .start = 777};
    // 150 frames last 563062.5 units.
    EXPECT_EQ(times.FramesIn(563062), 150);
    EXPECT_EQ(times.FramesIn(563063), 150);
    EXPECT_EQ(times.FramesIn(3753 / 2), 0);
    EXPECT_EQ(times.FramesIn(3753 / 2 + 2), 1);
}

} // namespace
