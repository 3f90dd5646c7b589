#pragma once

#include "prores/encoder/PrxQuantise.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <random>
#include <span>
#include <vector>

/// Values in memory aligned to 64 bytes, as the quantiser takes them.
template <typename T>
struct CacheLineAllocator {
    using value_type = T;
    CacheLineAllocator() = default;
    template <typename U>
    CacheLineAllocator(const CacheLineAllocator<U>&) {}
    T* allocate(size_t count) {
        return static_cast<T*>(::operator new (count * sizeof(T), std::align_val_t{64}));
    }
    void deallocate(T* values, size_t) { ::operator delete (values, std::align_val_t{64}); }
    bool operator==(const CacheLineAllocator&) const { return true; }
};

template <typename T>
using CacheLines = std::vector<T, CacheLineAllocator<T>>;

/// The five steps that lead from a coefficient to its level, in 64-bit arithmetic with explicit wraps and
/// saturations.
inline uint16_t ModelLevel(int64_t coefficient, int64_t reciprocal) {
    const auto wrap = [](int64_t v) { return (v & 0x7FFF) - (v & 0x8000); };
    const int64_t m = wrap(4 * std::min(coefficient, wrap(-coefficient)));
    const int64_t d = std::clamp<int64_t>(reciprocal + reciprocal, -32768, 32767);
    const int64_t p = (m * d) >> 16;
    const int64_t t = (p + 1) >> 1;
    return static_cast<uint16_t>((-2 * t + (t != 0 && coefficient < 0 ? 1 : 0)) & 0xFFFF);
}

/// A slice's coefficients as macroblocks hold them.
struct TestSlice {
    int32_t mbCount;
    int32_t blocksPerMb;
    CacheLines<int16_t> coefficients;

    size_t values() const { return coefficients.size(); }
};

/// Coefficients between -`amplitude` - 1 and `amplitude`.
inline TestSlice MakeSlice(std::mt19937& random, int32_t mbCount, int32_t blocksPerMb, int32_t amplitude) {
    TestSlice slice = {mbCount, blocksPerMb, {}};
    std::uniform_int_distribution<int32_t> value(-amplitude - 1, amplitude);
    for (int32_t i = 0; i < 64 * mbCount * blocksPerMb; ++i)
        slice.coefficients.push_back(static_cast<int16_t>(value(random)));
    return slice;
}

inline CacheLines<uint16_t> QuantiseWith(PrxQuantiser quantiser, const PrxQuantTables& tables,
                                         const TestSlice& slice) {
    CacheLines<uint16_t> levels(slice.values(), 0xABCD);
    quantiser(tables, slice.coefficients.data(), slice.mbCount, slice.blocksPerMb, levels.data());
    return levels;
}
