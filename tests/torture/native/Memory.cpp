// The operators of memory that fail when they must. Those for arrays are left as they are: neither
// the library nor its containers use them.
#include <atomic>
#include <cstdlib>
#include <new>

#include "Faults.h"

namespace {

/// Blocks that the leak detector finds here are in use.
constexpr std::size_t maxKept = 4096;
std::atomic<std::size_t> keptSize{0};
std::atomic<void*> kept[maxKept];

void keep(void* block) {
    for (auto& place : kept) {
        void* nothing = nullptr;
        if (place.compare_exchange_strong(nothing, block)) return;
    }
}

void* allocate(std::size_t bytes) {
    void* const block = std::malloc(bytes == 0 ? 1 : bytes);
    if (block != nullptr && bytes == keptSize) keep(block);
    return block;
}

void release(void* block) {
    if (block != nullptr && keptSize != 0) {
        for (auto& place : kept) {
            void* same = block;
            if (place.compare_exchange_strong(same, nullptr)) break;
        }
    }
    std::free(block);
}

}  // namespace

void torture::keepBlocksOf(std::size_t bytes) noexcept {
    keptSize = bytes;
}

void torture::letGoOfBlocks() noexcept {
    keptSize = 0;
    for (auto& place : kept) place = nullptr;
}

__attribute__((noinline)) void* operator new(std::size_t bytes) {
    if (torture::mustFail(torture::Call::allocation)) throw std::bad_alloc();
    void* const block = allocate(bytes);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
__attribute__((noinline)) void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return torture::mustFail(torture::Call::allocation) ? nullptr : allocate(bytes);
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    release(block);
}
