// Every frame of every movie, in any order, on both roads.

#include "ffmpeg/accuracy/MovieList.h"
#include "ffmpeg/accuracy/MovieRoad.h"
#include "ffmpeg/accuracy/RequestOrders.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace {

class MovieRoads : public testing::TestWithParam<NumberedMovie> {
protected:
    std::string Make() const { return MakeMovie(GetParam(), workspace); }

    static void ExpectEveryFrame(MovieRoad& road) {
        std::mt19937 random = MakeRandom();
        const int count = GetParam().ShownCount();
        for (const RequestOrder& order : RequestOrders(count, random))
            EXPECT_EQ(WrongFrames(road, order, GetParam().firstNumber), "");
        EXPECT_EQ(road.NumberOf(count), MovieRoad::noFrame);
    }

    Workspace workspace;
};

class RegistryRoad : public MovieRoads {};
class FormatRoad : public MovieRoads {};
class CodecsThatTheRegistryDoesNotClaim : public MovieRoads {};

TEST_P(RegistryRoad, GivesEveryFrameInAnyOrder) {
    const auto road = OpenRegistryRoad(Make());
    ASSERT_NE(road, nullptr);
    EXPECT_EQ(road->FrameCount(), GetParam().ShownCount());
    ExpectEveryFrame(*road);
}

TEST_P(FormatRoad, GivesEveryFrameInAnyOrder) {
    const auto road = OpenFormatRoad(Make());
    ASSERT_NE(road, nullptr);
    EXPECT_EQ(road->FrameCount(), GetParam().ToldCount());
    ExpectEveryFrame(*road);
}

TEST_P(CodecsThatTheRegistryDoesNotClaim, HaveTheFormatRoadAlone) {
    EXPECT_EQ(OpenRegistryRoad(Make()), nullptr);
}

std::string NameOf(const testing::TestParamInfo<NumberedMovie>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Movies, RegistryRoad, testing::ValuesIn(RegistryMovies()), NameOf);
INSTANTIATE_TEST_SUITE_P(Movies, FormatRoad, testing::ValuesIn(RegistryMovies()), NameOf);
INSTANTIATE_TEST_SUITE_P(OtherMovies, FormatRoad, testing::ValuesIn(FormatMovies()), NameOf);
INSTANTIATE_TEST_SUITE_P(OtherMovies, CodecsThatTheRegistryDoesNotClaim, testing::ValuesIn(FormatMovies()),
                         NameOf);

} // namespace
