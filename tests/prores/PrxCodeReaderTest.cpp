#include "prores/PrxCodeReader.h"

#include "prores/SliceEntropyModel.h"
#include "prores/StreamBits.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <random>

namespace {

constexpr int rounds = 20; ///< for each length of a code word

/// `zeros` zeros, a one, and random bits.
stream::Bytes CodeWord(uint32_t zeros, std::mt19937& random) {
    stream::BitWriter bits;
    bits.Put(1, zeros + 1);
    bits.Put(random(), 32);
    bits.Put(random(), 32);
    return bits.Data();
}

template <class Check>
void ForCodeWords(uint32_t maxZeros, const Check& check) {
    std::mt19937 random = MakeRandom();
    for (uint32_t book = 0; book < prxCodeBookBytes.size(); ++book) {
        for (uint32_t zeros = 0; zeros <= maxZeros; ++zeros) {
            for (int round = 0; round < rounds; ++round)
                check(CodeWord(zeros, random), book, zeros);
        }
    }
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
    ForCodeWords(31, [](const stream::Bytes& bytes, uint32_t book, uint32_t zeros) {
        PrxBitReader reader(bytes.data(), bytes.size());
        model::BitSource expected(bytes);
        EXPECT_EQ(PrxReadCode(reader, book), expected.ReadCode(prxCodeBookBytes[book]))
            << book << " " << zeros;
        EXPECT_EQ(reader.Read(20), expected.Read(20)) << book << " " << zeros;
    });
}

TEST(PrxCodeReader, ShortCodesHaveTheValuesOfTheGeneralForm) {
    ForCodeWords(PrxShortCode::maxZeros, [](const stream::Bytes& bytes, uint32_t book, uint32_t zeros) {
        PrxBitReader general(bytes.data(), bytes.size());
        PrxBitReader reader(bytes.data(), bytes.size());
        const PrxShortCodes codes = PrxMakeShortCodes(book);
        EXPECT_EQ(codes[zeros].Read(reader), PrxReadCode(general, book)) << book << " " << zeros;
        EXPECT_EQ(reader.Read(10), general.Read(10)) << book << " " << zeros;
    });
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
    stream::BitWriter bits;
    stream::PutCode(bits, prxCodeBookBytes[5], 40);
    bits.Put(0, 32);
    bits.Put(0x96a5, 16);
    PrxBitReader reader(bits.Data().data(), bits.Data().size());
    EXPECT_FALSE(PrxReadCoefficient(reader, 5, 9));
    EXPECT_EQ(reader.Read(48), 0x96a5u); // the reader stands right behind the run
}
