#include "prores/PrxDcPrediction.h"

#include <gtest/gtest.h>

TEST(PrxDcPrediction, FirstValueAlternatesInSign) {
    PrxDcPrediction dc;
    EXPECT_EQ(dc.First(0), 0);
    EXPECT_EQ(dc.First(1), -1);
    EXPECT_EQ(dc.First(2), 1);
    EXPECT_EQ(dc.First(3), -2);
    EXPECT_EQ(dc.First(65534), 32767);
    EXPECT_EQ(dc.First(65535), -32768);
}

TEST(PrxDcPrediction, StartsAsAfterADeltaOf3) {
    PrxDcPrediction dc;
    dc.First(0);
    EXPECT_EQ(dc.BookChoice(), 3u);
    EXPECT_EQ(dc.Next(4), 2); // even: the sign of the last delta
}

TEST(PrxDcPrediction, AnOddCodeTurnsTheSign) {
    PrxDcPrediction dc;
    dc.First(0);
    EXPECT_EQ(dc.Next(3), -2);
    EXPECT_EQ(dc.Next(2), -3);
    EXPECT_EQ(dc.Next(9), 2);
}

TEST(PrxDcPrediction, ADeltaOf0IsPositive) {
    PrxDcPrediction dc;
    dc.First(0);
    EXPECT_EQ(dc.Next(1), -1);
    EXPECT_EQ(dc.Next(0), -1);
    EXPECT_EQ(dc.Next(2), 0);
}

TEST(PrxDcPrediction, TheMagnitudeUpTo3ChoosesTheCodeBook) {
    PrxDcPrediction dc;
    dc.First(0);
    for (const uint64_t magnitude : {0, 1, 2, 3, 4, 70000}) {
        dc.Next(2 * magnitude);
        EXPECT_EQ(dc.BookChoice(), std::min<uint64_t>(magnitude, 3));
    }
}

TEST(PrxDcPrediction, ValuesWrapTo16BitsAndDeltasDoNot) {
    PrxDcPrediction dc;
    dc.First(0);
    EXPECT_EQ(dc.Next(2 * 65536), 0);
    EXPECT_EQ(dc.BookChoice(), 3u); // a delta of 65536, not of 0
    EXPECT_EQ(dc.Next(2 * 32768), -32768);
    EXPECT_EQ(dc.Next(2 * 1), -32767); // the delta of 32768 was positive
}
