#pragma once

#include "host/Export.h"

#include <array>
#include <cstddef>
#include <mutex>

/// Large blocks of memory that were freed, for the next who needs one of about their size. A frame of video
/// takes several of them and gives them back with the frame; the system would clear each page anew for every
/// frame, which costs as much as a light codec's work. While a block is kept the system may take its pages
/// away if memory runs short. Any thread.
class CORVEX_HOST_API LargeBlocks {
public:
    constexpr LargeBlocks() = default;
    LargeBlocks(const LargeBlocks&) = delete;
    LargeBlocks& operator=(const LargeBlocks&) = delete;
    /// Frees what is kept.
    ~LargeBlocks();

    /// False under AddressSanitizer, which tells of a use after the end only for blocks that are freed.
    static const bool areKept;
    /// Blocks of this size and above are worth keeping.
    static constexpr size_t leastSize = size_t{4} << 20;
    /// More than this in all is not kept.
    static constexpr size_t mostKept = size_t{512} << 20;

    /// A kept block, else a new one, in the place of all that is kept if memory is short. Throws nothing.
    /// @param size       bytes, at least `leastSize`
    /// @param alignment  a power of two, at least that of a pointer
    /// @return a block for `std::free`, its bytes undefined, or null for lack of memory
    void* Take(size_t size, size_t alignment);
    /// Keeps a block of `malloc`'s family; the oldest ones make way for it.
    /// @return false if it is not kept: it is too small, or too large, and stays the caller's
    bool Keep(void* block);

private:
    struct Block {
        void* data = nullptr;
        size_t size = 0; ///< usable bytes
    };

    void Clear();
    void* TakeKept(size_t size, size_t alignment);
    void* Remove(size_t index);

    std::mutex mutex_;
    std::array<Block, 32> blocks_; ///< the oldest first
    size_t count_ = 0;
    size_t kept_ = 0; ///< bytes in all
};
