#include "report/Progress.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

TEST(Progress, ShowsNothingWhereStandardErrorIsNoTerminal) {
    testing::internal::CaptureStderr();
    Progress("decode", 2, ProgressStyle::Bar).Step();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Progress, GivesOneJsonLinePerStep) {
    testing::internal::CaptureStderr();
    {
        Progress progress("decode", 2, ProgressStyle::Json);
        progress.Step();
        progress.Step();
    }
    std::istringstream lines(testing::internal::GetCapturedStderr());
    int64_t done = 0;
    for (std::string line; std::getline(lines, line);) {
        const auto object = nlohmann::json::parse(line);
        EXPECT_EQ(object["progress"], "decode");
        EXPECT_EQ(object["done"], ++done);
        EXPECT_EQ(object["total"], 2);
    }
    EXPECT_EQ(done, 2);
}
