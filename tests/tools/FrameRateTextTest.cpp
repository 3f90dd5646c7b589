#include "FrameRateText.h"

#include <gtest/gtest.h>

namespace {

void ExpectRate(const char* text, int64_t num, int64_t den) {
    const std::optional<Rational> rate = ParseFrameRate(text);
    ASSERT_TRUE(rate) << text;
    EXPECT_EQ(*rate, (Rational{num, den})) << text << " gives " << FormatRational(*rate);
}

} // namespace

TEST(FrameRateText, ReadsWholeRates) {
    ExpectRate("24", 24, 1);
    ExpectRate("25", 25, 1);
    ExpectRate("1000", 1000, 1);
}

TEST(FrameRateText, ReadsFractionsInLowestTerms) {
    ExpectRate("24000/1001", 24000, 1001);
    ExpectRate("50/2", 25, 1);
}

TEST(FrameRateText, TakesShortFormsForTheExactRatesOver1001) {
    ExpectRate("23.976", 24000, 1001);
    ExpectRate("23.98", 24000, 1001);
    ExpectRate("23.976024", 24000, 1001);
    ExpectRate("29.97", 30000, 1001);
    ExpectRate("47.952", 48000, 1001);
    ExpectRate("59.94", 60000, 1001);
    ExpectRate("119.88", 120000, 1001);
}

TEST(FrameRateText, ReadsOtherDecimalsExactly) {
    ExpectRate("12.5", 25, 2);
    ExpectRate("24.0", 24, 1);
    ExpectRate("23.9", 239, 10);
    ExpectRate("29.970", 30000, 1001);
    ExpectRate("29.96", 749, 25);
}

TEST(FrameRateText, RefusesWhatIsNoRate) {
    for (const char* text : {"", "0", "-24", "24/0", "0/1", "1/", "/1", "abc", "24fps", "1001", "24.", ".5",
                             "1e3", "nan", "99999999999999999999", "24000/1001/1", "0.0000001"})
        EXPECT_FALSE(ParseFrameRate(text)) << text;
}
