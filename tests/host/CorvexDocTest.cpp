#include "host/CorvexDoc.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using Messages = std::vector<std::pair<EventConsoleSubID, std::string>>;

class Console : public testing::Test {
protected:
    Console() {
        CorvexDoc::SetConsoleHook(
            [this](EventConsoleSubID level, const std::string& text) { messages.emplace_back(level, text); });
    }
    ~Console() override { CorvexDoc::SetConsoleHook(nullptr); }

    Messages messages;
};

TEST_F(Console, TheHookReceivesLevelAndFormattedText) {
    CorvexDoc::PrintF(60, "Frame %d of '%s'\n", 7, "clip.mov");
    EXPECT_EQ(messages, Messages({{60, "Frame 7 of 'clip.mov'\n"}}));
}

TEST_F(Console, ADocumentPrintsAsTheClassDoes) {
    CorvexDoc* const document = CorvexDoc::Get();
    document->PrintF(60, "Seeking failed\n");
    EXPECT_EQ(messages, Messages({{60, "Seeking failed\n"}}));
}

TEST_F(Console, TextOfAnyLengthArrivesWhole) {
    const std::string text(100000, 'x');
    CorvexDoc::PrintF(1, "%s!", text.c_str());
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].second, text + "!");
}

TEST_F(Console, AHookMayPrintAndReplaceItself) {
    CorvexDoc::SetConsoleHook([this](EventConsoleSubID, const std::string&) {
        CorvexDoc::SetConsoleHook(
            [this](EventConsoleSubID level, const std::string& text) { messages.emplace_back(level, text); });
        CorvexDoc::PrintF(2, "from the hook");
    });
    CorvexDoc::PrintF(1, "first");
    EXPECT_EQ(messages, Messages({{2, "from the hook"}}));
}

TEST(CorvexDoc, WithoutAHookTextGoesToStandardError) {
    testing::internal::CaptureStderr();
    CorvexDoc::PrintF(60, "%s\n", "words %d that are no format");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "words %d that are no format\n");
}

TEST(CorvexDoc, ThereIsOneDocument) {
    EXPECT_NE(CorvexDoc::Get(), nullptr);
    EXPECT_EQ(CorvexDoc::Get(), CorvexDoc::Get());
}

} // namespace
