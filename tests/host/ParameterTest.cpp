#include "host/Parameter.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

TEST(Parameter, ANumberIsToldFromTextAndIdByItsClass) {
    const std::unique_ptr<Parameter> value = std::make_unique<NumberParameter>(29.97);
    ASSERT_NE(dynamic_cast<NumberParameter*>(value.get()), nullptr);
    EXPECT_EQ(dynamic_cast<NumberParameter*>(value.get())->Number(), 29.97);
    EXPECT_EQ(dynamic_cast<TextParameter*>(value.get()), nullptr);
    EXPECT_EQ(dynamic_cast<IDParameter*>(value.get()), nullptr);
}

TEST(Parameter, TextIsToldFromAnIdOfTheSameTextByItsClass) {
    const std::unique_ptr<Parameter> value = std::make_unique<TextParameter>("Matroska");
    ASSERT_NE(dynamic_cast<TextParameter*>(value.get()), nullptr);
    EXPECT_EQ(dynamic_cast<TextParameter*>(value.get())->Text(), "Matroska");
    EXPECT_EQ(dynamic_cast<IDParameter*>(value.get()), nullptr);
}

TEST(Parameter, AnIdIsToldByItsClassAlsoIfItIsEmpty) {
    const std::unique_ptr<Parameter> value = std::make_unique<IDParameter>(CxID());
    ASSERT_NE(dynamic_cast<IDParameter*>(value.get()), nullptr);
    EXPECT_TRUE(dynamic_cast<IDParameter*>(value.get())->ID().IsEmpty());
}

TEST(Parameter, ACloneOfANumberHoldsTheSameNumber) {
    const std::unique_ptr<Parameter> clone = NumberParameter(-0.5).Clone();
    ASSERT_NE(dynamic_cast<NumberParameter*>(clone.get()), nullptr);
    EXPECT_EQ(dynamic_cast<NumberParameter*>(clone.get())->Number(), -0.5);
}

TEST(Parameter, ACloneOfTextOutlivesTheText) {
    auto text = std::make_unique<TextParameter>("preset=slow,crf=18,");
    const std::unique_ptr<Parameter> clone = text->Clone();
    text.reset();
    ASSERT_NE(dynamic_cast<TextParameter*>(clone.get()), nullptr);
    EXPECT_EQ(dynamic_cast<TextParameter*>(clone.get())->Text(), "preset=slow,crf=18,");
}

TEST(Parameter, ACloneOfAnIdHoldsTheSameId) {
    const std::unique_ptr<Parameter> clone = IDParameter(CxID("Matroska", true)).Clone();
    ASSERT_NE(dynamic_cast<IDParameter*>(clone.get()), nullptr);
    EXPECT_EQ(dynamic_cast<IDParameter*>(clone.get())->ID(), CxID("Matroska", true));
}

} // namespace
