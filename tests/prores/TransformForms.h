#pragma once

#include "prores/PrxInverseTransformVector.h"
#include "prores/TransformModel.h"
#include "support/VectorTargets.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Sizes that have a vector form.
inline constexpr BlockSize vectorSizes[] = {{0, 0}, {0, 1}, {1, 0}, {1, 1}};

inline std::string NameOf(BlockSize size) {
    return std::to_string(size.width()) + " by " + std::to_string(size.height());
}

/// Runs `test` with the size and the form, for each instruction set and each size that has a vector form.
template <typename Test>
void ForEachVectorForm(const Test& test) {
    const std::vector<int64_t> targets = VectorTargets();
    ASSERT_FALSE(targets.empty()) << "no vector instruction set was dispatched";
    for (const int64_t target : targets) {
        const ForcedTarget forced(target);
        for (const BlockSize size : vectorSizes) {
            SCOPED_TRACE(std::string(hwy::TargetName(target)) + ", " + NameOf(size));
            const PrxInverseTransform form = PrxVectorInverseTransform(size.hShift, size.vShift);
            ASSERT_NE(form, nullptr);
            test(size, form);
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

/// The same for the reference form of all sizes, too.
template <typename Test>
void ForEachForm(const Test& test) {
    for (const BlockSize size : blockSizes) {
        SCOPED_TRACE("reference, " + NameOf(size));
        test(size, PrxScalarInverseTransform(size.hShift, size.vShift));
        if (testing::Test::HasFatalFailure()) return;
    }
    ForEachVectorForm(test);
}

/// Blocks of one call.
struct Blocks {
    BlockSize size;
    std::vector<int16_t> coefficients;
    std::vector<int16_t> table;
    int32_t depth;
};

inline std::vector<int16_t> TransformWith(PrxInverseTransform form, const Blocks& blocks) {
    std::vector<int16_t> samples(blocks.coefficients.size());
    form(blocks.coefficients.data(), samples.data(),
         static_cast<int32_t>(samples.size()) / blocks.size.values(), blocks.depth, blocks.table.data());
    return samples;
}

/// What the model makes of them.
inline std::vector<int16_t> ModelOf(const Blocks& blocks) {
    const auto values = static_cast<size_t>(blocks.size.values());
    std::vector<int16_t> samples;
    for (size_t i = 0; i < blocks.coefficients.size(); i += values) {
        const std::vector<int16_t> block =
            ModelTransform(blocks.size, {&blocks.coefficients[i], values}, blocks.depth, blocks.table);
        samples.insert(samples.end(), block.begin(), block.end());
    }
    return samples;
}

/// One block that has a first coefficient only.
inline Blocks LoneDc(BlockSize size, int16_t coefficient, int16_t factor, int32_t depth) {
    Blocks blocks = {size, std::vector<int16_t>(static_cast<size_t>(size.values())),
                     std::vector<int16_t>(64, factor), depth};
    blocks.coefficients[0] = coefficient;
    return blocks;
}
