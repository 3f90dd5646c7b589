#include "prores/PrxOutputConverter.h"

#include "prores/PrxFormats.h"
#include "prores/PrxWriters.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr uint32_t noFormat = 0;

/// What the writers make on the way to a format: the format itself on a direct route.
struct FormatRoute {
    uint32_t pixelFormat;
    uint32_t from422;
    uint32_t from444;
};

constexpr FormatRoute routes[] = {
    {prxFormat2vuy, prxFormat2vuy, prxFormat2vuy},
    {prxFormatV210, prxFormatW216, prxFormatW216},
    {prxFormatV216, prxFormatV216, prxFormatV216},
    {prxFormatW216, prxFormatW216, prxFormatW216},
    {prxFormatV408, prxFormatV408, prxFormatV408},
    {prxFormatR408, prxFormatR408, prxFormatR408},
    {prxFormatY408, prxFormatY408, prxFormatY408},
    {prxFormatY416, prxFormatY416, prxFormatY416},
    {prxFormatR4fl, prxFormatR4fl, prxFormatR4fl},
    {prxFormatArgb, prxFormatV216, prxFormatArgb},
    {prxFormatBgra, prxFormatV216, prxFormatBgra},
    {prxFormatB64a, prxFormatV216, prxFormatB64a},
    {prxFormatR10k, prxFormatV216, prxFormatR10k},
    {prxFormatR210, prxFormatV216, prxFormatR210},
    {prxFormatN302, prxFormatV216, prxFormatN302},
    // No row pass follows: a 4:2:2 frame decodes without error and leaves the target as it was. Kept.
    {prxFormatL302, prxFormatV216, noFormat},
};

uint32_t IntermediateFormat(uint32_t pixelFormat, int32_t chromaFormat) {
    const auto* route =
        std::find_if(std::begin(routes), std::end(routes),
                     [pixelFormat](const FormatRoute& r) { return r.pixelFormat == pixelFormat; });
    if (route == std::end(routes)) return noFormat;
    switch (chromaFormat) {
    case prxChroma422: return route->from422;
    case prxChroma444: return route->from444;
    default: return noFormat;
    }
}

PrxMacroblockWriter SelectWriter(uint32_t format, int32_t chromaFormat, int32_t hShift, int32_t vShift,
                                 bool hasAlpha) {
    if (const auto writer = PrxSelect8BitWriter(format, chromaFormat, hShift, vShift, hasAlpha))
        return writer;
    if (const auto writer = PrxSelect16BitWriter(format, chromaFormat, hasAlpha)) return writer;
    if (const auto writer = PrxSelectFloatWriter(format, chromaFormat, hasAlpha)) return writer;
    return PrxSelectRgbWriter(format, chromaFormat, hasAlpha);
}

bool HasReducedWriters(uint32_t format) {
    return format == prxFormat2vuy || format == prxFormatR408 || format == prxFormatY408;
}

} // namespace

void PrxSelectConverter(PrxOutputConverter* converter, uint32_t pixelFormat, int32_t chromaFormat,
                        int32_t hShift, int32_t vShift, bool hasAlpha) {
    *converter = {};
    converter->pixelFormat = pixelFormat;
    const uint32_t intermediate = IntermediateFormat(pixelFormat, chromaFormat);
    if (intermediate == noFormat) return;
    converter->intermediateFormat = intermediate;
    converter->direct = intermediate == pixelFormat;
    converter->fullSizeOnly = !HasReducedWriters(intermediate);
    converter->mbBytes = PrxGetGroupSize(intermediate).bytesPerGroup * (16u >> hShift);
    converter->writer = SelectWriter(intermediate, chromaFormat, hShift, vShift, hasAlpha);
    converter->rowPass = PrxSelectRowPass(pixelFormat, chromaFormat, hasAlpha);
}
