#pragma once

#include "prores/PrxFormats.h"
#include "prores/encoder/InputModel.h"
#include "prores/encoder/PrxInputConverter.h"

#include <vector>

/// Blocks of `packed` by `convert`, behind which nothing was written.
inline std::vector<int16_t> Convert(PrxConvertMacroblock convert, const input_model::PackedPixels& packed,
                                    int32_t chromaFormat) {
    const GuardedBytes blocks(static_cast<size_t>(chromaFormat == prxChroma444 ? 12 : 8) * 128,
                              GuardedBytes::Guard::Behind);
    auto* samples = reinterpret_cast<int16_t*>(blocks.data());
    convert({packed.Source(), packed.RowBytes(), packed.GetShape().rows, packed.GetShape().columns, samples},
            1);
    return {samples, samples + blocks.size() / sizeof(int16_t)};
}

/// Chroma formats of the streams that a format is converted to.
inline std::vector<int32_t> StreamsOf(const input_model::Format& format) {
    return format.packed ? std::vector<int32_t>{prxChroma422}
                         : std::vector<int32_t>{prxChroma422, prxChroma444};
}
