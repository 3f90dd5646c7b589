#include "host/AutoCxIDParam.h"

#include <gtest/gtest.h>

namespace {

/// A combo control whose entry changes at time 10, and which counts how often it is read.
class ComboControl : public Input {
public:
    CxID GetID(double time) const override {
        ++reads;
        return CxID(time < 10.0 ? "Matroska" : "QuickTime", true);
    }

    mutable int reads = 0;
};

/// Takes its argument as operations of the host do.
CxID Read(const AutoCxIDParam& param) { return param; }

TEST(AutoCxIDParam, AnIdentifierIsPassedOn) { EXPECT_TRUE(Read(CxID("Matroska", true)) == "Matroska"); }

TEST(AutoCxIDParam, AControlGivesItsIdAtTheTime) {
    ComboControl control;
    EXPECT_TRUE(Read({&control, 9.5}) == "Matroska");
    EXPECT_TRUE(Read({&control, 10.0}) == "QuickTime");
}

TEST(AutoCxIDParam, AControlIsReadOnceWhenTheParameterIsMade) {
    const ComboControl control;
    const AutoCxIDParam param(&control, 0.0);
    EXPECT_TRUE(static_cast<CxID>(param) == static_cast<CxID>(param));
    EXPECT_EQ(control.reads, 1);
}

TEST(AutoCxIDParam, ANullControlGivesTheEmptyId) {
    EXPECT_TRUE(Read({static_cast<Input*>(nullptr), 0.0}).IsEmpty());
}

TEST(AutoCxIDParam, AControlThatHoldsNoIdGivesTheEmptyId) {
    const Input control;
    EXPECT_TRUE(Read({&control, 0.0}).IsEmpty());
}

} // namespace
