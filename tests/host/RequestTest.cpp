#include "host/Request.h"

#include "host/Input.h"

#include <gtest/gtest.h>

namespace {

Input TextControl() {
    TagList tags;
    tags.Add(InputTag_DataType, CLSID_DataType_Text);
    return Input("Encoder Options", "Options", tags);
}

TEST(Request, GivesTheValueThatTheControlHolds) {
    Input control = TextControl();
    ASSERT_TRUE(control.SetSource(TextParameter("crf=18,"), 0.0, 0, 0));
    const auto* const value = dynamic_cast<TextParameter*>(Request(12.0).GetInputData(&control, 0));
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->Text(), "crf=18,");
}

TEST(Request, SeesAValueThatWasSetAfterItWasMade) {
    Input control = TextControl();
    const Request request(0.0);
    ASSERT_TRUE(control.SetSource(TextParameter("preset=slow,"), 0.0, 0, 0));
    const auto* const value = dynamic_cast<TextParameter*>(request.GetInputData(&control, 0));
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->Text(), "preset=slow,");
}

TEST(Request, ANullControlHasNoValue) { EXPECT_EQ(Request(0.0).GetInputData(nullptr, 0), nullptr); }

TEST(Request, AControlThatHoldsNothingHasNoValue) {
    const Input control;
    EXPECT_EQ(Request(0.0).GetInputData(&control, 0), nullptr);
}

} // namespace
