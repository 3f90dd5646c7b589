#include "images/ImageWriteQueue.h"

#include <algorithm>
#include <utility>

namespace {

constexpr size_t kMaxWaiting = 4; ///< images
constexpr unsigned kMaxWorkers = 4;

} // namespace

ImageWriteQueue::ImageWriteQueue(const ImageStorage& storage, bool withAlpha)
    : storage_(storage), withAlpha_(withAlpha) {
    const unsigned workers = std::clamp(std::thread::hardware_concurrency(), 1U, kMaxWorkers);
    for (unsigned i = 0; i < workers; ++i)
        workers_.emplace_back([this] { Work(); });
}

ImageWriteQueue::~ImageWriteQueue() {
    Close(true);
    workers_.clear();
}

void ImageWriteQueue::Push(std::string path, HostImage image, const ImageMetadata& metadata) {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return jobs_.size() < kMaxWaiting || failure_ != nullptr; });
    if (failure_) std::rethrow_exception(failure_);
    jobs_.push_back({std::move(path), std::move(image), metadata});
    changed_.notify_all();
}

void ImageWriteQueue::Finish() {
    Close(false);
    workers_.clear();
    if (failure_) std::rethrow_exception(failure_);
}

void ImageWriteQueue::Close(bool dropJobs) {
    const std::lock_guard guard(lock_);
    closed_ = true;
    if (dropJobs) jobs_.clear();
    changed_.notify_all();
}

bool ImageWriteQueue::TakeJob(Job& job) {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return !jobs_.empty() || closed_; });
    if (jobs_.empty()) return false;
    job = std::move(jobs_.front());
    jobs_.pop_front();
    changed_.notify_all();
    return true;
}

void ImageWriteQueue::KeepFailure() {
    const std::lock_guard guard(lock_);
    if (!failure_) failure_ = std::current_exception();
    jobs_.clear();
    changed_.notify_all();
}

void ImageWriteQueue::Work() {
    for (Job job; TakeJob(job); job = {}) {
        try {
            WriteImageFile(job.path, *job.image, storage_, withAlpha_, job.metadata);
        } catch (...) {
            KeepFailure();
        }
    }
}
