#pragma once

#include <cstddef>

/// What stands before the heap of a test program and lets `new` fail: for one thread after a number of
/// allocations, or in all threads from a size on.

/// Lets the heap run out for the thread that makes it: single objects of no alignment of their own get no
/// memory once a number of them went through.
class HeapSpy {
public:
    /// From now to its end the thread gets `allocations` more such blocks, and no other.
    explicit HeapSpy(int allocations);
    ~HeapSpy();
    HeapSpy(const HeapSpy&) = delete;
    HeapSpy& operator=(const HeapSpy&) = delete;

    /// Whether an allocation has failed.
    bool RanOut() const;
};

/// The forms of `new` that can be told to fail from a size on.
enum class Allocation {
    Single,  ///< one object; failure throws
    Array,   ///< an array; failure gives null
    Aligned, ///< one object on a boundary of its own; failure gives null
};

/// Makes allocations of one form and of `leastSize` bytes or more fail, in all threads of the test program,
/// until the end of its life.
class NoMemory {
public:
    NoMemory(Allocation form, size_t leastSize);
    ~NoMemory();
    NoMemory(const NoMemory&) = delete;
    NoMemory& operator=(const NoMemory&) = delete;

private:
    Allocation form_;
};
