#include "frames/OutputProperties.h"

#include "media/ToolError.h"

#include <gtest/gtest.h>

namespace {

FrameTrack Movie() {
    FrameTrack track;
    track.name = "a.mov";
    track.movie.emplace();
    track.movie->frameRate = {25, 1};
    return track;
}

} // namespace

TEST(OutputProperties, TheRateIsTheOneAskedForThenTheMoviesThen24) {
    EXPECT_EQ(OutputRate(Rational{30, 1}, Movie()), (Rational{30, 1}));
    EXPECT_EQ(OutputRate(std::nullopt, Movie()), (Rational{25, 1}));
    EXPECT_EQ(OutputRate(std::nullopt, FrameTrack()), (Rational{24, 1}));
}

TEST(OutputProperties, AMovieWithoutARateNeedsOneToBeAskedFor) {
    FrameTrack track = Movie();
    track.movie->frameRate = {0, 1};
    EXPECT_THROW(OutputRate(std::nullopt, track), ToolError);
    EXPECT_EQ(OutputRate(Rational{30, 1}, track), (Rational{30, 1}));
}

TEST(OutputProperties, TheFieldOrderIsThatInWhichAMovieIsShown) {
    FrameTrack track = Movie();
    constexpr FieldOrder orders[] = {FieldOrder::Progressive, FieldOrder::Progressive, FieldOrder::TopFirst,
                                     FieldOrder::BottomFirst, FieldOrder::BottomFirst, FieldOrder::TopFirst};
    for (int value = 0; value < 6; ++value) {
        track.movie->fieldOrder.value = value;
        EXPECT_EQ(OutputFieldOrder(track), orders[value]) << value;
    }
    EXPECT_EQ(OutputFieldOrder(FrameTrack()), FieldOrder::Progressive);
}

TEST(OutputProperties, WarnsOfDamageAndOfUnevenTimes) {
    FrameTrack track = Movie();
    EXPECT_TRUE(InputWarnings(track).empty());
    EXPECT_TRUE(InputWarnings(FrameTrack()).empty());
    track.movie->damage = "breaks off";
    track.movie->constantFrameRate = false;
    EXPECT_EQ(InputWarnings(track),
              (std::vector<std::string>{
                  "a.mov: breaks off", "a.mov: its frames are not evenly spaced; written at a steady rate"}));
}
