// The way from each stream to each pixel format.

#include "prores/PrxOutputConverter.h"

#include "Reductions.h"
#include "prores/PrxWriters.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

enum class Way { Direct, DirectWithPass, ThroughV216, ThroughV216WithoutPass, ThroughW216, Refused };

struct Route {
    const char* name;
    uint32_t format;
    Way from422;
    Way from444;
    uint32_t bytesPerPixel422; ///< of what the writer makes; 0 if there is none
    uint32_t bytesPerPixel444;
    bool isReducible; ///< the direct writer has forms for reduced pictures

    Way From(int32_t chromaFormat) const { return chromaFormat == prxChroma422 ? from422 : from444; }
    uint32_t BytesPerPixelFrom(int32_t chromaFormat) const {
        return chromaFormat == prxChroma422 ? bytesPerPixel422 : bytesPerPixel444;
    }
};

constexpr Route routes[] = {
    {"2vuy", prxFormat2vuy, Way::Direct, Way::Direct, 2, 2, true},
    {"yuvs", prxFormatYuvs, Way::Refused, Way::Refused, 0, 0, false},
    {"v210", prxFormatV210, Way::ThroughW216, Way::ThroughW216, 4, 4, false},
    {"v216", prxFormatV216, Way::Direct, Way::Direct, 4, 4, false},
    {"w216", prxFormatW216, Way::Direct, Way::Direct, 4, 4, false},
    {"v408", prxFormatV408, Way::Direct, Way::Direct, 4, 4, false},
    {"r408", prxFormatR408, Way::Direct, Way::Direct, 4, 4, true},
    {"y408", prxFormatY408, Way::Direct, Way::Direct, 4, 4, true},
    {"y416", prxFormatY416, Way::DirectWithPass, Way::Direct, 8, 8, false},
    {"r4fl", prxFormatR4fl, Way::DirectWithPass, Way::Direct, 16, 16, false},
    {"ARGB", prxFormatArgb, Way::ThroughV216, Way::Direct, 4, 4, false},
    {"BGRA", prxFormatBgra, Way::ThroughV216, Way::Direct, 4, 4, false},
    {"b64a", prxFormatB64a, Way::ThroughV216, Way::Direct, 4, 8, false},
    {"R10k", prxFormatR10k, Way::ThroughV216, Way::Direct, 4, 4, false},
    {"r210", prxFormatR210, Way::ThroughV216, Way::Direct, 4, 4, false},
    {"n302", prxFormatN302, Way::ThroughV216, Way::Direct, 4, 4, false},
    {"l302", prxFormatL302, Way::ThroughV216WithoutPass, Way::Refused, 4, 0, false},
};

PrxOutputConverter Select(uint32_t format, int32_t chromaFormat, Reduction reduction = {0, 0},
                          bool hasAlpha = false) {
    PrxOutputConverter converter;
    PrxSelectConverter(&converter, format, chromaFormat, reduction.hShift, reduction.vShift, hasAlpha);
    return converter;
}

uint32_t IntermediateOf(const Route& route, int32_t chromaFormat) {
    switch (route.From(chromaFormat)) {
    case Way::ThroughV216:
    case Way::ThroughV216WithoutPass: return prxFormatV216;
    case Way::ThroughW216: return prxFormatW216;
    default: return route.format;
    }
}

/// The writer of a format in its family.
PrxMacroblockWriter WriterOfFamily(uint32_t format, int32_t chromaFormat, Reduction reduction,
                                   bool hasAlpha) {
    switch (format) {
    case prxFormat2vuy:
    case prxFormatV408:
    case prxFormatR408:
    case prxFormatY408:
        return PrxSelect8BitWriter(format, chromaFormat, reduction.hShift, reduction.vShift, hasAlpha);
    case prxFormatV216:
    case prxFormatW216:
    case prxFormatY416: return PrxSelect16BitWriter(format, chromaFormat, hasAlpha);
    case prxFormatR4fl: return PrxSelectFloatWriter(format, chromaFormat, hasAlpha);
    default: return PrxSelectRgbWriter(format, chromaFormat, hasAlpha);
    }
}

using Check =
    std::function<void(const Route& route, int32_t chromaFormat, Reduction reduction, bool hasAlpha)>;

/// Each format of each stream, at each reduction, with and without alpha.
void ForEachCase(const Check& check) {
    for (const Route& route : routes)
        for (const int32_t chromaFormat : {prxChroma422, prxChroma444})
            for (const Reduction reduction : reductions)
                for (const bool hasAlpha : {false, true}) {
                    SCOPED_TRACE(std::string(route.name) + " from chroma format " +
                                 std::to_string(chromaFormat) + (hasAlpha ? " with alpha" : "") +
                                 " reduced by 2^" + std::to_string(reduction.hShift) + ", 2^" +
                                 std::to_string(reduction.vShift));
                    check(route, chromaFormat, reduction, hasAlpha);
                }
}

bool HasPass(Way way) {
    return way == Way::DirectWithPass || way == Way::ThroughV216 || way == Way::ThroughW216;
}

void ExpectRoute(const Route& route, int32_t chromaFormat, Reduction reduction, bool hasAlpha) {
    const PrxOutputConverter converter = Select(route.format, chromaFormat, reduction, hasAlpha);
    const Way way = route.From(chromaFormat);
    ASSERT_EQ(converter.writer != nullptr, way != Way::Refused);
    if (way == Way::Refused) return;
    EXPECT_EQ(converter.pixelFormat, route.format);
    EXPECT_EQ(converter.intermediateFormat, IntermediateOf(route, chromaFormat));
    EXPECT_EQ(converter.direct, way == Way::Direct || way == Way::DirectWithPass);
    EXPECT_EQ(converter.rowPass != nullptr, HasPass(way));
    EXPECT_EQ(converter.fullSizeOnly, !route.isReducible);
    EXPECT_EQ(converter.mbBytes, route.BytesPerPixelFrom(chromaFormat) * (16u >> reduction.hShift));
}

} // namespace

TEST(OutputConverter, EachFormatTakesItsRouteFromEachStreamAtEachReduction) { ForEachCase(ExpectRoute); }

TEST(OutputConverter, StreamsOfOtherChromaFormatsAreRefused) {
    for (const Route& route : routes)
        for (const int32_t chromaFormat : {-1, 0, 1, 4})
            EXPECT_EQ(Select(route.format, chromaFormat).writer, nullptr) << route.name;
}

TEST(OutputConverter, UnknownFormatsAreRefused) {
    for (const uint32_t format : {0u, 24u, 0x79757679u, 0xffffffffu})
        for (const int32_t chromaFormat : {prxChroma422, prxChroma444})
            EXPECT_EQ(Select(format, chromaFormat).writer, nullptr) << format;
}

TEST(OutputConverter, YuvsIsNoTarget) {
    EXPECT_EQ(Select(prxFormatYuvs, prxChroma422).writer, nullptr);
    EXPECT_EQ(Select(prxFormatYuvs, prxChroma444).writer, nullptr);
}

TEST(OutputConverter, L302GetsARowFromA422StreamAndNothingEndsIt) {
    const PrxOutputConverter converter = Select(prxFormatL302, prxChroma422);
    EXPECT_FALSE(converter.direct);
    EXPECT_EQ(converter.writer, PrxSelect16BitWriter(prxFormatV216, prxChroma422, false));
    EXPECT_EQ(converter.rowPass, nullptr);
}

TEST(OutputConverter, L302IsRefusedFromA444Stream) {
    EXPECT_EQ(Select(prxFormatL302, prxChroma444).writer, nullptr);
}

TEST(OutputConverter, EachRouteHasTheWriterOfWhatItMakes) {
    ForEachCase([](const Route& route, int32_t chromaFormat, Reduction reduction, bool hasAlpha) {
        const uint32_t made = IntermediateOf(route, chromaFormat);
        const PrxMacroblockWriter expected = route.From(chromaFormat) == Way::Refused
                                                 ? nullptr
                                                 : WriterOfFamily(made, chromaFormat, reduction, hasAlpha);
        EXPECT_EQ(Select(route.format, chromaFormat, reduction, hasAlpha).writer, expected);
    });
}

TEST(OutputConverter, EachRouteHasThePassOfItsFormat) {
    ForEachCase([](const Route& route, int32_t chromaFormat, Reduction reduction, bool hasAlpha) {
        const PrxRowPass expected = HasPass(route.From(chromaFormat))
                                        ? PrxSelectRowPass(route.format, chromaFormat, hasAlpha)
                                        : nullptr;
        EXPECT_EQ(Select(route.format, chromaFormat, reduction, hasAlpha).rowPass, expected);
    });
}

TEST(OutputConverter, ARowPassThatTakesAlphaIsChosenByIt) {
    for (const uint32_t format : {prxFormatArgb, prxFormatBgra, prxFormatB64a})
        for (const Reduction reduction : reductions)
            EXPECT_NE(Select(format, prxChroma422, reduction, true).rowPass,
                      Select(format, prxChroma422, reduction, false).rowPass);
}
