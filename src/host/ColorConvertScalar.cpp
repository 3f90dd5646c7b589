#include "host/ColorConvertScalar.h"

#include "host/ColorConvertRows.h"

const ColorKernels& ScalarColorKernels() {
    static constexpr ColorKernels kernels = ColorRows<color_scalar::Steps>::Kernels(0);
    return kernels;
}
