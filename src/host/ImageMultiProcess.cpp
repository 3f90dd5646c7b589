#include "host/Image.h"

#include "host/ParallelRanges.h"

#include <atomic>

namespace {

/// One call of `DoMultiProcess`. oneTBB orders the threads by itself; the two atomics state that order in
/// code that ThreadSanitizer sees.
struct IndexLoop {
    Image* image;
    Image::RowFunction fn;
    void* context;
    std::atomic<bool> begun = false;
    std::atomic<int> done = 0; ///< indices run so far

    static void Run(void* self, int first, int end) {
        IndexLoop& loop = *static_cast<IndexLoop*>(self);
        (void)loop.begun.load(std::memory_order_acquire);
        for (int index = first; index < end; ++index)
            loop.fn(loop.image, loop.context, index);
        loop.done.fetch_add(end - first, std::memory_order_release);
    }
};

} // namespace

bool Image::DoMultiProcess(RowFunction fn, void* context, int count, ImgMPData*, bool) {
    if (count <= 0) return true;
    IndexLoop loop{this, fn, context};
    loop.begun.store(true, std::memory_order_release);
    RunRangesInParallel(count, IndexLoop::Run, &loop);
    return loop.done.load(std::memory_order_acquire) == count;
}
