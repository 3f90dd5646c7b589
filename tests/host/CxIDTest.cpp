#include "host/CxID.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

TEST(CxID, TheDefaultIsEmpty) {
    const CxID id;
    EXPECT_TRUE(id.IsEmpty());
    EXPECT_STREQ(id, "");
}

TEST(CxID, NullAndEmptyTextGiveTheEmptyIdentifier) {
    EXPECT_TRUE(CxID(nullptr, true) == CxID());
    EXPECT_TRUE(CxID("", true) == CxID());
}

TEST(CxID, TheSameTextIsTheSameAddress) {
    const std::string text = "Matroska";
    const CxID first(text.c_str(), true);
    const CxID second(std::string(text).c_str(), true);
    EXPECT_EQ(static_cast<const char*>(first), static_cast<const char*>(second));
    EXPECT_TRUE(first == second);
    EXPECT_FALSE(first != second);
}

TEST(CxID, DifferentTextIsDifferent) {
    EXPECT_TRUE(CxID("a", true) != CxID("b", true));
    EXPECT_FALSE(CxID("a", true) == CxID("A", true));
}

TEST(CxID, TheTextOutlivesItsSource) {
    CxID id;
    {
        std::string text = "short-lived text that does not fit into a small string";
        id = CxID(text.c_str(), true);
        text.assign(text.size(), 'x');
    }
    EXPECT_STREQ(id, "short-lived text that does not fit into a small string");
}

TEST(CxID, ComparesWithPlainTextFromBothSides) {
    const CxID id("text", true);
    const std::string same = "text";
    EXPECT_TRUE(id == same.c_str());
    EXPECT_TRUE(same.c_str() == id);
    EXPECT_TRUE(id != "other");
    EXPECT_FALSE(id != same.c_str());
    EXPECT_FALSE(id == nullptr);
    EXPECT_TRUE(CxID() == static_cast<const char*>(nullptr));
}

TEST(CxID, IsNoCondition) { EXPECT_FALSE((std::is_constructible_v<bool, CxID>)); }

TEST(CxID, CopiesShareTheText) {
    const CxID id("copied", true);
    CxID copy(id);
    EXPECT_TRUE(copy == id);
    copy = CxID("other", true);
    EXPECT_STREQ(id, "copied");
    EXPECT_STREQ(copy, "other");
}

TEST(CxID, ThreadsThatInternTheSameTextsGetTheSameAddresses) {
    constexpr int threadCount = 8;
    constexpr int textCount = 500;
    std::vector<std::vector<const char*>> found(threadCount);
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < threadCount; ++thread) {
            threads.emplace_back([&found, thread] {
                for (int i = 0; i < textCount; ++i) {
                    found[thread].push_back(CxID(("thread text " + std::to_string(i)).c_str(), true));
                }
            });
        }
    }
    for (int thread = 1; thread < threadCount; ++thread)
        EXPECT_EQ(found[thread], found[0]);
    EXPECT_STREQ(found[0][7], "thread text 7");
}

} // namespace
