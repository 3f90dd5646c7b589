#include "host/ScriptInfo.h"

#include "host/ImageFormat.h"

#include <gtest/gtest.h>

namespace {

TEST(ScriptInfo, KeepsWhatItWasMadeWith) {
    const ScriptInfo info(1, "SomeFormat", "help", "category");
    EXPECT_EQ(info.Version(), 1);
    EXPECT_STREQ(info.ClassName(), "SomeFormat");
    EXPECT_EQ(info.Help(), "help");
    EXPECT_EQ(info.Category(), "category");
}

TEST(ScriptInfo, HasNoTypesUntilTheyAreSet) {
    ScriptInfo info(1, "SomeFormat", "", "");
    EXPECT_EQ(info.Type(), nullptr);
    EXPECT_EQ(info.ParentType(), nullptr);
    info.SetTypeInfo(typeid(ImageFormat), typeid(MediaFormat));
    ASSERT_NE(info.Type(), nullptr);
    EXPECT_TRUE(*info.Type() == typeid(ImageFormat));
    EXPECT_TRUE(*info.ParentType() == typeid(MediaFormat));
}

} // namespace
