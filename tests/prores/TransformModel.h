#pragma once

#include <cstdint>
#include <random>
#include <span>
#include <vector>

/// A size of block by its reductions.
struct BlockSize {
    int32_t hShift;
    int32_t vShift;

    int32_t width() const { return 8 >> hShift; }
    int32_t height() const { return 8 >> vShift; }
    int32_t values() const { return width() * height(); }
};

inline constexpr BlockSize blockSizes[] = {{0, 0}, {0, 1}, {1, 0}, {1, 1}, {1, 2},
                                           {2, 1}, {2, 2}, {2, 3}, {3, 2}, {3, 3}};

inline constexpr int32_t sampleDepths[] = {8, 10, 13};

/// The samples of one block as plain arithmetic on 64-bit integers gives them, with explicit wraps and
/// saturations: matrices for the row pass, and each step of the column pass written out. It shares nothing
/// with the engine.
std::vector<int16_t> ModelTransform(BlockSize size, std::span<const int16_t> coefficients, int32_t depth,
                                    std::span<const int16_t> quantTable);

/// Ways to fill coefficients and tables: real streams, everything that a value can hold, and the extremes.
enum class Filling { Sparse, Dense, Anything, LowerHalfZero, Minimum, Maximum, Alternating };

inline constexpr Filling fillings[] = {Filling::Sparse,        Filling::Dense,   Filling::Anything,
                                       Filling::LowerHalfZero, Filling::Minimum, Filling::Maximum,
                                       Filling::Alternating};

/// Coefficients of `count` blocks.
std::vector<int16_t> MakeCoefficients(std::mt19937& random, BlockSize size, int32_t count, Filling filling);

/// A table of 64 entries; those of streams for `Sparse` and `Dense`, and values of all 16 bits otherwise.
std::vector<int16_t> MakeQuantTable(std::mt19937& random, Filling filling);
