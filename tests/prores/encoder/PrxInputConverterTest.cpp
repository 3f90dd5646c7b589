#include "prores/encoder/PrxInputConverter.h"

#include "prores/PrxFormats.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr auto allFormats = {prxFormat2vuy, prxFormatYuvs, prxFormatV210, prxFormatV216, prxFormatW216,
                             prxFormatV408, prxFormatR408, prxFormatY408, prxFormatY416, prxFormatR4fl,
                             prxFormatArgb, prxFormatBgra, prxFormatB64a, prxFormatR10k, prxFormatR210,
                             prxFormatN302, prxFormatL302};

/// Names of the formats that have a converter.
template <typename Select>
std::string FormatsWith(Select select, int32_t chromaFormat) {
    std::string names;
    for (const uint32_t format : allFormats) {
        if (select(format, chromaFormat) == nullptr) continue;
        for (int32_t shift = 24; shift >= 0 && format != prxFormatArgb; shift -= 8)
            names += static_cast<char>(format >> shift);
        names += format == prxFormatArgb ? "32 " : " ";
    }
    return names;
}

constexpr auto with422 = "2vuy yuvs v210 v216 v408 r408 y408 y416 r4fl 32 b64a R10k r210 ";
constexpr auto with444 = "v408 r408 y408 y416 r4fl 32 b64a R10k r210 n302 ";

} // namespace

TEST(PrxInputConverter, TheFormatsOf422StreamsHaveAConverter) {
    EXPECT_EQ(FormatsWith(PrxGetConverter, prxChroma422), with422);
    EXPECT_EQ(FormatsWith(PrxGetScalarConverter, prxChroma422), with422);
}

TEST(PrxInputConverter, TheFormatsOf444StreamsHaveAConverter) {
    EXPECT_EQ(FormatsWith(PrxGetConverter, prxChroma444), with444);
    EXPECT_EQ(FormatsWith(PrxGetScalarConverter, prxChroma444), with444);
}

TEST(PrxInputConverter, OtherChromaFormatsHaveNone) {
    for (const int32_t chromaFormat : {-1, 0, 1, 4}) {
        EXPECT_EQ(FormatsWith(PrxGetConverter, chromaFormat), "");
        EXPECT_EQ(FormatsWith(PrxGetScalarConverter, chromaFormat), "");
    }
}

TEST(PrxInputConverter, FormatsOfPreparedRowsShareTheConverterOfV216) {
    const auto v216 = PrxGetConverter(prxFormatV216, prxChroma422);
    for (const uint32_t format : {prxFormatV210, prxFormatArgb, prxFormatB64a, prxFormatR10k, prxFormatR210})
        EXPECT_EQ(PrxGetConverter(format, prxChroma422), v216);
}
