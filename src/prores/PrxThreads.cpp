#include "prores/PrxThreads.h"

#include <algorithm>
#include <new>
#include <sched.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace {

/// Processors that the calling thread, and so each thread that it makes, may run on; `otherwise` if the
/// system doesn't tell.
int32_t AllowedProcessors(int32_t otherwise) {
    constexpr size_t mostSets = 1024; // of 1024 processors each
    for (size_t sets = 1; sets <= mostSets; sets *= 2) {
        std::vector<cpu_set_t> mask(sets);
        const size_t size = sets * sizeof(cpu_set_t);
        // Fails if the system has more processors than the mask has room for.
        if (sched_getaffinity(0, size, mask.data()) == 0) return CPU_COUNT_S(size, mask.data());
    }
    return otherwise;
}

/// Gives the calling thread the normal policy. A refusal leaves it the policy of the thread that made it,
/// which costs speed only.
void UseNormalPriority() {
    const sched_param normal{};
    sched_setscheduler(0, SCHED_OTHER, &normal);
}

void RunAtNormalPriority(PrxThreadEntry entry, void* argument) {
    UseNormalPriority();
    entry(argument);
}

} // namespace

bool PrxStartThread(std::thread* thread, PrxThreadEntry entry, void* argument) {
    try {
        *thread = std::thread(RunAtNormalPriority, entry, argument);
    } catch (const std::system_error&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

int32_t PrxProcessorCount() {
    const auto systemProcessors = static_cast<int32_t>(sysconf(_SC_NPROCESSORS_ONLN));
    return PrxUsableProcessors(systemProcessors, AllowedProcessors(systemProcessors));
}

int32_t PrxUsableProcessors(int32_t systemProcessors, int32_t allowedProcessors) {
    if (systemProcessors < 1) return 1;
    return std::min(systemProcessors, allowedProcessors);
}
