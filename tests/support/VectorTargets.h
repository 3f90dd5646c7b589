#pragma once

#include <hwy/highway.h>

#include <cstdint>
#include <vector>

/// Instruction sets of this machine that have vectors.
inline std::vector<int64_t> VectorTargets() {
    std::vector<int64_t> targets = hwy::SupportedAndGeneratedTargets();
    std::erase_if(targets, [](int64_t target) { return target == HWY_SCALAR || target == HWY_EMU128; });
    return targets;
}

/// Makes the library choose one instruction set until the end of its life.
class ForcedTarget {
public:
    explicit ForcedTarget(int64_t target) {
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().DeInit();
    }
    ~ForcedTarget() {
        hwy::SetSupportedTargetsForTest(0);
        hwy::GetChosenTarget().DeInit();
    }
};
