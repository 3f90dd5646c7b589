#include "host/Image.h"

#include "host/ParallelRanges.h"

#include <atomic>
#include <exception>

namespace {

/// One call of `DoMultiProcess`. oneTBB orders the threads by itself; `begun` and `done` state that order in
/// code that ThreadSanitizer sees.
struct IndexLoop {
    Image* image;
    Image::RowFunction fn;
    void* context;
    std::atomic<bool> begun = false;
    std::atomic<int> done = 0; ///< indices dealt with so far
    std::atomic<bool> failed = false;
    std::exception_ptr failure = nullptr; ///< first exception of `fn`; written by the one that set `failed`

    static void Run(void* self, int first, int end) {
        IndexLoop& loop = *static_cast<IndexLoop*>(self);
        (void)loop.begun.load(std::memory_order_acquire);
        try {
            for (int index = first; index < end && !loop.failed.load(std::memory_order_relaxed); ++index)
                loop.fn(loop.image, loop.context, index);
        } catch (...) {
            if (!loop.failed.exchange(true)) loop.failure = std::current_exception();
        }
        loop.done.fetch_add(end - first, std::memory_order_release);
    }
};

} // namespace

bool Image::DoMultiProcess(RowFunction fn, void* context, int count, ImgMPData*, bool) {
    if (count <= 0) return true;
    IndexLoop loop{this, fn, context};
    loop.begun.store(true, std::memory_order_release);
    RunRangesInParallel(count, IndexLoop::Run, &loop);
    const bool complete = loop.done.load(std::memory_order_acquire) == count;
    if (loop.failure != nullptr) std::rethrow_exception(loop.failure);
    return complete;
}
