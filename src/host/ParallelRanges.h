#pragma once

/// Splits the indices from 0 to `count` - 1 into ranges, calls `run(context, first, end)` for each range, on
/// the threads of the caller's oneTBB arena, and returns when all are done. While it waits the calling
/// thread, which may hold locks or be in the middle of another parallel loop, takes no work but this call's.
/// `run` lets no exception out.
void RunRangesInParallel(int count, void (*run)(void* context, int first, int end), void* context);
