#pragma once

#include <cstddef>

/// The forms of `new` that the engine calls, as far as tests let them fail.
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
