#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <vector>

using TestBlock = std::array<int16_t, 64>;

/// A block as plain arithmetic on 64-bit integers transforms it, with explicit wraps and saturations and the
/// tables written out. It shares nothing with the engine.
TestBlock ModelForwardDct(const TestBlock& block);

/// Half of the orthonormal discrete cosine transform in double precision.
std::array<double, 64> ExactForwardDct(const TestBlock& block);

/// Ways to fill blocks: camera-like pictures, noise and extremes of 12 bits, samples of all 16 bits and their
/// extremes, blocks of one value, and such with one sample that differs.
enum class Samples { Picture, Noise, Extremes, Anything, WideExtremes, Flat, NearlyFlat };

inline constexpr Samples sampleKinds[] = {Samples::Picture,     Samples::Noise, Samples::Extremes,
                                          Samples::Anything,    Samples::Flat,  Samples::NearlyFlat,
                                          Samples::WideExtremes};

TestBlock MakeSamples(std::mt19937& random, Samples kind);

/// Blocks of the kinds in turn or by chance, one behind the other.
std::vector<int16_t> MakeMixedBlocks(std::mt19937& random, int32_t count);
