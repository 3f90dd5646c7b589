#pragma once

#include "rawsdk/clip/Bytes.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <istream>
#include <vector>

namespace rawsdk {

/// A table of colours in three dimensions.
struct ColorTable {
    static constexpr uint32_t leastSize = 2;
    static constexpr uint32_t mostSize = 129;

    uint32_t size = 0;                        ///< colours along each axis; 0 for no table
    std::vector<std::array<float, 3>> colors; ///< R, G, B from 0 to 1; red runs fastest, then green

    /// The colour of three 16-bit codes, between the colours of the table by tetrahedra.
    std::array<uint16_t, 3> Apply(const std::array<uint16_t, 3>& codes) const;
};

/// Reads a table as text: `LUT_3D_SIZE n`, then n * n * n lines of three numbers. Lines that begin with '#'
/// and `TITLE` are passed over, and so are `DOMAIN_MIN 0 0 0` and `DOMAIN_MAX 1 1 1`. Numbers outside of 0 to
/// 1 are limited.
/// @throw Failure  if the text is not a table
ColorTable ReadColorTable(std::istream& text);

void WriteColorTable(const ColorTable& table, ByteWriter& writer);
/// @throw Failure  if the table is damaged
ColorTable ReadColorTable(ByteReader& reader);

/// Where the table beside a clip is: the clip's path with the extension ".cube".
std::filesystem::path SidecarOf(std::filesystem::path clip);

} // namespace rawsdk
