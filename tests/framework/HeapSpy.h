#pragma once

/// Stands before the heap of the test program and lets it run out: for a thread that asks for it, `new`
/// throws once a number of allocations went through.
class HeapSpy {
public:
    /// From now to its end the thread gets `allocations` more blocks, and no other.
    explicit HeapSpy(int allocations);
    ~HeapSpy();
    HeapSpy(const HeapSpy&) = delete;
    HeapSpy& operator=(const HeapSpy&) = delete;

    /// Whether `new` has thrown.
    bool RanOut() const;
};
