#include "prores/PrxThreads.h"

#include "prores/Prx.h"
#include "prores/PrxDecoder.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sched.h>

#include <atomic>
#include <cstring>
#include <new>

namespace {

std::atomic<bool> maskIsEmpty = false;

/// Until the end of its life the process may run on no processor, as far as it can learn.
class EmptyMask {
public:
    EmptyMask() { maskIsEmpty = true; }
    ~EmptyMask() { maskIsEmpty = false; }
    EmptyMask(const EmptyMask&) = delete;
    EmptyMask& operator=(const EmptyMask&) = delete;
};

} // namespace

/// Stands before the system's function of that name.
extern "C" int sched_getaffinity(pid_t process, size_t size, cpu_set_t* mask) noexcept {
    using Function = int (*)(pid_t, size_t, cpu_set_t*);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "sched_getaffinity"));
    if (!maskIsEmpty) return next(process, size, mask);
    std::memset(mask, 0, size);
    return 0;
}

TEST(PrxEmptyAffinityMask, LeavesNoProcessor) {
    const EmptyMask mask;
    EXPECT_EQ(PrxProcessorCount(), 0);
}

TEST(PrxEmptyAffinityMask, FailsTheCreationOfADecoderWithAWorkerForEachProcessor) {
    const EmptyMask mask;
    EXPECT_THROW(PrxCreateDecoder(0, nullptr), std::bad_alloc);
    EXPECT_THROW(PrxDecoder(-1, nullptr), std::bad_alloc);
}

TEST(PrxEmptyAffinityMask, IsOfNoConcernToADecoderWithACountOfItsOwn) {
    const EmptyMask mask;
    PrxDecoderRef decoder = PrxCreateDecoder(1, nullptr);
    EXPECT_NE(decoder, nullptr);
    PrxDeleteDecoder(decoder);
}
