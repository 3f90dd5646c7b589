#include "prores/encoder/PrxCodeWord.h"

#include "prores/SliceEntropyModel.h"
#include "prores/StreamBits.h"

#include <gtest/gtest.h>

namespace {

stream::Bytes BytesOf(const PrxCodeWord& word) {
    stream::BitWriter bits;
    bits.Put(word.bits, word.length);
    return bits.Data();
}

void ExpectWordsOf(uint32_t first, uint32_t last) {
    for (uint32_t index = 0; index < prxCodeBookBytes.size(); ++index) {
        for (uint32_t value = first; value <= last; ++value) {
            const PrxCodeWord word = PrxCodeWordOf(PrxGetCodeBook(index), value);
            stream::BitWriter expected;
            stream::PutCode(expected, prxCodeBookBytes[index], value);
            ASSERT_EQ(word.length, expected.Count()) << "book " << index << ", value " << value;
            ASSERT_EQ(BytesOf(word), expected.Data()) << "book " << index << ", value " << value;
            ASSERT_EQ(model::BitSource(BytesOf(word)).ReadCode(prxCodeBookBytes[index]), value);
        }
    }
}

} // namespace

TEST(PrxCodeWord, HasTheStandardsCodeForValuesUpTo1023) { ExpectWordsOf(0, 1023); }

TEST(PrxCodeWord, HasTheStandardsCodeForAllLargerValuesOfALevel) { ExpectWordsOf(1024, 32767); }

TEST(PrxCodeWord, HasTheStandardsCodeForTheLargestDcDifferences) { ExpectWordsOf(131000, 131070); }

TEST(PrxCodeWord, JoinsWordsInTheirOrder) {
    constexpr PrxCodeWord joined = PrxCodeWord{5, 3}.Then({1, 4});
    EXPECT_EQ(joined.bits, 0b1010001u);
    EXPECT_EQ(joined.length, 7u);
}
