#pragma once

#include <cstddef>

namespace fibers {

/// Memory for the calls of one fiber, with a page below it that nobody may touch. It is another's
/// afterwards: to map anew costs more than what most fibers do.
class Stack {
public:
    static constexpr std::size_t bytes = 512 * 1024;

    /// Throws std::bad_alloc if the system has none left.
    Stack();
    ~Stack();
    Stack(const Stack&) = delete;
    Stack& operator=(const Stack&) = delete;

    void* bottom() const { return bottom_; }
    /// Behind its last word; stacks grow downwards.
    void** top() const { return static_cast<void**>(bottom_) + bytes / sizeof(void*); }

private:
    void* const bottom_;
};

}  // namespace fibers
