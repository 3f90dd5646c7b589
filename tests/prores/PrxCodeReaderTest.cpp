#include "prores/PrxCodeReader.h"

#include "prores/SliceEntropyModel.h"
#include "prores/StreamBits.h"

#include <gtest/gtest.h>

namespace {

/// A code word of `zeros` zeros and then ones.
stream::Bytes OnesAfter(uint32_t zeros) {
    stream::BitWriter bits;
    bits.Put(0, zeros);
    bits.Put(~uint64_t{0}, 64);
    return bits.Data();
}

std::optional<PrxCoefficient> ReadCoefficient(uint32_t run, uint32_t magnitude, bool negative) {
    stream::BitWriter bits;
    stream::PutCode(bits, prxCodeBookBytes[5], run);
    stream::PutCode(bits, prxCodeBookBytes[9], magnitude - 1);
    bits.Put(negative, 1);
    PrxBitReader reader(bits.Data().data(), bits.Data().size());
    return PrxReadCoefficient(reader, 5, 9);
}

} // namespace

TEST(PrxCodeReader, ReadsCodeWordsOfEveryLength) {
    for (uint32_t book = 0; book < prxCodeBookBytes.size(); ++book) {
        for (uint32_t zeros = 0; zeros < 32; ++zeros) {
            const stream::Bytes bytes = OnesAfter(zeros);
            PrxBitReader reader(bytes.data(), bytes.size());
            model::BitSource expected(bytes);
            EXPECT_EQ(PrxReadCode(reader, book), expected.ReadCode(prxCodeBookBytes[book]))
                << book << " " << zeros;
            EXPECT_EQ(reader.Read(20), expected.Read(20)) << book << " " << zeros;
        }
    }
}

TEST(PrxCodeReader, ShortCodesHaveTheValuesOfTheGeneralForm) {
    for (uint32_t book = 0; book < prxCodeBookBytes.size(); ++book) {
        const PrxShortCodes codes = PrxMakeShortCodes(book);
        for (uint32_t zeros = 0; zeros <= PrxShortCode::maxZeros; ++zeros) {
            const stream::Bytes bytes = OnesAfter(zeros);
            PrxBitReader general(bytes.data(), bytes.size());
            PrxBitReader reader(bytes.data(), bytes.size());
            EXPECT_EQ(codes[zeros].Read(reader), PrxReadCode(general, book)) << book << " " << zeros;
            EXPECT_EQ(reader.Read(10), general.Read(10)) << book << " " << zeros;
        }
    }
}

TEST(PrxCodeReader, ReadsARunALevelAndASign) {
    const auto coefficient = ReadCoefficient(40, 700, true);
    ASSERT_TRUE(coefficient);
    EXPECT_EQ(coefficient->run, 40u);
    EXPECT_EQ(coefficient->level, -700);
}

TEST(PrxCodeReader, TakesLevelsUpTo16383) {
    EXPECT_EQ(ReadCoefficient(0, 16383, false)->level, 16383);
    EXPECT_FALSE(ReadCoefficient(0, 16384, false));
}

TEST(PrxCodeReader, TakesRunsUpTo2015) {
    EXPECT_EQ(ReadCoefficient(2015, 1, false)->run, 2015u);
    EXPECT_FALSE(ReadCoefficient(2016, 1, false));
}

TEST(PrxCodeReader, FindsTheEndBehindARun) {
    const stream::Bytes bytes = {0x80}; // the run 0, and nothing more
    PrxBitReader reader(bytes.data(), bytes.size());
    EXPECT_FALSE(PrxReadCoefficient(reader, 5, 9));
}
