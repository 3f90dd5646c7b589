#include "host/ParallelRanges.h"

#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

namespace {

/// An arena that nothing runs in. oneTBB makes its scheduler with the first arena and drops it with the last;
/// if memory runs out meanwhile, a lock of oneTBB's stays locked and every later use waits for ever. So the
/// scheduler is made when this library is loaded, and kept.
struct SchedulerKeeper {
    tbb::task_arena arena{1};
    SchedulerKeeper() { arena.initialize(); }
};
const SchedulerKeeper keeper;

} // namespace

void RunRangesInParallel(int count, void (*run)(void* context, int first, int end), void* context) {
    tbb::this_task_arena::isolate([&] {
        tbb::parallel_for(tbb::blocked_range<int>(0, count), [&](const tbb::blocked_range<int>& range) {
            run(context, range.begin(), range.end());
        });
    });
}
