#pragma once

#include "framework/Export.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <mutex>
#include <new>
#include <utility>

/// Decoded frames of a library's own type `T`, by presentation time. The cache owns every frame that it
/// stores and releases it with its deleter. When it is full the frame of the lowest time goes first,
/// whichever was used last.
///
/// Any thread may call any operation; each holds the cache's lock for its whole length, the deleter included,
/// which therefore must not call back into the cache.
template <typename T>
class CxDecodedFramesCache {
public:
    /// Frames that a cache keeps if it is not told otherwise.
    static constexpr uint32_t MAX_GOP_LENGTH = 32;

    /// @param deleter   releases one frame; without one frames are only forgotten
    /// @param capacity  most frames that are kept; `MAX_GOP_LENGTH` if below 1
    CxDecodedFramesCache(std::function<void(T*&)> deleter, int32_t capacity);
    CxDecodedFramesCache(const CxDecodedFramesCache&) = delete;
    CxDecodedFramesCache& operator=(const CxDecodedFramesCache&) = delete;
    /// Releases all frames.
    ~CxDecodedFramesCache();

    /// Adds a frame, for which a full cache releases another. A time that is there already keeps the frame
    /// that it has.
    /// @param time  presentation time; a negative one is refused with a warning on the standard error stream
    /// @return whether the cache owns `frame` now. If not, it stays the caller's: its time is negative or
    ///         taken, or there is no memory
    bool CacheDecodedFrame(int64_t time, T* frame);
    /// Looks a frame up. It stays the cache's and may be read until the next call that can release it.
    /// @param frame  out: the frame, or unchanged if there is none
    /// @return whether there is a frame of that time
    bool UseCachedFrame(int64_t time, T*& frame);
    /// Releases and forgets all frames, in the order of their times.
    void ClearCache();

private:
    std::map<int64_t, T*> frames; ///< by presentation time, which is never negative; owned
    std::function<void(T*&)> deleter;
    int32_t capacity; ///< at least 1
    std::mutex mutex; ///< guards `frames`
};

template <typename T>
CxDecodedFramesCache<T>::CxDecodedFramesCache(std::function<void(T*&)> frameDeleter, int32_t mostFrames)
    : deleter(std::move(frameDeleter)),
      capacity(mostFrames >= 1 ? mostFrames : static_cast<int32_t>(MAX_GOP_LENGTH)) {}

template <typename T>
CxDecodedFramesCache<T>::~CxDecodedFramesCache() {
    ClearCache();
}

template <typename T>
bool CxDecodedFramesCache<T>::CacheDecodedFrame(int64_t time, T* frame) {
    if (time < 0) {
        std::fputs("Invalid frame number while caching\n", stderr);
        return false;
    }
    const std::lock_guard<std::mutex> held(mutex);
    if (const auto present = frames.find(time); present != frames.end()) return present->second == frame;
    while (frames.size() >= static_cast<size_t>(capacity)) {
        const auto lowest = frames.begin();
        if (deleter) deleter(lowest->second);
        frames.erase(lowest);
    }
    try {
        frames.emplace(time, frame);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

template <typename T>
bool CxDecodedFramesCache<T>::UseCachedFrame(int64_t time, T*& frame) {
    const std::lock_guard<std::mutex> held(mutex);
    const auto present = frames.find(time);
    if (present == frames.end()) return false;
    frame = present->second;
    return true;
}

template <typename T>
void CxDecodedFramesCache<T>::ClearCache() {
    const std::lock_guard<std::mutex> held(mutex);
    for (auto& [time, frame] : frames)
        if (deleter) deleter(frame);
    frames.clear();
}

// The module makes and exports the caches of these frame types; a program makes those of its own.
struct AVFrame;
struct IMFSample;
extern template class CORVEX_API CxDecodedFramesCache<AVFrame>;
extern template class CORVEX_API CxDecodedFramesCache<IMFSample>;
