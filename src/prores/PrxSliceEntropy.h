#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Entropy decoding of a slice's coefficients (SMPTE RDD 36).

/// One component of a slice: its coded bytes and where its coefficients go.
struct PrxSliceComponent {
    const uint8_t* data;
    size_t size;
    int16_t* coefficients;   ///< zeroed by the caller; block 0's first coefficient
    uint32_t log2BlockCount; ///< 1 << this many blocks
    uint32_t log2BlockSize;  ///< block i starts at i << this
};

/// What all components of a picture have in common. The first `coefLimit` positions of the scan lie inside
/// a block.
struct PrxCoefficientOrder {
    std::span<const uint8_t> scan; ///< position in a block of the n-th coefficient
    uint32_t coefLimit;            ///< coefficients read of each block: 1 to the scan's size
};

/// Reads one component. Bits that run out, and codes out of range, end it with what was read; the rest stays
/// as the caller zeroed it. Reads no byte outside `data`.
void PrxDecodeSliceComponent(const PrxSliceComponent& component, const PrxCoefficientOrder& order);

/// Most components that are read together: those of two slices.
inline constexpr size_t prxComponentsAtOnce = 6;

/// Reads several components, at most `prxComponentsAtOnce`, with the same result as a call of
/// `PrxDecodeSliceComponent` for each but faster: two of the independent streams are always read side by
/// side, in the order given, so the longest should come first. Only a scan of `PrxScanTable` is fast.
void PrxDecodeSliceComponents(std::span<const PrxSliceComponent> components,
                              const PrxCoefficientOrder& order);
