#include "prores/PrxCodeBooks.h"

#include "prores/StreamBits.h"
#include "prores/StreamCoefficients.h"

#include <gtest/gtest.h>

#include <bit>

namespace {

/// The code word of `value`, of at most 64 bits, as a writer makes it.
struct CodeWord {
    uint64_t bits = 0; ///< as a number
    uint32_t length = 0;

    CodeWord(uint8_t book, uint32_t value) {
        stream::BitWriter writer;
        stream::PutCode(writer, book, value);
        length = static_cast<uint32_t>(writer.Count());
        for (uint32_t i = 0; i < length; ++i)
            bits = bits << 1 | (writer.Data()[i / 8] >> (7 - i % 8) & 1);
    }
    uint32_t Zeros() const { return length - static_cast<uint32_t>(std::bit_width(bits)); }
};

} // namespace

TEST(PrxCodeBooks, LengthAndOffsetDescribeTheCodeWordsOfTheStandard) {
    for (uint32_t index = 0; index < prxCodeBookBytes.size(); ++index) {
        const PrxCodeBook book = PrxGetCodeBook(index);
        for (uint32_t value = 0; value < 20000; ++value) {
            const CodeWord codeWord(prxCodeBookBytes[index], value);
            ASSERT_EQ(book.Length(codeWord.Zeros()), codeWord.length) << index << " " << value;
            ASSERT_EQ(static_cast<int64_t>(codeWord.bits) + book.Offset(codeWord.Zeros()), value) << index;
        }
    }
}

TEST(PrxCodeBooks, DcBookFollowsThePreviousDelta) {
    for (int delta = 0; delta < 40; ++delta)
        EXPECT_EQ(prxCodeBookBytes[PrxDcBook(static_cast<uint64_t>(delta))], stream::DcBook(delta)) << delta;
}

TEST(PrxCodeBooks, RunBookFollowsThePreviousRun) {
    for (int run = 0; run <= 2015; ++run)
        EXPECT_EQ(prxCodeBookBytes[PrxRunBook(static_cast<uint64_t>(run))], stream::RunBook(run)) << run;
}

TEST(PrxCodeBooks, LevelBookFollowsThePreviousLevel) {
    for (int level = 1; level <= 16383; ++level)
        EXPECT_EQ(prxCodeBookBytes[PrxLevelBook(static_cast<uint64_t>(level))], stream::LevelBook(level))
            << level;
}

TEST(PrxCodeBooks, FirstDcValueHasACodeBookOfItsOwn) {
    EXPECT_EQ(prxCodeBookBytes[prxFirstDcBook], stream::firstDcBook);
}
