#pragma once

#if defined(__SSE2__)
#include <xmmintrin.h>
#else
#include <cfenv>
#endif

/// Makes the calling thread round to nearest for the guard's life, and gives it its own mode back at the end.
/// Worker threads inherit the mode of the thread that made them, so it can be any. The compiler takes the
/// mode for constant, and may move arithmetic that stands beside a guard out of its life: arithmetic that
/// needs one runs through `PrxRunRoundingToNearest`.
class PrxRoundToNearest {
public:
    PrxRoundToNearest() : mode_(Mode()) {
        if (mode_ != nearest) SetMode(nearest);
    }
    ~PrxRoundToNearest() {
        if (mode_ != nearest) SetMode(mode_);
    }
    PrxRoundToNearest(const PrxRoundToNearest&) = delete;
    PrxRoundToNearest& operator=(const PrxRoundToNearest&) = delete;

private:
#if defined(__SSE2__)
    // The arithmetic is that of SSE and its successors. <cfenv> would not do: std::fegetround reads the mode
    // of the x87 unit, a separate one that plays no part, and std::fesetround would change that one too.
    static constexpr unsigned nearest = _MM_ROUND_NEAREST;
    static unsigned Mode() { return _MM_GET_ROUNDING_MODE(); }
    static void SetMode(unsigned mode) { _MM_SET_ROUNDING_MODE(mode); }
    const unsigned mode_;
#else
    static constexpr int nearest = FE_TONEAREST;
    static int Mode() { return std::fegetround(); }
    static void SetMode(int mode) { std::fesetround(mode); }
    const int mode_;
#endif
};

/// Runs `Function` with rounding to nearest and returns its result. The call goes through a volatile pointer,
/// so that the compiler doesn't know what it calls: it can't inline the function, and so can't move any of
/// its arithmetic to where the caller's mode holds.
template <auto Function, typename... Arguments>
auto PrxRunRoundingToNearest(const Arguments&... arguments) {
    auto* const volatile function = Function;
    const PrxRoundToNearest rounding;
    return function(arguments...);
}
