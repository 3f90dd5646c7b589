#pragma once

#include "host/ColorConvertBuffer.h"
#include "host/ColorConvertScratch.h"
#include "host/Image.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

/// Rows of one task: enough to make its scratch memory cheap, few enough to keep all threads busy to the end,
/// and even, so that two rows that share their chroma belong to one task.
inline constexpr int64_t colorRowsPerTask = 16;

/// Runs `convert(scratch, begin, end)` over all rows of a buffer on the host's threads, each call on rows of
/// its own and with a scratch memory that no other call uses at the time.
///
/// @return false if a task had no memory; its rows are left alone then
template <typename Convert>
bool RunColorTasks(Image& image, const ColorBuffer& buffer, const Convert& convert) {
    struct Tasks {
        const ColorBuffer& buffer;
        const Convert& convert;
        std::atomic<bool> complete = true;

        static void Run(Image*, void* context, int index) {
            auto& tasks = *static_cast<Tasks*>(context);
            ColorScratch scratch(*tasks.buffer.layout, tasks.buffer.width);
            if (!scratch.Ready()) {
                tasks.complete = false;
                return;
            }
            const int64_t begin = index * colorRowsPerTask;
            tasks.convert(scratch, begin, std::min(begin + colorRowsPerTask, tasks.buffer.height));
        }
    };
    Tasks tasks = {buffer, convert};
    const int64_t count = (buffer.height + colorRowsPerTask - 1) / colorRowsPerTask;
    return image.DoMultiProcess(&Tasks::Run, &tasks, static_cast<int>(count), nullptr, false) &&
           tasks.complete;
}
