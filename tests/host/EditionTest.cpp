#include "host/Edition.h"

#include <gtest/gtest.h>

namespace {

TEST(Edition, IsNotPalisadeByDefaultAndCanBeSet) {
    EXPECT_FALSE(g_IsPalisade);
    g_IsPalisade = true;
    EXPECT_TRUE(g_IsPalisade);
    g_IsPalisade = false;
}

} // namespace
