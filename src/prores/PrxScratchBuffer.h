#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

/// Memory that is kept and grows only, on a boundary of 64 bytes. Its content is not kept when it grows.
class PrxScratchBuffer {
public:
    /// At least `size` bytes, or null if there is no memory for them; it then holds nothing.
    uint8_t* Reserve(size_t size);

private:
    struct Deleter {
        void operator()(uint8_t* bytes) const { ::operator delete(bytes, alignment); }
    };
    static constexpr std::align_val_t alignment{64};

    std::unique_ptr<uint8_t, Deleter> bytes_;
    size_t capacity_ = 0;
};
