#include "prores/PrxFormats.h"

#include <algorithm>
#include <iterator>

namespace {

/// All that is known of one pixel format.
struct FormatRow {
    uint32_t pixelFormat;
    PrxGroupSize group;
    int32_t precisionClass;
    uint32_t alphaSampleSize;
    bool is422;
};

// The empty comments keep each format on a line of its own.
constexpr FormatRow formatRows[] = {
    {prxFormat2vuy, {2, 1}, 8, 0, true},    //
    {prxFormatYuvs, {2, 1}, 0, 0, true},    //
    {prxFormatV210, {8, 3}, 0, 0, true},    //
    {prxFormatV216, {4, 1}, 13, 0, true},   //
    {prxFormatW216, {4, 1}, 10, 0, false},  //
    {prxFormatV408, {4, 1}, 8, 1, false},   //
    {prxFormatR408, {4, 1}, 8, 1, false},   //
    {prxFormatY408, {4, 1}, 8, 1, false},   //
    {prxFormatY416, {8, 1}, 13, 2, false},  //
    {prxFormatR4fl, {16, 1}, 13, 4, false}, //
    {prxFormatArgb, {4, 1}, 13, 1, false},  //
    {prxFormatBgra, {4, 1}, 13, 1, false},  //
    {prxFormatB64a, {8, 1}, 13, 2, false},  //
    {prxFormatR10k, {4, 1}, 13, 0, false},  //
    {prxFormatR210, {4, 1}, 13, 0, false},  //
    {prxFormatN302, {4, 1}, 13, 0, false},  //
    {prxFormatL302, {4, 1}, 13, 0, false},  //
};

constexpr bool EachFormatStandsOnce() {
    for (const FormatRow& row : formatRows) {
        if (std::ranges::count(formatRows, row.pixelFormat, &FormatRow::pixelFormat) != 1) return false;
    }
    return true;
}
static_assert(EachFormatStandsOnce());

// So rows of whole macroblocks are whole groups, and at half width too multiples of 16 bytes.
static_assert(std::ranges::all_of(formatRows, [](const FormatRow& row) {
    const uint32_t pixelsPerGroup = row.pixelFormat == prxFormatV210 ? 3 : 1;
    return row.group.pixelsPerGroup == pixelsPerGroup && row.group.bytesPerGroup % 2 == 0;
}));

constexpr FormatRow unknownFormat = {0, {0, 1}, 0, 0, false};

const FormatRow& RowOf(uint32_t pixelFormat) {
    const auto* row = std::ranges::find(formatRows, pixelFormat, &FormatRow::pixelFormat);
    return row != std::end(formatRows) ? *row : unknownFormat;
}

} // namespace

bool PrxIs422Codec(uint32_t codecType) {
    return codecType == prxCodecApch || codecType == prxCodecApcn || codecType == prxCodecApcs ||
           codecType == prxCodecApco;
}

bool PrxIs444Codec(uint32_t codecType) { return codecType == prxCodecAp4h || codecType == prxCodecAp4x; }

bool PrxIsCodec(uint32_t codecType) { return PrxIs422Codec(codecType) || PrxIs444Codec(codecType); }

bool PrxIs422Format(uint32_t pixelFormat) { return RowOf(pixelFormat).is422; }

PrxGroupSize PrxGetGroupSize(uint32_t pixelFormat) { return RowOf(pixelFormat).group; }

int32_t PrxGetPrecisionClass(uint32_t pixelFormat) { return RowOf(pixelFormat).precisionClass; }

uint32_t PrxGetAlphaSampleSize(uint32_t pixelFormat) { return RowOf(pixelFormat).alphaSampleSize; }
