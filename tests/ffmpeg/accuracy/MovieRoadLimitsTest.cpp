// Movies whose containers do not let frames be numbered as they were made, and what the roads give instead.

#include "ffmpeg/accuracy/MovieRoad.h"
#include "ffmpeg/accuracy/NumberedMovie.h"

#include <gtest/gtest.h>

namespace {

/// The movie's pictures from 0 to 59 but for picture 10, each at the time that it has in the whole movie.
NumberedMovie MovieWithAHole() {
    return {
        "Hole", "movie.mp4", {25, 1}, "$make $pictures -vf 'select=not(eq(n\\,10))' -vsync vfr movie.mp4"};
}

TEST(MovieRoadLimits, TheRegistryRoadNumbersPicturesByOrderWhereTimesHaveAHole) {
    const Workspace workspace;
    const auto road = OpenRegistryRoad(MakeMovie(MovieWithAHole(), workspace));
    ASSERT_NE(road, nullptr);
    EXPECT_EQ(road->FrameCount(), 59);
    EXPECT_EQ(road->NumberOf(9), 9);
    EXPECT_EQ(road->NumberOf(10), 11);
    EXPECT_EQ(road->NumberOf(58), 59);
    EXPECT_EQ(road->NumberOf(59), MovieRoad::noFrame);
}

TEST(MovieRoadLimits, TheFormatRoadNumbersPicturesByTimeWhereTimesHaveAHole) {
    const Workspace workspace;
    const auto road = OpenFormatRoad(MakeMovie(MovieWithAHole(), workspace));
    ASSERT_NE(road, nullptr);
    EXPECT_EQ(road->FrameCount(), 59); // the container's own count
    EXPECT_EQ(road->NumberOf(9), 9);
    EXPECT_EQ(road->NumberOf(10), MovieRoad::noFrame);
    EXPECT_EQ(road->NumberOf(11), 11);
    EXPECT_EQ(road->NumberOf(59), 59);
}

TEST(MovieRoadLimits, AGifOfMoreThan50FramesASecondHasOtherTimesThanItWasMadeWith) {
    const Workspace workspace;
    const NumberedMovie movie{"Fast", "movie.gif", {60000, 1001}, "$make $pictures -pix_fmt gray movie.gif"};
    const auto road = OpenFormatRoad(MakeMovie(movie, workspace));
    ASSERT_NE(road, nullptr);
    // The second delay is a hundredth of a second, which players, and FFmpeg with them, take for ten.
    EXPECT_EQ(road->NumberOf(1), 1);
    EXPECT_EQ(road->NumberOf(2), MovieRoad::noFrame);
    EXPECT_EQ(road->NumberOf(6), 2);
}

} // namespace
