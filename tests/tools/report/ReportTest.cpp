#include "report/Report.h"

#include <gtest/gtest.h>

namespace {

struct Published {
    int status;
    std::string out;
    std::string err;
};

Published PublishAndRead(const Report& report, bool asJson, const std::optional<ToolError>& failure) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Published published;
    published.status = Publish(report, asJson, failure);
    published.out = testing::internal::GetCapturedStdout();
    published.err = testing::internal::GetCapturedStderr();
    return published;
}

const ToolError kFailure(ExitStatus::Damaged, "a.mov", "broken\nin two lines\n");

} // namespace

TEST(Report, PutsTheTextAloneOnStandardOutput) {
    const Published published = PublishAndRead({nullptr, "the result\n", {}}, false, std::nullopt);
    EXPECT_EQ(published.status, 0);
    EXPECT_EQ(published.out, "the result\n");
    EXPECT_EQ(published.err, "");
}

TEST(Report, GivesOneLineForAFailureAndNoResult) {
    const Published published = PublishAndRead({nullptr, "half a result\n", {}}, false, kFailure);
    EXPECT_EQ(published.status, 4);
    EXPECT_EQ(published.out, "");
    EXPECT_EQ(published.err, "corvexvf: a.mov: broken in two lines\n");
}

TEST(Report, GivesOneJsonObjectForASuccess) {
    const Published published = PublishAndRead({{{"frames", 3}}, "text\n", {"odd"}}, true, std::nullopt);
    const auto object = nlohmann::json::parse(published.out);
    EXPECT_EQ(object["ok"], true);
    EXPECT_EQ(object["errors"], nlohmann::json::array());
    EXPECT_EQ(object["warnings"], nlohmann::json::array({"odd"}));
    EXPECT_EQ(object["result"]["frames"], 3);
    EXPECT_EQ(object.size(), 4U);
}

TEST(Report, GivesTheSameObjectAndStatusForAFailure) {
    const Published published = PublishAndRead({}, true, kFailure);
    const auto object = nlohmann::json::parse(published.out);
    EXPECT_EQ(published.status, 4);
    EXPECT_EQ(object["ok"], false);
    EXPECT_EQ(object["errors"], nlohmann::json::array({"a.mov: broken in two lines"}));
    EXPECT_TRUE(object["result"].is_null());
}

TEST(Report, PutsWarningsOnStandardError) {
    EXPECT_EQ(PublishAndRead({nullptr, "", {"odd"}}, false, std::nullopt).err, "corvexvf: warning: odd\n");
}

TEST(Report, KeepsItsJsonValidForNamesThatAreNotUtf8) {
    const Published published =
        PublishAndRead({}, true, ToolError(ExitStatus::CannotOpen, "\xff\xfe.mov", "no such file"));
    EXPECT_TRUE(nlohmann::json::accept(published.out));
}
