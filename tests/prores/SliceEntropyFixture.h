#pragma once

#include "prores/PrxScan.h"
#include "prores/PrxSliceEntropy.h"
#include "prores/SliceEntropyModel.h"
#include "prores/StreamBits.h"
#include "support/GuardedBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <vector>

/// A component's shape.
struct ComponentShape {
    uint32_t log2BlockCount = 0;
    uint32_t log2BlockSize = 6;

    size_t Coefficients() const { return size_t{1} << (log2BlockCount + log2BlockSize); }
};

/// A component between pages that may not be touched.
class GuardedComponent {
public:
    GuardedComponent(const stream::Bytes& bytes, const ComponentShape& shape, GuardedBytes::Guard guard)
        : bytes_(bytes.size(), guard), coefficients_(2 * shape.Coefficients(), guard) {
        std::ranges::copy(bytes, bytes_.data());
        component_ = {bytes_.data(), bytes_.size(), reinterpret_cast<int16_t*>(coefficients_.data()),
                      shape.log2BlockCount, shape.log2BlockSize};
    }

    const PrxSliceComponent& operator*() const { return component_; }

    std::vector<int16_t> Coefficients() const {
        std::vector<int16_t> values(coefficients_.size() / 2);
        std::memcpy(values.data(), coefficients_.data(), coefficients_.size());
        return values;
    }

private:
    GuardedBytes bytes_;
    GuardedBytes coefficients_;
    PrxSliceComponent component_;
};

inline constexpr std::array<GuardedBytes::Guard, 2> bothGuards = {GuardedBytes::Guard::Before,
                                                                  GuardedBytes::Guard::Behind};

inline PrxCoefficientOrder FullOrder(bool interlaced = false) { return {PrxScanTable(interlaced, 0), 64}; }

inline std::vector<int16_t> DecodeByModel(const stream::Bytes& bytes, const ComponentShape& shape,
                                          const PrxCoefficientOrder& order) {
    std::vector<int16_t> coefficients(shape.Coefficients());
    model::DecodeComponent(
        {bytes.data(), bytes.size(), coefficients.data(), shape.log2BlockCount, shape.log2BlockSize}, order);
    return coefficients;
}

inline std::vector<int16_t> DecodeAlone(const stream::Bytes& bytes, const ComponentShape& shape,
                                        const PrxCoefficientOrder& order,
                                        GuardedBytes::Guard guard = GuardedBytes::Guard::Behind) {
    const GuardedComponent component(bytes, shape, guard);
    PrxDecodeSliceComponent(*component, order);
    return component.Coefficients();
}

/// Decodes components side by side.
inline std::vector<std::vector<int16_t>>
DecodeTogether(const std::vector<stream::Bytes>& streams, const std::vector<ComponentShape>& shapes,
               const PrxCoefficientOrder& order, GuardedBytes::Guard guard = GuardedBytes::Guard::Behind) {
    std::deque<GuardedComponent> guarded;
    std::vector<PrxSliceComponent> components;
    for (size_t i = 0; i < streams.size(); ++i)
        components.push_back(*guarded.emplace_back(streams[i], shapes[i], guard));
    PrxDecodeSliceComponents(components, order);
    std::vector<std::vector<int16_t>> decoded;
    for (const GuardedComponent& component : guarded)
        decoded.push_back(component.Coefficients());
    return decoded;
}

/// The coefficients of one component, in which all decoders have to agree.
inline std::vector<int16_t> Decode(const stream::Bytes& bytes, const ComponentShape& shape,
                                   const PrxCoefficientOrder& order = FullOrder()) {
    const std::vector<int16_t> result = DecodeAlone(bytes, shape, order);
    EXPECT_EQ(result, DecodeByModel(bytes, shape, order));
    for (const auto& together : DecodeTogether({bytes, bytes}, {shape, shape}, order))
        EXPECT_EQ(together, result);
    return result;
}
