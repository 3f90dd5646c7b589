#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

/// A block of memory that ends, or starts, at a page that may not be touched.
class GuardedBytes {
public:
    enum class Guard { Behind, Before };

    GuardedBytes(size_t size, Guard guard) : size_(size) {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t pages = (size + page - 1) / page * page;
        mappedSize_ = pages + page;
        void* mapped = mmap(nullptr, mappedSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapped == MAP_FAILED) std::abort();
        mapped_ = static_cast<uint8_t*>(mapped);
        uint8_t* forbidden = guard == Guard::Behind ? mapped_ + pages : mapped_;
        if (mprotect(forbidden, page, PROT_NONE) != 0) std::abort();
        data_ = guard == Guard::Behind ? forbidden - size : forbidden + page;
    }
    ~GuardedBytes() { munmap(mapped_, mappedSize_); }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    uint8_t* data() const { return data_; }
    size_t size() const { return size_; }
    uint8_t* begin() const { return data_; }
    uint8_t* end() const { return data_ + size_; }

private:
    size_t size_;
    size_t mappedSize_;
    uint8_t* mapped_;
    uint8_t* data_;
};
