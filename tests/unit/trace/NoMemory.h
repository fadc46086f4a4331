#pragma once

namespace testing_support {

/// While it lives, each request of this thread for memory fails: operator new throws. Only in a
/// program that links NoMemory.cpp. One at a time; GoogleTest needs memory, so judge afterwards.
class NoMemory {
public:
    NoMemory() noexcept;
    ~NoMemory();
    NoMemory(const NoMemory&) = delete;
    NoMemory& operator=(const NoMemory&) = delete;

    /// How many requests have failed so far.
    int refusals() const noexcept;
};

/// Takes all memory that the process can still get, down to the last few bytes of its heap, and
/// gives it back at its end. Only one thread may run.
class MemoryExhausted {
public:
    MemoryExhausted() noexcept;
    ~MemoryExhausted();
    MemoryExhausted(const MemoryExhausted&) = delete;
    MemoryExhausted& operator=(const MemoryExhausted&) = delete;

private:
    struct Block {
        Block* next;
    };

    Block* regions_ = nullptr;
    Block* heapBlocks_ = nullptr;
};

}  // namespace testing_support
