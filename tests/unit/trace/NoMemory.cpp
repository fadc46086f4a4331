#include "NoMemory.h"

#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<DWORD> starvedThread{0};
std::atomic<int> refused{0};

void* allocate(std::size_t bytes) {
    if (starvedThread == GetCurrentThreadId()) {
        ++refused;
        throw std::bad_alloc();
    }
    void* const block = std::malloc(bytes == 0 ? 1 : bytes);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

// The run-time library's other forms of new and delete end in these.
void* operator new(std::size_t bytes) {
    return allocate(bytes);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace testing_support {

NoMemory::NoMemory() noexcept {
    refused = 0;
    starvedThread = GetCurrentThreadId();
}

NoMemory::~NoMemory() {
    starvedThread = 0;
}

int NoMemory::refusals() const noexcept {
    return refused;
}

MemoryExhausted::MemoryExhausted() noexcept {
    constexpr std::size_t smallestRegion = 64 * 1024;
    for (std::size_t bytes = std::size_t{1} << 30; bytes >= smallestRegion;) {
        auto* const block = static_cast<Block*>(
            VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        if (block == nullptr) {
            bytes /= 2;
            continue;
        }
        block->next = regions_;
        regions_ = block;
    }
    for (std::size_t bytes = smallestRegion; bytes >= sizeof(Block);) {
        auto* const block = static_cast<Block*>(std::malloc(bytes));
        if (block == nullptr) {
            bytes /= 2;
            continue;
        }
        block->next = heapBlocks_;
        heapBlocks_ = block;
    }
}

MemoryExhausted::~MemoryExhausted() {
    while (heapBlocks_ != nullptr) {
        Block* const block = heapBlocks_;
        heapBlocks_ = block->next;
        std::free(block);
    }
    while (regions_ != nullptr) {
        Block* const block = regions_;
        regions_ = block->next;
        VirtualFree(block, 0, MEM_RELEASE);
    }
}

}  // namespace testing_support
