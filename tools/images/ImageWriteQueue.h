#pragma once

#include "images/HostImage.h"
#include "images/ImageFileWriter.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// Writes images on threads of its own while the caller makes the next ones. One thread at a time calls it.
class ImageWriteQueue {
public:
    /// @param storage,withAlpha  as `WriteImageFile` takes them, for all images
    ImageWriteQueue(const ImageStorage& storage, bool withAlpha);
    /// Drops images that no thread has begun to write, and waits for the others.
    ~ImageWriteQueue();
    ImageWriteQueue(const ImageWriteQueue&) = delete;
    ImageWriteQueue& operator=(const ImageWriteQueue&) = delete;

    /// Hands over an image; waits while the queue is full.
    /// @throw ToolError  of an earlier image; nothing more is written then
    void Push(std::string path, HostImage image, const ImageMetadata& metadata);
    /// Waits until all images are written. Called once, as the last.
    /// @throw ToolError  of an image that could not be written
    void Finish();

private:
    struct Job {
        std::string path;
        HostImage image;
        ImageMetadata metadata;
    };
    void Work();
    bool TakeJob(Job& job);
    void Close(bool dropJobs);
    void KeepFailure();

    const ImageStorage storage_;
    const bool withAlpha_;
    std::mutex lock_;
    std::condition_variable changed_;   ///< any of the fields below
    std::deque<Job> jobs_;              ///< guarded by `lock_`
    bool closed_ = false;               ///< no more jobs come; guarded by `lock_`
    std::exception_ptr failure_;        ///< the first one; guarded by `lock_`
    std::vector<std::jthread> workers_; ///< joined before the fields above go
};
