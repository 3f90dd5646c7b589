#include "framework/CatchAll.h"

#include <gtest/gtest.h>

#include <new>

TEST(CatchAll, GivesWhatTheCallReturns) {
    EXPECT_EQ(CatchAll(-1, [] { return 7; }), 7);
}

TEST(CatchAll, GivesTheFailureIfTheCallThrows) {
    EXPECT_EQ(CatchAll(-1, []() -> int { throw std::bad_alloc(); }), -1);
    EXPECT_EQ(CatchAll(-1, []() -> int { throw 7; }), -1);
}
