#include "host/CorvexDoc.h"

#include "host/Operator.h"

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

struct Notification {
    int32_t code;
    int32_t argument;
    Operator* tool;

    bool operator==(const Notification&) const = default;
};

class Notifications : public testing::Test {
protected:
    Notifications() {
        document.SetNotifyHook([this](int32_t code, int32_t argument, Operator* sender) {
            received.push_back({code, argument, sender});
        });
    }
    ~Notifications() override { document.SetNotifyHook(nullptr); }

    CorvexDoc& document = *CorvexDoc::Get();
    Operator tool{&document, nullptr};
    std::vector<Notification> received;
};

TEST_F(Notifications, TheHookReceivesCodeArgumentAndToolInOrder) {
    document.Notify(DocNotify_ControlsChanged, 1, &tool);
    document.Notify(-1, 0, nullptr);
    EXPECT_EQ(received, std::vector<Notification>({{5155, 1, &tool}, {-1, 0, nullptr}}));
}

TEST_F(Notifications, AHookMayNotifyAndReplaceItself) {
    document.SetNotifyHook([this](int32_t code, int32_t argument, Operator* sender) {
        document.SetNotifyHook(nullptr);
        document.Notify(code, argument, sender);
        received.push_back({code, argument, sender});
    });
    document.Notify(DocNotify_ControlsChanged, 1, &tool);
    EXPECT_EQ(received, std::vector<Notification>({{5155, 1, &tool}}));
}

TEST_F(Notifications, WithoutAHookNothingHappens) {
    document.SetNotifyHook(nullptr);
    document.Notify(DocNotify_ControlsChanged, 1, &tool);
    EXPECT_EQ(received, std::vector<Notification>());
}

TEST(CorvexDoc, HasNoFrameRateDivisorAtFirst) { EXPECT_EQ(CorvexDoc::Get()->GetFrameRateDivisor(), 0); }

TEST(CorvexDoc, TheFrameRateDivisorIsAnyNumber) {
    CorvexDoc& document = *CorvexDoc::Get();
    for (const int32_t divisor : {2, -1, INT32_MIN, INT32_MAX, 0}) {
        document.SetFrameRateDivisor(divisor);
        EXPECT_EQ(document.GetFrameRateDivisor(), divisor);
    }
}

TEST(CorvexDoc, ThereIsOneDocument) {
    EXPECT_NE(CorvexDoc::Get(), nullptr);
    EXPECT_EQ(CorvexDoc::Get(), CorvexDoc::Get());
}

} // namespace
