#pragma once

#include <new>

/// What the engine throws itself for want of memory, or of a worker thread. Its text is the same with every
/// standard library.
struct PrxOutOfMemory : std::bad_alloc {
    const char* what() const noexcept override { return "bad allocation"; }
};
