#include "Stack.h"

#include <sys/mman.h>

#include <new>
#include <vector>

#include "Sanitizer.h"

namespace fibers {
namespace {

/// A page of the processors that we run on.
constexpr std::size_t guardBytes = 4096;

/// As many as there ever were fibers at once.
std::vector<void*>& spare() {
    static std::vector<void*> all;
    return all;
}

void* mapAnother() {
    void* const whole = mmap(nullptr, guardBytes + Stack::bytes, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (whole == MAP_FAILED || mprotect(whole, guardBytes, PROT_NONE) != 0) throw std::bad_alloc();
    return static_cast<char*>(whole) + guardBytes;
}

void* take() {
    if (spare().empty()) return mapAnother();
    void* const latest = spare().back();
    spare().pop_back();
    return latest;
}

}  // namespace

Stack::Stack() : bottom_(take()) {}

Stack::~Stack() {
    sanitizer::forgetStack(bottom_, bytes);
    spare().push_back(bottom_);
}

}  // namespace fibers
