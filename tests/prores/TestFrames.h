#pragma once

#include "prores/StreamFrame.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>

/// `source` with its macroblocks kept, for frames that are built or modelled many times.
inline stream::MacroblockSource Kept(stream::MacroblockSource source) {
    auto kept = std::make_shared<std::map<std::array<int, 3>, stream::Macroblock>>();
    return [kept, source = std::move(source)](int picture, int x, int y) {
        const auto [found, isNew] = kept->try_emplace({picture, x, y});
        if (isNew) found->second = source(picture, x, y);
        return found->second;
    };
}

/// A frame with detail in all of its coefficients, several quantisers and alpha that changes all over. Its
/// size leaves a narrow last slice, a part of a macroblock at the right, and a few lines at the bottom.
inline stream::FrameSpec FrameOf(int chromaFormat, int interlaceMode = 0, int alphaType = 0) {
    stream::FrameSpec spec;
    spec.width = 130;
    spec.height = 99;
    spec.chromaFormat = chromaFormat;
    spec.interlaceMode = interlaceMode;
    spec.alphaType = alphaType;
    spec.coefficients = Kept(stream::NaturalPicture(7));
    spec.quantIndex = [](const stream::SlicePlace& place) { return 2 + place.index % 3; };
    const int range = alphaType == 1 ? 0xff : 0xffff;
    spec.alpha = [range](int x, int y) { return static_cast<uint16_t>((x / 5 * 977 + y / 3 * 331) & range); };
    return spec;
}
