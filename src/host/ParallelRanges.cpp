#include "host/ParallelRanges.h"

#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

void RunRangesInParallel(int count, void (*run)(void* context, int first, int end), void* context) {
    tbb::this_task_arena::isolate([&] {
        tbb::parallel_for(tbb::blocked_range<int>(0, count), [&](const tbb::blocked_range<int>& range) {
            run(context, range.begin(), range.end());
        });
    });
}
